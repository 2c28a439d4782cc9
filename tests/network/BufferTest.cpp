#include "network/Buffer.h"
#include "network/BufferFreshSafe.h"
#include "network/QueueSafe.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

using korvel::Buffer;
using korvel::BufferFreshSafe;
using korvel::QueueSafe;

namespace {

std::vector<unsigned char> bytesOf(const Buffer& b)
{
    return std::vector<unsigned char>(b.getData(), b.getData() + b.getUsed());
}

TEST(BufferTest, ValuesComeBackInReverseOrderWithTheWireLayout)
{
    Buffer b(256);
    ASSERT_TRUE(b.add(true));
    ASSERT_TRUE(b.add(static_cast<short>(-2)));
    ASSERT_TRUE(b.add(0x01020304));
    ASSERT_TRUE(b.add(static_cast<uint64_t>(0x1122334455667788ULL)));
    ASSERT_TRUE(b.add(1.5f));
    ASSERT_TRUE(b.add(-0.25));
    ASSERT_TRUE(b.add(Vector4D(1, 2, 3, 4)));
    ASSERT_TRUE(b.add(std::string("ab")));
    EXPECT_EQ(b.getUsed(), 1u + 2 + 4 + 8 + 4 + 8 + 16 + 11);

    // Raw little-endian bytes, no tags, no padding.
    const std::vector<unsigned char> raw = bytesOf(b);
    EXPECT_EQ(raw[0], 1);
    EXPECT_EQ(raw[1], 0xFE);
    EXPECT_EQ(raw[2], 0xFF);
    EXPECT_EQ(raw[3], 0x04);
    EXPECT_EQ(raw[6], 0x01);
    EXPECT_EQ(raw[7], 0x88);
    float xyzw[4] = {0, 0, 0, 0};
    std::memcpy(xyzw, raw.data() + 27, 16);
    EXPECT_EQ(xyzw[0], 1.0f);
    EXPECT_EQ(xyzw[3], 4.0f);
    // The string: characters, zero, then its length without the zero.
    const std::vector<unsigned char> tail(raw.end() - 11, raw.end());
    EXPECT_EQ(tail, (std::vector<unsigned char>{'a', 'b', 0, 2, 0, 0, 0, 0, 0, 0, 0}));

    std::string s;
    Vector4D v;
    double d = 0;
    float f = 0;
    uint64_t u = 0;
    int i = 0;
    short h = 0;
    bool flag = false;
    ASSERT_TRUE(b.get(s));
    ASSERT_TRUE(b.get(v));
    ASSERT_TRUE(b.get(d));
    ASSERT_TRUE(b.get(f));
    ASSERT_TRUE(b.get(u));
    ASSERT_TRUE(b.get(i));
    ASSERT_TRUE(b.get(h));
    ASSERT_TRUE(b.get(flag));
    EXPECT_EQ(s, "ab");
    EXPECT_EQ(v.x, 1.0f);
    EXPECT_EQ(v.w, 4.0f);
    EXPECT_EQ(d, -0.25);
    EXPECT_EQ(f, 1.5f);
    EXPECT_EQ(u, 0x1122334455667788ULL);
    EXPECT_EQ(i, 0x01020304);
    EXPECT_EQ(h, -2);
    EXPECT_TRUE(flag);
    EXPECT_EQ(b.getUsed(), 0u);
    EXPECT_FALSE(b.get(flag));

    Buffer stack(16);
    for (int n = 1; n <= 3; ++n) {
        stack.add(n);
    }
    for (int n = 3; n >= 1; --n) {
        ASSERT_TRUE(stack.get(i));
        EXPECT_EQ(i, n);
    }
}

TEST(BufferTest, RoomIsTestedBeforeEveryWriteAndEveryRead)
{
    Buffer b(2);
    EXPECT_TRUE(b.add(static_cast<short>(7)));
    EXPECT_FALSE(b.add(static_cast<short>(8)));
    EXPECT_EQ(b.getUsed(), 2u);
    int i = 99;
    EXPECT_FALSE(b.get(i));
    EXPECT_EQ(i, 99);
    EXPECT_EQ(b.getUsed(), 2u);

    // A vector goes value by value: three of its floats fit in 12 bytes.
    Buffer small(12);
    EXPECT_FALSE(small.add(Vector4D(1, 2, 3, 4)));
    EXPECT_EQ(small.getUsed(), 12u);
    Vector4D v(9, 9, 9, 9);
    EXPECT_FALSE(small.get(v));  // a read never takes part of a vector
    EXPECT_EQ(v.x, 9.0f);
    EXPECT_EQ(small.getUsed(), 12u);

    Matrix4D m;
    for (int k = 0; k < 16; ++k) {
        m.m[k] = static_cast<float>(k);
    }
    Buffer room(100);
    ASSERT_TRUE(room.add(m));
    EXPECT_EQ(room.getUsed(), 64u);
    EXPECT_EQ(std::memcmp(room.getData(), m.m, 64), 0);  // storage order
    Matrix4D back;
    ASSERT_TRUE(room.get(back));
    for (int k = 0; k < 16; ++k) {
        EXPECT_EQ(back.m[k], static_cast<float>(k));
    }
    Buffer partial(40);
    EXPECT_FALSE(partial.add(m));
    EXPECT_EQ(partial.getUsed(), 40u);
    EXPECT_FALSE(partial.get(back));

    // A buffer without an array refuses everything.
    Buffer none(0);
    EXPECT_FALSE(none.add(true));
    EXPECT_FALSE(none.get(i));
    EXPECT_FALSE(none.setUsed(1));
}

TEST(BufferTest, StringsAreWholeOrNotAtAllAndHostileLengthsFail)
{
    Buffer b(9);
    EXPECT_TRUE(b.add(""));
    EXPECT_EQ(b.getUsed(), 9u);
    std::string s = "x";
    EXPECT_TRUE(b.get(s));
    EXPECT_EQ(s, "");

    Buffer tight(11);
    EXPECT_FALSE(tight.add("abc"));  // needs 12
    EXPECT_EQ(tight.getUsed(), 0u);
    EXPECT_FALSE(tight.add(static_cast<const char*>(nullptr)));

    // Lengths read off the wire: huge, just too long, and wrapping on + 1.
    for (uint64_t length : {uint64_t{1} << 62, uint64_t{3}, ~uint64_t{0}, uint64_t{2}}) {
        Buffer hostile(64);
        hostile.add(std::string("hi"));
        const uint64_t before = hostile.getUsed();
        std::memcpy(hostile.getData() + before - 8, &length, 8);
        std::string out = "keep";
        const bool ok = hostile.get(out);
        if (length == 2) {
            EXPECT_TRUE(ok);
            EXPECT_EQ(out, "hi");
        } else {
            EXPECT_FALSE(ok) << length;
            EXPECT_EQ(out, "keep");
            EXPECT_EQ(hostile.getUsed(), before);
        }
    }
    // The terminating zero must be there.
    Buffer noZero(64);
    noZero.add(std::string("hi"));
    noZero.getData()[2] = 'X';
    EXPECT_FALSE(noZero.get(s));
}

TEST(BufferTest, CopiesOwnTheirArrayAndResizeKeepsWhatFits)
{
    Buffer a(32);
    a.add(42);
    a.add(static_cast<short>(5));
    Buffer copy(a);
    EXPECT_EQ(copy.getCapacity(), 32u);
    EXPECT_EQ(copy.getUsed(), 6u);
    EXPECT_NE(copy.getData(), a.getData());
    short h = 0;
    copy.get(h);
    EXPECT_EQ(a.getUsed(), 6u);

    Buffer assigned(4);
    assigned = a;
    EXPECT_EQ(assigned.getCapacity(), 32u);
    EXPECT_EQ(bytesOf(assigned), bytesOf(a));
    a.getData()[0] = 0;
    int i = 0;
    assigned.get(h);
    assigned.get(i);
    EXPECT_EQ(i, 42);

    a.reSize(4);
    EXPECT_EQ(a.getCapacity(), 4u);
    EXPECT_EQ(a.getUsed(), 4u);
    EXPECT_FALSE(a.add(true));
    a.reSize(64);
    EXPECT_EQ(a.getUsed(), 4u);

    a.releaseBuffer();
    EXPECT_EQ(a.getData(), nullptr);
    EXPECT_EQ(a.getCapacity(), 0u);
    EXPECT_FALSE(a.add(true));
    Buffer fromReleased(a);
    EXPECT_EQ(fromReleased.getCapacity(), 0u);
}

TEST(BufferFreshSafeTest, KeepsOnlyTheFreshestStamp)
{
    BufferFreshSafe slot(16);
    Buffer message(16);
    Buffer out(16);
    uint64_t stamp = 0;
    EXPECT_FALSE(slot.pop(out));

    message.add(5);
    EXPECT_TRUE(slot.push(message, 5));
    message.clear();
    message.add(4);
    EXPECT_FALSE(slot.push(message, 4));
    EXPECT_FALSE(slot.push(message, 5));
    // Stamp 0 is never above the initial stamp.
    BufferFreshSafe fresh(16);
    EXPECT_FALSE(fresh.push(message, 0));

    ASSERT_TRUE(slot.pop(out, stamp));
    EXPECT_EQ(stamp, 5u);
    int value = 0;
    out.get(value);
    EXPECT_EQ(value, 5);
    EXPECT_FALSE(slot.pop(out));
    // The stamp outlives the pop: an older message stays refused.
    EXPECT_FALSE(slot.push(message, 3));
    EXPECT_TRUE(slot.push(message, 6));
}

TEST(QueueSafeTest, FirstInFirstOutAcrossThreads)
{
    QueueSafe queue;
    Buffer* popped = nullptr;
    EXPECT_FALSE(queue.pop(popped));
    EXPECT_EQ(popped, nullptr);

    std::vector<Buffer*> buffers;
    for (int n = 0; n < 200; ++n) {
        buffers.push_back(new Buffer(4));
    }
    std::thread producer([&] {
        for (Buffer* b : buffers) {
            queue.push(b);
        }
    });
    std::size_t next = 0;
    for (int spins = 0; next < buffers.size() && spins < 1000000; ++spins) {
        if (queue.pop(popped)) {
            EXPECT_EQ(popped, buffers[next]);
            ++next;
        }
    }
    producer.join();
    EXPECT_EQ(next, buffers.size());
    EXPECT_TRUE(queue.isEmpty());
    for (Buffer* b : buffers) {
        delete b;
    }
}

}  // namespace
