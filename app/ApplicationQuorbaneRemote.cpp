// Remote play: the server's state update and the requests it serves, the
// client's requests and how it shows the server's state.
//
// Lines are written whole through the network layer's log, which the
// reading threads write through too, so that no line is cut by another.

#include "app/ApplicationQuorbane.h"

#include "network/Buffer.h"
#include "network/Client.h"
#include "network/NetworkLog.h"
#include "network/Server.h"
#include "scene/World.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <sstream>
#include <string>

namespace korvel {

namespace {

// The body's placement, or the identity for a body without one.
Matrix4D placementOf(const PhysicalObject& body)
{
    const Matrix4D* matrix = body.getMatrixObject();
    return matrix != nullptr ? *matrix : Matrix4D::getI4();
}

// The inverse when there is a finite one, else the identity: a client must
// always get a pose it can look through.
Matrix4D inverseOrIdentity(const Matrix4D& m)
{
    Matrix4D inverse;
    if (m.invert(inverse) && inverse.isFinite()) {
        return inverse;
    }
    return Matrix4D::getI4();
}

template <typename Value>
std::string text(const char* label, const Value& value)
{
    std::ostringstream line;
    line << label << value;
    return line.str();
}

// The bodies of one block of a state update, each [matrix [age]] alive-flag.
template <typename Body, std::size_t count>
void addBodies(Buffer& update, const Body (&bodies)[count], bool withAge)
{
    for (const Body& body : bodies) {
        if (body.isAlive) {
            update.add(placementOf(body));
            if (withAge) {
                update.add(body.age);
            }
        }
        update.add(body.isAlive);
    }
}

// One body read back; false when the update ran short.
bool showBody(Buffer& update, PhysicalObject& body, bool withAge)
{
    bool alive = false;
    if (!update.get(alive)) {
        return false;
    }
    if (!alive) {
        body.die();
        return true;
    }
    float age = 0.0f;
    if (withAge) {
        if (!update.get(age)) {
            return false;
        }
        body.setAge(age);
    }
    Matrix4D placement;
    if (!update.get(placement)) {
        return false;
    }
    Matrix4D* matrix = body.getMatrixObjectChange();
    if (matrix != nullptr) {
        *matrix = placement;
    }
    body.changeMatrixObject();
    // The body's own revival: an explosion's would undo the growth just
    // received. The incarnation keeps the age it was given.
    if (!body.isAlive) {
        body.PhysicalObject::alive();
    }
    return true;
}

// A block read back, last body first; false when the update ran short.
template <typename Body, std::size_t count>
bool showBodies(Buffer& update, Body (&bodies)[count], bool withAge)
{
    for (std::size_t i = count; i-- > 0;) {
        if (!showBody(update, bodies[i], withAge)) {
            return false;
        }
    }
    return true;
}

}  // namespace

// ---- server ----------------------------------------------------------------------

bool ApplicationQuorbane::updateRemote()
{
    if (!isConnected || server == nullptr) {
        return false;
    }
    Buffer update(static_cast<uint64_t>(bufferSize));
    updateRemoteSpheres(update);
    updateRemoteExplosions(update);
    updateRemoteBullets(update);
    updateRemoteViewer(update);
    updateRemotePosition(update);
    server->broadcastMessageNACK(update);
    serveRemoteRequests();
    return true;
}

bool ApplicationQuorbane::updateRemoteSpheres(Buffer& update)
{
    addBodies(update, enemies, false);
    return true;
}

bool ApplicationQuorbane::updateRemoteExplosions(Buffer& update)
{
    addBodies(update, explosions, true);
    return true;
}

bool ApplicationQuorbane::updateRemoteBullets(Buffer& update)
{
    addBodies(update, bullets, false);
    return true;
}

bool ApplicationQuorbane::updateRemoteViewer(Buffer& update)
{
    const Matrix4D view = world != nullptr ? world->getView() : Matrix4D::getI4();
    return update.add(inverseOrIdentity(view));
}

bool ApplicationQuorbane::updateRemotePosition(Buffer& update)
{
    return update.add(inverseOrIdentity(placementOf(avatar)));
}

bool ApplicationQuorbane::serveRemoteRequests()
{
    if (server == nullptr) {
        return false;
    }
    while (server->hasRequest()) {
        std::unique_ptr<Buffer> request(server->feedRequest());
        if (request == nullptr) {
            break;
        }
        manageRequest(*request);
    }
    return true;
}

bool ApplicationQuorbane::manageRequest(Buffer& request)
{
    networkLog("Manager request - ");
    networkLog(text("Buffer size: ", request.getCapacity()));
    networkLog(text("Buffer length: ", request.getUsed()));
    short code = 0;
    if (!request.get(code)) {
        networkLog("[Warning] request without a code ignored");
        return false;
    }
    if (code == requestMoveCode) {
        return manageMoveClient(request);
    }
    // Any other code is a shot.
    return manageRequestSpawnBullet(request);
}

bool ApplicationQuorbane::manageMoveClient(Buffer& request)
{
    Matrix4D pose;
    if (!request.get(pose)) {
        networkLog("[Warning] move request too short, ignored");
        return false;
    }
    return moveClient(pose);
}

bool ApplicationQuorbane::moveClient(const Matrix4D& pose)
{
    if (!pose.isFinite()) {
        networkLog("[Warning] move request holding a value that is not a number, ignored");
        return false;
    }
    Matrix4D* matrix = avatar.getMatrixObjectChange();
    if (matrix != nullptr) {
        *matrix = pose;
    }
    avatar.changeMatrixObject();
    networkLog("[Information] avatar moved by the client to: " + describe(avatar.getPosition()));
    return true;
}

bool ApplicationQuorbane::manageRequestSpawnBullet(Buffer& request)
{
    Vector4D origin;
    Vector4D speed;
    Vector4D up;
    if (!request.get(origin) || !request.get(speed) || !request.get(up)) {
        networkLog("[Warning] fire request too short, ignored");
        return false;
    }
    if (!origin.isFinite() || !speed.isFinite() || !up.isFinite()) {
        networkLog("[Warning] fire request holding a value that is not a number, ignored");
        return false;
    }
    const int index = fireBullet(origin, speed, up);
    if (index >= 0) {
        networkLog(text("[Information] bullet fired for the client: ", index));
    }
    return true;
}

// ---- client ----------------------------------------------------------------------

bool ApplicationQuorbane::sendToServer(Buffer& request)
{
    if (client == nullptr) {
        return false;
    }
    return client->writeServerACK(request);
}

bool ApplicationQuorbane::requestMoveClient()
{
    if (world == nullptr) {
        return false;
    }
    Buffer request(static_cast<uint64_t>(bufferSize));
    request.add(inverseOrIdentity(world->getView()));
    request.add(requestMoveCode);
    return sendToServer(request);
}

bool ApplicationQuorbane::requestSpawnBullet(const Vector4D& origin, const Vector4D& speed, const Vector4D& up)
{
    Buffer request(static_cast<uint64_t>(bufferSize));
    request.add(up);
    request.add(speed);
    request.add(origin);
    request.add(requestSpawnBulletCode);
    return sendToServer(request);
}

bool ApplicationQuorbane::showRemoteUpdates()
{
    if (client == nullptr) {
        return false;
    }
    Buffer update(static_cast<uint64_t>(bufferSize));
    uint64_t id = 0;
    if (!client->readLastServer(update, id)) {
        networkLog("[Information] No update from server !");
        return false;
    }
    networkLog(text("[Information] Server message Id: ", id));
    networkLog(text("Length of buffer after receiving: ", update.getUsed()));
    showRemoteImpacts(update);
    if (!showRemoteServer(update)) {
        return false;
    }
    return showRemoteBullets(update) && showRemoteExplosions(update) && showRemoteSpheres(update);
}

// The client looks through the ship that its own moves steer on the server.
bool ApplicationQuorbane::showRemoteImpacts(Buffer& update)
{
    Matrix4D view;
    if (!update.get(view)) {
        return false;
    }
    Matrix4D check;
    if (world == nullptr || !view.isFinite() || !view.invert(check)) {
        networkLog("[Warning] server view unusable, the previous one is kept");
        return false;
    }
    world->setView(view);
    return true;
}

// The server's player is shown where the server's eye is.
bool ApplicationQuorbane::showRemoteServer(Buffer& update)
{
    Matrix4D pose;
    if (!update.get(pose)) {
        networkLog("[Warning] server message is too short!");
        return false;
    }
    Matrix4D* matrix = avatar.getMatrixObjectChange();
    if (matrix != nullptr) {
        *matrix = pose;
    }
    avatar.changeMatrixObject();
    return true;
}

bool ApplicationQuorbane::showRemoteBullets(Buffer& update)
{
    return showBodies(update, bullets, false);
}

bool ApplicationQuorbane::showRemoteExplosions(Buffer& update)
{
    return showBodies(update, explosions, true);
}

bool ApplicationQuorbane::showRemoteSpheres(Buffer& update)
{
    return showBodies(update, enemies, false);
}

}  // namespace korvel
