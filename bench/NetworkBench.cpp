// Network layer costs: writing and reading back the largest state update
// against a plain memcpy of the same size, and round trips between a real
// Client and Server on 127.0.0.1 (median and 99th percentile as counters).

#include "network/Buffer.h"
#include "network/Client.h"
#include "network/Server.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iostream>
#include <streambuf>
#include <thread>
#include <vector>

using korvel::Buffer;

namespace {

constexpr int enemies = 50;
constexpr int explosions = 20;
constexpr int bullets = 50;
constexpr uint64_t framedStateSize = enemies * 65 + explosions * 69 + bullets * 65 + 128 + 10;  // 8018

// The reading threads log every datagram; the benchmarks measure the
// network, not the terminal.
class Discard : public std::streambuf {
protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

class QuietOutput {
public:
    QuietOutput() : old(std::cout.rdbuf(&sink)) {}
    ~QuietOutput() { std::cout.rdbuf(old); }

private:
    Discard sink;
    std::streambuf* old;
};

Matrix4D sampleMatrix(float seed)
{
    Matrix4D m = Matrix4D::getI4();
    m.m[12] = seed;
    m.m[13] = seed * 2;
    return m;
}

void writeState(Buffer& state)
{
    const Matrix4D matrix = sampleMatrix(1.5f);
    for (int i = 0; i < enemies; ++i) {
        state.add(matrix);
        state.add(true);
    }
    for (int i = 0; i < explosions; ++i) {
        state.add(matrix);
        state.add(0.25f);
        state.add(true);
    }
    for (int i = 0; i < bullets; ++i) {
        state.add(matrix);
        state.add(true);
    }
    state.add(matrix);
    state.add(matrix);
}

bool readState(Buffer& state, float& checksum)
{
    Matrix4D matrix;
    bool alive = false;
    float age = 0;
    if (!state.get(matrix) || !state.get(matrix)) {
        return false;
    }
    checksum += matrix.m[12];
    const int counts[3] = {bullets, explosions, enemies};
    for (int block = 0; block < 3; ++block) {
        for (int i = counts[block] - 1; i >= 0; --i) {
            if (!state.get(alive)) {
                return false;
            }
            if (alive && ((block == 1 && !state.get(age)) || !state.get(matrix))) {
                return false;
            }
        }
    }
    checksum += matrix.m[12] + age;  // the last values read, so none is optimised away
    return true;
}

void BM_StateUpdateWriteThenRead(benchmark::State& state)
{
    Buffer message(8082);
    korvel::Server agent(1);  // only for its framing
    float checksum = 0;
    for (auto _ : state) {
        message.clear();
        writeState(message);
        agent.prepareMessageWithCode(message, korvel::NetworkAgent::typeNACK);
        short type = 0;
        uint64_t id = 0;
        message.get(type);
        message.get(id);
        if (!readState(message, checksum)) {
            state.SkipWithError("state did not read back");
            break;
        }
        benchmark::DoNotOptimize(checksum);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * framedStateSize));
    state.counters["bytes"] = static_cast<double>(framedStateSize);
}
BENCHMARK(BM_StateUpdateWriteThenRead);

void BM_Memcpy8018(benchmark::State& state)
{
    std::vector<unsigned char> source(framedStateSize, 7);
    std::vector<unsigned char> target(framedStateSize);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), framedStateSize);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * framedStateSize));
}
BENCHMARK(BM_Memcpy8018);

void reportLatencies(benchmark::State& state, std::vector<double>& micros)
{
    if (micros.empty()) {
        return;
    }
    std::sort(micros.begin(), micros.end());
    state.counters["median_us"] = micros[micros.size() / 2];
    state.counters["p99_us"] = micros[std::min(micros.size() - 1, micros.size() * 99 / 100)];
    state.counters["max_us"] = micros.back();
}

struct Pair {
    korvel::Server server{1};
    korvel::Client client;
    bool ready = false;

    Pair()
    {
        server.setPort(0);
        client.setServerAddress("127.0.0.1");
        if (!server.initConnection() || !server.initReadPoolClients()) {
            return;
        }
        client.setPort(server.getSocket().getLocalPort());
        ready = client.initConnection() && client.initReadPoolLastServer();
    }
    ~Pair()
    {
        client.endReadPoolLastServer();
        server.endReadPoolClients();
    }
    void drainRequests()
    {
        while (Buffer* request = server.feedRequest()) {
            delete request;
        }
    }
};

template <typename Done>
bool spinUntil(Done done)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!done()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

void BM_RoundTripAckRequest(benchmark::State& state)
{
    QuietOutput quiet;
    Pair pair;
    if (!pair.ready) {
        state.SkipWithError("client and server did not start");
        return;
    }
    Buffer request(8082);
    std::vector<double> micros;
    for (auto _ : state) {
        request.clear();
        request.add(Matrix4D::getI4());
        request.add(static_cast<short>(1));
        const uint64_t before = pair.client.countAcknowledgements();
        const auto start = std::chrono::steady_clock::now();
        pair.client.writeServerACK(request);
        if (!spinUntil([&] { return pair.client.countAcknowledgements() > before; })) {
            state.SkipWithError("no acknowledgement within 2 s");
            break;
        }
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(took.count());
        micros.push_back(took.count() * 1e6);
        pair.drainRequests();
    }
    reportLatencies(state, micros);
}
BENCHMARK(BM_RoundTripAckRequest)->UseManualTime()->Iterations(5000)->Unit(benchmark::kMicrosecond);

void BM_RoundTripNackState(benchmark::State& state)
{
    QuietOutput quiet;
    Pair pair;
    if (!pair.ready) {
        state.SkipWithError("client and server did not start");
        return;
    }
    // The server learns its client from a first request.
    Buffer hello(64);
    hello.add(static_cast<short>(1));
    pair.client.writeServerACK(hello);
    if (!spinUntil([&] { return pair.server.isClientActive(0); })) {
        state.SkipWithError("server never heard the client");
        return;
    }
    Buffer message(8082);
    Buffer received(8082);
    std::vector<double> micros;
    for (auto _ : state) {
        message.clear();
        writeState(message);
        const auto start = std::chrono::steady_clock::now();
        pair.server.broadcastMessageNACK(message);
        if (!spinUntil([&] { return pair.client.readLastServer(received); })) {
            // The very first id (0) is never above the empty slot's stamp.
            if (pair.server.getMessageId() == 1) {
                continue;
            }
            state.SkipWithError("no state within 2 s");
            break;
        }
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(took.count());
        micros.push_back(took.count() * 1e6);
    }
    pair.drainRequests();
    reportLatencies(state, micros);
    state.SetBytesProcessed(static_cast<int64_t>(micros.size() * framedStateSize));
}
BENCHMARK(BM_RoundTripNackState)->UseManualTime()->Iterations(5000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
