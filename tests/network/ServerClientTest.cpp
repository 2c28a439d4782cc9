#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

using korvel::Buffer;
using nettest::Bytes;
using nettest::framed;
using nettest::intBytes;
using nettest::RawUdp;
using nettest::waitUntil;

namespace {

struct Datagram {
    const RawUdp* from;
    int to;
    Bytes bytes;
    std::string line;  // what the receiver logs about it, if anything
};

TEST(ServerClientTest, RequestIsAcknowledgedAndQueuedAndStateReachesTheClient)
{
    CaptureStdout log;
    auto server = nettest::startServer();
    auto client = nettest::startClient(server->getSocket().getLocalPort());
    // Refusals leave the running agents as they are.
    korvel::Server clash(1);
    clash.setPort(server->getSocket().getLocalPort());
    EXPECT_FALSE(server->initReadPoolClients() || client->initReadPoolLastServer());
    EXPECT_FALSE(clash.initConnection() || clash.initReadPoolClients());

    Buffer request(8082);
    request.add(Matrix4D::getI4());
    request.add(short{1});
    ASSERT_TRUE(client->writeServerACK(request));
    ASSERT_TRUE(waitUntil([&] { return server->hasRequest() && client->countAcknowledgements() == 1; }));
    std::unique_ptr<Buffer> got(server->feedRequest());
    short code = 0;
    Matrix4D pose;
    ASSERT_TRUE(got && got->get(code) && got->get(pose));
    EXPECT_TRUE(code == 1 && pose.m[15] == 1.0f && got->getUsed() == 0);  // the framing is gone
    EXPECT_EQ(server->feedRequest(), nullptr);

    // The first id the server frames is 0, which the empty fresh slot
    // refuses; id 1 passes.
    Buffer state(8082);
    for (int frame = 0; frame < 2; ++frame) {
        state.clear();
        state.add(1000 + frame);
        ASSERT_TRUE(server->broadcastMessageNACK(state));
    }
    uint64_t id = 99;
    int value = 0;
    ASSERT_TRUE(waitUntil([&] { return client->readLastServer(state, id); }));
    EXPECT_TRUE(id == 1 && state.get(value) && value == 1001);
    EXPECT_FALSE(client->readLastServer(state));
    EXPECT_FALSE(server->sendMessageNACK(state, 1) || server->sendMessage(state, -1));

    client->endReadPoolLastServer();
    server->endReadPoolClients();
    for (const char* line : {"[ERROR] server is already reading clients in pooling !",
                             "[ERROR] client is already reading server in pooling !",
                             "[ERROR] bind() for opening socket entrance"}) {
        EXPECT_NE(log.text().find(line), std::string::npos) << line;
    }
}

// A stranger must neither take the server's only slot nor push the client's
// freshest id out of reach. With its slot taken, the server still queues the
// stranger's requests but neither acknowledges them nor broadcasts to it.
TEST(ServerClientTest, HostileDatagramsAreDroppedAndBothEndsStillServe)
{
    CaptureStdout log;
    RawUdp peer;  // the server's one client and the client's server
    RawUdp other;
    auto server = nettest::startServer(64);
    auto client = nettest::startClient(peer.port());
    const int toServer = server->getSocket().getLocalPort();
    const int toClient = client->getSocket().getLocalPort();
    const std::vector<Datagram> datagrams = {
        {&other, toServer, {'G', 'E', 'T', ' ', '/', ' ', 'H', 'T', 'T', 'P'}, "type 20564, not a request"},
        {&other, toClient, framed(intBytes(666), 1000000, 1), "from 127.0.0.1:" + std::to_string(other.port())},
        {&peer, toServer, {}, "message of 0 bytes, too short for its type"},
        {&peer, toServer, {1}, "message of 1 bytes, too short for its type"},
        {&peer, toServer, {0, 0, 0, 0, 0, 1, 0}, "message of 7 bytes, too short for its id"},
        {&peer, toServer, framed({}, 4, 2), "type 2, not a request"},
        {&peer, toServer, framed({}, 5, -3), "type -3, not a request"},
        {&peer, toServer, Bytes(65, 0), "datagram of 65 bytes"},
        {&peer, toServer, framed(Bytes(8, 0xFF), 6, 0), ""},  // a string length of 2^64 - 1
        {&other, toServer, framed(intBytes(41), 7, 0), "[Warning] cannot add client at message reception!"},
        {&peer, toServer, framed(intBytes(40), 8, 1), ""},  // asks no acknowledgement
        {&peer, toClient, framed(intBytes(7), 7, 1), ""},
        {&peer, toClient, framed(intBytes(6), 6, 1), ""},
        {&peer, toClient, {}, "message of 0 bytes, too short for its id and type"},
        {&peer, toClient, {1, 2, 3}, "message of 3 bytes, too short for its id and type"},
        {&peer, toClient, framed({}, 50, 9), "unknown type 9"},
        {&peer, toClient, Bytes(8083, 0xAB), "datagram of 8083 bytes"},
        {&peer, toClient, framed({}, 3, 0), ""},  // asks an acknowledgement, which the client never sends
        {&peer, toClient, framed({}, 11, 2), "client got ACK for: 11"},
    };
    for (const Datagram& d : datagrams) {
        d.from->sendTo(d.to, d.bytes);
    }
    ASSERT_TRUE(waitUntil([&] { return server->countPendingRequests() == 3 && client->countAcknowledgements() == 1; }));
    std::unique_ptr<Buffer> request(server->feedRequest());
    std::string text;
    ASSERT_TRUE(request);
    EXPECT_TRUE(request->getUsed() == 8 && !request->get(text));
    EXPECT_EQ(nettest::feedInt(*server), 41);
    EXPECT_EQ(nettest::feedInt(*server), 40);
    Buffer state(64);
    uint64_t id = 0;
    int value = 0;
    ASSERT_TRUE(client->readLastServer(state, id));
    EXPECT_TRUE(id == 7 && state.get(value) && value == 7);

    state.clear();
    state.add(3);
    server->broadcastMessageNACK(state);
    Bytes got;
    EXPECT_TRUE(peer.receive(got, 5000) && got == framed({}, 6, 2));
    EXPECT_TRUE(peer.receive(got, 5000) && got == framed(intBytes(3), 0, 1));
    EXPECT_FALSE(peer.receive(got, 100) || other.receive(got, 0)) << got.size();
    client->endReadPoolLastServer();
    server->releaseClients();
    EXPECT_FALSE(server->isClientActive(0));
    for (const Datagram& d : datagrams) {
        EXPECT_NE(log.text().find(d.line), std::string::npos) << d.line;
    }
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos) << log.text();
}

