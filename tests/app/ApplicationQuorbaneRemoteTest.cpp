// Remote play without a window: the state update and the requests byte for
// byte, what hostile requests and updates do, both requests through real
// agents, and a soak in which a server and a client play through a lossy
// link.

#include "GameTesting.h"
#include "app/LogBuffer.h"
#include "network/Buffer.h"
#include "network/Client.h"
#include "network/Server.h"
#include "network/NetTestSupport.h"
#include "physics/PhysicsTesting.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <vector>

using game_testing::direction;
using game_testing::nearlyEqual;
using game_testing::point;
using game_testing::TestGame;
using korvel::ApplicationQuorbane;
using korvel::Buffer;
using physics_testing::AgedObject;
using nettest::waitUntil;

namespace {

// A server's state update, as updateRemote writes it.
void writeUpdate(TestGame& server, Buffer& update)
{
    server.updateRemoteSpheres(update);
    server.updateRemoteExplosions(update);
    server.updateRemoteBullets(update);
    server.updateRemoteViewer(update);
    server.updateRemotePosition(update);
}

// A client's reading of it, in showRemoteUpdates' order.
bool readUpdate(TestGame& client, Buffer& update)
{
    client.showRemoteImpacts(update);
    return client.showRemoteServer(update) && client.showRemoteBullets(update) &&
           client.showRemoteExplosions(update) && client.showRemoteSpheres(update);
}

Matrix4D pose(float angle, const Vector4D& at)
{
    Matrix4D m = Matrix4D::getI4();
    m.rotY(angle);
    m.rotX(0.5f * angle);
    m.setPosition(at.x, at.y, at.z);
    return m;
}

TEST(ApplicationQuorbaneRemoteTest, AnUpdateWithEverythingAliveFitsTheBufferOnceFramed)
{
    TestGame server;
    server.quiet();  // every rock alive
    for (int i = 0; i < ApplicationQuorbane::countBullets; ++i) {
        server.spawnBullet(point(0, 0, 0), direction(0, 0, -1), direction(0, 1, 0));
    }
    for (int i = 0; i < ApplicationQuorbane::countExplosions; ++i) {
        server.addExplosion(point(1, 2, 3));
    }
    Buffer full(8082);
    writeUpdate(server, full);
    ASSERT_TRUE(korvel::NetworkAgent().prepareMessageWithCode(full, 1));
    EXPECT_EQ(full.getUsed(), 8018u);
    EXPECT_LE(full.getUsed(), static_cast<uint64_t>(server.getBufferSize()));
}

TEST(ApplicationQuorbaneRemoteTest, TheClientShowsTheServersStateAndLooksThroughTheShipItSteers)
{
    std::srand(3);
    TestGame server;
    server.quiet();
    for (int i = 0; i < ApplicationQuorbane::countEnemies; i += 3) {
        server.getEnemy(i).die();
    }
    server.getEnemy(1).getMatrixObjectChange()->enlarge(4.0f);
    for (int i = 0; i < 7; ++i) {
        server.spawnBullet(point(static_cast<float>(i), 0, -10), direction(0, 1, -200), direction(0, 1, 0));
    }
    server.getBullet(2).die();
    for (int i = 0; i < 5; ++i) {
        server.addExplosion(point(0, static_cast<float>(i), -30));
    }
    server.getExplosion(1).die();
    server.getExplosion(3).update(0.15f);  // grown, aged
    server.getExplosion(3).update(0.15f);
    const Matrix4D shipPose = pose(0.7f, point(15, 10, -20));
    *server.getAvatar().getMatrixObjectChange() = shipPose;
    server.scene().rotY(0.4f);
    server.scene().moveIn(3.0f);

    TestGame client;
    AgedObject flash;
    client.getExplosion(3).setIncarnation(&flash);
    client.getBullet(40).alive();  // alive here, dead on the server
    Buffer update(8082);
    writeUpdate(server, update);
    // 65 bytes a live rock or bolt, 69 a live flash, 1 a dead one, 128 the eye and ship.
    EXPECT_EQ(update.getUsed(), 33u * 65 + 17 + 6u * 65 + 44 + 4u * 69 + 16 + 128);
    ASSERT_TRUE(readUpdate(client, update));
    EXPECT_EQ(update.getUsed(), 0u);

    for (int i = 0; i < ApplicationQuorbane::countEnemies; ++i) {
        ASSERT_EQ(client.getEnemy(i).isAlive, server.getEnemy(i).isAlive) << i;
        ASSERT_EQ(client.getBullet(i).isAlive, server.getBullet(i).isAlive) << i;  // as many bolts as rocks
        ASSERT_EQ(client.getExplosion(i % ApplicationQuorbane::countExplosions).isAlive,
                  server.getExplosion(i % ApplicationQuorbane::countExplosions).isAlive);
    }
    EXPECT_TRUE(nearlyEqual(*client.getEnemy(1).getMatrixObject(), *server.getEnemy(1).getMatrixObject()));
    EXPECT_EQ(client.getBullet(6).getPosition(), point(6, 0, -10));
    // The flash keeps the size it has grown to, and its incarnation the age.
    EXPECT_TRUE(nearlyEqual(*client.getExplosion(3).getMatrixObject(), *server.getExplosion(3).getMatrixObject()));
    EXPECT_FLOAT_EQ(flash.lastAge, 0.3f);

    Matrix4D shipInverse;
    ASSERT_TRUE(shipPose.invert(shipInverse));
    EXPECT_TRUE(nearlyEqual(client.scene().getView(), shipInverse));
    EXPECT_NEAR((client.getAvatar().getPosition() - server.scene().getPosition()).norm3D(), 0.0f, 1e-4f);
    client.getExplosion(3).setIncarnation(nullptr);
}

TEST(ApplicationQuorbaneRemoteTest, ShortOrHostileUpdatesNeverBreakTheClientsView)
{
    TestGame client;
    {
        CaptureStdout out;
        Buffer onlyOne(8082);
        onlyOne.add(pose(0.3f, point(1, 2, 3)));
        EXPECT_FALSE(readUpdate(client, onlyOne));
        EXPECT_EQ(out.text(), "[Warning] server message is too short!\n");
    }
    // A view that is no number, or that cannot be looked through, is refused.
    const Matrix4D before = client.scene().getView();
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        Matrix4D poisoned = Matrix4D::getI4();
        poisoned.m[5] = bad;
        Buffer update(8082);
        update.add(Matrix4D::getI4());
        update.add(poisoned);
        CaptureStdout out;
        client.showRemoteImpacts(update);
        EXPECT_EQ(out.text(), "[Warning] server view unusable, the previous one is kept\n");
    }
    Buffer flat(8082);
    flat.add(Matrix4D());
    client.showRemoteImpacts(flat);
    EXPECT_TRUE(nearlyEqual(client.scene().getView(), before));

