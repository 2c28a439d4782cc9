// The game's set-up lines, its network role and its rules, without a window:
// collisions, blows and splash, range keeping, firing, and a long match that
// must not drain the pool of blows.

#include "GameTesting.h"
#include "core/Random.h"
#include "network/Server.h"
#include "physics/ForceField.h"
#include "support/CaptureStdout.h"
#include "support/ProgramRunTesting.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using game_testing::direction;
using game_testing::point;
using game_testing::TestGame;
using korvel::ApplicationQuorbane;
using korvel::ForceBlow;
using program_run::linesInOrder;

namespace {

struct NetworkCase {
    const char* name;
    std::string config;
    bool read;
    bool server;
    bool client;
    int port;
    std::string address;
    std::string output;  // exactly what is printed
};

TEST(ApplicationQuorbaneTest, NetworkRoleIsReadFromTheConfiguration)
{
    const std::string isServer = "<isServer><port>7777</port></isServer>\n";
    const std::string server = "<server><address>10.0.0.2</address><port>7000</port></server>\n";
    const NetworkCase cases[] = {
        {"no configuration", "", false, false, false, 0, "", ""},
        {"server", isServer, true, true, false, 7777, "", "[Information] application is server\nPort: 7777\n"},
        {"server without port", "<isServer></isServer>\n", false, false, false, 0, "",
         "[Information] application is server\n[ERROR] Port not defined!\n"},
        {"server with a port that is no number", "<isServer><port>seven</port></isServer>\n", false, false, false, 0,
         "", "[Information] application is server\n[ERROR] Port not defined!\n"},
        {"client", server, true, false, true, 7000, "10.0.0.2", ""},
        // The role is taken before the address is read; initWorld drops it.
        {"client without address", "<server><port>7000</port></server>\n", false, false, true, 0, "", ""},
        {"client without port", "<server><address>10.0.0.2</address></server>\n", false, false, true, 0, "10.0.0.2",
         ""},
        {"both: the client wins", isServer + server, true, false, true, 7000, "10.0.0.2", ""},
    };
    for (const NetworkCase& c : cases) {
        TestGame game;
        if (!c.config.empty()) {
            game.configure(c.config);
        }
        CaptureStdout out;
        EXPECT_EQ(game.getNetworkConfiguration(), c.read) << c.name;
        EXPECT_EQ(game.getIsServer(), c.server) << c.name;
        EXPECT_EQ(game.getIsClient(), c.client) << c.name;
        EXPECT_EQ(game.getPort(), c.port) << c.name;
        EXPECT_EQ(game.getServerAddress(), c.address) << c.name;
        EXPECT_EQ(out.text(), c.output) << c.name;
        out.restore();
        // A role that could not be taken up leaves the game alone.
        game.playAloneUnlessConnected();
        EXPECT_FALSE(game.getIsServer() || game.getIsClient()) << c.name;
    }
}

TEST(ApplicationQuorbaneTest, AServerThatCannotBindOrAnUnknownHostLeavesTheGameAlone)
{
    TestGame first;
    first.configure("<isServer><port>0</port></isServer>\n");
    ASSERT_TRUE(first.initNetwork());
    ASSERT_TRUE(first.getIsServer() && first.getIsConnected());
    const int taken = first.getServer()->getSocket().getLocalPort();

    struct Case {
        std::string config;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"<isServer><port>" + std::to_string(taken) + "</port></isServer>\n",
         {"[ERROR] bind() for opening socket entrance", "[ERROR] server is not connecting !"}},
        {"<isServer><port>70000</port></isServer>\n", {"[ERROR] server is not connecting !"}},
        {"<server><address>no such host.invalid</address><port>7000</port></server>\n",
         {"[ERROR] client couldn't connect !"}},
        {"<server><address>10.0.0.2</address><port>0</port></server>\n", {"[ERROR] client couldn't connect !"}},
    };
    for (const Case& c : cases) {
        TestGame game;
        game.configure(c.config);
        CaptureStdout out;
        EXPECT_FALSE(game.initNetwork()) << c.config;
        game.playAloneUnlessConnected();
        EXPECT_TRUE(linesInOrder(out.text(), c.lines));
        EXPECT_TRUE(linesInOrder(out.text(), {"[Warning] network role not taken up, the game is played alone"}));
        EXPECT_FALSE(game.getIsServer() || game.getIsClient() || game.getIsConnected()) << c.config;
    }
    CaptureStdout out;
    EXPECT_FALSE(first.initServer());
    EXPECT_EQ(out.text(), "[ERROR] server is already instantiated !\n");
}

// ---- collisions ------------------------------------------------------------------

