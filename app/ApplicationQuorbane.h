#pragma once
// The game: fifty rocks drifting around the players, lasers fired with the
// mouse, explosions and blows that push everything near, and a second
// instance that can join over the network and fly the server's ship.
//
// Every body of the match lives here by value, in fixed arrays built once
// with the application; initWorld gives them their scene objects and from
// then on they are only revived and killed. Searches for a free body or
// force take the lowest index.
//
// Roles, read once from config.def at start: alone, server or client. A
// server simulates everything and sends its whole state at the end of each
// frame; a client simulates nothing, shows the freshest state it received
// and sends move and fire requests. A role that cannot be taken up (bad
// configuration, port in use, unknown host) leaves the game playing alone.
//
// Messages (payload written in this order, read back in reverse):
//   move request   pose (Matrix4D), code 1 (short)
//   fire request   up, speed, origin (Vector4D each), code 0 (short)
//   state update   per enemy [matrix] alive-flag, per explosion [matrix age]
//                  alive-flag, per bullet [matrix] alive-flag, then the
//                  server's eye pose and the inverse of its avatar's matrix.
// Requests are not validated, except that one carrying a value that is not a
// finite number is refused: it would poison the whole simulation.
//
// Main thread only; the network agents' reading threads touch nothing here.

#include "app/Application3D.h"
#include "core/Matrix4D.h"
#include "core/Vector4D.h"
#include "physics/Bullet.h"
#include "physics/Enemy.h"
#include "physics/Explosion.h"
#include "physics/ForceBlow.h"
#include "physics/ForceField.h"
#include "physics/Fusion.h"
#include "physics/PhysicalObject.h"
#include "physics/Pool.h"

#include <cstdint>
#include <string>

class ShaderProgramBase;

namespace korvel {

class Buffer;
class Client;
class Server;

class ApplicationQuorbane : public Application3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    static constexpr int countEnemies = 50;
    static constexpr int countBullets = 50;
    static constexpr int countExplosions = 20;
    static constexpr int countBlowForces = 100;

    static constexpr short requestSpawnBulletCode = 0;
    static constexpr short requestMoveCode = 1;

    // Rules of the match.
    static constexpr float hitIntensity = 300.0f;
    static constexpr float blowLifetime = 0.1f;
    static constexpr float splashRange = 20.0f;
    static constexpr float enemyRange = 250.0f;
    static constexpr float enemySpawnDistance = 245.0f;
    static constexpr float enemySpeed = 20.0f;
    static constexpr float bulletLifetime = 5.0f;
    static constexpr float bulletSpeed = 200.0f;
    static constexpr float bulletLead = 10.0f;

    ApplicationQuorbane();
    // Stops the network agent (joining its reading thread).
    ~ApplicationQuorbane() override;

    const char* getInstanceClassName() const override { return className; }

    // ---- set-up ----
    bool initGL();
    bool initPhysic();
    bool initWorld() override;
    bool initLocalShaders();
    bool initWorldEnemies();
    bool initWorldBullets();
    bool initWorldExplosions();
    bool initWorldAvatars();
    bool initWorldFusion();
    bool initTextBanner();

    // ---- network role ----
    bool getNetworkConfiguration();
    bool initNetwork();
    bool initServer();
    bool initClient();
    bool connectToServer();

    // ---- rules ----
    using Application3D::updateWorld;
    bool updateWorld(float dt) override;
    // True when a live bullet meets the body this frame (the bullet dies).
    // impactDirection is the bullet's unit direction scaled by how far along
    // it the body's centre lies: not a unit vector, on purpose.
    bool isColliding(PhysicalObject* body, Vector4D& impactPoint, Vector4D& impactDirection, float dt);
    // A flash at the point, a blow on the body and a push on every live body
    // within splashRange of the point.
    void addBlowForce(PhysicalObject* body, Vector4D point, float intensity, Vector4D direction);
    bool updateEnemiesRange(float dt);
    // Ages the blows of the pool that are in use: the frame step does the
    // same through its own pass, this is for callers outside it.
    bool updateForces(float dt);
    bool spawnBullet(const Vector4D& position, const Vector4D& speed, const Vector4D& up);
    Bullet* getFreeBullet();
    Explosion* getFreeExplosion();
    void addExplosion(const Vector4D& point);

    void manageKey(GLFWwindow* window, int key, int scancode, int action, int mods) override;
    void manageButton(GLFWwindow* window, int button, int action, int mods) override;