TEST(ServerClientTest, FramingThatDoesNotFitIsReportedAndSentAllTheSame)
{
    CaptureStdout log;
    RawUdp fakeServer;
    auto client = nettest::startClient(fakeServer.port());
    // Room for neither the id nor the type, then for the id alone: the id
    // counts once it is written.
    Buffer noId(12);
    Buffer noType(17);
    noId.add(uint64_t{77});
    noType.add(uint64_t{77});
    Bytes got;
    EXPECT_TRUE(client->writeServerACK(noId) && fakeServer.receive(got, 5000) && got.size() == 8);
    EXPECT_EQ(client->getMessageId(), 0u);
    EXPECT_TRUE(client->writeServerNACK(noType) && fakeServer.receive(got, 5000) && got.size() == 16);
    EXPECT_EQ(client->getMessageId(), 1u);
    client->endReadPoolLastServer();
    for (const char* line : {"[ERROR] buffer to small for sending message in operation / id",
                             "[ERROR] message to small for writing to server in ACK operation !",
                             "[ERROR] message to small for writing to server in NACK operation !"}) {
        EXPECT_NE(log.text().find(line), std::string::npos) << line;
    }
}

TEST(ServerClientTest, StartAndStopInEveryOrderLeaveNothingBehind)
{
    CaptureStdout log;
    // Counted after a first round: a sanitizer runtime starts a helper thread
    // of its own when the process makes its first thread.
    std::vector<std::size_t> before;
    for (int round = 0; round < 25; ++round) {
        before = round == 1 ? nettest::census() : before;
        auto server = nettest::startServer();
        auto client = nettest::startClient(server->getSocket().getLocalPort());
        Buffer request(32);
        request.add(round);
        client->writeServerACK(request);
        ASSERT_TRUE(waitUntil([&] { return client->countAcknowledgements() == 1; }));
        EXPECT_EQ(nettest::feedInt(*server), round);
        if (round % 4 == 2) {
            server.reset();  // destructors stop and join on their own
            client.reset();
            continue;
        }
        if (round % 4 == 0) {
            client->endReadPoolLastServer();  // so ended twice, which is harmless
        }
        server->endReadPoolClients();
        client->endReadPoolLastServer();
        if (round % 4 == 3) {  // reopened and restarted on the same objects
            ASSERT_TRUE(server->initConnection() && server->initReadPoolClients());
            client->setPort(server->getSocket().getLocalPort());
            ASSERT_TRUE(client->initConnection() && client->initReadPoolLastServer());
        }
    }
    EXPECT_EQ(nettest::census(), before);  // threads, descriptors, objects
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos) << log.text();
}

}  // namespace
