#include "network/Client.h"
#include "network/Server.h"
#include "NetTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

using korvel::Buffer;
using korvel::Client;
using korvel::Server;
using nettest::LineSink;
using nettest::RawUdp;

namespace {

// A hostile link between the client and the server on 127.0.0.1: it drops,
// duplicates and holds back (reorders) datagrams both ways, from a fixed
// seed, and counts what it really delivered.
class LossyLink {
public:
    explicit LossyLink(int serverPort) : server(nettest::loopback(serverPort)), random(1234)
    {
        worker = std::thread([this] { run(); });
    }
    ~LossyLink() { stop(); }

    int frontPort() const { return front.port(); }
    void stop()
    {
        stopping = true;
        if (worker.joinable()) {
            worker.join();
        }
    }

    // Read once stop() has joined the worker.
    std::map<uint64_t, int> deliveredToServer;
    int acknowledgementsToClient = 0;
    int dropped = 0;
    int duplicated = 0;
    int reordered = 0;

private:
    struct Direction {
        std::optional<std::vector<unsigned char>> held;
        int releaseAfter = 0;  // datagrams still to pass before the held one
    };

    void run()
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        std::vector<unsigned char> bytes;
        sockaddr_in from;
        while (!stopping && std::chrono::steady_clock::now() < deadline) {
            if (front.receive(bytes, 0, &from)) {
                client = from;
                knowsClient = true;
                pass(bytes, true);
            }
            if (back.receive(bytes, 0) && knowsClient) {
                pass(bytes, false);
            }
            pollfd p[2] = {{front.handle(), POLLIN, 0}, {back.handle(), POLLIN, 0}};
            ::poll(p, 2, 5);
        }
    }

    void pass(const std::vector<unsigned char>& bytes, bool toServer)
    {
        Direction& way = toServer ? up : down;
        const double r = std::uniform_real_distribution<double>(0, 1)(random);
        if (r < 0.2) {
            ++dropped;
            return;
        }
        if (r < 0.4 && !way.held) {
            // Held for several frames, so the main thread reads newer ones first.
            way.held = bytes;
            way.releaseAfter = std::uniform_int_distribution<int>(2, 8)(random);
            return;
        }
        deliver(bytes, toServer);
        if (r < 0.55) {
            ++duplicated;
            deliver(bytes, toServer);
        }
        if (way.held && --way.releaseAfter <= 0) {
            ++reordered;
            deliver(*way.held, toServer);
            way.held.reset();
        }
    }

    void deliver(const std::vector<unsigned char>& bytes, bool toServer)
    {
        if (toServer) {
            back.sendTo(server, bytes.data(), bytes.size());
            if (bytes.size() >= 10) {
                uint64_t id = 0;
                std::memcpy(&id, bytes.data() + bytes.size() - 10, 8);
                ++deliveredToServer[id];
            }
        } else {
            front.sendTo(client, bytes.data(), bytes.size());
            short type = -1;
            if (bytes.size() == 10) {
                std::memcpy(&type, bytes.data() + 8, 2);
            }
            acknowledgementsToClient += type == 2 ? 1 : 0;
        }
    }

    RawUdp front;
    RawUdp back;
    sockaddr_in server;
    sockaddr_in client{};
    bool knowsClient = false;
    Direction up;
    Direction down;
    std::mt19937 random;
    std::atomic<bool> stopping{false};
    std::thread worker;
};

TEST(LossyLinkTest, FreshestStateNeverGoesBackAndEveryDeliveredRequestIsQueuedOnce)
{
    LineSink log({"client got ACK for: ", "ERROR"});
    Server server(1);
    server.setPort(0);
    ASSERT_TRUE(server.initConnection());
    ASSERT_TRUE(server.initReadPoolClients());
    LossyLink link(server.getSocket().getLocalPort());
    Client client;
    client.setServerAddress("127.0.0.1");
    client.setPort(link.frontPort());
    ASSERT_TRUE(client.initConnection());
    ASSERT_TRUE(client.initReadPoolLastServer());

    std::map<int, int> fed;
    auto drain = [&] {
        while (Buffer* request = server.feedRequest()) {
            int sequence = -1;
            EXPECT_TRUE(request->get(sequence));
            ++fed[sequence];
            delete request;
        }
    };
    Buffer read(8082);
    uint64_t lastId = 0;
    int reads = 0;
    int wentBack = 0;
    int mismatched = 0;
    auto readState = [&] {
        uint64_t id = 0;
        if (client.readLastServer(read, id)) {
            int payload = -1;
            read.get(payload);
            wentBack += (reads > 0 && id <= lastId) ? 1 : 0;
            mismatched += payload != static_cast<int>(id) ? 1 : 0;
            lastId = id;
            ++reads;
        }
    };

    const int requests = 400;
    for (int i = 0; i < requests; ++i) {
        Buffer request(64);
        request.add(i);  // the client's message id is i as well
        client.writeServerACK(request);
        Buffer state(8082);
        state.add(static_cast<int>(server.getMessageId()));
        server.broadcastMessageNACK(state);
        drain();
        readState();
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    link.stop();
    client.endReadPoolLastServer();
    server.endReadPoolClients();
    drain();  // what was queued before the stop is still there
    readState();
    log.restore();

    EXPECT_GT(link.dropped, 20);
    EXPECT_GT(link.duplicated, 20);
    EXPECT_GT(link.reordered, 20);
    EXPECT_GT(reads, 20);
    EXPECT_EQ(wentBack, 0);
    EXPECT_EQ(mismatched, 0);

    // Every datagram that reached the server became exactly one request.
    int delivered = 0;
    for (const auto& [id, copies] : link.deliveredToServer) {
        EXPECT_EQ(fed[static_cast<int>(id)], copies) << "request " << id;
        delivered += copies;
    }
    int queued = 0;
    for (const auto& [sequence, count] : fed) {
        queued += count;
    }
    EXPECT_EQ(queued, delivered);

    // Every acknowledgement the client saw stands for a queued request.
    EXPECT_EQ(client.countAcknowledgements(), static_cast<uint64_t>(link.acknowledgementsToClient));
    EXPECT_EQ(log.count("client got ACK for: "), client.countAcknowledgements());
    for (const std::string& line : log.lines()) {
        const auto at = line.find("client got ACK for: ");
        if (at != std::string::npos) {
            const int id = std::atoi(line.c_str() + at + 20);
            EXPECT_GE(fed[id], 1) << line;
        }
    }
    EXPECT_EQ(log.count("ERROR"), 0u) << log.all();
}

}  // namespace
