#pragma once
// First-in first-out queue of Buffer pointers under one mutex, the hand-over
// point between a producing thread and a consuming one. It holds pointers
// only: a buffer belongs to whoever pushed it until it is popped, and then to
// whoever popped it.

#include "core/Object.h"
#include "network/Buffer.h"

#include <cstddef>
#include <deque>
#include <mutex>

namespace korvel {

class QueueSafe : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    QueueSafe() = default;
    QueueSafe(const QueueSafe&) = delete;
    QueueSafe& operator=(const QueueSafe&) = delete;

    void push(Buffer* buffer);
    bool pop(Buffer*& buffer);  // false, and buffer untouched, when empty
    bool isEmpty() const;
    std::size_t size() const;

private:
    mutable std::mutex lock;
    std::deque<Buffer*> items;
};

}  // namespace korvel
