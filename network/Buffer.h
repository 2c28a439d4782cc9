#pragma once
// A network message: a bounded byte array written and read as a stack.
//
// `used` is both the write and the read position: add() writes at `used` and
// moves it up, get() moves it down and reads there. Values therefore come back
// in the reverse order of writing and a reader must pop them in exactly that
// reverse order; the whole protocol rests on this. Values are raw native
// (little-endian) bytes with no alignment and no tags:
//   bool 1, short 2, int 4, uint64 8, float 4, double 8, Vector4D 16 (x y z w),
//   Matrix4D 64 (storage order), string: characters, a zero, then the length
//   without the zero as uint64 (length + 9 bytes).
//
// Every add tests the room left and every get tests the bytes held before it
// touches the array, so a hostile datagram can make a read fail but never make
// it leave the array. Not locked: one thread at a time.

#include "core/Matrix4D.h"
#include "core/Object.h"
#include "core/Vector4D.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace korvel {

class Buffer : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    explicit Buffer(uint64_t capacity);
    Buffer(const Buffer& other);
    Buffer& operator=(const Buffer& other);
    ~Buffer() override;

    // Each add writes nothing and answers false when the value does not fit.
    // Vectors and matrices go value by value: a failure part-way leaves the
    // values already written.
    bool add(bool value)
    {
        const unsigned char byte = value ? 1 : 0;
        return push(&byte, 1);
    }
    bool add(short value) { return push(&value, sizeof value); }
    bool add(int value) { return push(&value, sizeof value); }
    bool add(uint64_t value) { return push(&value, sizeof value); }
    bool add(float value) { return push(&value, sizeof value); }
    bool add(double value) { return push(&value, sizeof value); }
    bool add(const Vector4D& value)
    {
        // x, y, z, w are contiguous: one block when all four fit.
        if (push(&value.x, 16)) {
            return true;
        }
        return add(value.x) && add(value.y) && add(value.z) && add(value.w);
    }
    bool add(const Matrix4D& value)
    {
        if (push(value.m, 64)) {
            return true;
        }
        return addPartly(value);
    }
    bool add(const std::string& value);
    bool add(const char* value);  // null writes nothing and fails

    // Each get answers false and changes nothing when fewer bytes are held
    // than the value needs. A string also fails when its length does not fit
    // in what lies below it or its terminating zero is missing.
    bool get(bool& value)
    {
        unsigned char byte = 0;
        if (!pop(&byte, 1)) {
            return false;
        }
        value = byte != 0;
        return true;
    }
    bool get(short& value) { return pop(&value, sizeof value); }
    bool get(int& value) { return pop(&value, sizeof value); }
    bool get(uint64_t& value) { return pop(&value, sizeof value); }
    bool get(float& value) { return pop(&value, sizeof value); }
    bool get(double& value) { return pop(&value, sizeof value); }
    // w, z, y, x popped in turn are the four floats of one block, in order.
    bool get(Vector4D& value) { return pop(&value.x, 16); }
    bool get(Matrix4D& value) { return pop(value.m, 64); }
    bool get(std::string& value);

    // Replaces the array by one of the new size; the bytes that fit are kept.
    bool reSize(uint64_t newCapacity);
    // Frees the array; the buffer is then empty with no room at all.
    void releaseBuffer();

    void clear() { used = 0; }
    uint64_t getCapacity() const { return capacity; }
    uint64_t getUsed() const { return used; }
    // For the socket layer, which receives straight into the array.
    unsigned char* getData() { return data; }
    const unsigned char* getData() const { return data; }
    bool setUsed(uint64_t count);
    // Replaces the content by a copy of `count` raw bytes.
    bool setContent(const void* bytes, uint64_t count);

    void dump() const override;

protected:
    unsigned char* data;
    uint64_t capacity;
    uint64_t used;

private:
    bool push(const void* bytes, uint64_t size)
    {
        if (size > capacity - used) {  // used <= capacity always, so no wrap
            return false;
        }
        std::memcpy(data + used, bytes, size);
        used += size;
        return true;
    }
    bool pop(void* bytes, uint64_t size)
    {
        if (used < size) {
            return false;
        }
        used -= size;
        std::memcpy(bytes, data + used, size);
        return true;
    }
    bool addPartly(const Matrix4D& value);
    bool allocate(uint64_t size);
};

}  // namespace korvel
