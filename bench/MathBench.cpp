// Cost per call of the matrix operations the scene and physics run every
// frame, and proof that inversion stays off the heap.
//
//   build-dir/MathBench --benchmark_min_time=0.5

#include "core/Matrix4D.h"

#include "AllocationCounter.h"

#include <benchmark/benchmark.h>


namespace {

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
    const long before = benchAllocations.load();
    for (auto _ : state) {
        benchmark::DoNotOptimize(m.invert(inverse));
        benchmark::ClobberMemory();
    }
    const long allocated = benchAllocations.load() - before;
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

BENCHMARK_MAIN();
