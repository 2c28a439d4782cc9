#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

using korvel::Buffer;
using korvel::Server;

namespace {

long peakKilobytes()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(FloodTest, AFloodOfTheServerPortStaysBoundedAndRequestsStillFlow)
{
    const int datagrams = 100000;
    const std::size_t size = 8000;
    CaptureStdout silence;
    std::cout.rdbuf(nullptr);  // a few lines per datagram; restored at the end
    auto server = nettest::startServer();
    const int port = server->getSocket().getLocalPort();
    [[maybe_unused]] const long before = peakKilobytes();
    uint64_t fed = 0;
    // First nobody takes requests, so the queue fills to its cap and drops the
    // rest; then the main thread takes them while a second flood runs.
    for (bool feeding : {false, true}) {
        std::atomic<bool> flooding{true};
        std::thread attacker([&] {
            nettest::RawUdp socket;
            nettest::Bytes bytes = nettest::framed(nettest::Bytes(size - 10, 0x5A), 0, 0);
            for (int i = 0; i < datagrams; ++i) {
                std::memcpy(bytes.data() + size - 10, &i, sizeof i);
                socket.sendTo(port, bytes);
            }
            flooding = false;
        });
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (feeding && (flooding || server->hasRequest()) && std::chrono::steady_clock::now() < deadline) {
            std::unique_ptr<Buffer> request(server->feedRequest());
            fed += request ? 1 : 0;
            std::this_thread::sleep_for(std::chrono::microseconds(request ? 0 : 200));
        }
        attacker.join();
        if (!feeding) {
            EXPECT_TRUE(nettest::waitUntil([&] {
                return server->countPendingRequests() == Server::maxPendingRequests &&
                       server->countDroppedRequests() > 0;
            }, 20000));
        }
    }
    EXPECT_GT(fed, Server::maxPendingRequests);

    // A real client is still heard, behind what is left of the flood: its
    // request is found once everything before it has been taken.
    auto client = nettest::startClient(port);
    Buffer request(64);
    request.add(12345);
    client->writeServerACK(request);
    EXPECT_TRUE(nettest::waitUntil([&] { return nettest::feedInt(*server) == 12345; }));

    // The cap holds 1024 requests of 8 KB: about 8 MB, never the flood.
    // Sanitizers keep freed memory in quarantine and shadow it, so the figure
    // means something only in a plain build.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(peakKilobytes() - before, 32 * 1024);  // the peak over both floods
#endif
}

// The queue's bound seen from the sender: every request queued is
// acknowledged, none dropped is, and the queue accepts again once the main
// thread has taken half of it.
TEST(FloodTest, AFullQueueDropsRequestsWithoutAcknowledgingThemUntilItDrains)
{
    CaptureStdout log;
    auto server = nettest::startServer();
    nettest::RawUdp sender;
    const int port = server->getSocket().getLocalPort();
    const int dropped = 10;
    const int total = static_cast<int>(Server::maxPendingRequests) + dropped;
    std::vector<int> acknowledged;
    nettest::Bytes ack;
    // In bursts that the socket's own buffers hold, each answered before the
    // next: the kernel drops nothing, so every drop is the server's.
    const int burst = 64;
    for (int id = 0; id < total; id += burst) {
        for (int i = id; i < std::min(id + burst, total); ++i) {
            sender.sendTo(port, nettest::framed(nettest::intBytes(i), static_cast<uint64_t>(i), 0));
        }
        const std::size_t answered = std::min<std::size_t>(id + burst, Server::maxPendingRequests);
        while (acknowledged.size() < answered && sender.receive(ack, 5000)) {
            uint64_t got = 0;
            std::memcpy(&got, ack.data(), sizeof got);
            acknowledged.push_back(static_cast<int>(got));
        }
    }
    ASSERT_TRUE(nettest::waitUntil([&] { return server->countDroppedRequests() == static_cast<uint64_t>(dropped); }));
    // Handled in order, so an acknowledgement of a dropped one would be here by now.
    EXPECT_FALSE(sender.receive(ack, 0));
    ASSERT_EQ(acknowledged.size(), Server::maxPendingRequests);
    for (int i = 0; i < static_cast<int>(acknowledged.size()); ++i) {
        ASSERT_EQ(acknowledged[i], i);
    }

    // Full until it is back under half; then the next request is queued and
    // acknowledged again.
    for (std::size_t taken = 0; taken <= Server::maxPendingRequests / 2; ++taken) {
        ASSERT_EQ(nettest::feedInt(*server), static_cast<int>(taken));
    }
    sender.sendTo(port, nettest::framed(nettest::intBytes(total), static_cast<uint64_t>(total), 0));
    ASSERT_TRUE(sender.receive(ack, 5000));
    EXPECT_EQ(ack, nettest::framed({}, static_cast<uint64_t>(total), 2));
    EXPECT_EQ(server->countPendingRequests(), Server::maxPendingRequests / 2);
    server->endReadPoolClients();

    const std::string text = log.text();
    const std::size_t full = text.find("[Warning] server request queue is full");
    const std::size_t again = text.find("[Information] server request queue accepts requests again after dropping 10");
    EXPECT_NE(full, std::string::npos);
    EXPECT_EQ(text.find("[Warning] server request queue is full", full + 1), std::string::npos);  // once, not per drop
    EXPECT_TRUE(again != std::string::npos && again > full) << text;
}

}  // namespace
