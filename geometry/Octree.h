#pragma once
// Point octree mapping points to values, found by the points' coordinates.
// Every node holds one key; the shape of the tree follows the insertion order
// and nothing rebalances it, so lookups cost the depth.
//
// remove() takes the key out at once. A removed key whose node has no child
// frees the node; one that still routes to children stays as an empty
// routing node until an equal key is added again, the tree is pruned or
// cleared. The rest of the tree keeps its shape, so removal costs one walk
// and no key ever moves: re-inserting a subtree could merge keys that
// relative equality calls equal but that were stored apart, and lose one of
// them.
//
// Routing nodes can also be laid out ahead (addRouting): keys expected
// soon, arranged by arrangeBalanced, shape the tree before any of them is
// added, so that adding them later in whatever order keeps it shallow.

#include "geometry/OctreeNode.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
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

    // get, and when it finds nothing, add(point, make()), in one walk; make
    // is called only then. Returns the value found or made.
    template <typename Make>
    T findOrAdd(const Vector4D& point, Make make)
    {
        OctreeNode<T>** slot = &root;
        // add stops at the first equal key, present or not; get passes the
        // ones that only route.
        OctreeNode<T>* routing = nullptr;
        while (*slot != nullptr) {
            OctreeNode<T>* n = *slot;
            if (!OctreeNode<T>::surelyDifferent(point, n->point) && point == n->point) {
                if (n->present) {
                    return n->value;
                }
                routing = routing != nullptr ? routing : n;
            }
            slot = &n->children[n->childIndex(point)];
        }
        const T value = make();
        ++count;
        if (routing != nullptr) {
            routing->value = value;
            routing->present = true;
            --empties;
        } else {
            *slot = new OctreeNode<T>(point, value);
        }
        return value;
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

    // Reorders entries (keyOf(entry) gives the key) so that adding them in
    // turn to an empty tree, as addDistinct does, makes it shallow whatever
    // order they came in: first the entry nearest the middle of them all,
    // then the entries falling in its child 0, arranged the same way, then
    // those of child 1, and so on to 7. Only the insertion order is chosen;
    // the child rule and key equality stay what they are. Sorted input, as
    // model files give, would otherwise chain the tree into a list.
    // scratch is working room (resized to the entries' count).
    template <typename E, typename KeyOf>
    static void arrangeBalanced(std::vector<E>& entries, std::vector<E>& scratch, KeyOf keyOf)
    {
        scratch.resize(entries.size());
        // Past this depth a range keeps the order it has. A middle entry
        // that leaves all the others in one octant brings the range eight
        // levels nearer to it: keys that no middle separates (all equal, or
        // NaN) would otherwise cost a pass over the range per entry.
        std::size_t budget = 16;
        for (std::size_t n = entries.size(); n > 1; n /= 2) {
            budget += 3;
        }
        struct Range {
            std::size_t begin;
            std::size_t end;
            std::size_t depth;
        };
        std::vector<Range> ranges{{0, entries.size(), 0}};
        while (!ranges.empty()) {
            const Range r = ranges.back();
            ranges.pop_back();
            if (r.end - r.begin < 2 || r.depth >= budget) {
                continue;
            }
            std::swap(entries[r.begin], entries[centralEntry(entries, r.begin, r.end, keyOf)]);
            std::size_t starts[9];
            splitOctants(entries, scratch, r.begin, r.end, keyOf, starts);
            bool split = true;
            for (int c = 0; c < 8; ++c) {
                split = split && starts[c + 1] - starts[c] < r.end - r.begin - 1;
            }
            for (int c = 7; c >= 0; --c) {
                ranges.push_back({r.begin + 1 + starts[c], r.begin + 1 + starts[c + 1], r.depth + (split ? 1 : 8)});
            }
        }
    }

    // Gives every node, in place, the key newKey(node) returns, keeping the
    // tree's shape. True when each node still lies, against every ancestor,
    // on the side the child rule sends it to: a translation, for one, keeps
    // the order of coordinates, so the tree serves as it stands. False
    // otherwise; the tree must then be cleared and refilled before use.
    template <typename F>
    bool moveKeys(F newKey)
    {
        if (root == nullptr) {
            return true;
        }
        struct Frame {
            OctreeNode<T>* node;
            Bounds bounds;
        };
        std::vector<Frame> stack{{root, Bounds()}};
        while (!stack.empty()) {
            const Frame frame = stack.back();
            stack.pop_back();
            OctreeNode<T>* n = frame.node;
            n->point = newKey(static_cast<const OctreeNode<T>&>(*n));
            if (!frame.bounds.holds(n->point)) {
                return false;
            }
            for (int i = 0; i < 8; ++i) {
                if (n->children[i] != nullptr) {
                    stack.push_back({n->children[i], frame.bounds.below(n->point, i)});
                }
            }
        }
        return true;
    }

    // Hangs a node that only routes (as a removed key leaves one) where the
    // key would go, unless the walk meets an equal key first. An add of an
    // equal key later fills that node in place.
    void addRouting(const Vector4D& point)
    {
        OctreeNode<T>** slot = &root;
        while (*slot != nullptr) {
            OctreeNode<T>* n = *slot;
            if (!OctreeNode<T>::surelyDifferent(point, n->point) && point == n->point) {
                return;
            }
            slot = &n->children[n->childIndex(point)];
        }
        *slot = new OctreeNode<T>(point, T());
        (*slot)->present = false;
        ++empties;
    }

    // Frees the nodes that only route to nothing: routing nodes without
    // children, and those left so once their children are gone.
    void pruneRouting()
    {
        if (empties == 0) {
            return;
        }
        struct Visit {
            OctreeNode<T>** slot;
            bool childrenDone;
        };
        std::vector<Visit> stack{{&root, false}};
        while (!stack.empty()) {
            const Visit visit = stack.back();
            stack.pop_back();
            OctreeNode<T>* n = *visit.slot;
            if (n == nullptr) {
                continue;
            }
            if (!visit.childrenDone) {
                stack.push_back({visit.slot, true});
                for (OctreeNode<T>*& child : n->children) {
                    if (child != nullptr) {
                        stack.push_back({&child, false});
                    }
                }
                continue;
            }
            if (n->present || std::any_of(std::begin(n->children), std::end(n->children),
                                          [](const OctreeNode<T>* c) { return c != nullptr; })) {
                continue;
            }
            delete n;
            *visit.slot = nullptr;
            --empties;
        }
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
    // Where the ancestors of a node confine it, as the child rule words it:
    // per axis, greater than one bound and not greater than another (so a
    // NaN coordinate belongs on the lower side), each bound present or not.
    struct Bounds {
        float low[3] = {0.0f, 0.0f, 0.0f};
        float high[3] = {0.0f, 0.0f, 0.0f};
        bool hasLow[3] = {false, false, false};
        bool hasHigh[3] = {false, false, false};

        bool holds(const Vector4D& p) const
        {
            const float c[3] = {p.x, p.y, p.z};
            for (int a = 0; a < 3; ++a) {
                if ((hasLow[a] && !(c[a] > low[a])) || (hasHigh[a] && c[a] > high[a])) {
                    return false;
                }
            }
            return true;
        }
        // The bounds of child i of a node whose key is centre.
        Bounds below(const Vector4D& centre, int i) const
        {
            Bounds b = *this;
            const float c[3] = {centre.x, centre.y, centre.z};
            for (int a = 0; a < 3; ++a) {
                if ((i >> a) & 1) {
                    b.low[a] = c[a];
                    b.hasLow[a] = true;
                } else {
                    b.high[a] = c[a];
                    b.hasHigh[a] = true;
                }
            }
            return b;
        }
    };

    // Groups the entries after the first of [begin, end) by their child
    // index below it, keeping their order within a group; group c then
    // starts starts[c] entries after the first.
    template <typename E, typename KeyOf>
    static void splitOctants(std::vector<E>& entries, std::vector<E>& scratch, std::size_t begin, std::size_t end,
                             KeyOf keyOf, std::size_t (&starts)[9])
    {
        const Vector4D centre = keyOf(entries[begin]);
        std::fill(std::begin(starts), std::end(starts), 0);
        for (std::size_t i = begin + 1; i < end; ++i) {
            ++starts[OctreeNode<T>::childIndexOf(centre, keyOf(entries[i])) + 1];
        }
        std::size_t next[8];
        for (int c = 0; c < 8; ++c) {
            starts[c + 1] += starts[c];
            next[c] = begin + 1 + starts[c];
        }
        for (std::size_t i = begin + 1; i < end; ++i) {
            scratch[next[OctreeNode<T>::childIndexOf(centre, keyOf(entries[i]))]++] = std::move(entries[i]);
        }
        std::move(scratch.begin() + static_cast<std::ptrdiff_t>(begin + 1),
                  scratch.begin() + static_cast<std::ptrdiff_t>(end),
                  entries.begin() + static_cast<std::ptrdiff_t>(begin + 1));
    }

    // Of a few entries spread evenly over [begin, end), the one nearest the
    // middle of them on all three axes (each axis scaled by its spread).
    template <typename E, typename KeyOf>
    static std::size_t centralEntry(const std::vector<E>& entries, std::size_t begin, std::size_t end, KeyOf keyOf)
    {
        constexpr std::size_t maxSamples = 63;
        const std::size_t count = end - begin;
        const std::size_t samples = count < maxSamples ? count : maxSamples;
        const std::size_t stride = count / samples;
        float values[3][maxSamples];
        std::size_t finite[3] = {0, 0, 0};
        for (std::size_t s = 0; s < samples; ++s) {
            const Vector4D k = keyOf(entries[begin + s * stride]);
            const float c[3] = {k.x, k.y, k.z};
            for (int a = 0; a < 3; ++a) {
                if (std::isfinite(c[a])) {
                    values[a][finite[a]++] = c[a];
                }
            }
        }
        float middle[3];
        float spread[3];
        for (int a = 0; a < 3; ++a) {
            float* v = values[a];
            const std::size_t n = finite[a];
            if (n == 0) {
                middle[a] = 0.0f;
                spread[a] = 0.0f;
                continue;
            }
            std::nth_element(v, v + n / 2, v + n);
            middle[a] = v[n / 2];
            const auto [lo, hi] = std::minmax_element(v, v + n);
            spread[a] = *hi - *lo;
        }
        std::size_t best = begin;
        float bestDistance = 0.0f;
        bool found = false;
        for (std::size_t s = 0; s < samples; ++s) {
            const std::size_t i = begin + s * stride;
            const Vector4D k = keyOf(entries[i]);
            const float c[3] = {k.x, k.y, k.z};
            float distance = 0.0f;
            for (int a = 0; a < 3; ++a) {
                if (spread[a] > 0.0f && std::isfinite(spread[a])) {
                    distance += std::fabs(c[a] - middle[a]) / spread[a];
                }
            }
            if (std::isfinite(distance) && (!found || distance < bestDistance)) {
                best = i;
                bestDistance = distance;
                found = true;
            }
        }
        return best;
    }

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
