#include "core/Box.h"

#include <gtest/gtest.h>

namespace {

TEST(BoxTest, CornersAreSortedAndOnlyTheMinimumCornerIsInside)
{
    const korvel::Box box(Vector4D(3, -1, 5, 1), Vector4D(-2, 4, 0, 1));
    EXPECT_EQ(box.min.x, -2.0f);
    EXPECT_EQ(box.min.y, -1.0f);
    EXPECT_EQ(box.min.z, 0.0f);
    EXPECT_EQ(box.max.x, 3.0f);
    EXPECT_EQ(box.max.y, 4.0f);
    EXPECT_EQ(box.max.z, 5.0f);

    // The upper test is made against min, so the interior is not inside.
    EXPECT_TRUE(box.isIn(Vector4D(-2, -1, 0, 123)));
    EXPECT_FALSE(box.isIn(Vector4D(0, 1, 2, 1)));
    EXPECT_FALSE(box.isIn(box.max));
    EXPECT_STREQ(box.getInstanceClassName(), "Box");
}

}  // namespace
