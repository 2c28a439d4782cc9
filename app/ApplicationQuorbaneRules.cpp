// The frame step of the game and the rules it applies: collisions, blows,
// range keeping, firing, keys, mouse and joystick.

#include "app/ApplicationQuorbane.h"

#include "core/Random.h"
#include "network/NetworkLog.h"
#include "scene/IClone3D.h"
#include "scene/IModel3D.h"
#include "scene/World.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <cmath>
#include <sstream>

namespace korvel {

bool ApplicationQuorbane::updateWorld(float dt)
{
    const bool result = Application3D::updateWorld();
    manageJoystickAxis();
    chooseEnemiesDetail();
    if (isClient) {
        showRemoteUpdates();
        return result;
    }
    ageBlowForces(dt);
    updateEnemiesRange(dt);
    Vector4D point;
    Vector4D direction;
    for (Enemy& enemy : enemies) {
        if (!enemy.isAlive) {
            continue;
        }
        enemy.update(dt);
        if (isColliding(&enemy, point, direction, dt)) {
            addBlowForce(&enemy, point, hitIntensity, direction);
        }
    }
    if (isColliding(&avatar, point, direction, dt)) {
        addBlowForce(&avatar, point, hitIntensity, direction);
    }
    for (Bullet& bullet : bullets) {
        if (bullet.isAlive) {
            bullet.update(dt);
        }
    }
    for (Explosion& explosion : explosions) {
        if (explosion.isAlive) {
            explosion.update(dt);
        }
    }
    manageJoystickButton();
    // Also when dead: the step then does nothing.
    avatar.update(dt);
    if (isServer) {
        updateRemote();
    }
    return result;
}

// A rock far away for its size is drawn from a coarser level of its model:
// each level has half the triangles of the one before, and the rocks are
// most of the geometry of a frame. Only what is drawn changes.
void ApplicationQuorbane::chooseEnemiesDetail()
{
    if (world == nullptr) {
        return;
    }
    const Vector4D eye = world->getPosition();
    for (Enemy& enemy : enemies) {
        auto* clone = dynamic_cast<IClone3D*>(enemy.getIncarnation());
        const Matrix4D* placement = enemy.getMatrixObject();
        if (clone == nullptr || clone->getModel() == nullptr || placement == nullptr) {
            continue;
        }
        const float size = std::fmax(placement->getColumn(0).norm3D(), 0.001f);
        const float distance = (enemy.getPosition() - eye).norm3D() / size;
        const short level = distance < 25.0f ? 0 : distance < 50.0f ? 1 : distance < 100.0f ? 2 : 3;
        if (level != clone->getLOD() && clone->getModel()->getObject(level) != nullptr) {
            clone->setLOD(level);
            clone->setModel(clone->getModel());
        }
    }
}

bool ApplicationQuorbane::updateForces(float dt)
{
    ageBlowForces(dt);
    return true;
}

void ApplicationQuorbane::ageBlowForces(float dt)
{
    for (ForceBlow& blow : blowForces.elements) {
        if (!blow.released && blow.isAlive) {
            blow.update(dt);
        }
    }
}

// A hit needs |rel|^2 = along^2 + perpendicular^2 < (travel + reach)^2 +
// reach^2. Tested first with a bound of the travel that needs no square root,
// and a margin for rounding, it rules out most pairs at the cost of a few
// products; it never rules out one that the full test would take (a value
// that is no number is never ruled out).
bool ApplicationQuorbane::isSurelyMissing(const Bullet& bullet, const Vector4D& bodyPosition, float bodyRadius,
                                          float dt)
{
    const Matrix4D* placement = bullet.getMatrixObject();
    if (placement == nullptr) {
        return false;
    }
    const float rx = bodyPosition.x - placement->m[12];
    const float ry = bodyPosition.y - placement->m[13];
    const float rz = bodyPosition.z - placement->m[14];
    // |x| + |y| + |z| is never below the length.
    const float bound = std::fabs(bullet.speed.x) + std::fabs(bullet.speed.y) + std::fabs(bullet.speed.z);
    const float reach = bullet.radius + bodyRadius;
    const float swept = bound * dt + reach;
    return rx * rx + ry * ry + rz * rz > (swept * swept + reach * reach) * 1.001f;
}

// The bullet is a sphere swept along its path over the frame, both ways from
// where it stands now. The first live bullet in index order that hits wins.
bool ApplicationQuorbane::isColliding(PhysicalObject* body, Vector4D& impactPoint, Vector4D& impactDirection,
                                      float dt)
{
    if (body == nullptr) {
        return false;
    }
    const Vector4D bodyPosition = body->getPosition();
    for (Bullet& bullet : bullets) {
        if (!bullet.isAlive || isSurelyMissing(bullet, bodyPosition, body->radius, dt)) {
            continue;
        }
        const Vector4D bulletPosition = bullet.getPosition();
        const Vector4D rel = bodyPosition - bulletPosition;
        impactDirection = bullet.speed;
        const float travel = impactDirection.norm3D() * dt;
        impactDirection.normalize3D();
        const float along = rel.scal3D(impactDirection);
        const float reach = bullet.radius + body->radius;
        if (along < -(travel + reach) || along > travel + reach) {
            continue;
        }
        impactDirection = impactDirection * along;
        const Vector4D perpendicular = rel - impactDirection;
        if (perpendicular.norm3D() >= reach) {
            continue;
        }
        impactPoint = bulletPosition;
        bullet.die();
        return true;
    }
    return false;
}

ForceBlow* ApplicationQuorbane::takeBlowForce()
{
    for (ForceBlow& blow : blowForces.elements) {
        if (blow.released) {
            blow.released = false;
            return &blow;
        }
    }
    return nullptr;
}

void ApplicationQuorbane::addBlowForce(PhysicalObject* body, Vector4D point, float intensity, Vector4D direction)
{
    if (body == nullptr) {
        return;
    }
    networkLog("[Information] hit at: " + describe(point));
    addExplosion(point);
    ForceBlow* blow = takeBlowForce();
    if (blow != nullptr) {
        blow->lifetime = blowLifetime;
        blow->alive();
        blow->setBaseForce(direction, intensity);
        if (!body->addForce(blow, point)) {
            // Five live forces already: the blow goes back to the pool
            // rather than age out where no body would ever release it.
            blow->die();
            blow->released = true;
        }
    }
    splash(body, point, intensity);
}

// Everything alive near the impact is pushed away from it, bullets included.
void ApplicationQuorbane::splash(PhysicalObject* body, const Vector4D& point, float intensity)
{
    for (Bullet* target : bulletSlots) {
        pushAway(target != body ? target : nullptr, point, intensity);
    }
    for (Enemy* target : enemySlots) {
        pushAway(target != body ? target : nullptr, point, intensity);
    }
    pushAway(player != body ? player : nullptr, point, intensity);
}

void ApplicationQuorbane::pushAway(PhysicalObject* target, const Vector4D& point, float intensity)
{
    if (target == nullptr || !target->isAlive) {
        return;
    }
    const Vector4D away = target->getPosition() - point;
    const float distance = away.norm3D();
    if (!(distance == 0.0f || distance < splashRange)) {
        return;
    }
    ForceBlow* blow = takeBlowForce();
    if (blow == nullptr) {
        return;
    }
    blow->setBaseForce(away, intensity);
    blow->lifetime = blowLifetime;
    blow->alive();
    if (!target->addForce(blow)) {
        blow->die();
        blow->released = true;
    }
}

namespace {

bool holds(const PhysicalObject& body, const Force* force)
{
    for (int slot = 0; slot < PhysicalObject::forceSlots; ++slot) {
        if (body.getSlotForce(slot) == force) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool ApplicationQuorbane::isHeldByBody(const Force* force) const
{
    for (const Enemy& enemy : enemies) {
        if (holds(enemy, force)) {
            return true;
        }
    }
    for (const Bullet& bullet : bullets) {
        if (holds(bullet, force)) {
            return true;
        }
    }
    for (const Explosion& explosion : explosions) {
        if (holds(explosion, force)) {
            return true;
        }
    }
    return holds(avatar, force) || holds(fusion, force);
}

int ApplicationQuorbane::countLostBlowForces() const
{
    int lost = 0;
    for (const ForceBlow& blow : blowForces.elements) {
        lost += !blow.released && !blow.isAlive && !isHeldByBody(&blow) ? 1 : 0;
    }
    return lost;
}

void ApplicationQuorbane::addExplosion(const Vector4D& point)
{
    Explosion* explosion = getFreeExplosion();
    if (explosion == nullptr) {
        return;
    }
    Matrix4D* matrix = explosion->getMatrixObjectChange();
    if (matrix != nullptr) {
        matrix->setI4();
        matrix->setPosition(point.x, point.y, point.z);
    }
    explosion->changeMatrixObject();
    explosion->alive();
    explosion->lifetime = Random::aleaFloatZeroRange(2.0f) + 0.5f;
}

Bullet* ApplicationQuorbane::getFreeBullet()
{
    for (Bullet& bullet : bullets) {
        if (!bullet.isAlive) {
            return &bullet;
        }
    }
    return nullptr;
}

Explosion* ApplicationQuorbane::getFreeExplosion()
{
    for (Explosion& explosion : explosions) {
        if (!explosion.isAlive) {
            return &explosion;
        }
    }
    return nullptr;
}

bool ApplicationQuorbane::updateEnemiesRange(float dt)
{
    (void)dt;
    const Vector4D eye = world != nullptr ? world->getPosition() : Vector4D(0.0f, 0.0f, 0.0f, 1.0f);
    const Vector4D ship = avatar.getPosition();
    for (Enemy& enemy : enemies) {
        if (enemy.isAlive) {
            const Vector4D p = enemy.getPosition();
            if ((p - eye).norm3D() < enemyRange || (p - ship).norm3D() < enemyRange) {
                continue;
            }
            enemy.die();
        }
        respawnEnemy(enemy, eye, ship);
    }
    return true;
}

// The draws come in a fixed order: a replayed seed gives the same rocks.
void ApplicationQuorbane::respawnEnemy(Enemy& enemy, const Vector4D& eye, const Vector4D& ship)
{
    enemy.cleanup();
    const double u = Random::aleaFloatZeroOne();
    const float s = static_cast<float>(std::pow(u, 8.0) * 10.0 + 1.0);
    enemy.mass = s;
    enemy.lifetime = s;
    enemy.radius = 6.0f * s;
    enemy.momentOfInertia = 10.0f * s;

    const float e1 = Random::aleaFloatMinusRangeRange(3.0f);
    const float e2 = Random::aleaFloatMinusRangeRange(3.0f);
    const float e3 = Random::aleaFloatMinusRangeRange(3.0f);
    enemy.cineticMoment = Vector4D(e3, e2, e1, 0.0f);

    Matrix4D* matrix = enemy.getMatrixObjectChange();
    if (matrix != nullptr) {
        matrix->setI4();
        matrix->rotX(Random::aleaFloatZeroRange(6.28f));
        matrix->rotZ(Random::aleaFloatZeroRange(3.14f));
        matrix->enlarge(s);
    }

    const float f1 = Random::aleaFloatMinusOneOne();
    const float f2 = Random::aleaFloatMinusOneOne();
    const float f3 = Random::aleaFloatMinusOneOne();
    Vector4D offset(f3, f2, f1, 0.0f);
    offset.normalize3D();
    offset *= enemySpawnDistance;
    offset += Random::aleaFloatZeroOne() > 0.5f ? eye : ship;
    offset.w = 1.0f;
    enemy.setPosition(offset);

    const float g1 = Random::aleaFloatMinusOneOne();
    const float g2 = Random::aleaFloatMinusOneOne();
    const float g3 = Random::aleaFloatMinusOneOne();
    Vector4D speed(g3, g2, g1, 0.0f);
    speed.normalize3D();
    enemy.speed = speed * enemySpeed;
    enemy.alive();
}

bool ApplicationQuorbane::spawnBullet(const Vector4D& position, const Vector4D& speed, const Vector4D& up)
{
    fireBullet(position, speed, up);
    return true;
}

int ApplicationQuorbane::fireBullet(const Vector4D& position, const Vector4D& speed, const Vector4D& up)
{
    Bullet* bullet = getFreeBullet();
    if (bullet == nullptr) {
        return -1;
    }
    bullet->fire(position, speed, up);
    bullet->lifetime = bulletLifetime;
    return static_cast<int>(bullet - bullets);
}

// ---- input -----------------------------------------------------------------------

void ApplicationQuorbane::manageButton(GLFWwindow* eventWindow, int button, int action, int mods)
{
    (void)eventWindow;
    (void)mods;
    if (button != GLFW_MOUSE_BUTTON_LEFT || action != GLFW_RELEASE || world == nullptr) {
        return;
    }
    fireAt(static_cast<int>(cursorX), static_cast<int>(cursorY));
}

void ApplicationQuorbane::fireAt(int x, int y)
{
    Vector4D origin;
    Vector4D direction;
    Vector4D up;
    world->computePick(x, y, origin, direction, up);
    origin += direction * bulletLead;
    Vector4D speed = direction * bulletSpeed;
    speed.w = 0.0f;
    if (isClient) {
        requestSpawnBullet(origin, speed, up);
    } else {
        spawnBullet(origin, speed, up);
    }
}

void ApplicationQuorbane::manageKey(GLFWwindow* eventWindow, int key, int scancode, int action, int mods)
{
    Application3D::manageKey(eventWindow, key, scancode, action, mods);
    if (isClient && isConnected) {
        requestMoveClient();
    }
}

std::string ApplicationQuorbane::describe(const Vector4D& p)
{
    std::ostringstream text;
    text << p.x << ' ' << p.y << ' ' << p.z;
    return text.str();
}

float ApplicationQuorbane::joystickAxisValue(float raw)
{
    constexpr float deadZone = 0.2f;
    if (!std::isfinite(raw) || std::fabs(raw) < deadZone) {
        return 0.0f;
    }
    // Full travel past the dead zone, so a small push starts from 0.
    const float sign = raw < 0.0f ? -1.0f : 1.0f;
    return sign * std::fmin((std::fabs(raw) - deadZone) / (1.0f - deadZone), 1.0f);
}

void ApplicationQuorbane::manageJoystickAxis()
{
    if (window == nullptr || world == nullptr || glfwJoystickPresent(GLFW_JOYSTICK_1) == GLFW_FALSE) {
        return;
    }
    int count = 0;
    const float* axes = glfwGetJoystickAxes(GLFW_JOYSTICK_1, &count);
    const float turn = count > 0 ? joystickAxisValue(axes[0]) : 0.0f;
    const float pitch = count > 1 ? joystickAxisValue(axes[1]) : 0.0f;
    const float thrust = count > 3 ? joystickAxisValue(axes[3]) : 0.0f;
    if (turn == 0.0f && pitch == 0.0f && thrust == 0.0f) {
        return;
    }
    // At most the arrow keys' step per update.
    world->rotY(0.1f * turn);
    world->rotX(-0.1f * pitch);
    world->moveIn(-moveStep * thrust);
    if (isClient && isConnected) {
        requestMoveClient();
    }
}

void ApplicationQuorbane::manageJoystickButton()
{
    if (window == nullptr || world == nullptr || glfwJoystickPresent(GLFW_JOYSTICK_1) == GLFW_FALSE) {
        return;
    }
    int count = 0;
    const unsigned char* buttons = glfwGetJoystickButtons(GLFW_JOYSTICK_1, &count);
    const bool isDown = count > 0 && buttons[0] == GLFW_PRESS;
    const bool released = joystickFireDown && !isDown;
    joystickFireDown = isDown;
    if (released) {
        fireAt(width / 2, height / 2);
    }
}

}  // namespace korvel
