#include "parser/TextFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvel {

namespace {

// Closes the descriptor on every way out.
class Descriptor {
public:
    explicit Descriptor(int value) : fd(value) {}
    ~Descriptor()
    {
        if (fd >= 0) {
            ::close(fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd; }

private:
    int fd;
};

bool readAll(int fd, std::string& data)
{
    // The size given by fstat is not trusted: files under /proc say 0.
    char chunk[65536];
    for (;;) {
        const ssize_t got = ::read(fd, chunk, sizeof chunk);
        if (got == 0) {
            return true;
        }
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data.append(chunk, static_cast<std::size_t>(got));
        if (data.size() > maxTextFileSize) {
            return false;
        }
    }
}

}  // namespace

bool readTextLines(const std::string& fileName, std::string& result)
{
    // Non-blocking so that opening a FIFO without a writer does not wait.
    Descriptor file(::open(fileName.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0) {
        return false;
    }
    struct stat info;
    if (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size < 0 ||
        static_cast<unsigned long long>(info.st_size) > maxTextFileSize) {
        return false;
    }
    std::string data;
    data.reserve(static_cast<std::size_t>(info.st_size));
    if (!readAll(file.get(), data)) {
        return false;
    }

    std::size_t end = data.size();
    if (end > 0 && data[end - 1] == '\r') {
        --end;
    }
    std::string lines;
    lines.reserve(end + 1);
    std::size_t start = 0;
    while (start < end) {
        const char* found = static_cast<const char*>(std::memchr(data.data() + start, '\n', end - start));
        if (found == nullptr) {
            lines.append(data, start, end - start);
            lines += '\n';
            break;
        }
        const std::size_t newline = static_cast<std::size_t>(found - data.data());
        std::size_t lineEnd = newline;
        if (lineEnd > start && data[lineEnd - 1] == '\r') {
            --lineEnd;
        }
        lines.append(data, start, lineEnd - start);
        lines += '\n';
        start = newline + 1;
    }
    result.swap(lines);
    return true;
}

}  // namespace korvel
