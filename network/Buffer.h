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
    bool add(bool value);
    bool add(short value);
    bool add(int value);
    bool add(uint64_t value);
    bool add(float value);
    bool add(double value);
    bool add(const Vector4D& value);
    bool add(const Matrix4D& value);
    bool add(const std::string& value);
    bool add(const char* value);  // null writes nothing and fails

    // Each get answers false and changes nothing when fewer bytes are held
    // than the value needs. A string also fails when its length does not fit
    // in what lies below it or its terminating zero is missing.
    bool get(bool& value);
    bool get(short& value);
    bool get(int& value);
    bool get(uint64_t& value);
    bool get(float& value);
    bool get(double& value);
    bool get(Vector4D& value);
    bool get(Matrix4D& value);
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
    bool push(const void* bytes, uint64_t size);
    bool pop(void* bytes, uint64_t size);
    bool allocate(uint64_t size);
};

}  // namespace korvel