    // Random bytes of every length: whatever they say, nothing breaks.
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t length = round % 10 == 0 ? 8082 : random() % 600;
        std::vector<unsigned char> bytes(length);
        for (unsigned char& b : bytes) {
            b = static_cast<unsigned char>(random());
        }
        Buffer update(8082);
        update.setContent(bytes.data(), bytes.size());
        CaptureStdout quiet;
        readUpdate(client, update);
    }
    Matrix4D inverse;
    EXPECT_TRUE(client.scene().getView().invert(inverse));
}

struct RequestCase {
    const char* name;
    std::function<void(Buffer&)> write;
    bool served;
    std::string line;  // the first line after the three request lines
    bool moves;
    int bullets;  // alive afterwards
};

TEST(ApplicationQuorbaneRemoteTest, RequestsAreServedUnvalidatedExceptForValuesThatAreNoNumbers)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const Matrix4D moved = pose(1.2f, point(5, 6, 7));
    const auto fire = [](const Vector4D& origin, short code) {
        return [origin, code](Buffer& b) {
            b.add(direction(0, 1, 0));
            b.add(direction(0, 0, -200));
            b.add(origin);
            b.add(code);
        };
    };
    auto move = [](const Matrix4D& m) {
        return [m](Buffer& b) {
            b.add(m);
            b.add(short(1));
        };
    };
    Matrix4D poisoned = moved;
    poisoned.m[12] = nan;
    Matrix4D infinite = moved;
    infinite.m[0] = -inf;
    const RequestCase cases[] = {
        {"fire", fire(point(1, 2, 3), 0), true, "[Information] bullet fired for the client: 0", false, 1},
        {"any other code fires", fire(point(1, 2, 3), 7), true, "[Information] bullet fired for the client: 0",
         false, 1},
        {"move", move(moved), true, "[Information] avatar moved by the client to: ", true, 0},
        {"empty", [](Buffer&) {}, false, "[Warning] request without a code ignored", false, 0},
        {"a code alone", [](Buffer& b) { b.add(short(1)); }, false, "[Warning] move request too short, ignored",
         false, 0},
        {"a short shot", [](Buffer& b) { b.add(direction(1, 0, 0)); b.add(short(0)); }, false,
         "[Warning] fire request too short, ignored", false, 0},
        {"a move that is no number", move(poisoned), false,
         "[Warning] move request holding a value that is not a number, ignored", false, 0},
        {"a move to infinity", move(infinite), false,
         "[Warning] move request holding a value that is not a number, ignored", false, 0},
        {"a shot from nowhere", fire(point(nan, 0, 0), 0), false,
         "[Warning] fire request holding a value that is not a number, ignored", false, 0},
    };
    for (const RequestCase& c : cases) {
        TestGame server;
        server.quiet();
        TestGame::place(server.getAvatar(), point(15, 10, -20));
        Buffer request(8082);
        c.write(request);
        const uint64_t length = request.getUsed();
        CaptureStdout out;
        EXPECT_EQ(server.manageRequest(request), c.served) << c.name;
        const std::string head =
            "Manager request - \nBuffer size: 8082\nBuffer length: " + std::to_string(length) + "\n";
        EXPECT_EQ(out.text().rfind(head + c.line, 0), 0u) << c.name << "\n" << out.text();
        EXPECT_EQ(nearlyEqual(*server.getAvatar().getMatrixObject(), moved), c.moves) << c.name;
        EXPECT_EQ(server.aliveBullets(), c.bullets) << c.name;
        if (c.bullets > 0) {
            EXPECT_EQ(server.getBullet(0).getPosition(), point(1, 2, 3));
            EXPECT_EQ(server.getBullet(0).speed, direction(0, 0, -200));
        }
        // The simulation goes on whatever came in.
        out.restore();
        server.updateWorld(0.02f);
        EXPECT_TRUE(std::isfinite(server.getAvatar().getPosition().norm3D())) << c.name;
    }
}

