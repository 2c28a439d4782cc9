#include "NetTestSupport.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <sys/time.h>

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

void expectLogged(const std::string& log, const std::vector<std::string>& lines)
{
    for (const std::string& line : lines) {
        EXPECT_NE(log.find(line), std::string::npos) << line;
    }
}

// Each datagram's line was logged, and nothing went wrong on the way.
void expectDatagramsLogged(const std::string& log, const std::vector<Datagram>& datagrams)
{
    for (const Datagram& d : datagrams) {
        EXPECT_NE(log.find(d.line), std::string::npos) << d.line;
    }
    EXPECT_EQ(log.find("ERROR"), std::string::npos) << log;
}

// A request from the client, acknowledged as the given count and then taken by the server.
void expectRequestArrives(korvel::Server& server, korvel::Client& client, int value, uint64_t acknowledgements)
{
    Buffer request(32);
    request.add(value);
    client.writeServerACK(request);
    ASSERT_TRUE(waitUntil([&] { return client.countAcknowledgements() == acknowledgements; }));
    EXPECT_EQ(nettest::feedInt(server), value);
}

TEST(ServerClientTest, RequestIsAcknowledgedAndQueuedAndStateReachesTheClient)
{
    CaptureStdout log;
    auto server = nettest::startServer();
    auto client = nettest::startClient(server->getSocket().getLocalPort());
    // Refusals leave the running agents as they are.
    EXPECT_FALSE(server->initReadPoolClients() || client->initReadPoolLastServer());

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
    expectLogged(log.text(), {"[ERROR] server is already reading clients in pooling !",
                             "[ERROR] client is already reading server in pooling !"});
}

// Whatever a datagram holds, its sender takes the first free slot before
// its type is looked at, and every message with a type and an id is queued;
// only a type-0 message from the slot's holder is acknowledged.
TEST(ServerClientTest, EverySenderIsFoundOrAddedAndEveryFramedMessageQueued)
{
    CaptureStdout log;
    RawUdp first;  // takes the only slot, with a message that is no request
    RawUdp second;
    auto server = nettest::startServer(64);
    const int to = server->getSocket().getLocalPort();
    const std::vector<Datagram> datagrams = {
        {&first, to, framed({}, 4, 2), "[Success] server got message! Type is: 2"},
        {&second, to, {'G', 'E', 'T', ' ', '/', ' ', 'H', 'T', 'T', 'P'}, "Type is: 20564"},
        {&second, to, framed(intBytes(41), 7, 0), "[Warning] cannot add client at message reception!"},
        {&first, to, framed({}, 5, -3), "[Success] server got message! Type is: -3"},
        {&first, to, {}, "message of 0 bytes, too short for its type"},
        {&first, to, {1}, "message of 1 bytes, too short for its type"},
        {&first, to, {0, 0, 0, 0, 0, 1, 0}, "message of 7 bytes, too short for its id"},
        {&first, to, Bytes(65, 0), "datagram of 65 bytes"},
        {&first, to, framed(Bytes(8, 0xFF), 6, 0), "[Information] server got message! Id is: 6"},
        {&first, to, framed(intBytes(40), 8, 1), "Id is: 8"},  // asks no acknowledgement
    };
    for (const Datagram& d : datagrams) {
        d.from->sendTo(d.to, d.bytes);
    }
    // The last one queued is the last one sent.
    ASSERT_TRUE(waitUntil([&] { return server->countPendingRequests() == 6; }));
    for (const uint64_t payload : {0, 0}) {  // types 2 and 20564
        std::unique_ptr<Buffer> request(server->feedRequest());
        ASSERT_TRUE(request && request->getUsed() == payload);
    }
    EXPECT_EQ(nettest::feedInt(*server), 41);
    for (const uint64_t payload : {0, 8}) {
        std::unique_ptr<Buffer> request(server->feedRequest());
        std::string text;
        ASSERT_TRUE(request);
        EXPECT_TRUE(request->getUsed() == payload && !request->get(text));  // a string length of 2^64 - 1
    }
    EXPECT_EQ(nettest::feedInt(*server), 40);

    Buffer state(64);
    state.add(3);
    server->broadcastMessageNACK(state);
    Bytes got;
    EXPECT_TRUE(first.receive(got, 5000) && got == framed({}, 6, 2));
    EXPECT_TRUE(first.receive(got, 5000) && got == framed(intBytes(3), 0, 1));
    EXPECT_FALSE(first.receive(got, 100) || second.receive(got, 0)) << got.size();
    EXPECT_TRUE(server->isClientActive(0));
    server->releaseClients();
    EXPECT_FALSE(server->isClientActive(0));
    expectDatagramsLogged(log.text(), datagrams);
}

