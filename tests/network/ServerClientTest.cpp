#include "network/Client.h"
#include "network/NetworkManager.h"
#include "network/Server.h"
#include "NetTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using korvel::Buffer;
using korvel::Client;
using korvel::ClientStub;
using korvel::Server;
using nettest::framed;
using nettest::LineSink;
using nettest::RawUdp;
using nettest::waitUntil;

namespace {

std::unique_ptr<Server> startServer(int maxClients = 1, uint64_t bufferSize = 8082)
{
    auto server = std::make_unique<Server>(maxClients);
    server->setBufferSize(bufferSize);
    server->setPort(0);
    EXPECT_TRUE(server->initConnection());
    EXPECT_TRUE(server->initReadPoolClients());
    return server;
}

std::unique_ptr<Client> startClient(int port)
{
    auto client = std::make_unique<Client>();
    client->setServerAddress("127.0.0.1");
    client->setPort(port);
    EXPECT_TRUE(client->initConnection());
    EXPECT_TRUE(client->initReadPoolLastServer());
    return client;
}

// Pops one request and gives its int payload, or -1.
int feedInt(Server& server)
{
    std::unique_ptr<Buffer> request(server.feedRequest());
    int value = -1;
    if (!request || !request->get(value)) {
        return -1;
    }
    return value;
}

TEST(ServerClientTest, RequestIsAcknowledgedQueuedAndStateReachesTheClient)
{
    ASSERT_TRUE(korvel::NetworkManager::getInstance().init());
    LineSink log;
    auto server = startServer();
    const int port = server->getSocket().getLocalPort();
    auto client = startClient(port);

    Buffer request(8082);
    request.add(Matrix4D::getI4());
    request.add(static_cast<short>(1));
    ASSERT_TRUE(client->writeServerACK(request));
    EXPECT_EQ(request.getUsed(), 64u + 2 + 10);
    EXPECT_EQ(client->getMessageId(), 1u);
    ASSERT_TRUE(waitUntil([&] { return server->hasRequest() && client->countAcknowledgements() == 1; }));
    EXPECT_EQ(client->getLastAcknowledged(), 0u);
    std::unique_ptr<Buffer> got(server->feedRequest());
    ASSERT_TRUE(got);
    EXPECT_EQ(got->getCapacity(), 8082u);
    EXPECT_EQ(got->getUsed(), 66u);  // the framing is gone
    short code = 0;
    Matrix4D pose;
    EXPECT_TRUE(got->get(code));
    EXPECT_EQ(code, 1);
    EXPECT_TRUE(got->get(pose));
    EXPECT_EQ(pose.m[15], 1.0f);
    EXPECT_EQ(server->feedRequest(), nullptr);
    EXPECT_TRUE(server->isClientActive(0));

    // A state: the first id the server frames is 0, which the empty slot
    // refuses; the next one passes.
    Buffer state(8082);
    Buffer read(8082);
    uint64_t id = 99;
    for (int frame = 0; frame < 2; ++frame) {
        state.clear();
        state.add(1000 + frame);
        ASSERT_TRUE(server->broadcastMessageNACK(state));
    }
    ASSERT_TRUE(waitUntil([&] { return client->readLastServer(read, id); }));
    EXPECT_EQ(id, 1u);
    int value = 0;
    EXPECT_TRUE(read.get(value));
    EXPECT_EQ(value, 1001);
    EXPECT_FALSE(client->readLastServer(read));
    state.clear();
    state.add(7);
    EXPECT_TRUE(server->sendMessageNACK(state, 0));
    EXPECT_FALSE(server->sendMessageNACK(state, 1));
    EXPECT_FALSE(server->sendMessage(state, -1));

    client->endReadPoolLastServer();
    server->endReadPoolClients();
    log.restore();
    EXPECT_TRUE(log.has("[Information] Server starts listening"));
    EXPECT_TRUE(log.has("[Information] client starts listening"));
    EXPECT_TRUE(log.has("[Information] size buffer: 8082"));
    EXPECT_TRUE(log.has("[Success] server got message! Type is: 0"));
    EXPECT_TRUE(log.has("[Information] server got message! Id is: 0"));
    EXPECT_TRUE(log.has("[Information] client got ACK for: 0"));
    EXPECT_TRUE(log.has("[Information] client: 127.0.0.1 Port: "));
    EXPECT_TRUE(log.has("[Information] sender: 127.0.0.1 Port: " + std::to_string(port)));
    EXPECT_TRUE(log.has("[Information] client requested end of pooling"));
    EXPECT_TRUE(log.has("[Information] client is ending pooling"));
    EXPECT_TRUE(log.has("[Information] server is ending pooling"));
    // A requested stop is not a failure.
    EXPECT_FALSE(log.has("ERROR")) << log.all();
}

TEST(ServerClientTest, ClientKeepsTheFreshestIdAndOnlyListensToItsServer)
{
    LineSink log;
    RawUdp fakeServer;
    RawUdp stranger;
    auto client = startClient(fakeServer.port());
    const int clientPort = client->getSocket().getLocalPort();
    Buffer read(8082);
    uint64_t id = 0;

    auto state = [](int value, uint64_t id) {
        std::vector<unsigned char> payload(4);
        std::memcpy(payload.data(), &value, 4);
        return framed(payload, id, 1);
    };
    // A stranger's state with a huge id would lock every later one out.
    stranger.sendTo(clientPort, state(666, 1000000));
    fakeServer.sendTo(clientPort, state(7, 7));
    fakeServer.sendTo(clientPort, state(6, 6));
    // Then hostile shapes from the server's own address.
    fakeServer.sendTo(clientPort, {});
    fakeServer.sendTo(clientPort, {1, 2, 3});
    fakeServer.sendTo(clientPort, framed({}, 50, 9));
    fakeServer.sendTo(clientPort, std::vector<unsigned char>(8083, 0xAB));
    fakeServer.sendTo(clientPort, framed({}, 3, 0));   // asks an acknowledgement: none is sent
    fakeServer.sendTo(clientPort, framed({}, 11, 2));  // an acknowledgement
    ASSERT_TRUE(waitUntil([&] { return client->countAcknowledgements() == 1; }));
    ASSERT_TRUE(client->readLastServer(read, id));
    EXPECT_EQ(id, 7u);
    int value = 0;
    read.get(value);
    EXPECT_EQ(value, 7);
    std::vector<unsigned char> none;
    EXPECT_FALSE(fakeServer.receive(none, 50));

    client->endReadPoolLastServer();
    log.restore();
    EXPECT_TRUE(log.has("[Warning] client dropped a message from 127.0.0.1:" + std::to_string(stranger.port())));
    EXPECT_EQ(log.count("too short for its id and type"), 2u);
    EXPECT_TRUE(log.has("[Warning] client dropped a message of unknown type 9"));
    EXPECT_TRUE(log.has("[Warning] datagram of 8083 bytes from 127.0.0.1:" + std::to_string(fakeServer.port()) +
                        " is longer than the buffer of 8082 bytes, dropped"));
    EXPECT_TRUE(log.has("[Information] client got ACK for: 11"));
    EXPECT_FALSE(log.has("ERROR")) << log.all();
}

TEST(ServerClientTest, ServerSurvivesHostileDatagramsAndStillServes)
{
    LineSink log;
    auto server = startServer(1, 64);
    const int port = server->getSocket().getLocalPort();
    RawUdp peer;
    RawUdp scanner;  // garbage first from elsewhere must not take the only slot
    scanner.sendTo(port, {'G', 'E', 'T', ' ', '/', ' ', 'H', 'T', 'T', 'P'});
    std::vector<unsigned char> hugeString(8, 0xFF);  // a string length of 2^64 - 1
    peer.sendTo(port, {});
    peer.sendTo(port, {0x01});
    peer.sendTo(port, {0, 0, 0, 0, 0, 1, 0});
    peer.sendTo(port, framed({}, 4, 2));
    peer.sendTo(port, framed({}, 5, -3));
    peer.sendTo(port, std::vector<unsigned char>(65, 0));
    peer.sendTo(port, framed(hugeString, 6, 0));
    ASSERT_TRUE(waitUntil([&] { return server->hasRequest(); }));
    std::vector<unsigned char> ack;
    ASSERT_TRUE(peer.receive(ack, 2000));
    EXPECT_EQ(ack, framed({}, 6, 2));

    // The only request queued is the last; reading its string fails cleanly.
    std::unique_ptr<Buffer> request(server->feedRequest());
    ASSERT_TRUE(request);
    EXPECT_EQ(request->getUsed(), 8u);
    std::string text;
    EXPECT_FALSE(request->get(text));
    EXPECT_FALSE(server->hasRequest());

    int value = 41;
    std::vector<unsigned char> payload(4);
    std::memcpy(payload.data(), &value, 4);
    peer.sendTo(port, framed(payload, 7, 1));
    ASSERT_TRUE(waitUntil([&] { return server->hasRequest(); }));
    EXPECT_EQ(feedInt(*server), 41);
    EXPECT_FALSE(peer.receive(ack, 50));  // type 1 asks no acknowledgement

    server->endReadPoolClients();
    log.restore();
    EXPECT_EQ(log.count("too short for its type"), 2u) << log.all();
    EXPECT_TRUE(log.has("[Warning] server dropped a message of type 20564, not a request"));  // "TP"
    EXPECT_FALSE(log.has("[Warning] cannot add client at message reception!"));
    EXPECT_EQ(log.count("too short for its id"), 1u);
    EXPECT_TRUE(log.has("[Warning] server dropped a message of type 2, not a request"));
    EXPECT_TRUE(log.has("[Warning] server dropped a message of type -3, not a request"));
    EXPECT_TRUE(log.has("[Warning] datagram of 65 bytes from 127.0.0.1:" + std::to_string(peer.port()) +
                        " is longer than the buffer of 64 bytes, dropped"));
    EXPECT_FALSE(log.has("ERROR")) << log.all();
}

TEST(ServerClientTest, SecondClientIsServedButNeitherAcknowledgedNorBroadcastTo)
{
    LineSink log;
    auto server = startServer(1);
    const int port = server->getSocket().getLocalPort();
    RawUdp first;
    RawUdp second;
    std::vector<unsigned char> got;
    first.sendTo(port, framed({}, 0, 0));
    ASSERT_TRUE(first.receive(got, 2000));
    second.sendTo(port, framed({}, 0, 0));
    ASSERT_TRUE(waitUntil([&] { return server->countPendingRequests() == 2; }));

    Buffer state(64);
    state.add(3);
    server->broadcastMessageNACK(state);
    ASSERT_TRUE(first.receive(got, 2000));
    EXPECT_EQ(got.size(), 14u);
    EXPECT_FALSE(second.receive(got, 100));

    ClientStub known;
    known.setAddress(nettest::loopback(first.port()));
    int index = -1;
    EXPECT_TRUE(server->checkAddClient(known, index));
    EXPECT_EQ(index, 0);
    ClientStub other;
    other.setAddress(nettest::loopback(second.port()));
    EXPECT_FALSE(server->checkAddClient(other, index));

    server->releaseClients();
    EXPECT_FALSE(server->isClientActive(0));
    log.restore();
    EXPECT_EQ(log.count("[Warning] cannot add client at message reception!"), 1u);
    EXPECT_TRUE(log.has("[Information] server requested end of pooling"));
}

TEST(ServerClientTest, FramingThatDoesNotFitIsReportedAndSentAllTheSame)
{
    LineSink log;
    RawUdp fakeServer;
    Client client;
    client.setServerAddress("localhost");
    client.setPort(fakeServer.port());
    ASSERT_TRUE(client.initConnection());
    std::vector<unsigned char> got;

    Buffer noId(12);
    noId.add(static_cast<uint64_t>(77));
    client.writeServerACK(noId);
    ASSERT_TRUE(fakeServer.receive(got, 2000));
    EXPECT_EQ(got.size(), 8u);
    EXPECT_EQ(client.getMessageId(), 0u);

    Buffer noType(17);
    noType.add(static_cast<uint64_t>(77));
    client.writeServerNACK(noType);
    ASSERT_TRUE(fakeServer.receive(got, 2000));
    EXPECT_EQ(got.size(), 16u);
    EXPECT_EQ(client.getMessageId(), 1u);

    // The client never acknowledges, whatever it is asked.
    Buffer any(8);
    client.manageMessageACK(any, 5);
    EXPECT_FALSE(fakeServer.receive(got, 50));

    // Server side: no active client means nothing is framed or sent.
    Server server(1);
    Buffer state(16);
    state.add(1);
    EXPECT_FALSE(server.sendMessageNACK(state, 0));
    EXPECT_EQ(state.getUsed(), 4u);
    Buffer tight(6);
    tight.add(1);
    EXPECT_TRUE(server.broadcastMessageNACK(tight));

    log.restore();
    EXPECT_EQ(log.count("[ERROR] buffer to small for sending message in operation / id"), 3u);
    EXPECT_TRUE(log.has("[ERROR] message to small for writing to server in ACK operation !"));
    EXPECT_TRUE(log.has("[ERROR] message to small for writing to server in NACK operation !"));
    EXPECT_TRUE(log.has("[ERROR] message to small for broadcasting to clients in NACK operation !"));
}

TEST(ServerClientTest, FailuresToOpenOrStartAreReported)
{
    LineSink log;
    Server::threadRead(nullptr);
    Client::threadRead(nullptr);

    Client unknown;
    unknown.setServerAddress("no-such-host.invalid");
    unknown.setPort(4000);
    EXPECT_FALSE(unknown.initConnection());
    EXPECT_FALSE(unknown.initReadPoolLastServer());

    auto first = startServer();
    Server clash(1);
    clash.setPort(first->getSocket().getLocalPort());
    EXPECT_FALSE(clash.initConnection());
    EXPECT_FALSE(clash.initReadPoolClients());
    EXPECT_FALSE(first->initReadPoolClients());
    Server badPort(1);
    badPort.setPort(70000);
    EXPECT_FALSE(badPort.initConnection());
    EXPECT_FALSE(first->listen());
    ClientStub stub;
    EXPECT_FALSE(first->accept(stub));

    auto client = startClient(first->getSocket().getLocalPort());
    EXPECT_FALSE(client->initReadPoolLastServer());
    client.reset();
    first.reset();
    log.restore();
    EXPECT_TRUE(log.has("[ERROR] Server is not instantiated in reading thread: "));
    EXPECT_TRUE(log.has("[ERROR] client is null in reading thread: "));
    EXPECT_TRUE(log.has("Unknown host"));
    EXPECT_TRUE(log.has("[ERROR] bind() for opening socket entrance"));
    EXPECT_TRUE(log.has("[ERROR] server is already reading clients in pooling !"));
    EXPECT_TRUE(log.has("[ERROR] client is already reading server in pooling !"));
    EXPECT_TRUE(log.has("[ERROR] client connection in accepting socket is failing with error code "));
    EXPECT_TRUE(log.has("[Information] client requested end of pooling"));
}

TEST(ServerClientTest, StartAndStopInEveryOrderLeaveNothingBehind)
{
    LineSink log({"ERROR"});
    // Counted after a first round: a sanitizer runtime starts a helper thread
    // of its own when the process makes its first thread.
    std::size_t threads = 0;
    std::size_t descriptors = 0;
    std::size_t objects = 0;
    for (int round = 0; round < 25; ++round) {
        if (round == 1) {
            threads = nettest::liveThreads();
            descriptors = nettest::openDescriptors();
            objects = Object::countInstances();
        }
        auto server = startServer();
        auto client = startClient(server->getSocket().getLocalPort());
        Buffer request(32);
        request.add(round);
        client->writeServerACK(request);
        ASSERT_TRUE(waitUntil([&] { return client->countAcknowledgements() == 1; }));
        EXPECT_EQ(feedInt(*server), round);
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
            // Stopped, reopened, restarted on the same objects.
            server->endReadPoolClients();
            ASSERT_TRUE(server->initConnection());
            ASSERT_TRUE(server->initReadPoolClients());
            client->endReadPoolLastServer();
            client->setPort(server->getSocket().getLocalPort());
            ASSERT_TRUE(client->initConnection());
            ASSERT_TRUE(client->initReadPoolLastServer());
            break;
        }
    }
    EXPECT_EQ(nettest::liveThreads(), threads);
    EXPECT_EQ(nettest::openDescriptors(), descriptors);
    EXPECT_EQ(Object::countInstances(), objects);
    log.restore();
    EXPECT_TRUE(log.lines().empty()) << log.all();
}

}  // namespace
