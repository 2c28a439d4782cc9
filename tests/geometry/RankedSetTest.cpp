#include "geometry/RankedSet.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

using korvel::RankedSet;

namespace {

// Selection by rank against a sorted vector that erases for real, across
// word boundaries (sizes around multiples of 64) and down to empty.
TEST(RankedSetTest, SelectsLikeAnErasingVector)
{
    std::srand(23);
    for (int n : {1, 63, 64, 65, 200, 1000}) {
        std::vector<int> keys;
        for (int i = 0; i < n; ++i) {
            keys.push_back(3 * i + 1);
        }
        RankedSet<int> set;
        set.assign(keys);
        std::vector<int> reference = keys;
        while (!reference.empty()) {
            ASSERT_EQ(set.size(), reference.size());
            for (std::size_t r = 0; r < reference.size(); r += 1 + reference.size() / 17) {
                ASSERT_EQ(set.at(r), reference[r]) << "n " << n << " rank " << r;
            }
            ASSERT_EQ(set.at(reference.size() - 1), reference.back());
            const std::size_t victim = static_cast<std::size_t>(std::rand()) % reference.size();
            if (victim % 2 == 0) {
                ASSERT_TRUE(set.erase(reference[victim]));
            } else {
                ASSERT_TRUE(set.eraseSlot(static_cast<std::size_t>((reference[victim] - 1) / 3)));
            }
            EXPECT_FALSE(set.erase(reference[victim]));
            reference.erase(reference.begin() + static_cast<long>(victim));
        }
        EXPECT_TRUE(set.empty());
        EXPECT_FALSE(set.erase(2));  // never a key
        EXPECT_FALSE(set.eraseSlot(static_cast<std::size_t>(n)));
    }
}

}  // namespace
