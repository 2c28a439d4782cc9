#include "network/BufferFreshSafe.h"

namespace korvel {

const char* BufferFreshSafe::className = "BufferFreshSafe";

BufferFreshSafe::BufferFreshSafe(uint64_t capacity) : Buffer(capacity), stamp(0), isEmpty(true) {}

bool BufferFreshSafe::push(const Buffer& message, uint64_t messageStamp)
{
    std::lock_guard<std::mutex> guard(lock);
    if (stamp >= messageStamp) {
        return false;
    }
    Buffer::operator=(message);
    stamp = messageStamp;
    isEmpty = false;
    return true;
}

bool BufferFreshSafe::pop(Buffer& message, uint64_t& messageStamp)
{
    std::lock_guard<std::mutex> guard(lock);
    if (isEmpty) {
        return false;
    }
    message = *this;
    messageStamp = stamp;
    isEmpty = true;
    return true;
}

bool BufferFreshSafe::pop(Buffer& message)
{
    uint64_t ignored = 0;
    return pop(message, ignored);
}

}  // namespace korvel