// A stranger must not push the client's freshest id out of reach.
TEST(ServerClientTest, HostileDatagramsAreDroppedAndTheClientStillServes)
{
    CaptureStdout log;
    RawUdp peer;  // the client's server
    RawUdp other;
    auto client = nettest::startClient(peer.port());
    const int to = client->getSocket().getLocalPort();
    const std::vector<Datagram> datagrams = {
        {&other, to, framed(intBytes(666), 1000000, 1), "from 127.0.0.1:" + std::to_string(other.port())},
        {&peer, to, framed(intBytes(7), 7, 1), ""},
        {&peer, to, framed(intBytes(6), 6, 1), ""},
        {&peer, to, {}, "message of 0 bytes, too short for its id and type"},
        {&peer, to, {1, 2, 3}, "message of 3 bytes, too short for its id and type"},
        {&peer, to, framed({}, 50, 9), "unknown type 9"},
        {&peer, to, Bytes(8083, 0xAB), "datagram of 8083 bytes"},
        {&peer, to, framed({}, 3, 0), ""},  // asks an acknowledgement, which the client never sends
        {&peer, to, framed({}, 11, 2), "client got ACK for: 11"},
    };
    for (const Datagram& d : datagrams) {
        d.from->sendTo(d.to, d.bytes);
    }
    ASSERT_TRUE(waitUntil([&] { return client->countAcknowledgements() == 1; }));
    Buffer state(64);
    uint64_t id = 0;
    int value = 0;
    ASSERT_TRUE(client->readLastServer(state, id));
    EXPECT_TRUE(id == 7 && state.get(value) && value == 7);
    Bytes got;
    EXPECT_FALSE(peer.receive(got, 100) || other.receive(got, 0)) << got.size();
    client->endReadPoolLastServer();
    expectDatagramsLogged(log.text(), datagrams);
}

// Without a reading thread, the main thread can receive a datagram itself;
// once the socket is closed the receive fails with its line.
TEST(ServerClientTest, ReceivingWithoutTheReadingThreadTakesTheSenderInANewStub)
{
    CaptureStdout log;
    RawUdp peer;
    korvel::Server server(1);
    server.setPort(0);
    ASSERT_TRUE(server.initConnection());
    peer.sendTo(server.getSocket().getLocalPort(), framed(intBytes(5), 9, 3));
    Buffer received(64);
    int index = -1;
    ASSERT_TRUE(server.receiveMessage(received, index));
    EXPECT_EQ(index, 0);
    EXPECT_EQ(received.getUsed(), 14u);
    server.sendMessage(received, index);  // back to the sender the stub found
    Bytes got;
    EXPECT_TRUE(peer.receive(got, 5000) && got == framed(intBytes(5), 9, 3));

    ASSERT_TRUE(server.initReadPoolClients());
    server.endReadPoolClients();
    EXPECT_FALSE(server.receiveMessage(received, index));
    EXPECT_EQ(index, -1);
    EXPECT_NE(log.text().find("[ERROR] recvfrom() is failing"), std::string::npos) << log.text();
}

// A reading thread holds the socket: neither agent reopens it under the
// thread. One that ended after a failed receive is joined and started anew.
TEST(ServerClientTest, SocketsAreNotReopenedUnderAReaderAndADeadReaderRestarts)
{
    CaptureStdout log;
    auto server = nettest::startServer();
    auto client = nettest::startClient(server->getSocket().getLocalPort());
    expectRequestArrives(*server, *client, 76, 1);  // the client takes the server's slot
    const int serverHandle = server->getSocket().getHandle();
    const int clientHandle = client->getSocket().getHandle();
    EXPECT_FALSE(server->initConnection());
    EXPECT_FALSE(client->initConnection());
    EXPECT_EQ(server->getSocket().getHandle(), serverHandle);
    EXPECT_EQ(client->getSocket().getHandle(), clientHandle);

    // A receive that times out fails like any other, and ends each thread.
    // The time limit holds from the next receive on: a datagram (dropped by
    // the client as not its server's) gets each thread there.
    RawUdp waker;
    for (korvel::NetworkAgent* agent : {static_cast<korvel::NetworkAgent*>(server.get()),
                                        static_cast<korvel::NetworkAgent*>(client.get())}) {
        timeval brief{0, 20000};
        setsockopt(agent->getSocket().getHandle(), SOL_SOCKET, SO_RCVTIMEO, &brief, sizeof brief);
        waker.sendTo(agent->getSocket().getLocalPort(), {});
        ASSERT_TRUE(waitUntil([&] { return !agent->isReaderRunning(); }));
        timeval never{0, 0};
        setsockopt(agent->getSocket().getHandle(), SOL_SOCKET, SO_RCVTIMEO, &never, sizeof never);
    }
    EXPECT_TRUE(server->initReadPoolClients());
    EXPECT_TRUE(client->initReadPoolLastServer());
    expectRequestArrives(*server, *client, 77, 2);
    Buffer state(32);
    state.add(78);
    server->broadcastMessageNACK(state);
    state.clear();
    server->broadcastMessageNACK(state);  // id 1: the empty slot refuses id 0
    ASSERT_TRUE(waitUntil([&] { return client->readLastServer(state); }));
    client->endReadPoolLastServer();
    server->endReadPoolClients();
    expectLogged(log.text(), {"[ERROR] server cannot reopen its socket while reading",
                             "[ERROR] client cannot reconnect while reading", "[ERROR] socket cannot receive message!",
                             "[ERROR] Server cannot read client messages !",
                             "[ERROR] client cannot read server messages !"});
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
    expectLogged(log.text(), {"[ERROR] buffer to small for sending message in operation / id",
                             "[ERROR] message to small for writing to server in ACK operation !",
                             "[ERROR] message to small for writing to server in NACK operation !"});
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
        expectRequestArrives(*server, *client, round, 1);
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
    // A joined thread can still be listed for a moment while the kernel
    // finishes its exit.
    EXPECT_TRUE(waitUntil([&] { return nettest::census() == before; }));  // threads, descriptors, objects
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos) << log.text();
}

}  // namespace
