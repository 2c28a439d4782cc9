#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <set>

using korvel::Buffer;
using nettest::framed;
using nettest::intBytes;

namespace {

// One way of a hostile link: from a fixed seed it drops messages, holds
// some back until newer ones have overtaken them, and sends some twice, the
// second copy late.
struct LossyWay {
    // The messages, by number, that go out when message `number` is sent.
    std::vector<int> pass(int number)
    {
        const double r = std::uniform_real_distribution<double>(0, 1)(random);
        const int kind = r < 0.2 ? 0 : r < 0.4 ? 1 : r < 0.55 ? 2 : 3;  // dropped, held, doubled, passed
        const int delay = std::uniform_int_distribution<int>(1, 8)(random);
        ++tally[kind];
        if (kind != 0) {
            late.emplace(kind == 1 ? number + delay : number, number);
        }
        if (kind == 2) {
            late.emplace(number + delay, number);  // the second copy comes late
        }
        std::vector<int> out;
        for (auto due = late.begin(); due != late.end() && due->first <= number; due = late.erase(due)) {
            out.push_back(due->second);
        }
        return out;
    }
    std::mt19937 random{1234};
    std::multimap<int, int> late;  // by the number that lets it through
    int tally[4] = {0, 0, 0, 0};
};

// Requests reach a real server and states reach a real client through lossy
// ways; a raw peer plays the other end of both.
TEST(LossyLinkTest, FreshestStateNeverGoesBackAndEachDeliveredRequestIsQueuedAndAcknowledgedOnce)
{
    CaptureStdout log;
    nettest::RawUdp peer;
    auto server = nettest::startServer();
    auto client = nettest::startClient(peer.port());
    LossyWay up;
    LossyWay down;
    std::multiset<int> delivered;
    std::multiset<int> fed;
    std::multiset<int> acknowledged;
    std::vector<uint64_t> readIds;
    Buffer read(8082);
    for (int i = 0; i < 400; ++i) {
        for (int request : up.pass(i)) {
            peer.sendTo(server->getSocket().getLocalPort(), framed(intBytes(request), request, 0));
            delivered.insert(request);
        }
        for (int state : down.pass(i + 1)) {
            peer.sendTo(client->getSocket().getLocalPort(), framed(intBytes(state), state, 1));
        }
        // An acknowledgement behind the states tells when the client has read
        // them; waiting for both agents keeps their sockets from backing up
        // and dropping datagrams of their own.
        peer.sendTo(client->getSocket().getLocalPort(), framed({}, 0, 2));
        nettest::Bytes ack;
        ASSERT_TRUE(nettest::waitUntil([&] {
            for (int sequence = nettest::feedInt(*server); sequence >= 0; sequence = nettest::feedInt(*server)) {
                fed.insert(sequence);
            }
            while (peer.receive(ack, 0)) {
                acknowledged.insert(ack[0] | ack[1] << 8);  // the acknowledged id, below 400
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

    EXPECT_GT(std::min({up.tally[0], up.tally[1], up.tally[2], down.tally[0], down.tally[1], down.tally[2]}), 10);
    EXPECT_GT(readIds.size(), 100u);
    EXPECT_EQ(std::adjacent_find(readIds.begin(), readIds.end(), std::greater_equal<>()), readIds.end());
    EXPECT_EQ(fed, delivered);
    EXPECT_EQ(acknowledged, delivered);
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos);
}

}  // namespace
