// Arbitrary datagrams through the Buffer readers, popped in the orders the
// game pops them: a client reading a state update and a server reading a
// move or fire request, then the same bytes read as a stack of strings.
// Every get must either succeed inside the bytes held or fail leaving them as
// they were; the sanitizers catch any read outside the array.

#include "network/Buffer.h"
#include "network/BufferFreshSafe.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

constexpr uint64_t agentBufferSize = 8082;

void check(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

// A get that fails must leave `used` alone; one that succeeds takes exactly
// the value's size (strings: at least 9 bytes).
template <typename T>
bool pop(korvel::Buffer& buffer, T& value, uint64_t size)
{
    const uint64_t before = buffer.getUsed();
    const bool ok = buffer.get(value);
    check(ok ? buffer.getUsed() == before - size : buffer.getUsed() == before);
    return ok;
}

bool popFraming(korvel::Buffer& buffer, short& type)
{
    uint64_t id = 0;
    return pop(buffer, type, 2) && pop(buffer, id, 8);
}

void readStateUpdate(korvel::Buffer buffer)
{
    short type = 0;
    if (!popFraming(buffer, type)) {
        return;
    }
    Matrix4D matrix;
    if (!pop(buffer, matrix, 64) || !pop(buffer, matrix, 64)) {  // avatar, then server view
        return;
    }
    const int counts[3] = {50, 20, 50};  // bullets, explosions, enemies: last written, first read
    for (int block = 0; block < 3; ++block) {
        for (int i = counts[block] - 1; i >= 0; --i) {
            bool alive = false;
            if (!pop(buffer, alive, 1)) {
                return;
            }
            if (!alive) {
                continue;
            }
            float age = 0;
            if (block == 1 && !pop(buffer, age, 4)) {
                return;
            }
            if (!pop(buffer, matrix, 64)) {
                return;
            }
        }
    }
}

void readRequest(korvel::Buffer buffer)
{
    short type = 0;
    short code = 0;
    if (!popFraming(buffer, type) || !pop(buffer, code, 2)) {
        return;
    }
    if (code == 1) {
        Matrix4D pose;
        pop(buffer, pose, 64);
        return;
    }
    Vector4D origin;
    Vector4D speed;
    Vector4D up;
    if (pop(buffer, origin, 16) && pop(buffer, speed, 16)) {
        pop(buffer, up, 16);
    }
}

void readStrings(korvel::Buffer buffer)
{
    std::string text;
    for (;;) {
        const uint64_t before = buffer.getUsed();
        if (!buffer.get(text)) {
            check(buffer.getUsed() == before);
            return;
        }
        check(buffer.getUsed() == before - text.size() - 9);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    // The socket drops anything longer than the receive buffer.
    if (size > agentBufferSize) {
        return 0;
    }
    korvel::Buffer received(agentBufferSize);
    check(received.setContent(data, size));
    readStateUpdate(received);
    readRequest(received);
    readStrings(received);

    // Through the fresh slot and a size change, as the client's hand-over does.
    korvel::BufferFreshSafe slot(agentBufferSize);
    korvel::Buffer out(16);
    if (slot.push(received, 1 + size)) {
        check(slot.pop(out));
        check(out.getUsed() == size && out.getCapacity() == agentBufferSize);
        out.reSize(size / 2);
        check(out.getUsed() == size / 2);
        readStateUpdate(out);
    }
    return 0;
}
