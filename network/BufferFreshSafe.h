#pragma once
// One-slot mailbox between a reading thread and the main thread that keeps
// only the freshest message. Each message carries a stamp (the sender's
// message id); a message whose stamp is not above the one held is refused, so
// a late or repeated datagram can never replace a newer one. The stamp
// survives a pop: after reading message 9, message 8 is still refused.

#include "network/Buffer.h"

#include <cstdint>
#include <mutex>

namespace korvel {

class BufferFreshSafe : public Buffer {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    explicit BufferFreshSafe(uint64_t capacity);

    bool push(const Buffer& message, uint64_t messageStamp);
    bool pop(Buffer& message, uint64_t& messageStamp);
    bool pop(Buffer& message);

private:
    uint64_t stamp;
    std::mutex lock;
    bool isEmpty;
};

}  // namespace korvel
