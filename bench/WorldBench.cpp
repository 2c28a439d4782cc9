// The world's frame and its picking, with 1,000 clones of the game's rock
// (data/asteroid.obj through the model manager) in view at 1280 x 720.
//
//   LIBGL_ALWAYS_SOFTWARE=1 xvfb-run -a -s "-screen 0 1280x720x24" build/WorldBench
//
// DrawThousandRocks times, frame after frame and in turns, the engine's frame
// (World::update then World::draw) and a plain GL loop that draws the same
// buffers with the same program and the same uniforms; its counters give
// both rates in frames per second and the ratio of their times. Each frame
// ends with glFinish, so that the software renderer's work is counted; the
// "submit" counters give the part of a frame spent before that wait, where
// the engine's own cost shows.
// PickAmongThousandRocks picks through the cursor at scattered points of the
// screen; the time is per pick.
//
// The data directory is the one named by path.def beside the executable,
// as for the game.

#include "render/GLBaseStructure.h"
#include "render/OpenGLError.h"
#include "render/Shader.h"
#include "render/ShaderProgram.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "render/TextureManager.h"
#include "scene/Clone3D.h"
#include "scene/ModelManager.h"
#include "scene/World.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <GL/gl.h>
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

const int width = 1280;
const int height = 720;
const int rockCount = 1000;

// The engine logs to std::cout; a benchmark wants none of it.
struct Silence {
    std::ostringstream sink;
    std::streambuf* old = std::cout.rdbuf(sink.rdbuf());
    ~Silence() { std::cout.rdbuf(old); }
};

std::string dataDirectory()
{
    char exe[4096] = {};
    const ssize_t length = readlink("/proc/self/exe", exe, sizeof(exe) - 1);
    std::string dir = length > 0 ? std::string(exe, static_cast<std::size_t>(length)) : std::string();
    dir = dir.substr(0, dir.find_last_of('/') + 1);
    std::ifstream file(dir + "path.def");
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const auto begin = text.find("<Absolute>");
    const auto end = text.find("</Absolute>");
    if (begin == std::string::npos || end == std::string::npos) {
        return dir + "../data/";
    }
    return text.substr(begin + 10, end - begin - 10);
}

// A hidden window of the frame's size, the GL entry points, the frame's GL
// state, and the rock model.
bool openScene()
{
    if (glfwInit() == GLFW_FALSE) {
        return false;
    }
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    glfwWindowHint(GLFW_RESIZABLE, GLFW_FALSE);
    GLFWwindow* window = glfwCreateWindow(width, height, "WorldBench", nullptr, nullptr);
    if (window == nullptr) {
        return false;
    }
    glfwMakeContextCurrent(window);
    glfwSwapInterval(0);
    if (!(Shader::init() && ShaderProgram::init() && OpenGLError::init() && GLBaseStructure::init()
          && korvel::ShaderProgramManagerBase::init() && korvel::TextureManager::init())) {
        return false;
    }
    glViewport(0, 0, width, height);
    glClearColor(0.5f, 0.5f, 0.6f, 0.0f);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    const std::string data = dataDirectory();
    Silence quiet;
    korvel::ShaderProgramManager::getInstance()->setPath(data + "Shaders/");
    korvel::ModelManager::getInstance()->setPath(data);
    std::istringstream entry("ModelShape 1 asteroid.obj");
    return korvel::ModelManager::getInstance()->loadModel("asteroid", entry);
}

// 1,000 rocks ahead of the camera, all in view, each turned its own way.
korvel::World& rockField()
{
    static korvel::World* world = nullptr;
    if (world != nullptr) {
        return *world;
    }
    world = new korvel::World();
    world->setProjection(0.7853982f, width, height, 0.5f, 300.0f);
    world->setView(Matrix4D::getI4());
    world->setMainLight(Vector4D(0.3f, -0.6f, -0.7f, 1.0f));
    world->setPhong(Vector4D(0.2f, 0.8f, 0.8f, 2.0f));
    std::mt19937 random(3);
    std::uniform_real_distribution<float> turn(0.0f, 6.28f);
    std::uniform_real_distribution<float> far(40.0f, 60.0f);
    for (int i = 0; i < rockCount; ++i) {
        korvel::IObject3D* rock = korvel::ModelManager::getInstance()->createClone("asteroid");
        // A grid of 40 x 25 over 90 % of the screen, at depths of 40 to 60.
        const float depth = far(random);
        const float x = 0.9f * (static_cast<float>(i % 40) - 19.5f) / 19.5f;
        const float y = 0.9f * (static_cast<float>(i / 40) - 12.0f) / 12.0f;
        Matrix4D* m = rock->getMatrixObjectChange();
        m->rotX(turn(random));
        m->rotY(turn(random));
        m->enlarge(0.6f);
        m->setPosition(x * depth / world->getProjection().m[0], y * depth / world->getProjection().m[5], -depth);
        rock->changeMatrixObject();
        world->addElement(rock);
    }
    Silence quiet;
    world->linkObjects();
    world->setup();
    return *world;
}

double seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Both frames return the time spent handing the work to GL, before the
// wait for the renderer.
double engineFrame(korvel::World& world)
{
    const auto begin = std::chrono::steady_clock::now();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    world.update();
    world.draw();
    const double submitted = seconds(begin);
    glFinish();
    return submitted;
}

// What a program written straight on GL does for the same picture: the
// frame's values once, then per rock its matrix, its age and its buffers.
struct PlainLoop {
    ShaderProgramBase* program = nullptr;
    unsigned vertexArray = 0;
    unsigned indexBuffer = 0;
    int indexCount = 0;
    std::vector<const Matrix4D*> matrices;
    void (*bindVertexArray)(unsigned) = nullptr;
    void (*bindBuffer)(unsigned, unsigned) = nullptr;
    void (*useProgram)(unsigned) = nullptr;

    explicit PlainLoop(korvel::World& world)
    {
        for (const auto& entry : world.getElements()) {
            auto* clone = static_cast<korvel::Clone3D*>(entry.second);
            program = clone->getShaderProgram();
            vertexArray = clone->getStructure()->getVertexArrayRaw();
            indexBuffer = clone->getStructure()->getIndexBufferRaw();
            indexCount = clone->getStructure()->getIndexCount();
            matrices.push_back(clone->getMatrixObject());
        }
        bindVertexArray = reinterpret_cast<void (*)(unsigned)>(glfwGetProcAddress("glBindVertexArray"));
        bindBuffer = reinterpret_cast<void (*)(unsigned, unsigned)>(glfwGetProcAddress("glBindBuffer"));
        useProgram = reinterpret_cast<void (*)(unsigned)>(glfwGetProcAddress("glUseProgram"));
    }

    double frame(korvel::World& world) const
    {
        const auto begin = std::chrono::steady_clock::now();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        useProgram(program->getProgramRaw());
        const Vector4D camera = world.getPosition();
        ShaderProgram::uniformMatrix4fv(program->getProjectionLocation(), 1, 0, world.getProjection().m);
        ShaderProgram::uniformMatrix4fv(program->getModelviewLocation(), 1, 0, world.getView().m);
        ShaderProgram::uniform3fv(program->getCameraLocation(), 1, &camera.x);
        for (const Matrix4D* m : matrices) {
            ShaderProgram::uniformMatrix4fv(program->getObjectLocation(), 1, 0, m->m);
            if (program->getTimeLocation() != -1) {
                ShaderProgram::uniform1f(program->getTimeLocation(), 0.0f);
            }
            bindVertexArray(vertexArray);
            bindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
            glDrawElements(GL_TRIANGLES, indexCount, GL_UNSIGNED_INT, nullptr);
        }
        bindVertexArray(0);
        const double submitted = seconds(begin);
        glFinish();
        return submitted;
    }
};

void DrawThousandRocks(benchmark::State& state)
{
    korvel::World& world = rockField();
    const PlainLoop plain(world);
    engineFrame(world);  // first frames warm the driver's caches
    plain.frame(world);
    double engineTime = 0.0;
    double plainTime = 0.0;
    double engineSubmit = 0.0;
    double plainSubmit = 0.0;
    bool engineFirst = true;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        // In turns, so that a load that comes and goes on the machine falls
        // on both alike.
        for (int pass = 0; pass < 2; ++pass) {
            const auto begin = std::chrono::steady_clock::now();
            if ((pass == 0) == engineFirst) {
                engineSubmit += engineFrame(world);
                engineTime += seconds(begin);
            } else {
                plainSubmit += plain.frame(world);
                plainTime += seconds(begin);
            }
        }
        engineFirst = !engineFirst;
        state.SetIterationTime(seconds(start));
    }
    const double frames = static_cast<double>(state.iterations());
    state.counters["engine_fps"] = frames / engineTime;
    state.counters["plainGL_fps"] = frames / plainTime;
    state.counters["engine/plainGL"] = engineTime / plainTime;
    state.counters["engine_submit_ms"] = 1000.0 * engineSubmit / frames;
    state.counters["plainGL_submit_ms"] = 1000.0 * plainSubmit / frames;
    state.counters["drawn"] = static_cast<double>(world.countElements());
}
BENCHMARK(DrawThousandRocks)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(15.0);

void PickAmongThousandRocks(benchmark::State& state)
{
    korvel::World& world = rockField();
    std::mt19937 random(11);
    std::vector<std::pair<int, int>> cursors;
    for (int i = 0; i < 256; ++i) {
        cursors.emplace_back(static_cast<int>(random() % width), static_cast<int>(random() % height));
    }
    std::size_t next = 0;
    double hits = 0.0;
    for (auto _ : state) {
        const auto& [x, y] = cursors[next++ % cursors.size()];
        hits += world.pickObject(x, y) != nullptr ? 1.0 : 0.0;
    }
    state.counters["hit_fraction"] = hits / static_cast<double>(state.iterations());
}
BENCHMARK(PickAmongThousandRocks)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (!openScene()) {
        std::cerr << "WorldBench needs a display and the game's data (run it under xvfb-run)" << std::endl;
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
