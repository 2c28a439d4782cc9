#include "network/Buffer.h"

#include "network/NetworkLog.h"

#include <cstring>
#include <iostream>
#include <new>

namespace korvel {

const char* Buffer::className = "Buffer";

Buffer::Buffer(uint64_t capacity) : data(nullptr), capacity(0), used(0)
{
    allocate(capacity);
}

Buffer::Buffer(const Buffer& other) : Object(other), data(nullptr), capacity(0), used(0)
{
    if (allocate(other.capacity)) {
        used = other.used;
        if (used > 0) {
            std::memcpy(data, other.data, used);
        }
    }
}

Buffer& Buffer::operator=(const Buffer& other)
{
    if (this == &other) {
        return *this;
    }
    Object::operator=(other);
    // The fresh-message slot is assigned every frame: keep the array when it
    // already has the right size.
    if (capacity != other.capacity || data == nullptr) {
        releaseBuffer();
        if (!allocate(other.capacity)) {
            return *this;
        }
    }
    used = other.used;
    if (used > 0) {
        std::memcpy(data, other.data, used);
    }
    return *this;
}

Buffer::~Buffer()
{
    releaseBuffer();
}

bool Buffer::allocate(uint64_t size)
{
    data = nullptr;
    capacity = 0;
    used = 0;
    if (size == 0) {
        return true;
    }
    data = new (std::nothrow) unsigned char[size];
    if (data == nullptr) {
        networkLog("[ERROR] buffer cannot allocate " + std::to_string(size) + " bytes");
        return false;
    }
    capacity = size;
    return true;
}

bool Buffer::addPartly(const Matrix4D& value)
{
    for (float element : value.m) {
        if (!add(element)) {
            return false;
        }
    }
    return true;
}

bool Buffer::add(const std::string& value)
{
    const uint64_t length = value.size();
    // Room for the characters, their zero and the length, tested once so
    // that a string is written whole or not at all.
    if (capacity - used < 9 || length > capacity - used - 9) {
        return false;
    }
    const unsigned char zero = 0;
    push(value.data(), length);
    push(&zero, 1);
    push(&length, sizeof length);
    return true;
}

bool Buffer::add(const char* value)
{
    if (value == nullptr) {
        return false;
    }
    return add(std::string(value));
}

bool Buffer::get(std::string& value)
{
    if (used < 8) {
        return false;
    }
    uint64_t length = 0;
    std::memcpy(&length, data + used - 8, 8);
    const uint64_t below = used - 8;
    // A length read from the wire may be anything: compare without adding.
    if (length >= below || data[below - 1] != 0) {
        return false;
    }
    const uint64_t start = below - 1 - length;
    value.assign(reinterpret_cast<const char*>(data + start), length);
    used = start;
    return true;
}

bool Buffer::reSize(uint64_t newCapacity)
{
    unsigned char* fresh = nullptr;
    if (newCapacity > 0) {
        fresh = new (std::nothrow) unsigned char[newCapacity];
        if (fresh == nullptr) {
            networkLog("[ERROR] buffer cannot allocate " + std::to_string(newCapacity) + " bytes");
            return false;
        }
    }
    const uint64_t kept = used < newCapacity ? used : newCapacity;
    if (kept > 0) {
        std::memcpy(fresh, data, kept);
    }
    delete[] data;
    data = fresh;
    capacity = newCapacity;
    used = kept;
    return true;
}

void Buffer::releaseBuffer()
{
    delete[] data;
    data = nullptr;
    capacity = 0;
    used = 0;
}

bool Buffer::setUsed(uint64_t count)
{
    if (count > capacity) {
        return false;
    }
    used = count;
    return true;
}

bool Buffer::setContent(const void* bytes, uint64_t count)
{
    if (count > capacity || (count > 0 && bytes == nullptr)) {
        return false;
    }
    if (count > 0) {
        std::memcpy(data, bytes, count);
    }
    used = count;
    return true;
}

void Buffer::dump() const
{
    Object::dump();
    std::cout << "Buffer capacity: " << capacity << " used: " << used << std::endl;
}

}  // namespace korvel
