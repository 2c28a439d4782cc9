#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <random>

using korvel::Buffer;
using nettest::Bytes;
using nettest::framed;
using nettest::intBytes;

namespace {

// One way of a hostile link: from a fixed seed it drops datagrams, sends
// some twice and holds some back until newer ones have overtaken them.
struct LossyWay {
    std::vector<Bytes> pass(const Bytes& bytes)
    {
        std::vector<Bytes> out;
        const double r = std::uniform_real_distribution<double>(0, 1)(random);
        if (r < 0.2) {
            ++dropped;
        } else if (r < 0.4 && !held) {
            held = bytes;
            releaseAfter = std::uniform_int_distribution<int>(2, 8)(random);
        } else {
            out.assign(r < 0.55 ? 2 : 1, bytes);
            duplicated += r < 0.55 ? 1 : 0;
            if (held && --releaseAfter <= 0) {
                out.push_back(*held);
                held.reset();
                ++reordered;
            }
        }
        return out;
    }
    std::mt19937 random{1234};
    std::optional<Bytes> held;
    int releaseAfter = 0;
    int dropped = 0;
    int duplicated = 0;
    int reordered = 0;
};

int payloadOf(const Bytes& bytes)
{
    int value = -1;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

// Requests reach a real server and states reach a real client through lossy
// ways; raw peers play the other ends.
TEST(LossyLinkTest, FreshestStateNeverGoesBackAndEachDeliveredRequestIsQueuedAndAcknowledgedOnce)
{
    CaptureStdout log;
    auto server = nettest::startServer();
    nettest::RawUdp requester;
    nettest::RawUdp fakeServer;
    auto client = nettest::startClient(fakeServer.port());
    const int serverPort = server->getSocket().getLocalPort();
    const int clientPort = client->getSocket().getLocalPort();
    LossyWay up;
    LossyWay down;
    std::vector<int> delivered;
    std::vector<int> fed;
    std::vector<int> acknowledged;
    std::vector<uint64_t> readIds;
    Buffer read(8082);
    for (int i = 0; i < 400; ++i) {
        for (const Bytes& request : up.pass(framed(intBytes(i), static_cast<uint64_t>(i), 0))) {
            requester.sendTo(serverPort, request);
            delivered.push_back(payloadOf(request));
        }
        for (const Bytes& state : down.pass(framed(intBytes(i + 1), static_cast<uint64_t>(i + 1), 1))) {
            fakeServer.sendTo(clientPort, state);
        }
        // An acknowledgement behind the states tells when the client has read
        // them; waiting for both agents keeps their sockets from backing up
        // and dropping datagrams of their own.
        fakeServer.sendTo(clientPort, framed({}, 0, 2));
        Bytes ack;
        ASSERT_TRUE(nettest::waitUntil([&] {
            while (Buffer* request = server->feedRequest()) {
                fed.push_back(-1);
                EXPECT_TRUE(request->get(fed.back()));
                delete request;
            }
            while (requester.receive(ack, 0)) {
                acknowledged.push_back(payloadOf(ack));  // the low bytes of the acknowledged id
            }
            return fed.size() >= delivered.size() && acknowledged.size() >= delivered.size() &&
                   client->countAcknowledgements() == static_cast<uint64_t>(i + 1);
        })) << "at step " << i;
        uint64_t id = 0;
        int payload = -1;
        if (client->readLastServer(read, id)) {
            EXPECT_TRUE(read.get(payload) && payload == static_cast<int>(id));
            readIds.push_back(id);
        }
    }
    client->endReadPoolLastServer();
    server->endReadPoolClients();

    EXPECT_GT(std::min({up.dropped, up.duplicated, up.reordered, down.dropped, down.duplicated, down.reordered}), 10);
    EXPECT_GT(readIds.size(), 100u);
    EXPECT_EQ(std::adjacent_find(readIds.begin(), readIds.end(), std::greater_equal<>()), readIds.end());
    std::sort(delivered.begin(), delivered.end());
    std::sort(fed.begin(), fed.end());
    std::sort(acknowledged.begin(), acknowledged.end());
    EXPECT_EQ(fed, delivered);
    EXPECT_EQ(acknowledged, delivered);
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos);
}

}  // namespace
