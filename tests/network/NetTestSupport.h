#pragma once
// Helpers of the network tests: a raw UDP peer on 127.0.0.1 that plays a
// stranger, a fake server or a lossy link; a bounded wait; a stdout sink that
// keeps only the lines a test looks at; counts of open descriptors and threads.

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

namespace nettest {

inline sockaddr_in loopback(int port)
{
    sockaddr_in a;
    std::memset(&a, 0, sizeof a);
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return a;
}

class RawUdp {
public:
    RawUdp() : fd(::socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in a = loopback(0);
        ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
    }
    ~RawUdp() { ::close(fd); }
    RawUdp(const RawUdp&) = delete;
    RawUdp& operator=(const RawUdp&) = delete;

    int port() const
    {
        sockaddr_in a;
        socklen_t n = sizeof a;
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &n);
        return ntohs(a.sin_port);
    }
    bool sendTo(const sockaddr_in& to, const void* bytes, std::size_t count) const
    {
        return ::sendto(fd, bytes, count, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to) ==
               static_cast<ssize_t>(count);
    }
    bool sendTo(int toPort, const std::vector<unsigned char>& bytes) const
    {
        return sendTo(loopback(toPort), bytes.data(), bytes.size());
    }
    // One datagram within timeoutMs, or false.
    bool receive(std::vector<unsigned char>& bytes, int timeoutMs, sockaddr_in* from = nullptr) const
    {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, timeoutMs) <= 0) {
            return false;
        }
        bytes.resize(65536);
        sockaddr_in a;
        socklen_t n = sizeof a;
        const ssize_t got = ::recvfrom(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&a), &n);
        if (got < 0) {
            return false;
        }
        bytes.resize(static_cast<std::size_t>(got));
        if (from != nullptr) {
            *from = a;
        }
        return true;
    }
    int handle() const { return fd; }

private:
    int fd;
};

// Polls `done` every millisecond for at most `limitMs`.
template <typename Predicate>
bool waitUntil(Predicate done, int limitMs = 5000)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Replaces std::cout's buffer and keeps only the lines that contain one of
// the given marks (all lines when none is given). The network layer writes
// each line under its own lock, so the sink is only read once the agents'
// threads are joined.
class LineSink : public std::streambuf {
public:
    explicit LineSink(std::vector<std::string> marks = {}) : marks(std::move(marks)), old(std::cout.rdbuf(this)) {}
    ~LineSink() override { restore(); }
    LineSink(const LineSink&) = delete;
    LineSink& operator=(const LineSink&) = delete;

    void restore()
    {
        if (old != nullptr) {
            std::cout.rdbuf(old);
            old = nullptr;
        }
    }
    const std::vector<std::string>& lines() const { return kept; }
    std::size_t count(const std::string& part) const
    {
        std::size_t n = 0;
        for (const auto& l : kept) {
            n += l.find(part) != std::string::npos ? 1 : 0;
        }
        return n;
    }
    bool has(const std::string& part) const { return count(part) > 0; }
    std::string all() const
    {
        std::string text;
        for (const auto& l : kept) {
            text += l + "\n";
        }
        return text;
    }

protected:
    int_type overflow(int_type c) override
    {
        if (traits_type::eq_int_type(c, traits_type::eof())) {
            return traits_type::not_eof(c);
        }
        if (c == '\n') {
            bool keep = marks.empty();
            for (const auto& m : marks) {
                keep = keep || current.find(m) != std::string::npos;
            }
            if (keep) {
                kept.push_back(current);
            }
            current.clear();
        } else {
            current.push_back(static_cast<char>(c));
        }
        return c;
    }

private:
    std::vector<std::string> marks;
    std::vector<std::string> kept;
    std::string current;
    std::streambuf* old;
};

inline std::size_t countEntries(const char* directory)
{
    std::size_t n = 0;
    if (DIR* d = ::opendir(directory)) {
        while (::readdir(d) != nullptr) {
            ++n;
        }
        ::closedir(d);
    }
    return n;
}
inline std::size_t openDescriptors() { return countEntries("/proc/self/fd"); }
inline std::size_t liveThreads() { return countEntries("/proc/self/task"); }

// A framed message as the agents write it: payload, id, type.
inline std::vector<unsigned char> framed(std::vector<unsigned char> payload, uint64_t id, short type)
{
    const std::size_t at = payload.size();
    payload.resize(at + 10);
    std::memcpy(payload.data() + at, &id, 8);
    std::memcpy(payload.data() + at + 8, &type, 2);
    return payload;
}

}  // namespace nettest