struct CollisionCase {
    const char* name;
    Vector4D bullet;  // the body stands at the origin, radius 1
    bool alive;
    bool hit;
    float along;
};

TEST(ApplicationQuorbaneTest, ABulletIsASphereSweptBothWaysAlongItsFrame)
{
    // Speed 200 along -z, 0.02 s: travel 4, reach 1 + 1, so 6 along the path.
    const CollisionCase cases[] = {
        {"ahead within the frame's travel", point(0, 0, 5.9f), true, true, 5.9f},
        {"ahead beyond it", point(0, 0, 6.1f), true, false, 0.0f},
        {"behind within it", point(0, 0, -5.9f), true, true, -5.9f},
        {"behind beyond it", point(0, 0, -6.1f), true, false, 0.0f},
        {"beside, just inside the reach", point(1.99f, 0, 0), true, true, 0.0f},
        {"beside, at the reach", point(2.0f, 0, 0), true, false, 0.0f},
        // Near the corner of the swept cylinder: what the quick rejection of
        // far bullets must never rule out.
        {"ahead and beside, near both limits", point(1.95f, 0, 5.95f), true, true, 5.95f},
        {"dead, at the centre", point(0, 0, 0), false, false, 0.0f},
    };
    for (const CollisionCase& c : cases) {
        TestGame game;
        game.quiet();
        korvel::Enemy& body = game.getEnemy(0);
        TestGame::place(body, point(0, 0, 0));
        body.radius = 1.0f;
        game.spawnBullet(c.bullet, direction(0, 0, -200), direction(0, 1, 0));
        game.getBullet(0).radius = 1.0f;
        if (!c.alive) {
            game.getBullet(0).die();
        }
        Vector4D impact;
        Vector4D along;
        EXPECT_EQ(game.isColliding(&body, impact, along, 0.02f), c.hit) << c.name;
        if (c.hit) {
            EXPECT_EQ(impact, c.bullet) << c.name;
            EXPECT_NEAR(along.z, -c.along, 1e-5f) << c.name << ": the unit direction times along";
            EXPECT_FALSE(game.getBullet(0).isAlive) << c.name;
        } else {
            EXPECT_EQ(game.getBullet(0).isAlive, c.alive) << c.name;
        }
    }
}

TEST(ApplicationQuorbaneTest, TwoBulletsInOneBodyHitOneAFrameLowestIndexFirst)
{
    TestGame game;
    game.quiet();
    korvel::Enemy& body = game.getEnemy(0);
    TestGame::place(body, point(0, 0, 0));
    body.radius = 3.0f;
    for (const Vector4D& at : {point(100, 0, 0), point(0, 0, 0), point(0, 1, 0)}) {
        game.spawnBullet(at, direction(0, 0, -200), direction(0, 1, 0));  // 1 and 2 inside
    }
    Vector4D impact;
    Vector4D along;
    ASSERT_TRUE(game.isColliding(&body, impact, along, 0.02f));
    EXPECT_FALSE(game.getBullet(1).isAlive);
    EXPECT_TRUE(game.getBullet(2).isAlive);
    EXPECT_TRUE(game.getBullet(0).isAlive) << "far away";
    ASSERT_TRUE(game.isColliding(&body, impact, along, 0.02f));
    EXPECT_FALSE(game.getBullet(2).isAlive);
    EXPECT_EQ(impact, point(0, 1, 0));
    EXPECT_FALSE(game.isColliding(&body, impact, along, 0.02f));
}

// ---- blows ------------------------------------------------------------------------

const korvel::ForceBlow* blowIn(const korvel::PhysicalObject& body, int slot)
{
    return dynamic_cast<const korvel::ForceBlow*>(body.getSlotForce(slot));
}

