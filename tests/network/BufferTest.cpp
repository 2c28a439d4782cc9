#include "network/Buffer.h"
#include "network/BufferFreshSafe.h"
#include "NetTestSupport.h"

#include <gtest/gtest.h>

using korvel::Buffer;
using nettest::Bytes;

namespace {

TEST(BufferTest, ValuesAreRawLittleEndianBytesReadBackInReverseOrder)
{
    Matrix4D m;
    for (int k = 0; k < 16; ++k) {
        m.m[k] = static_cast<float>(k);
    }
    Buffer b(256);
    ASSERT_TRUE(b.add(true) && b.add(short{-2}) && b.add(0x01020304) && b.add(uint64_t{0x1122334455667788}) &&
                b.add("ab") && b.add(Vector4D(1, 2, 3, 4)) && b.add(m) && b.add(1.5f) && b.add(-0.25));
    const Bytes expected = {1, 0xFE, 0xFF, 4, 3, 2, 1, 0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11,
                            'a', 'b', 0, 2, 0, 0, 0, 0, 0, 0, 0};
    const float xyzw[4] = {1, 2, 3, 4};
    ASSERT_EQ(b.getUsed(), expected.size() + 16 + 64 + 4 + 8);
    EXPECT_EQ(Bytes(b.getData(), b.getData() + expected.size()), expected);
    EXPECT_EQ(std::memcmp(b.getData() + expected.size(), xyzw, 16), 0);
    EXPECT_EQ(std::memcmp(b.getData() + expected.size() + 16, m.m, 64), 0);  // storage order

    auto pop = [&b](auto value) {
        EXPECT_TRUE(b.get(value));
        return value;
    };
    EXPECT_EQ(pop(0.0), -0.25);
    EXPECT_EQ(pop(0.0f), 1.5f);
    EXPECT_EQ(std::memcmp(pop(Matrix4D()).m, m.m, 64), 0);
    const Vector4D v = pop(Vector4D());
    EXPECT_TRUE(v.x == 1 && v.y == 2 && v.z == 3 && v.w == 4);
    EXPECT_EQ(pop(std::string()), "ab");
    EXPECT_EQ(pop(uint64_t{0}), 0x1122334455667788u);
    EXPECT_EQ(pop(0), 0x01020304);
    EXPECT_EQ(pop(short{0}), -2);
    EXPECT_TRUE(pop(false));
    EXPECT_EQ(b.getUsed(), 0u);
}

TEST(BufferTest, NoWriteOrReadGoesPastTheBounds)
{
    Buffer b(2);
    int i = 99;
    EXPECT_TRUE(b.add(short{7}));
    EXPECT_FALSE(b.add(short{8}) || b.get(i));
    EXPECT_TRUE(i == 99 && b.getUsed() == 2);
    // A vector or matrix is written value by value, so the floats that fit
    // stay; it is read whole or not at all.
    for (uint64_t capacity : {12, 40, 0}) {
        Buffer small(capacity);
        Vector4D v(1, 2, 3, 4);
        Matrix4D m = Matrix4D::getI4();
        EXPECT_FALSE(capacity == 40 ? small.add(m) : small.add(v));
        EXPECT_EQ(small.getUsed(), capacity);
        EXPECT_FALSE(capacity == 40 ? small.get(m) : small.get(v));
        EXPECT_TRUE(small.getUsed() == capacity && v.x == 1 && m.m[0] == 1 && m.m[1] == 0) << capacity;
    }
    // A string is written whole or not at all.
    Buffer text(11);
    std::string s = "x";
    EXPECT_FALSE(text.add("abc") || text.add(static_cast<const char*>(nullptr)));  // "abc" needs 12
    EXPECT_TRUE(text.getUsed() == 0 && text.add("") && text.getUsed() == 9 && text.get(s) && s.empty());
    // "hi" as it arrives, with its length or its zero changed on the way.
    struct Case {
        uint64_t length;
        unsigned char zero;
        bool readable;
    };
    for (const Case& c : {Case{2, 0, true}, Case{3, 0, false}, Case{uint64_t{1} << 62, 0, false},
                          Case{~uint64_t{0}, 0, false}, Case{2, 'X', false}}) {
        Buffer hostile(64);
        hostile.add("hi");
        std::memcpy(hostile.getData() + 3, &c.length, 8);
        hostile.getData()[2] = c.zero;
        std::string out = "keep";
        EXPECT_EQ(hostile.get(out), c.readable) << c.length;
        EXPECT_EQ(out, c.readable ? "hi" : "keep");
        EXPECT_EQ(hostile.getUsed(), c.readable ? 0u : 11u);
    }
}

// The fresh slot copies in and out, and keeps its stamp when emptied, so an
// older message stays refused after a read.
TEST(BufferFreshSafeTest, KeepsOnlyTheFreshestStampEvenAcrossPops)
{
    korvel::BufferFreshSafe slot(16);
    Buffer message(16);
    Buffer out(4);
    uint64_t stamp = 0;
    int value = 0;
    EXPECT_FALSE(slot.pop(out));
    message.add(5);
    EXPECT_TRUE(slot.push(message, 5));
    message.clear();
    message.add(4);
    EXPECT_FALSE(slot.push(message, 4) || slot.push(message, 5));
    ASSERT_TRUE(slot.pop(out, stamp));
    EXPECT_TRUE(stamp == 5 && out.getCapacity() == 16 && out.get(value) && value == 5);
    EXPECT_FALSE(slot.pop(out) || slot.push(message, 3));
    EXPECT_TRUE(slot.push(message, 6));
    Buffer copy(slot);
    EXPECT_TRUE(copy.get(value) && value == 4 && slot.getUsed() == 4);
}

}  // namespace
