#include "geometry/Octree.h"

#include "GeometryTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

// Nodes without a key, and those of them without children.
std::size_t routingNodes(const Octree<int>& tree, bool leavesOnly = false)
{
    std::size_t count = 0;
    std::vector<const korvel::OctreeNode<int>*> stack;
    if (tree.getRoot() != nullptr) {
        stack.push_back(tree.getRoot());
    }
    while (!stack.empty()) {
        const korvel::OctreeNode<int>* n = stack.back();
        stack.pop_back();
        bool leaf = true;
        for (const korvel::OctreeNode<int>* c : n->children) {
            if (c != nullptr) {
                stack.push_back(c);
                leaf = false;
            }
        }
        count += !n->present && (leaf || !leavesOnly) ? 1 : 0;
    }
    return count;
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
        EXPECT_EQ(sorted(nearby), where([](const Vector4D& k) { return (k - pt(1, -2, 3)).norm3D() <= 4.0f; }));

        // Remove every other key (inner nodes and leaves alike), then check again.
        std::vector<std::pair<Vector4D, int>> kept;
        for (std::size_t i = 0; i < reference.size(); ++i) {
            if (i % 2 == static_cast<std::size_t>(round)) {
                EXPECT_TRUE(tree.remove(reference[i].first));
                int gone = -7;
                EXPECT_FALSE(tree.remove(reference[i].first) || tree.get(reference[i].first, gone));
            } else {
                kept.push_back(reference[i]);
            }
        }
        reference = kept;
    }
    // A removed key can come back.
    const Vector4D removed = reference.front().first;
    int back = 0;
    tree.remove(removed);
    tree.add(removed, -1);
    EXPECT_TRUE(tree.get(removed, back) && back == -1);
}

TEST(OctreeTest, BalancedOrderAndRoutingKeysShapeTheTreeButNotWhatItFinds)
{
    // A model file's points: a rippled 70 x 70 grid, row after row.
    std::vector<std::pair<Vector4D, int>> keys;
    for (int j = 0; j < 70; ++j) {
        for (int i = 0; i < 70; ++i) {
            const float y = 0.05f * std::sin(0.37f * float(i)) * std::cos(0.23f * float(j));
            keys.emplace_back(pt(float(i) * 0.01f, y, float(j) * 0.01f), int(keys.size()));
        }
    }
    std::vector<std::pair<Vector4D, int>> arranged = keys, scratch;
    Octree<int>::arrangeBalanced(arranged, scratch, [](const std::pair<Vector4D, int>& e) { return e.first; });
    Octree<int> balanced;
    for (const auto& [key, value] : arranged) {
        balanced.addDistinct(key, value);
    }
    EXPECT_LE(balanced.depth(), 12u);  // added in file order, a level per row at least
    // Inserted in pre-order, the tree lists its values in that same order.
    std::list<int> listed;
    balanced.getList(listed);
    std::vector<int> order;
    for (const auto& entry : arranged) {
        order.push_back(entry.second);
    }
    EXPECT_EQ(std::vector<int>(listed.begin(), listed.end()), order);
    // Keys no middle separates (equal ones, NaN) are kept too, once each.
    std::vector<std::pair<Vector4D, int>> inseparable = keys;
    for (int i = 0; i < 3000; ++i) {
        inseparable.emplace_back(i % 2 ? pt(0.3f, 0, 0.2f) : pt(NAN, 0, NAN), int(inseparable.size()));
    }
    Octree<int>::arrangeBalanced(inseparable, scratch, [](const std::pair<Vector4D, int>& e) { return e.first; });
    std::vector<int> values;
    for (const auto& entry : inseparable) {
        values.push_back(entry.second);
    }
    std::sort(values.begin(), values.end());
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(values[i], int(i));
    }

    // Routing keys laid out ahead: nothing found or listed until a key
    // equal to one is added, which fills that node in place.
    Octree<int> planned;
    for (const auto& entry : arranged) {
        planned.addRouting(entry.first);
    }
    const std::size_t plannedDepth = planned.depth();
    EXPECT_EQ(plannedDepth, balanced.depth());
    EXPECT_EQ(planned.getEmptyNodeCount(), keys.size());
    int value = -1;
    EXPECT_FALSE(planned.get(keys[5].first, value));
    for (std::size_t i = 0; i < keys.size(); i += 2) {  // sorted order, half of them
        planned.add(keys[i].first, keys[i].second);
    }
    EXPECT_EQ(planned.depth(), plannedDepth);
    EXPECT_EQ(planned.getEmptyNodeCount(), keys.size() / 2);
    int made = 0;
    EXPECT_EQ(planned.findOrAdd(keys[4].first, [&] { return ++made, -4; }), 4);  // present: found
    EXPECT_EQ(planned.findOrAdd(keys[5].first, [&] { return ++made, -5; }), -5);  // routing: filled
    EXPECT_EQ(planned.findOrAdd(pt(100, 0, 0), [&] { return ++made, -6; }), -6);  // new node
    EXPECT_EQ(made, 2);
    EXPECT_EQ(planned.getEmptyNodeCount(), keys.size() / 2 - 1);
    planned.pruneRouting();
    EXPECT_EQ(planned.getEmptyNodeCount(), routingNodes(planned));
    EXPECT_EQ(routingNodes(planned, true), 0u);
    std::list<int> kept;
    planned.getList(kept);
    EXPECT_EQ(kept.size(), planned.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        value = -1;
        EXPECT_EQ(planned.get(keys[i].first, value), i % 2 == 0 || i == 5) << i;
    }
}

}  // namespace
