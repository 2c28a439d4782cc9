#include "app/LogBuffer.h"

namespace korvel {

const char* LogBuffer::className = "LogBuffer";

LogBuffer::LogBuffer(std::streambuf* target) : target(target) {}

// No buffer of its own: each character that reaches here goes straight on.
LogBuffer::int_type LogBuffer::overflow(int_type c)
{
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        return traits_type::not_eof(c);
    }
    std::lock_guard<std::mutex> guard(lock);
    return target->sputc(traits_type::to_char_type(c));
}

std::streamsize LogBuffer::xsputn(const char* s, std::streamsize n)
{
    std::lock_guard<std::mutex> guard(lock);
    return target->sputn(s, n);
}

int LogBuffer::sync()
{
    std::lock_guard<std::mutex> guard(lock);
    return target->pubsync();
}

}  // namespace korvel