// ---- through real agents ---------------------------------------------------------------

// Standard output, read line by line as it is written, from any thread: the
// lines are handed to `scan` under one lock and not kept.
class LogScan : public std::streambuf {
public:
    explicit LogScan(std::function<void(const std::string&)> scan)
        : scan(std::move(scan)), locked(this), old(std::cout.rdbuf(&locked))
    {
    }
    ~LogScan() override { std::cout.rdbuf(old); }
    LogScan(const LogScan&) = delete;
    LogScan& operator=(const LogScan&) = delete;

protected:
    int_type overflow(int_type c) override
    {
        if (c == '\n') {
            scan(line);
            line.clear();
        } else if (c != traits_type::eof()) {
            line.push_back(static_cast<char>(c));
        }
        return traits_type::not_eof(c);
    }

private:
    std::function<void(const std::string&)> scan;
    std::string line;
    korvel::LogBuffer locked;  // one writer at a time
    std::streambuf* old;
};

// ---- soak ---------------------------------------------------------------------------------

// A relay between a client and a server on 127.0.0.1 that loses a quarter of
// the datagrams each way, sends a quarter twice (the second copy late) and
// holds some back until newer ones have overtaken them.
class LossyRelay {
public:
    explicit LossyRelay(int serverPort) : serverPort(serverPort) {}

    using Datagram = nettest::Bytes;

    // Receives `count` datagrams from one side within the time limit.
    bool take(int count, std::vector<Datagram>& fromClient, std::vector<Datagram>& fromServer)
    {
        for (int taken = 0; taken < count; ++taken) {
            Datagram d;
            int from = 0;
            if (!socket.receive(d, 10000, &from)) {
                return false;
            }
            if (from == serverPort) {
                fromServer.push_back(std::move(d));
            } else {
                clientPort = from;
                fromClient.push_back(std::move(d));
            }
        }
        return true;
    }

