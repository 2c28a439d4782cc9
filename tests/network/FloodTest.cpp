#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <atomic>

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
        // Settled once the count of requests seen stops moving for 100 ms.
        uint64_t seen = ~uint64_t{0};
        nettest::waitUntil([&] {
            const uint64_t now = server->countPendingRequests() + server->countDroppedRequests() + fed;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            return std::exchange(seen, now) == now;
        }, 20000);
        if (!feeding) {
            EXPECT_EQ(server->countPendingRequests(), Server::maxPendingRequests);
            EXPECT_GT(server->countDroppedRequests(), 0u);
        }
    }
    EXPECT_GT(fed, Server::maxPendingRequests);

    // A real client is still heard, behind what is left of the flood.
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

}  // namespace
