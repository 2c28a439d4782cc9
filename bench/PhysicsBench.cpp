// One physics step of the game's whole population, as its frame runs it: the
// blows in use age, then every live enemy, bullet and explosion and the
// avatar take their step. 50 enemies, 50 bullets, 20 explosions, the avatar,
// each with an incarnation that follows it, and 100 blows in use: five in
// every slot of ten enemies (two with a point) and of ten bullets.
// Every 250 steps (5 s of play) the population is placed again, out of the
// timing, so that the motion stays what a game sees.
//
//   build/PhysicsBench --benchmark_min_time=2
//
// Counters: time per body update (the step over its 121 bodies) and heap
// allocations per step (expected 0).

#include "core/Matrix4D.h"
#include "core/Random.h"
#include "physics/Bullet.h"
#include "physics/Enemy.h"
#include "physics/Explosion.h"
#include "physics/ForceBlow.h"
#include "physics/PhysicalObject.h"
#include "physics/Pool.h"
#include "scene/IObject3D.h"

#include "AllocationCounter.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace {

using korvel::Bullet;
using korvel::Enemy;
using korvel::Explosion;
using korvel::ForceBlow;
using korvel::IObject3D;
using korvel::PhysicalObject;
using korvel::Random;

constexpr int enemyCount = 50;
constexpr int bulletCount = 50;
constexpr int explosionCount = 20;
constexpr int bodyCount = enemyCount + bulletCount + explosionCount + 1;
constexpr float dt = 0.02f;

Vector4D randomDirection(float length)
{
    Vector4D d(Random::aleaFloatMinusOneOne(), Random::aleaFloatMinusOneOne(), Random::aleaFloatMinusOneOne(), 0.0f);
    d.normalize3D();
    return d * length;
}

Vector4D randomPoint(float range)
{
    Vector4D p = randomDirection(Random::aleaFloatZeroRange(range));
    p.w = 1.0f;
    return p;
}

struct Population {
    IObject3D incarnations[bodyCount];
    Enemy enemies[enemyCount];
    Bullet bullets[bulletCount];
    Explosion explosions[explosionCount];
    PhysicalObject avatar;
    korvel::Pool<ForceBlow, 100> blows;
    int nextBlow = 0;

    Population()
    {
        PhysicalObject* bodies[bodyCount];
        collect(bodies);
        for (int i = 0; i < bodyCount; ++i) {
            bodies[i]->setIncarnation(&incarnations[i]);
        }
        place();
    }

    void collect(PhysicalObject** bodies)
    {
        int n = 0;
        for (Enemy& e : enemies) {
            bodies[n++] = &e;
        }
        for (Bullet& b : bullets) {
            bodies[n++] = &b;
        }
        for (Explosion& e : explosions) {
            bodies[n++] = &e;
        }
        bodies[n] = &avatar;
    }

    // As the game's respawn, fire and hit would leave them, with lives long
    // enough that nothing dies during the run.
    void place()
    {
        std::srand(5);
        nextBlow = 0;
        for (Enemy& e : enemies) {
            e.initForces();
            e.cleanup();
            const float s = 1.0f + 10.0f * Random::aleaFloatZeroOne();
            e.mass = s;
            e.lifetime = 1e9f;
            e.momentOfInertia = 10.0f * s;
            e.cineticMoment = randomDirection(3.0f);
            Matrix4D& m = *e.getMatrixObjectChange();
            m.setI4();
            m.rotX(Random::aleaFloatZeroRange(6.28f));
            m.rotZ(Random::aleaFloatZeroRange(3.14f));
            m.enlarge(s);
            e.setPosition(randomPoint(245.0f));
            e.speed = randomDirection(20.0f);
            e.alive();
        }
        for (Bullet& b : bullets) {
            b.initForces();
            b.fire(randomPoint(10.0f), randomDirection(200.0f), Vector4D(0.0f, 1.0f, 0.0f, 0.0f));
            b.lifetime = 1e9f;
        }
        for (Explosion& e : explosions) {
            e.setPosition(randomPoint(200.0f));
            e.lifetime = 1e9f;
            e.alive();
        }
        avatar.initForces();
        avatar.mass = 50.0f;
        avatar.momentOfInertia = 15.0f;
        avatar.lifetime = 1e21f;
        avatar.alive();
        for (int i = 0; i < 10; ++i) {
            for (int slot = 0; slot < PhysicalObject::forceSlots; ++slot) {
                attachBlow(enemies[i], slot < 2);
                attachBlow(bullets[i], false);
            }
        }
    }

    void attachBlow(PhysicalObject& body, bool withPoint)
    {
        ForceBlow& blow = blows.elements[nextBlow++];
        blow.released = false;
        blow.lifetime = 1e9f;
        blow.alive();
        blow.setBaseForce(randomDirection(1.0f), 300.0f);
        if (withPoint) {
            Vector4D point = body.getPosition() + randomDirection(2.0f);
            body.addForce(&blow, point);
        } else {
            body.addForce(&blow);
        }
    }

    void step()
    {
        for (ForceBlow& blow : blows.elements) {
            if (!blow.released && blow.isAlive) {
                blow.update(dt);
            }
        }
        for (Enemy& e : enemies) {
            if (e.isAlive) {
                e.update(dt);
            }
        }
        for (Bullet& b : bullets) {
            if (b.isAlive) {
                b.update(dt);
            }
        }
        for (Explosion& e : explosions) {
            if (e.isAlive) {
                e.update(dt);
            }
        }
        avatar.update(dt);
    }
};

// Steps the population as the benchmark asks, placing it again every 250
// steps out of the timing.
template <class Step>
void runSteps(benchmark::State& state, Population& population, Step step)
{
    int steps = 0;
    for (auto _ : state) {
        step();
        benchmark::ClobberMemory();
        if (++steps == 250) {
            state.PauseTiming();
            population.place();
            steps = 0;
            state.ResumeTiming();
        }
    }
}

void BM_WholeStep(benchmark::State& state)
{
    auto population = std::make_unique<Population>();
    const long before = benchAllocations.load();
    runSteps(state, *population, [&population] { population->step(); });
    const long allocated = benchAllocations.load() - before;
    state.counters["allocs_per_step"] =
        benchmark::Counter(static_cast<double>(allocated), benchmark::Counter::kAvgIterations);
    state.counters["per_body"] =
        benchmark::Counter(bodyCount, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    if (allocated != 0) {
        state.SkipWithError("a physics step allocated memory");
    }
}
BENCHMARK(BM_WholeStep);

// One body alone, the heaviest case of the step: an enemy whose five slots
// hold blows, two of them with a point, with an incarnation to follow it.
void BM_EnemyWithFiveBlows(benchmark::State& state)
{
    auto population = std::make_unique<Population>();
    Enemy& enemy = population->enemies[0];
    runSteps(state, *population, [&enemy] { enemy.update(dt); });
}
BENCHMARK(BM_EnemyWithFiveBlows);

// The lightest: a bullet with no force, flying straight.
void BM_FreeBullet(benchmark::State& state)
{
    auto population = std::make_unique<Population>();
    Bullet& bullet = population->bullets[40];
    runSteps(state, *population, [&bullet] { bullet.update(dt); });
}
BENCHMARK(BM_FreeBullet);

}  // namespace

BENCHMARK_MAIN();