    // What passes this tick, after loss, duplicates and delays.
    struct Way {
        std::vector<Datagram> pass(int tick, std::vector<Datagram> incoming)
        {
            for (Datagram& d : incoming) {
                const double r = std::uniform_real_distribution<double>(0, 1)(random);
                const int delay = std::uniform_int_distribution<int>(1, 6)(random);
                if (r < 0.25) {
                    ++dropped;
                    continue;
                }
                if (r < 0.5) {
                    ++doubled;
                    late.emplace(tick + delay, d);
                } else if (r < 0.65) {
                    ++held;
                    late.emplace(tick + delay, std::move(d));
                    continue;
                }
                late.emplace(tick, std::move(d));
            }
            std::vector<Datagram> out;
            for (auto due = late.begin(); due != late.end() && due->first <= tick; due = late.erase(due)) {
                out.push_back(due->second);
            }
            return out;
        }
        std::mt19937 random{2024};
        std::multimap<int, Datagram> late;
        int dropped = 0;
        int doubled = 0;
        int held = 0;
    };

    void toServer(const Datagram& d) const { socket.sendTo(serverPort, d); }
    void toClient(const Datagram& d) const { socket.sendTo(clientPort, d); }
    int port() const { return socket.port(); }

private:
    nettest::RawUdp socket;
    int serverPort;
    int clientPort = 0;
};

// The short `fromEnd` bytes before the end: the type at 2, a request's code
// (below the id and the type) at 12.
short shortAt(const LossyRelay::Datagram& d, std::size_t fromEnd)
{
    short value = -1;
    if (d.size() >= fromEnd) {
        std::memcpy(&value, d.data() + d.size() - fromEnd, 2);
    }
    return value;
}