TEST(ApplicationQuorbaneTest, AHitFlashesPushesTheBodyAndSplashesWhatIsAliveWithinTwenty)
{
    TestGame game;
    game.quiet();
    // The one hit, one just inside the splash and one at its reach, a dead
    // one, and one right at the impact.
    const Vector4D at[] = {point(0, 0, 0), point(19.9f, 0, 0), point(20.0f, 0, 0), point(5, 0, 0), point(0, 0, 0)};
    for (int i = 0; i < 5; ++i) {
        TestGame::place(game.getEnemy(i), at[i]);
    }
    korvel::Enemy& hit = game.getEnemy(0);
    game.getEnemy(3).die();
    game.spawnBullet(point(0, 3, 0), direction(0, 0, -200), direction(0, 1, 0));
    TestGame::place(game.getAvatar(), point(0, 0, 10));
    game.getAvatar().alive();

    game.addBlowForce(&hit, point(0, 0, 0), 300.0f, direction(0, 0, -2));

    // The flash, at the point.
    korvel::Explosion& flash = game.getExplosion(0);
    EXPECT_TRUE(flash.isAlive);
    EXPECT_EQ(flash.getPosition(), point(0, 0, 0));

    // The blow on the body: with its point, so it spins it too.
    const ForceBlow* blow = blowIn(hit, 0);
    ASSERT_NE(blow, nullptr);
    EXPECT_TRUE(hit.getSlotHasPoint(0));
    EXPECT_EQ(blow->direction, direction(0, 0, -1));
    EXPECT_FLOAT_EQ(blow->intensity, 300.0f);

    // The splash: pushed away from the point, without spin.
    struct Pushed {
        korvel::PhysicalObject* body;
        Vector4D away;
    };
    const Pushed pushed[] = {{&game.getBullet(0), direction(0, 1, 0)},
                             {&game.getEnemy(1), direction(1, 0, 0)},
                             {&game.getEnemy(4), direction(0, 0, 0)},
                             {&game.getAvatar(), direction(0, 0, 1)}};
    for (const Pushed& p : pushed) {
        const ForceBlow* push = blowIn(*p.body, 0);
        ASSERT_NE(push, nullptr) << p.body->getInstanceClassName();
        EXPECT_FALSE(p.body->getSlotHasPoint(0));
        EXPECT_EQ(push->direction, p.away);
        EXPECT_FLOAT_EQ(push->intensity, 300.0f);
    }
    EXPECT_EQ(game.getEnemy(2).getSlotForce(0), nullptr) << "20 away";
    EXPECT_EQ(game.getEnemy(3).getSlotForce(0), nullptr) << "dead";
    EXPECT_EQ(hit.getSlotForce(1), nullptr) << "the hit body is not splashed";
    EXPECT_EQ(game.freeBlowForces(), 100 - 5);
}

TEST(ApplicationQuorbaneTest, WithoutFlashOrFreeBlowOrFreeSlotAHitStillDoesTheRest)
{
    TestGame game;
    game.quiet();
    korvel::Enemy& hit = game.getEnemy(0);
    TestGame::place(hit, point(0, 0, 0));
    TestGame::place(game.getEnemy(1), point(1, 0, 0));

    // Every flash alive: a push but no flash.
    for (int i = 0; i < ApplicationQuorbane::countExplosions; ++i) {
        game.getExplosion(i).alive();
        game.getExplosion(i).setAge(0.25f);
    }
    game.addBlowForce(&hit, point(0, 0, 0), 300.0f, direction(1, 0, 0));
    EXPECT_NE(blowIn(hit, 0), nullptr);
    EXPECT_NE(blowIn(game.getEnemy(1), 0), nullptr);
    for (int i = 0; i < ApplicationQuorbane::countExplosions; ++i) {
        EXPECT_FLOAT_EQ(game.getExplosion(i).age, 0.25f) << i;
    }

    // Five live forces on the body: its blow goes back to the pool.
    korvel::ForceField fields[5];
    korvel::Enemy& full = game.getEnemy(2);
    TestGame::place(full, point(500, 0, 0));
    for (korvel::ForceField& field : fields) {
        field.alive();
        full.addForce(&field);
    }
    const int free = game.freeBlowForces();
    game.addBlowForce(&full, point(500, 0, 0), 300.0f, direction(1, 0, 0));
    EXPECT_EQ(game.freeBlowForces(), free);
    EXPECT_EQ(game.countLostBlowForces(), 0);

    // No free blow at all: nothing is pushed, nothing breaks.
    for (int i = 0; i < ApplicationQuorbane::countBlowForces; ++i) {
        game.getBlowForce(i).released = false;
    }
    korvel::Enemy& third = game.getEnemy(3);
    TestGame::place(third, point(-500, 0, 0));
    game.addBlowForce(&third, point(-500, 0, 0), 300.0f, direction(1, 0, 0));
    EXPECT_EQ(third.getSlotForce(0), nullptr);
}

// ---- range keeping ----------------------------------------------------------------

