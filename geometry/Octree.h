#pragma once
// Point octree mapping points to values, found by the points' coordinates.
// Every node holds one key; the shape of the tree follows the insertion order
// and nothing rebalances it, so lookups cost the depth.
//
// remove() takes the key out at once. A removed key whose node has no child
// frees the node; one that still routes to children stays as an empty
// routing node until an equal key is added again or the tree is cleared.
// The rest of the tree keeps its shape, so removal costs one walk and no key
// ever moves: re-inserting a subtree could merge keys that relative equality
// calls equal but that were stored apart, and lose one of them.

#include "geometry/OctreeNode.h"

#include <cstddef>
#include <list>
#include <utility>
#include <vector>

namespace korvel {

template <typename T>
class Octree {
public:
    static constexpr const char* className = "Octree";
    static const char* getClassName() { return className; }
    virtual const char* getInstanceClassName() const { return className; }

    Octree() = default;
    Octree(const Octree&) = delete;
    Octree& operator=(const Octree&) = delete;
    virtual ~Octree() { clear(); }

    // Inserts, or replaces the value of an equal key.
    void add(const Vector4D& point, const T& value)
    {
        if (root == nullptr) {
            root = new OctreeNode<T>(point, value);
            ++count;
            return;
        }
        const auto result = root->add(point, value);
        if (result != OctreeNode<T>::Replaced) {
            ++count;
        }
        if (result == OctreeNode<T>::Revived) {
            --empties;
        }
    }

    // True and the value when an equal key is stored; value untouched otherwise.
    bool get(const Vector4D& point, T& value) const
    {
        return root != nullptr && root->get(point, value);
    }

    // True when the key was there.
    bool remove(const Vector4D& point) { return removeEntry(point, nullptr); }

    // Removes the key only when it holds this value: a shape that keeps
    // nodes equal in value takes out its own entry and nobody else's.
    bool removeValue(const Vector4D& point, const T& value) { return removeEntry(point, &value); }

    // Adds a new entry even when an equal key is stored (below it, so that
    // get finds the older one first); for rebuilding from a set of entries
    // that must all stay.
    void addDistinct(const Vector4D& point, const T& value)
    {
        if (root == nullptr) {
            root = new OctreeNode<T>(point, value);
        } else {
            root->addBelow(point, value);
        }
        ++count;
    }

    void getList(std::list<T>& out) const
    {
        if (root != nullptr) {
            root->getList(out);
        }
    }
    void getList(std::list<T>& out, const Box& box) const
    {
        if (root != nullptr) {
            root->getList(out, box);
        }
    }
    void getList(std::list<T>& out, const Vector4D& centre, float distance) const
    {
        if (root != nullptr) {
            root->getList(out, centre, distance);
        }
    }

    void clear()
    {
        delete root;
        root = nullptr;
        count = 0;
        empties = 0;
    }

    std::size_t size() const { return count; }
    // Nodes kept only to route to their children.
    std::size_t getEmptyNodeCount() const { return empties; }
    bool isEmpty() const { return count == 0; }
    const OctreeNode<T>* getRoot() const { return root; }

    // Longest root-to-leaf path in nodes; 0 when empty.
    std::size_t depth() const
    {
        std::size_t deepest = 0;
        std::vector<std::pair<const OctreeNode<T>*, std::size_t>> stack;
        if (root != nullptr) {
            stack.emplace_back(root, 1);
        }
        while (!stack.empty()) {
            auto [n, d] = stack.back();
            stack.pop_back();
            deepest = d > deepest ? d : deepest;
            for (const OctreeNode<T>* c : n->children) {
                if (c != nullptr) {
                    stack.emplace_back(c, d + 1);
                }
            }
        }
        return deepest;
    }

private:
    bool removeEntry(const Vector4D& point, const T* expected)
    {
        if (root == nullptr) {
            return false;
        }
        OctreeNode<T>* parent = nullptr;
        int slot = 0;
        OctreeNode<T>* n = root->locate(point, expected, &parent, &slot);
        if (n == nullptr) {
            return false;
        }
        --count;
        bool leaf = true;
        for (const OctreeNode<T>* c : n->children) {
            leaf = leaf && c == nullptr;
        }
        if (leaf) {
            delete n;
            if (parent == nullptr) {
                root = nullptr;
            } else {
                parent->children[slot] = nullptr;
            }
        } else {
            n->present = false;
            ++empties;
        }
        return true;
    }

    OctreeNode<T>* root = nullptr;
    std::size_t count = 0;
    // Nodes left without a key because they still route to children.
    std::size_t empties = 0;
};

}  // namespace korvel