long residentKilobytes()
{
    std::ifstream status("/proc/self/status");
    std::string key;
    long value = 0;
    while (status >> key) {
        if (key == "VmRSS:") {
            status >> value;
            return value;
        }
        status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return 0;
}

// Game seconds of the soak: QUORBANE_SOAK_SECONDS, a few by default.
float soakSeconds()
{
    const char* asked = std::getenv("QUORBANE_SOAK_SECONDS");
    const float seconds = asked != nullptr ? std::strtof(asked, nullptr) : 0.0f;
    return seconds > 0.0f ? seconds : 30.0f;
}

TEST(ApplicationQuorbaneRemoteTest, SoakThroughALossyLinkNeverShowsAnOlderStateAndServesEachShotOnce)
{
    const std::string shownPrefix = "[Information] Server message Id: ";
    const std::string firedPrefix = "[Information] bullet fired for the client: ";
    std::mutex scanLock;
    uint64_t lastShown = 0;
    int shown = 0;
    int wentBack = 0;
    int fired = 0;
    int served = 0;
    int errors = 0;
    LogScan scan([&](const std::string& line) {
        std::lock_guard<std::mutex> guard(scanLock);
        if (line.rfind(shownPrefix, 0) == 0) {
            const uint64_t id = std::stoull(line.substr(shownPrefix.size()));
            wentBack += shown > 0 && id <= lastShown ? 1 : 0;
            lastShown = id;
            ++shown;
        }
        fired += line.rfind(firedPrefix, 0) == 0 ? 1 : 0;
        served += line == "Manager request - " ? 1 : 0;
        errors += line.find("[ERROR]") != std::string::npos ? 1 : 0;
    });

    std::srand(17);
    TestGame server;
    server.configure("<isServer><port>0</port></isServer>\n");
    ASSERT_TRUE(server.initNetwork());
    server.quiet();
    LossyRelay relay(server.getServer()->getSocket().getLocalPort());
    TestGame client;
    client.configure("<server><address>127.0.0.1</address><port>" + std::to_string(relay.port()) +
                     "</port></server>\n");
    ASSERT_TRUE(client.initNetwork());
    client.pointAt(640, 360);

    LossyRelay::Way up;
    LossyRelay::Way down;
    std::map<uint64_t, Vector4D> sentRock;  // the first rock of each update sent
    int deliveredShots = 0;
    int deliveredRequests = 0;
    uint64_t acknowledgements = 0;
    const float dt = 0.02f;
    const int frames = static_cast<int>(soakSeconds() / dt);
    [[maybe_unused]] long residentAtWarmUp = 0;
    std::size_t objectsAtWarmUp = 0;
    for (int tick = 0; tick < frames; ++tick) {
        // The client plays: turns now and then, fires five times a second.
        int sent = 0;
        if (tick % 7 == 0) {
            client.manageKey(nullptr, GLFW_KEY_RIGHT, 0, GLFW_PRESS, 0);
            ++sent;
        }
        if (tick % 10 == 0) {
            client.manageButton(nullptr, GLFW_MOUSE_BUTTON_LEFT, GLFW_RELEASE, 0);
            ++sent;
        }
        std::vector<LossyRelay::Datagram> requests;
        std::vector<LossyRelay::Datagram> none;
        ASSERT_TRUE(relay.take(sent, requests, none)) << "tick " << tick;
        const auto passed = up.pass(tick, std::move(requests));
        for (const auto& d : passed) {
            relay.toServer(d);
            deliveredShots += shortAt(d, 12) == 0 ? 1 : 0;
        }
        deliveredRequests += static_cast<int>(passed.size());
        // Each request delivered is queued, and acknowledged, before the frame.
        ASSERT_TRUE(waitUntil([&] {
            return server.getServer()->countPendingRequests() == passed.size();
        })) << "tick " << tick;

        server.updateWorld(dt);
        const bool broadcast = server.getServer()->isClientActive(0);
        if (broadcast) {
            sentRock[server.getServer()->getMessageId() - 1] = server.getEnemy(0).getPosition();
        }
        std::vector<LossyRelay::Datagram> states;
        ASSERT_TRUE(relay.take(static_cast<int>(passed.size()) + (broadcast ? 1 : 0), none, states))
            << "tick " << tick;
        for (const auto& d : down.pass(tick, std::move(states))) {
            relay.toClient(d);
            acknowledgements += shortAt(d, 2) == 2 ? 1 : 0;
        }
        // A marker behind them tells when the client has read them all.
        LossyRelay::Datagram marker(10, 0);
        const short acknowledgement = 2;
        std::memcpy(marker.data() + 8, &acknowledgement, 2);
        relay.toClient(marker);
        ++acknowledgements;
        ASSERT_TRUE(waitUntil([&] { return client.getClient()->countAcknowledgements() == acknowledgements; }))
            << "tick " << tick;

        const int before = shown;
        client.updateWorld(dt);
        std::lock_guard<std::mutex> guard(scanLock);
        if (shown > before) {
            // What is shown is what the server sent under that id; older
            // states will never be shown again.
            const auto state = sentRock.find(lastShown);
            ASSERT_NE(state, sentRock.end());
            ASSERT_EQ(client.getEnemy(0).getPosition(), state->second) << "id " << lastShown;
            sentRock.erase(sentRock.begin(), state);
        }
        if (tick == frames / 5) {
            residentAtWarmUp = residentKilobytes();
            objectsAtWarmUp = Object::countInstances();
        }
    }
    std::lock_guard<std::mutex> guard(scanLock);
    std::printf("soak: %d frames, %d states shown, %d requests and %d shots served; resident %+ld kB\n", frames,
                shown, served, fired, residentKilobytes() - residentAtWarmUp);
    ASSERT_GT(shown, frames / 3);
    EXPECT_EQ(wentBack, 0) << "an older or repeated state was shown";
    EXPECT_EQ(served, deliveredRequests);
    EXPECT_EQ(fired, deliveredShots) << "each shot that arrives is fired once";
    EXPECT_GT(std::min({up.dropped, up.doubled, up.held}), 0);
    EXPECT_GT(std::min({down.dropped, down.doubled, down.held}), frames / 50);
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(Object::countInstances(), objectsAtWarmUp);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // The sanitizers hold freed memory back on purpose: only a plain build
    // shows what the game keeps.
    EXPECT_LT(residentKilobytes() - residentAtWarmUp, 2048) << "resident memory grew";
#endif
}

}  // namespace
