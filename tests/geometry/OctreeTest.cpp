#include "geometry/Octree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <vector>

using korvel::Box;
using korvel::Octree;

namespace {

Vector4D pt(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

// The reference: a plain list of (key, value), searched front to back.
struct Linear {
    std::vector<std::pair<Vector4D, int>> entries;
    const int* get(const Vector4D& p) const
    {
        for (const auto& e : entries) {
            if (p == e.first) {
                return &e.second;
            }
        }
        return nullptr;
    }
};

std::vector<int> sorted(std::list<int> values)
{
    std::vector<int> v(values.begin(), values.end());
    std::sort(v.begin(), v.end());
    return v;
}

TEST(OctreeTest, AgreesWithALinearScanThroughAddsRemovalsAndRanges)
{
    std::srand(17);
    auto coordinate = [] { return static_cast<float>(std::rand() % 41 - 20) * 0.5f; };  // many repeats
    Octree<int> tree;
    Linear ref;
    for (int i = 0; i < 3000; ++i) {
        const Vector4D p = pt(coordinate(), coordinate(), coordinate());
        tree.add(p, i);
        bool replaced = false;
        for (auto& e : ref.entries) {
            if (p == e.first) {
                e.second = i;
                replaced = true;
                break;
            }
        }
        if (!replaced) {
            ref.entries.emplace_back(p, i);
        }
    }
    ASSERT_EQ(tree.size(), ref.entries.size());
    for (std::size_t round = 0; round < 2; ++round) {
        for (const auto& [key, value] : ref.entries) {
            int found = -1;
            ASSERT_TRUE(tree.get(key, found));
            EXPECT_EQ(found, value);
        }
        int untouched = 42;
        EXPECT_FALSE(tree.get(pt(100, 100, 100), untouched));
        EXPECT_EQ(untouched, 42);

        std::list<int> all;
        tree.getList(all);
        std::vector<int> expected;
        for (const auto& e : ref.entries) {
            expected.push_back(e.second);
        }
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(sorted(all), expected);

        const Box box(pt(-3, 4, -10), pt(2.5f, -1, 0));
        std::list<int> inBox;
        tree.getList(inBox, box);
        std::vector<int> boxExpected;
        for (const auto& [k, v] : ref.entries) {
            if (k.x >= -3 && k.x <= 2.5f && k.y >= -1 && k.y <= 4 && k.z >= -10 && k.z <= 0) {
                boxExpected.push_back(v);
            }
        }
        std::sort(boxExpected.begin(), boxExpected.end());
        EXPECT_EQ(sorted(inBox), boxExpected);

        std::list<int> nearby;
        tree.getList(nearby, pt(1, -2, 3), 4.0f);
        std::vector<int> nearExpected;
        for (const auto& [k, v] : ref.entries) {
            if ((k - pt(1, -2, 3)).norm3D() <= 4.0f) {
                nearExpected.push_back(v);
            }
        }
        std::sort(nearExpected.begin(), nearExpected.end());
        EXPECT_EQ(sorted(nearby), nearExpected);
        EXPECT_FALSE(nearExpected.empty());

        // Remove every other key (inner nodes and leaves alike), then check again.
        std::vector<std::pair<Vector4D, int>> kept;
        for (std::size_t i = 0; i < ref.entries.size(); ++i) {
            if (i % 2 == round) {
                EXPECT_TRUE(tree.remove(ref.entries[i].first));
                EXPECT_FALSE(tree.remove(ref.entries[i].first));
                int gone = -7;
                EXPECT_FALSE(tree.get(ref.entries[i].first, gone));
            } else {
                kept.push_back(ref.entries[i]);
            }
        }
        ref.entries = kept;
        ASSERT_EQ(tree.size(), ref.entries.size());
    }
    // A removed key can come back.
    tree.add(pt(0.5f, 0.5f, 0.5f), -1);
    int back = 0;
    EXPECT_TRUE(tree.get(pt(0.5f, 0.5f, 0.5f), back));
    EXPECT_EQ(back, -1);
    tree.clear();
    EXPECT_EQ(tree.size(), 0u);
    EXPECT_FALSE(tree.get(pt(0.5f, 0.5f, 0.5f), back));
}

TEST(OctreeTest, EqualKeysShareANodeAndListingIsPreOrder)
{
    Octree<int> tree;
    int value = 0;
    EXPECT_FALSE(tree.get(pt(0, 0, 0), value));
    tree.add(pt(0, 0, 0), 1);
    tree.add(pt(1, 1, 1), 2);       // child 7
    tree.add(pt(-1, -1, -1), 3);    // child 0
    tree.add(pt(1, -1, -1), 4);     // child 1
    tree.add(pt(2, 2, 2), 5);       // below child 7
    tree.add(pt(0, 0, 0), 6);       // same key: new value, no new node
    tree.add(pt(1.00001f, 1, 1), 7);  // equal within the relative tolerance
    EXPECT_EQ(tree.size(), 5u);
    std::list<int> order;
    tree.getList(order);
    EXPECT_EQ(std::vector<int>(order.begin(), order.end()), (std::vector<int>{6, 3, 4, 7, 5}));
    ASSERT_TRUE(tree.get(pt(1, 1, 1), value));
    EXPECT_EQ(value, 7);
    // Equal coordinates go to the lower side: (0, 0, 5) is child 4 of the root.
    tree.add(pt(0, 0, 5), 8);
    EXPECT_NE(tree.getRoot()->children[4], nullptr);
    EXPECT_EQ(tree.getRoot()->children[4]->value, 8);
}

TEST(OctreeTest, SortedInsertionMakesAListThatStillWorks)
{
    // Nothing balances the tree: increasing keys chain one below the other.
    Octree<int> tree;
    for (int i = 0; i < 2000; ++i) {
        tree.add(pt(float(i), float(i), float(i)), i);
    }
    EXPECT_EQ(tree.depth(), 2000u);
    int value = -1;
    EXPECT_TRUE(tree.get(pt(1999, 1999, 1999), value));
    EXPECT_EQ(value, 1999);
    EXPECT_TRUE(tree.remove(pt(0, 0, 0)));  // the root, with a child: kept for routing
    EXPECT_EQ(tree.getEmptyNodeCount(), 1u);
    EXPECT_TRUE(tree.get(pt(1999, 1999, 1999), value));
    EXPECT_TRUE(tree.remove(pt(1999, 1999, 1999)));  // a leaf: freed
    EXPECT_EQ(tree.depth(), 1999u);
    EXPECT_EQ(tree.size(), 1998u);
}

}  // namespace
