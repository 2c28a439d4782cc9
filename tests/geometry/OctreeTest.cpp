#include "geometry/Octree.h"

#include "GeometryTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <list>
#include <vector>

using korvel::Box;
using korvel::Octree;

namespace {

std::vector<int> sorted(const std::list<int>& values)
{
    std::vector<int> v(values.begin(), values.end());
    std::sort(v.begin(), v.end());
    return v;
}

TEST(OctreeTest, AgreesWithALinearScanThroughAddsRemovalsAndRanges)
{
    // The reference: a plain list of (key, value), searched front to back.
    std::vector<std::pair<Vector4D, int>> reference;
    auto where = [&](const std::function<bool(const Vector4D&)>& keep) {
        std::list<int> values;
        for (const auto& [key, value] : reference) {
            if (keep(key)) {
                values.push_back(value);
            }
        }
        return sorted(values);
    };
    std::srand(17);
    auto coordinate = [] { return static_cast<float>(std::rand() % 41 - 20) * 0.5f; };  // many repeats
    Octree<int> tree;
    for (int i = 0; i < 3000; ++i) {
        const Vector4D p = pt(coordinate(), coordinate(), coordinate());
        tree.add(p, i);
        auto equal = std::find_if(reference.begin(), reference.end(), [&](const auto& e) { return p == e.first; });
        if (equal != reference.end()) {
            equal->second = i;
        } else {
            reference.emplace_back(p, i);
        }
    }
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(tree.size(), reference.size());
        for (const auto& [key, value] : reference) {
            int found = -1;
            ASSERT_TRUE(tree.get(key, found));
            EXPECT_EQ(found, value);
        }
        int untouched = 42;
        EXPECT_FALSE(tree.get(pt(100, 100, 100), untouched));
        EXPECT_EQ(untouched, 42);

        std::list<int> all, inBox, nearby;
        tree.getList(all);
        EXPECT_EQ(sorted(all), where([](const Vector4D&) { return true; }));
        tree.getList(inBox, Box(pt(-3, 4, -10), pt(2.5f, -1, 0)));
        EXPECT_EQ(sorted(inBox), where([](const Vector4D& k) {
                      return k.x >= -3 && k.x <= 2.5f && k.y >= -1 && k.y <= 4 && k.z >= -10 && k.z <= 0;
                  }));
        tree.getList(nearby, pt(1, -2, 3), 4.0f);
        EXPECT_FALSE(nearby.empty());
        EXPECT_EQ(sorted(nearby), where([](const Vector4D& k) { return (k - pt(1, -2, 3)).norm3D() <= 4.0f; }));

        // Remove every other key (inner nodes and leaves alike), then check again.
        std::vector<std::pair<Vector4D, int>> kept;
        for (std::size_t i = 0; i < reference.size(); ++i) {
            if (i % 2 == static_cast<std::size_t>(round)) {
                EXPECT_TRUE(tree.remove(reference[i].first));
                EXPECT_FALSE(tree.remove(reference[i].first));
                int gone = -7;
                EXPECT_FALSE(tree.get(reference[i].first, gone));
            } else {
                kept.push_back(reference[i]);
            }
        }
        reference = kept;
    }
    // A removed key can come back; a cleared tree finds nothing.
    const Vector4D removed = reference.front().first;
    int back = 0;
    tree.remove(removed);
    tree.add(removed, -1);
    EXPECT_TRUE(tree.get(removed, back) && back == -1);
    tree.clear();
    EXPECT_FALSE(tree.get(removed, back));
}

TEST(OctreeTest, EqualKeysShareANodeAndListingIsPreOrder)
{
    Octree<int> tree;
    tree.add(pt(0, 0, 0), 1);
    tree.add(pt(1, 1, 1), 2);         // child 7
    tree.add(pt(-1, -1, -1), 3);      // child 0
    tree.add(pt(1, -1, -1), 4);       // child 1
    tree.add(pt(2, 2, 2), 5);         // below child 7
    tree.add(pt(0, 0, 0), 6);         // same key: new value, no new node
    tree.add(pt(1.00001f, 1, 1), 7);  // equal within the relative tolerance
    tree.add(pt(0, 0, 5), 8);         // equal x and y go to the lower side: child 4
    EXPECT_EQ(tree.size(), 6u);
    std::list<int> order;
    tree.getList(order);
    EXPECT_EQ(std::vector<int>(order.begin(), order.end()), (std::vector<int>{6, 3, 4, 8, 7, 5}));
}

}  // namespace
