// Building an indexed shape from a sphere and halving its detail, against
// meshoptimizer's simplifier on the same mesh and the same target, at three
// sizes (division 158, 316, 632: about 25k, 100k and 400k triangles).
//
//   build/GeometryBench --benchmark_filter='Sphere'
//
// Per-run counters: points and triangles before and after.

#include "core/Vector4D.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/ShapeNode.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"

#include <benchmark/benchmark.h>

#ifdef KORVEL_HAVE_MESHOPT
#include <meshoptimizer.h>
#endif

#include <cstdlib>
#include <malloc.h>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

using korvel::Shape;
using korvel::ShapeIndexed;
using korvel::Sphere;

namespace {

// The engine logs to std::cout; a benchmark wants none of it.
struct Silence {
    std::ostringstream sink;
    std::streambuf* old = std::cout.rdbuf(sink.rdbuf());
    ~Silence() { std::cout.rdbuf(old); }
};

// One mesh at a time: every triangle is a registered Object, and a registry
// swollen by meshes of other sizes would slow every creation and deletion.
const Shape& sphereOf(int division)
{
    static int cachedDivision = 0;
    static std::unique_ptr<Shape> cached;
    if (!cached || cachedDivision != division) {
        cached.reset();
        Sphere s(Vector4D(0, 0, 0, 1), 10.0f);
        s.setDivision(division);
        cached.reset(s.createShape());
        cachedDivision = division;
    }
    return *cached;
}

void BM_SphereBuildIndexed(benchmark::State& state)
{
    const Shape& mesh = sphereOf(static_cast<int>(state.range(0)));
    Silence quiet;
    std::size_t points = 0;
    for (auto _ : state) {
        auto s = std::make_unique<ShapeIndexed>();
        s->copyTriangles(mesh.getTriangles());
        points = s->getPointCount();
        benchmark::DoNotOptimize(points);
        state.PauseTiming();
        s.reset();
        malloc_trim(0);
        state.ResumeTiming();
    }
    state.counters["triangles"] = static_cast<double>(mesh.getTriangleCount());
    state.counters["points"] = static_cast<double>(points);
}

void BM_SphereReduceHalf(benchmark::State& state)
{
    const Shape& mesh = sphereOf(static_cast<int>(state.range(0)));
    Silence quiet;
    std::size_t pointsAfter = 0;
    std::size_t trianglesAfter = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto s = std::make_unique<ShapeIndexed>();
        s->copyTriangles(mesh.getTriangles());
        std::srand(1);
        // glibc merges the small blocks freed by the previous round at the
        // next large allocation; do it here rather than inside the timing.
        malloc_trim(0);
        state.ResumeTiming();
        const bool done = s->reduceDetail(0.5f);
        benchmark::DoNotOptimize(done);
        state.PauseTiming();
        pointsAfter = s->getPointCount();
        trianglesAfter = s->getTriangleCount();
        s.reset();
        state.ResumeTiming();
    }
    state.counters["triangles"] = static_cast<double>(mesh.getTriangleCount());
    state.counters["pointsAfter"] = static_cast<double>(pointsAfter);
    state.counters["trianglesAfter"] = static_cast<double>(trianglesAfter);
}

#ifdef KORVEL_HAVE_MESHOPT
// The same mesh as an index buffer over the shared points.
struct IndexedMesh {
    std::vector<float> positions;
    std::vector<unsigned int> indices;
};

const IndexedMesh& indexedOf(int division)
{
    static std::map<int, IndexedMesh> cache;
    auto found = cache.find(division);
    if (found != cache.end()) {
        return found->second;
    }
    Silence quiet;
    ShapeIndexed s;
    s.copyTriangles(sphereOf(division).getTriangles());
    s.computeIndexes();
    IndexedMesh& m = cache[division];
    m.positions.resize(s.getPointCount() * 3);
    for (const auto& [p, node] : s.getPointsIndex()) {
        const std::size_t i = static_cast<std::size_t>(node->index);
        m.positions[3 * i] = p->x;
        m.positions[3 * i + 1] = p->y;
        m.positions[3 * i + 2] = p->z;
    }
    for (const korvel::Triangle* t : s.getTriangles()) {
        for (Vector4D* p : t->points) {
            m.indices.push_back(static_cast<unsigned int>(s.getPointsIndex().at(p)->index));
        }
    }
    return m;
}

void BM_SphereMeshoptSimplifyHalf(benchmark::State& state)
{
    const IndexedMesh& m = indexedOf(static_cast<int>(state.range(0)));
    std::vector<unsigned int> out(m.indices.size());
    // Half the points of a closed mesh is about half its triangles.
    const std::size_t target = (m.indices.size() / 3 / 2) * 3;
    std::size_t produced = 0;
    for (auto _ : state) {
        produced = meshopt_simplify(out.data(), m.indices.data(), m.indices.size(), m.positions.data(),
                                    m.positions.size() / 3, sizeof(float) * 3, target, 1.0f, 0, nullptr);
        benchmark::DoNotOptimize(produced);
    }
    state.counters["triangles"] = static_cast<double>(m.indices.size() / 3);
    state.counters["trianglesAfter"] = static_cast<double>(produced / 3);
}
BENCHMARK(BM_SphereMeshoptSimplifyHalf)->Arg(158)->Arg(316)->Arg(632)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(BM_SphereBuildIndexed)->Arg(158)->Arg(316)->Arg(632)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SphereReduceHalf)->Arg(158)->Arg(316)->Arg(632)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