TEST(ApplicationQuorbaneTest, EnemiesAtTwoHundredFiftyFromBothAreRecycledJustInsideTheLimit)
{
    std::srand(7);
    TestGame game;
    game.quiet();
    // Eye at the origin; the avatar at (100, 0, 0).
    TestGame::place(game.getAvatar(), point(100, 0, 0));
    // Near the eye and near the avatar they stay; 250 from the eye and
    // farther from the avatar, and dead, they come back.
    const Vector4D at[] = {point(0, 249.9f, 0), point(349.9f, 0, 0), point(-250, 0, 0)};
    for (int i = 0; i < 3; ++i) {
        TestGame::place(game.getEnemy(i), at[i]);
    }
    game.getEnemy(3).die();
    game.updateEnemiesRange(0.02f);
    for (int i = 0; i < 4; ++i) {
        korvel::Enemy& enemy = game.getEnemy(i);
        EXPECT_TRUE(enemy.isAlive) << i;
        if (i < 2) {
            EXPECT_EQ(enemy.getPosition(), at[i]) << i;
            continue;
        }
        const Vector4D p = enemy.getPosition();
        const float fromEye = p.norm3D();
        const float fromShip = (p - point(100, 0, 0)).norm3D();
        EXPECT_TRUE(std::fabs(fromEye - 245.0f) < 1e-3f || std::fabs(fromShip - 245.0f) < 1e-3f) << i;
        EXPECT_NEAR(enemy.speed.norm3D(), 20.0f, 1e-4f) << i;
        EXPECT_FLOAT_EQ(enemy.radius, 6.0f * enemy.mass);
        // The matrix carries the size: each column is s long.
        EXPECT_NEAR(enemy.getMatrixObject()->getColumn(0).norm3D(), enemy.mass, 1e-4f) << i;
    }
}

// ---- firing -------------------------------------------------------------------------

TEST(ApplicationQuorbaneTest, TheLeftButtonReleasedFiresThroughTheCursorTenUnitsAhead)
{
    TestGame game;
    game.quiet();
    game.pointAt(640.7, 360.2);
    game.manageButton(nullptr, GLFW_MOUSE_BUTTON_LEFT, GLFW_PRESS, 0);
    game.manageButton(nullptr, GLFW_MOUSE_BUTTON_RIGHT, GLFW_RELEASE, 0);
    EXPECT_EQ(game.aliveBullets(), 0);
    game.manageButton(nullptr, GLFW_MOUSE_BUTTON_LEFT, GLFW_RELEASE, 0);
    ASSERT_EQ(game.aliveBullets(), 1);
    korvel::Bullet& shot = game.getBullet(0);
    EXPECT_EQ(shot.getPosition(), point(0, 0, -10));
    EXPECT_EQ(shot.speed, direction(0, 0, -200));
    // The bolt lies along its flight.
    EXPECT_EQ(shot.getMatrixObject()->getColumn(1), direction(0, 0, -1));

    // All fifty flying: firing still answers true and changes nothing.
    for (int i = 1; i < ApplicationQuorbane::countBullets; ++i) {
        game.spawnBullet(point(0, 0, 0), direction(1, 0, 0), direction(0, 1, 0));
    }
    EXPECT_TRUE(game.spawnBullet(point(9, 9, 9), direction(1, 0, 0), direction(0, 1, 0)));
    EXPECT_EQ(shot.getPosition(), point(0, 0, -10));
}

// ---- a long match -------------------------------------------------------------------

// Rocks kept in a tight cluster and shot point-blank every frame: hits come
// in bursts and splash bodies whose step has not run yet this frame, which is
// where blows used to be overwritten before any body gave them back.
TEST(ApplicationQuorbaneTest, ALongMatchNeverLosesABlowOfThePool)
{
    std::srand(11);
    TestGame game;
    game.quiet();
    CaptureStdout hits;
    const float dt = 0.02f;
    int flashes = 0;
    for (int frame = 0; frame < 3000; ++frame) {
        for (int i = 0; i < 8; ++i) {
            korvel::Enemy& enemy = game.getEnemy(i);
            const float angle = 0.8f * static_cast<float>(i) + 0.01f * static_cast<float>(frame);
            TestGame::place(enemy, point(8.0f * std::cos(angle), 8.0f * std::sin(angle), -30.0f));
            enemy.radius = 1.0f;
            if (frame % 3 == i % 3) {
                const Vector4D from = enemy.getPosition() + direction(0, 0, 3);
                game.spawnBullet(from, direction(0, 0, -200), direction(0, 1, 0));
            }
        }
        const int before = game.aliveExplosions();
        game.updateWorld(dt);
        flashes += game.aliveExplosions() > before ? 1 : 0;
        ASSERT_EQ(game.countLostBlowForces(), 0) << "frame " << frame;
    }
    EXPECT_GT(flashes, 100);
    hits.clear();
    // Once the shooting stops, every blow comes back.
    for (int frame = 0; frame < 50; ++frame) {
        game.updateWorld(dt);
    }
    for (int i = 0; i < ApplicationQuorbane::countBullets; ++i) {
        game.spawnBullet(point(0, 0, 5000), direction(0, 0, 1), direction(0, 1, 0));
    }
    game.updateWorld(dt);
    EXPECT_EQ(game.freeBlowForces(), ApplicationQuorbane::countBlowForces);
}

}  // namespace
