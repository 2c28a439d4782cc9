// Loading an OBJ model of about a million triangles (a rippled grid with
// positions, texture coordinates and normals, every corner written as
// v/vt/vn), beside tinyobjloader on the same file in the same run.
//
//   TinyObj      tinyobjloader's LoadObj: file to attribute tables and index
//                lists
//   TextStage    ours, file to tables and triangles: the same file in
//                textured mode ("# mapuv" on its first line), whose plain
//                shapes take the triangles as they come (no point sharing)
//   WholeLoad    ours, the whole load of the untextured file: indexed shape
//                (point sharing), resting on the lowest point, vertex and
//                index arrays (the upload itself fails cleanly: no GL here)
// Each reports the file's bytes per second.

#include "geometry/LoaderFormatOBJ.h"
#include "parser/TextFile.h"
#include "scene/IObject3D.h"

#include <benchmark/benchmark.h>

#ifdef KORVEL_HAVE_TINYOBJ
#include <tiny_obj_loader.h>
#endif

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

constexpr int gridSide = 708;  // 2 x 708^2 = 1,002,528 triangles

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// Silences the loader's one line per load while timing.
class Quiet {
public:
    Quiet() : old(std::cout.rdbuf(&null)) {}
    ~Quiet() { std::cout.rdbuf(old); }

private:
    NullBuffer null;
    std::streambuf* old;
};

void writeGrid(const std::string& file, bool textured)
{
    std::ofstream out(file);
    if (textured) {
        out << "# mapuv\n";
    }
    char line[128];
    const int n = gridSide + 1;
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const float y = 0.05f * std::sin(0.37f * i) * std::cos(0.23f * j);
            std::snprintf(line, sizeof line, "v %.6f %.6f %.6f\n", i * 0.01f, y, j * 0.01f);
            out << line;
        }
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            std::snprintf(line, sizeof line, "vt %.6f %.6f\n", i / float(gridSide), j / float(gridSide));
            out << line;
        }
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            std::snprintf(line, sizeof line, "vn %.6f %.6f %.6f\n", 0.0f, 1.0f, 0.0f);
            out << line;
        }
    }
    for (int j = 0; j < gridSide; ++j) {
        for (int i = 0; i < gridSide; ++i) {
            const int a = j * n + i + 1;
            const int b = a + 1;
            const int c = a + n + 1;
            const int d = a + n;
            std::snprintf(line, sizeof line, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, d, d, d, c, c, c);
            out << line;
            std::snprintf(line, sizeof line, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, c, c, c, b, b, b);
            out << line;
        }
    }
}

const std::string& gridFile(bool textured)
{
    static const std::string plain = [] {
        const std::string file = "/tmp/korvel-model-bench.obj";
        writeGrid(file, false);
        return file;
    }();
    static const std::string uv = [] {
        const std::string file = "/tmp/korvel-model-bench-uv.obj";
        writeGrid(file, true);
        return file;
    }();
    return textured ? uv : plain;
}

int64_t fileSize(const std::string& file)
{
    std::ifstream in(file, std::ios::binary | std::ios::ate);
    return static_cast<int64_t>(in.tellg());
}

#ifdef KORVEL_HAVE_TINYOBJ
void TinyObj(benchmark::State& state)
{
    const std::string& file = gridFile(false);
    std::size_t triangles = 0;
    for (auto _ : state) {
        tinyobj::attrib_t attrib;
        std::vector<tinyobj::shape_t> shapes;
        std::vector<tinyobj::material_t> materials;
        std::string warn;
        std::string err;
        const bool loaded = tinyobj::LoadObj(&attrib, &shapes, &materials, &warn, &err, file.c_str());
        triangles = loaded && !shapes.empty() ? shapes[0].mesh.num_face_vertices.size() : 0;
        benchmark::DoNotOptimize(attrib.vertices.data());
        state.PauseTiming();
        attrib = tinyobj::attrib_t();
        shapes.clear();
        state.ResumeTiming();
    }
    state.counters["triangles"] = static_cast<double>(triangles);
    state.SetBytesProcessed(state.iterations() * fileSize(file));
}
BENCHMARK(TinyObj)->Unit(benchmark::kMillisecond)->Iterations(3);
#endif

void TextStage(benchmark::State& state)
{
    const std::string& file = gridFile(true);
    Quiet quiet;
    for (auto _ : state) {
        auto* loader = new korvel::LoaderFormatOBJ();
        std::string text;
        korvel::readTextLines(file, text);
        loader->readLines(text);
        state.PauseTiming();
        delete loader;
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * fileSize(file));
}
BENCHMARK(TextStage)->Unit(benchmark::kMillisecond)->Iterations(3);

void WholeLoad(benchmark::State& state)
{
    const std::string& file = gridFile(false);
    Quiet quiet;
    for (auto _ : state) {
        korvel::LoaderFormatOBJ loader;
        std::istringstream entry(file);
        loader.load(entry);
        bool compound = false;
        korvel::IObject3D* object = loader.feedObject(compound);
        state.PauseTiming();
        delete object;
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * fileSize(file));
}
BENCHMARK(WholeLoad)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
