#include "network/NetworkManager.h"
#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

using korvel::Buffer;
using korvel::Client;
using korvel::Server;
using nettest::Bytes;
using nettest::framed;
using nettest::intBytes;
using nettest::RawUdp;
using nettest::waitUntil;

namespace {

struct Datagram {
    const RawUdp* from;
    Bytes bytes;
    std::string line;  // what the receiver logs about it, if anything
};

TEST(ServerClientTest, RequestIsAcknowledgedAndQueuedAndStateReachesTheClient)
{
    ASSERT_TRUE(korvel::NetworkManager::getInstance().init());
    CaptureStdout log;
    auto server = nettest::startServer();
    auto client = nettest::startClient(server->getSocket().getLocalPort());
    // Refusals leave the running agents as they are.
    Server clash(1);
    Client nowhere;  // no server address: nothing to resolve
    clash.setPort(server->getSocket().getLocalPort());
    nowhere.setPort(4000);
    EXPECT_FALSE(server->initReadPoolClients() || client->initReadPoolLastServer());
    EXPECT_FALSE(clash.initConnection() || clash.initReadPoolClients());
    EXPECT_FALSE(nowhere.initConnection() || nowhere.initReadPoolLastServer());

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
    for (const char* line : {"[ERROR] server is already reading clients in pooling !", "Unknown host",
                             "[ERROR] client is already reading server in pooling !",
                             "[ERROR] bind() for opening socket entrance", "[Information] client got ACK for: 0"}) {
        EXPECT_NE(log.text().find(line), std::string::npos) << line;
    }
}

TEST(ServerClientTest, ClientKeepsTheFreshestStateOfItsServerAndDropsTheRest)
{
    CaptureStdout log;
    RawUdp fakeServer;
    RawUdp stranger;
    auto client = nettest::startClient(fakeServer.port());
    const std::vector<Datagram> datagrams = {
        // A stranger's huge id would lock every later state out.
        {&stranger, framed(intBytes(666), 1000000, 1), "from 127.0.0.1:" + std::to_string(stranger.port())},
        {&fakeServer, framed(intBytes(7), 7, 1), ""},
        {&fakeServer, framed(intBytes(6), 6, 1), ""},
        {&fakeServer, {}, "message of 0 bytes, too short"},
        {&fakeServer, {1, 2, 3}, "message of 3 bytes, too short"},
        {&fakeServer, framed({}, 50, 9), "unknown type 9"},
        {&fakeServer, Bytes(8083, 0xAB), "datagram of 8083 bytes"},
        {&fakeServer, framed({}, 3, 0), ""},  // asks an acknowledgement, which the client never sends
        {&fakeServer, framed({}, 11, 2), "client got ACK for: 11"},
    };
    for (const Datagram& d : datagrams) {
        d.from->sendTo(client->getSocket().getLocalPort(), d.bytes);
    }
    ASSERT_TRUE(waitUntil([&] { return client->countAcknowledgements() == 1; }));
    Buffer read(8082);
    uint64_t id = 0;
    int value = 0;
    ASSERT_TRUE(client->readLastServer(read, id));
    EXPECT_TRUE(id == 7 && read.get(value) && value == 7);
    Bytes none;
    EXPECT_FALSE(fakeServer.receive(none, 50));

    client->endReadPoolLastServer();
    for (const Datagram& d : datagrams) {
        EXPECT_NE(log.text().find(d.line), std::string::npos) << d.line;
    }
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos) << log.text();
}

