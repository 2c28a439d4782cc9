// Cost per call of the matrix operations the scene and physics run every
// frame, and proof that inversion stays off the heap.
//
//   build-dir/MathBench --benchmark_min_time=0.5

#include "core/Matrix4D.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};

Matrix4D sampleMatrix()
{
    Matrix4D m = Matrix4D::getRx(0.3f);
    m.rotZ(1.2f);
    m.enlarge(1.5f);
    m.setPosition(3.0f, -2.0f, 7.0f);
    m.m[3] = 0.01f;  // a full bottom line: no shortcut for affine matrices
    return m;
}

void BM_Invert(benchmark::State& state)
{
    const Matrix4D m = sampleMatrix();
    Matrix4D inverse;
    const long before = allocations.load();
    for (auto _ : state) {
        benchmark::DoNotOptimize(m.invert(inverse));
        benchmark::ClobberMemory();
    }
    const long allocated = allocations.load() - before;
    state.counters["allocations"] = static_cast<double>(allocated);
    if (allocated != 0) {
        state.SkipWithError("Matrix4D::invert allocated memory");
    }
}
BENCHMARK(BM_Invert);

void BM_MatrixTimesMatrix(benchmark::State& state)
{
    const Matrix4D a = sampleMatrix();
    Matrix4D b = Matrix4D::getRy(0.7f);
    for (auto _ : state) {
        benchmark::DoNotOptimize(b = a * b);
    }
}
BENCHMARK(BM_MatrixTimesMatrix);

void BM_MatrixTimesVector(benchmark::State& state)
{
    const Matrix4D a = sampleMatrix();
    Vector4D v(1.0f, 2.0f, 3.0f, 1.0f);
    for (auto _ : state) {
        benchmark::DoNotOptimize(v = a * v);
    }
}
BENCHMARK(BM_MatrixTimesVector);

void BM_RotRLocal(benchmark::State& state)
{
    Matrix4D m = sampleMatrix();
    const Vector4D spin(0.01f, -0.02f, 0.005f, 0.0f);
    for (auto _ : state) {
        m.rotRLocal(spin);
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(m);
}
BENCHMARK(BM_RotRLocal);

}  // namespace

// Counts every allocation of the program so the loops above can show none.
// Kept out of line: inlined, GCC pairs the malloc with a delete it cannot see
// is ours and warns of a mismatch.
__attribute__((noinline)) void* operator new(std::size_t size)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}

__attribute__((noinline)) void operator delete(void* p) noexcept
{
    std::free(p);
}

__attribute__((noinline)) void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}

BENCHMARK_MAIN();
