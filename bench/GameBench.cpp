// One server frame of the game with its whole population: the rules of the
// frame step (blows, range keeping, every enemy's step and collision test,
// the avatar's, every bullet's and explosion's step), then the state update
// written with all 50 enemies, 50 bullets and 20 explosions alive (8018
// bytes framed) and sent to a client on 127.0.0.1, then the requests served.
//
//   build/GameBench --benchmark_min_time=2
//
// The bullets fly away from everything and everything lives for ever, so
// that each frame carries the largest update. No window: the world has a
// camera but no scene objects. Counter: allocations per frame.

#include "app/ApplicationQuorbane.h"
#include "network/Server.h"
#include "parser/Parser.h"
#include "scene/World.h"

#include "AllocationCounter.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <iostream>
#include <sstream>

namespace {

using korvel::ApplicationQuorbane;

class BenchGame : public ApplicationQuorbane {
public:
    bool serve()
    {
        auto* scene = new korvel::World();
        scene->setProjection(0.7853982f, 1280, 720, 1.0f, 300.0f);
        setWorld(scene);
        korvel::Parser parser;
        parser.parse("<isServer><port>0</port></isServer>\n");
        configuration = parser.detachModule();
        initPhysic();
        return initNetwork();
    }

    void fillEverything()
    {
        for (int i = 0; i < countBullets; ++i) {
            const Vector4D from(10000.0f + 10.0f * static_cast<float>(i), 0.0f, 0.0f, 1.0f);
            spawnBullet(from, Vector4D(200.0f, 0.0f, 0.0f, 0.0f), Vector4D(0.0f, 1.0f, 0.0f, 0.0f));
            getBullet(i).lifetime = 1e30f;
        }
        for (int i = 0; i < countExplosions; ++i) {
            addExplosion(Vector4D(0.0f, -5000.0f - static_cast<float>(i), 0.0f, 1.0f));
            getExplosion(i).lifetime = 1e30f;
        }
        getAvatar().alive();
        getAvatar().lifetime = 1e30f;
    }
};

// A client that speaks once so that the server sends to it, then never reads.
class SilentClient {
public:
    explicit SilentClient(int serverPort) : fd(::socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<uint16_t>(serverPort));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        // A move request to the identity, framed as an ACK request.
        unsigned char request[64 + 2 + 10] = {};
        const float one = 1.0f;
        for (int i = 0; i < 4; ++i) {
            std::copy(reinterpret_cast<const unsigned char*>(&one), reinterpret_cast<const unsigned char*>(&one) + 4,
                      request + 4 * (5 * i));
        }
        const short move = 1;
        std::copy(reinterpret_cast<const unsigned char*>(&move), reinterpret_cast<const unsigned char*>(&move) + 2,
                  request + 64);
        ::sendto(fd, request, sizeof request, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }
    ~SilentClient() { ::close(fd); }
    SilentClient(const SilentClient&) = delete;
    SilentClient& operator=(const SilentClient&) = delete;

private:
    int fd;
};

void BM_ServerFrame(benchmark::State& state)
{
    // The game's lines would measure the terminal.
    std::ostringstream sink;
    std::streambuf* console = std::cout.rdbuf(sink.rdbuf());
    BenchGame game;
    if (!game.serve()) {
        std::cout.rdbuf(console);
        state.SkipWithError("the server could not start");
        return;
    }
    SilentClient client(game.getServer()->getSocket().getLocalPort());
    while (!game.getServer()->isClientActive(0)) {
        game.updateWorld(0.02f);
    }
    game.fillEverything();
    long allocations = 0;
    for (auto _ : state) {
        const long before = benchAllocations.load();
        game.updateWorld(0.02f);
        allocations += benchAllocations.load() - before;
    }
    std::cout.rdbuf(console);
    state.counters["allocations/frame"] =
        benchmark::Counter(static_cast<double>(allocations) / static_cast<double>(state.iterations()));
}
BENCHMARK(BM_ServerFrame)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
