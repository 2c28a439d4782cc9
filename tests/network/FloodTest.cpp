#include "network/Client.h"
#include "network/Server.h"
#include "NetTestSupport.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using korvel::Buffer;
using korvel::Client;
using korvel::Server;
using nettest::LineSink;
using nettest::RawUdp;

namespace {

long peakKilobytes()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Sends `count` datagrams of `size` bytes framed as requests asking for an
// acknowledgement, as fast as the socket takes them.
void flood(int port, int count, std::size_t size)
{
    RawUdp attacker;
    const sockaddr_in to = nettest::loopback(port);
    std::vector<unsigned char> bytes = nettest::framed(std::vector<unsigned char>(size - 10, 0x5A), 0, 0);
    for (int i = 0; i < count; ++i) {
        std::memcpy(bytes.data() + size - 10, &i, sizeof i);
        attacker.sendTo(to, bytes.data(), bytes.size());
    }
}

// Waits until the server has handled every datagram it will get: the count
// of requests it has seen stops moving.
void settle(const Server& server, uint64_t alreadyFed)
{
    uint64_t seen = ~uint64_t{0};
    for (int round = 0; round < 200; ++round) {
        const uint64_t now = server.countPendingRequests() + server.countDroppedRequests() + alreadyFed;
        if (now == seen) {
            return;
        }
        seen = now;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

TEST(FloodTest, AFloodOfTheServerPortStaysBoundedAndRequestsStillFlow)
{
    const int datagrams = 100000;
    const std::size_t size = 8000;
    LineSink log({"[Warning] server request queue", "[Information] server request queue", "ERROR"});
    Server server(1);
    server.setPort(0);
    ASSERT_TRUE(server.initConnection());
    ASSERT_TRUE(server.initReadPoolClients());
    const int port = server.getSocket().getLocalPort();
    const long before = peakKilobytes();

    // Nobody takes requests: the queue fills to its cap and drops the rest.
    std::thread attacker(flood, port, datagrams, size);
    attacker.join();
    settle(server, 0);
    EXPECT_EQ(server.countPendingRequests(), Server::maxPendingRequests);
    EXPECT_GT(server.countDroppedRequests(), 0u);
    const uint64_t droppedFirst = server.countDroppedRequests();
    const long afterFull = peakKilobytes();

    // The main thread takes requests while a second flood runs.
    std::atomic<bool> flooding{true};
    std::thread second([&] {
        flood(port, datagrams, size);
        flooding = false;
    });
    uint64_t fed = 0;
    std::size_t mostPending = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while ((flooding || server.hasRequest()) && std::chrono::steady_clock::now() < deadline) {
        mostPending = std::max(mostPending, server.countPendingRequests());
        if (Buffer* request = server.feedRequest()) {
            EXPECT_EQ(request->getUsed(), size - 10);
            delete request;
            ++fed;
        } else {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }
    second.join();
    settle(server, fed);
    while (Buffer* request = server.feedRequest()) {
        delete request;
        ++fed;
    }
    EXPECT_GE(fed, Server::maxPendingRequests);
    EXPECT_LE(mostPending, Server::maxPendingRequests);

    // A real client is still heard, acknowledged and served.
    Client client;
    client.setServerAddress("127.0.0.1");
    client.setPort(port);
    ASSERT_TRUE(client.initConnection());
    ASSERT_TRUE(client.initReadPoolLastServer());
    Buffer request(64);
    request.add(12345);
    client.writeServerACK(request);
    ASSERT_TRUE(nettest::waitUntil([&] { return server.hasRequest(); }));
    std::unique_ptr<Buffer> got(server.feedRequest());
    int value = 0;
    ASSERT_TRUE(got && got->get(value));
    EXPECT_EQ(value, 12345);
    client.endReadPoolLastServer();
    server.endReadPoolClients();
    const long after = peakKilobytes();
    log.restore();

    // The cap holds 1024 requests of 8 KB: about 8 MB, never the flood.
    // Sanitizers keep freed memory in quarantine and shadow it, so the figure
    // means something only in a plain build.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(afterFull - before, 32 * 1024);
    EXPECT_LT(after - before, 32 * 1024);
#endif
    // One line when the queue fills, one when it has drained to half.
    EXPECT_GE(log.count("[Warning] server request queue is full"), 1u);
    // The queue warns again only after draining to half.
    EXPECT_LE(log.count("[Warning] server request queue is full"), 2u + fed / (Server::maxPendingRequests / 2));
    // The first recovery counts at least the drops of the first flood.
    const auto& lines = log.lines();
    const auto recovery = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("accepts requests again after dropping ") != std::string::npos;
    });
    ASSERT_NE(recovery, lines.end());
    EXPECT_GE(std::stoull(recovery->substr(recovery->rfind(' ') + 1)), droppedFirst);
    EXPECT_FALSE(log.has("ERROR")) << log.all();
    std::fprintf(stderr,
                 "flood: 2 x %d datagrams of %zu bytes; dropped %llu, fed %llu; peak RSS %ld KB before, %ld KB "
                 "with a full queue, %ld KB at the end\n",
                 datagrams, size, static_cast<unsigned long long>(server.countDroppedRequests()),
                 static_cast<unsigned long long>(fed), before, afterFull, after);
}

}  // namespace
