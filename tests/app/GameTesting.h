#pragma once
// The game without a window: its bodies, rules and messages run on a world
// that has a camera and a projection but no GL context and no scene objects.

#include "app/ApplicationQuorbane.h"
#include "core/Matrix4D.h"
#include "parser/Parser.h"
#include "scene/World.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace game_testing {

// How many of the first `count` indices pass `test`.
template <typename Test>
int countWhere(int count, Test test)
{
    int found = 0;
    for (int i = 0; i < count; ++i) {
        found += test(i) ? 1 : 0;
    }
    return found;
}

class TestGame : public korvel::ApplicationQuorbane {
public:
    // A world looking down -z from the origin, 1280x720, from 1 to 300.
    TestGame()
    {
        auto* scene = new korvel::World();
        scene->setProjection(0.7853982f, 1280, 720, 1.0f, 300.0f);
        scene->setView(Matrix4D::getI4());
        setWorld(scene);
        initPhysic();
    }

    // config.def as the game would read it.
    void configure(const std::string& text)
    {
        korvel::Parser parser;
        parser.parse(text);
        delete configuration;
        configuration = parser.detachModule();
    }

    korvel::World& scene() { return *world; }
    void pointAt(double x, double y)
    {
        cursorX = x;
        cursorY = y;
    }

    // Every bullet and explosion dead, every enemy alive far from everyone
    // (so that range keeping alone would recycle it) unless placed again.
    void quiet()
    {
        for (int i = 0; i < countBullets; ++i) {
            getBullet(i).die();
        }
        for (int i = 0; i < countExplosions; ++i) {
            getExplosion(i).die();
        }
        for (int i = 0; i < countEnemies; ++i) {
            place(getEnemy(i), Vector4D(1000.0f + 30.0f * static_cast<float>(i), 0.0f, 0.0f, 1.0f));
            getEnemy(i).alive();
        }
    }

    static void place(korvel::PhysicalObject& body, const Vector4D& p)
    {
        body.getMatrixObjectChange()->setI4();
        body.setPosition(p);
        body.changeMatrixObject();
    }

    int aliveBullets() { return countWhere(countBullets, [this](int i) { return getBullet(i).isAlive; }); }
    int aliveExplosions() { return countWhere(countExplosions, [this](int i) { return getExplosion(i).isAlive; }); }
    int freeBlowForces() { return countWhere(countBlowForces, [this](int i) { return getBlowForce(i).released; }); }

    using korvel::ApplicationQuorbane::playAloneUnlessConnected;
};

inline Vector4D point(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

inline Vector4D direction(float x, float y, float z)
{
    return Vector4D(x, y, z, 0.0f);
}

inline bool nearlyEqual(const Matrix4D& a, const Matrix4D& b, float tolerance = 1e-5f)
{
    for (int i = 0; i < 16; ++i) {
        if (std::fabs(a.m[i] - b.m[i]) > tolerance) {
            return false;
        }
    }
    return true;
}

}  // namespace game_testing
