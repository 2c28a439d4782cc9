#pragma once
// Helpers of the network tests: agents started on 127.0.0.1, a raw UDP peer
// that plays a stranger, a fake server or a fake client, framed messages, a
// bounded wait, and a census of what the process holds.

#include "network/Client.h"
#include "network/Server.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

namespace nettest {

using Bytes = std::vector<unsigned char>;

inline sockaddr_in loopback(int port)
{
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return a;
}

// A bare datagram socket bound to a free port of 127.0.0.1.
class RawUdp {
public:
    RawUdp() : fd(::socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in a = loopback(0);
        socklen_t n = sizeof a;
        ::bind(fd, reinterpret_cast<sockaddr*>(&a), n);
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &n);
        boundPort = ntohs(a.sin_port);
    }
    ~RawUdp() { ::close(fd); }
    RawUdp(const RawUdp&) = delete;
    RawUdp& operator=(const RawUdp&) = delete;

    int port() const { return boundPort; }
    void sendTo(int toPort, const Bytes& bytes) const
    {
        const sockaddr_in to = loopback(toPort);
        ::sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }
    // One datagram within timeoutMs, or false; `fromPort` gets its sender's.
    bool receive(Bytes& bytes, int timeoutMs, int* fromPort = nullptr) const
    {
        pollfd p{fd, POLLIN, 0};
        sockaddr_in from{};
        socklen_t length = sizeof from;
        bytes.resize(65536);
        const ssize_t got = ::poll(&p, 1, timeoutMs) > 0
                                ? ::recvfrom(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&from), &length)
                                : -1;
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        if (fromPort != nullptr) {
            *fromPort = ntohs(from.sin_port);
        }
        return got >= 0;
    }

private:
    int fd;
    int boundPort = 0;
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

// Threads, open descriptors and engine objects of the process.
inline std::vector<std::size_t> census()
{
    using std::filesystem::directory_iterator;
    auto entries = [](const char* path) { return std::distance(directory_iterator(path), directory_iterator()); };
    return {std::size_t(entries("/proc/self/task")), std::size_t(entries("/proc/self/fd")), Object::countInstances()};
}

// A message as the agents frame it: payload, id, type.
inline Bytes framed(Bytes payload, uint64_t id, short type)
{
    const std::size_t at = payload.size();
    payload.resize(at + 10);
    std::memcpy(payload.data() + at, &id, 8);
    std::memcpy(payload.data() + at + 8, &type, 2);
    return payload;
}

inline Bytes intBytes(int value)
{
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

inline std::unique_ptr<korvel::Server> startServer(uint64_t bufferSize = 8082)
{
    auto server = std::make_unique<korvel::Server>(1);
    server->setBufferSize(bufferSize);
    server->setPort(0);
    EXPECT_TRUE(server->initConnection() && server->initReadPoolClients());
    return server;
}

inline std::unique_ptr<korvel::Client> startClient(int serverPort)
{
    auto client = std::make_unique<korvel::Client>();
    client->setServerAddress("127.0.0.1");
    client->setPort(serverPort);
    EXPECT_TRUE(client->initConnection() && client->initReadPoolLastServer());
    return client;
}

// The int payload of the oldest request, or -1.
inline int feedInt(korvel::Server& server)
{
    std::unique_ptr<korvel::Buffer> request(server.feedRequest());
    int value = -1;
    return request && request->get(value) ? value : -1;
}

}  // namespace nettest