    // ---- remote play ----
    virtual bool updateRemote();
    // Joystick 0: axes 0 and 1 turn the view, axis 3 moves it; button 0
    // fires at the centre of the window when released.
    virtual void manageJoystickAxis();
    virtual void manageJoystickButton();

    bool updateRemoteSpheres(Buffer& update);
    bool updateRemoteExplosions(Buffer& update);
    bool updateRemoteBullets(Buffer& update);
    bool updateRemoteViewer(Buffer& update);
    bool updateRemotePosition(Buffer& update);
    bool serveRemoteRequests();
    // One request; the caller keeps the buffer.
    bool manageRequest(Buffer& request);
    bool manageRequestSpawnBullet(Buffer& request);
    bool manageMoveClient(Buffer& request);
    bool moveClient(const Matrix4D& pose);

    bool requestMoveClient();
    bool requestSpawnBullet(const Vector4D& origin, const Vector4D& speed, const Vector4D& up);
    bool showRemoteUpdates();
    bool showRemoteImpacts(Buffer& update);
    bool showRemoteServer(Buffer& update);
    bool showRemoteBullets(Buffer& update);
    bool showRemoteExplosions(Buffer& update);
    bool showRemoteSpheres(Buffer& update);

    // ---- state, for tools and tests ----
    Enemy& getEnemy(int i) { return enemies[i]; }
    Bullet& getBullet(int i) { return bullets[i]; }
    Explosion& getExplosion(int i) { return explosions[i]; }
    ForceBlow& getBlowForce(int i) { return blowForces.elements[i]; }
    PhysicalObject& getAvatar() { return avatar; }
    Fusion& getFusion() { return fusion; }
    PhysicalObject* getPlayer() const { return player; }
    // Pool entries neither free, nor alive, nor held by a body: lost for good.
    int countLostBlowForces() const;
    int32_t getBufferSize() const { return bufferSize; }
    bool getIsServer() const { return isServer; }
    bool getIsClient() const { return isClient; }
    bool getIsConnected() const { return isConnected; }
    const std::string& getServerAddress() const { return serverAddress; }
    int32_t getPort() const { return port; }
    Server* getServer() const { return server; }
    Client* getClient() const { return client; }

    // The joystick's reading of an axis, with a dead zone around rest.
    static float joystickAxisValue(float raw);
    // "x y z" of a point, for the log.
    static std::string describe(const Vector4D& p);

protected:
    int32_t bufferSize;
    Enemy enemies[countEnemies];
    Bullet bullets[countBullets];
    Explosion explosions[countExplosions];
    Bullet* bulletSlots[countBullets];
    Enemy* enemySlots[countEnemies];
    PhysicalObject* player;
    Pool<ForceBlow, countBlowForces> blowForces;
    Fusion fusion;
    PhysicalObject avatar;
    ForceField fieldForce;
    bool isServer;
    bool isClient;
    bool isConnected;
    std::string serverAddress;
    Client* client;
    Server* server;
    int32_t port;

    // Drops the role that could not be taken up: the game plays alone.
    void playAloneUnlessConnected();

private:
    // The program, handed the world's camera, light and fog; null when it or
    // the world is missing.
    ShaderProgramBase* registerProgram(const char* name);
    // True only when the bullet cannot reach the body this frame.
    static bool isSurelyMissing(const Bullet& bullet, const Vector4D& bodyPosition, float bodyRadius, float dt);
    // Each rock's level of detail by its distance to the eye and its size.
    void chooseEnemiesDetail();
    // Entry i of each slot array at body i, the player at the avatar.
    void pointSlotsAtBodies();
    // The blows of the pool in use and alive grow older by dt.
    void ageBlowForces(float dt);
    // The first free blow of the pool, taken (released flag cleared), or null.
    ForceBlow* takeBlowForce();
    void splash(PhysicalObject* body, const Vector4D& point, float intensity);
    void pushAway(PhysicalObject* target, const Vector4D& point, float intensity);
    void respawnEnemy(Enemy& enemy, const Vector4D& eye, const Vector4D& ship);
    // Fires the first free bullet; its index, or -1 when all are flying.
    int fireBullet(const Vector4D& position, const Vector4D& speed, const Vector4D& up);
    // A shot through the pixel (x, y) of the window, sent or fired.
    void fireAt(int x, int y);
    bool sendToServer(Buffer& request);
    // Whether a blow is held by one of the bodies of the match.
    bool isHeldByBody(const Force* force) const;

    // Joystick button 0 as last seen, to fire on its release.
    bool joystickFireDown;
};

}  // namespace korvel