// With its one slot taken, the server still queues a second sender's
// requests but neither acknowledges them nor broadcasts to it.
TEST(ServerClientTest, ServerDropsWhatIsNotARequestAndServesItsOneClient)
{
    CaptureStdout log;
    auto server = nettest::startServer(64);
    const int port = server->getSocket().getLocalPort();
    RawUdp other;
    RawUdp peer;
    const std::vector<Datagram> datagrams = {
        // Garbage first from elsewhere must not take the only slot.
        {&other, {'G', 'E', 'T', ' ', '/', ' ', 'H', 'T', 'T', 'P'}, "type 20564, not a request"},
        {&peer, {}, "message of 0 bytes, too short for its type"},
        {&peer, {1}, "message of 1 bytes, too short for its type"},
        {&peer, {0, 0, 0, 0, 0, 1, 0}, "too short for its id"},
        {&peer, framed({}, 4, 2), "type 2, not a request"},
        {&peer, framed({}, 5, -3), "type -3, not a request"},
        {&peer, Bytes(65, 0), "datagram of 65 bytes"},
        {&peer, framed(Bytes(8, 0xFF), 6, 0), ""},  // a string length of 2^64 - 1
        {&other, framed(intBytes(41), 7, 0), "[Warning] cannot add client at message reception!"},
        {&peer, framed(intBytes(40), 8, 1), ""},  // asks no acknowledgement
    };
    for (const Datagram& d : datagrams) {
        d.from->sendTo(port, d.bytes);
    }
    ASSERT_TRUE(waitUntil([&] { return server->countPendingRequests() == 3; }));
    Bytes got;
    ASSERT_TRUE(peer.receive(got, 5000));
    EXPECT_EQ(got, framed({}, 6, 2));
    std::unique_ptr<Buffer> request(server->feedRequest());
    std::string text;
    ASSERT_TRUE(request);
    EXPECT_EQ(request->getUsed(), 8u);
    EXPECT_FALSE(request->get(text));
    EXPECT_EQ(nettest::feedInt(*server), 41);
    EXPECT_EQ(nettest::feedInt(*server), 40);

    Buffer state(64);
    state.add(3);
    server->broadcastMessageNACK(state);
    ASSERT_TRUE(peer.receive(got, 5000));
    EXPECT_EQ(got, framed(intBytes(3), 0, 1));  // the next datagram after the one acknowledgement
    EXPECT_FALSE(other.receive(got, 100));
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
    Client client;
    client.setServerAddress("localhost");
    client.setPort(fakeServer.port());
    ASSERT_TRUE(client.initConnection());
    // Room for neither the id nor the type, then for the id alone: the id
    // counts once it is written.
    Buffer noId(12);
    Buffer noType(17);
    noId.add(uint64_t{77});
    noType.add(uint64_t{77});
    Bytes got;
    EXPECT_TRUE(client.writeServerACK(noId) && fakeServer.receive(got, 5000) && got.size() == 8);
    EXPECT_EQ(client.getMessageId(), 0u);
    EXPECT_TRUE(client.writeServerNACK(noType) && fakeServer.receive(got, 5000) && got.size() == 16);
    EXPECT_EQ(client.getMessageId(), 1u);
    const std::string id = "[ERROR] buffer to small for sending message in operation / id\n";
    EXPECT_EQ(log.text(), id + "[ERROR] message to small for writing to server in ACK operation !\n" + id +
                              "[ERROR] message to small for writing to server in NACK operation !\n");
}

TEST(ServerClientTest, StartAndStopInEveryOrderLeaveNothingBehind)
{
    CaptureStdout log;
    // Counted after a first round: a sanitizer runtime starts a helper thread
    // of its own when the process makes its first thread.
    std::vector<std::size_t> before;
    for (int round = 0; round < 25; ++round) {
        if (round == 1) {
            before = nettest::census();
        }
        auto server = nettest::startServer();
        auto client = nettest::startClient(server->getSocket().getLocalPort());
        Buffer request(32);
        request.add(round);
        client->writeServerACK(request);
        ASSERT_TRUE(waitUntil([&] { return client->countAcknowledgements() == 1; }));
        EXPECT_EQ(nettest::feedInt(*server), round);
        switch (round % 4) {
        case 0:
            client->endReadPoolLastServer();
            server->endReadPoolClients();
            break;
        case 1:
            server->endReadPoolClients();
            client->endReadPoolLastServer();
            break;
        case 2:
            server.reset();  // destructors stop and join on their own
            client.reset();
            break;
        default:
            // Stopped, reopened and restarted on the same objects.
            server->endReadPoolClients();
            ASSERT_TRUE(server->initConnection() && server->initReadPoolClients());
            client->endReadPoolLastServer();
            client->setPort(server->getSocket().getLocalPort());
            ASSERT_TRUE(client->initConnection() && client->initReadPoolLastServer());
            break;
        }
    }
    EXPECT_EQ(nettest::census(), before);  // threads, descriptors, objects
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos) << log.text();
}

}  // namespace
