#pragma once
// One node of the point octree: a key point, its value and eight children.
// Child i holds the points p with (p.x > x ? 1 : 0) + (p.y > y ? 2 : 0) +
// (p.z > z ? 4 : 0): strict comparisons, so equal coordinates go low; w is
// ignored. Keys match by Vector4D equality (relative), not exact floats.
//
// A removed key leaves its node in place, without value, as long as the node
// still routes to children (see Octree::remove). Walks are loops, not
// recursion: nothing balances the tree and sorted input makes it a list.

#include "core/Box.h"
#include "core/Vector4D.h"

#include <list>
#include <vector>

namespace korvel {

template <typename T>
class OctreeNode {
public:
    static constexpr const char* className = "OctreeNode";
    static const char* getClassName() { return className; }
    virtual const char* getInstanceClassName() const { return className; }

    OctreeNode(const Vector4D& key, const T& data) : point(key), value(data), present(true) {}
    OctreeNode(const OctreeNode&) = delete;
    OctreeNode& operator=(const OctreeNode&) = delete;

    // Deletes the whole subtree without recursion or allocation: the nodes
    // waiting to be deleted are chained through their teardown link.
    virtual ~OctreeNode()
    {
        OctreeNode* pending = nullptr;
        detachChildren(pending);
        while (pending != nullptr) {
            OctreeNode* n = pending;
            pending = n->teardown;
            n->detachChildren(pending);
            delete n;
        }
    }

    // True only when Vector4D equality would say false: some coordinate
    // differs by more than a thousandth of the larger magnitude (equality
    // allows a ten-thousandth). NaN and infinite values never pass, so they
    // go to the full test. Keeps the walk from calling it at every level.
    static bool surelyDifferent(const Vector4D& a, const Vector4D& b)
    {
        return apart(a.x, b.x) || apart(a.y, b.y) || apart(a.z, b.z);
    }

    static int childIndexOf(const Vector4D& centre, const Vector4D& p)
    {
        return (p.x > centre.x ? 1 : 0) + (p.y > centre.y ? 2 : 0) + (p.z > centre.z ? 4 : 0);
    }
    int childIndex(const Vector4D& p) const { return childIndexOf(point, p); }

    enum AddResult { Replaced, Created, Revived };

    // Inserts below (or at) this node: a new node, the value of an equal key
    // replaced, or an empty routing node holding that key filled again.
    virtual AddResult add(const Vector4D& key, const T& data)
    {
        OctreeNode* n = this;
        for (;;) {
            if (!surelyDifferent(key, n->point) && key == n->point) {
                const bool revived = !n->present;
                n->value = data;
                n->present = true;
                return revived ? Revived : Replaced;
            }
            OctreeNode*& child = n->children[n->childIndex(key)];
            if (child == nullptr) {
                child = new OctreeNode(key, data);
                return Created;
            }
            n = child;
        }
    }

    virtual bool get(const Vector4D& key, T& data) const
    {
        const OctreeNode* n = find(key);
        if (n == nullptr) {
            return false;
        }
        data = n->value;
        return true;
    }

    // The first node on the walk holding a key equal to key, or null.
    const OctreeNode* find(const Vector4D& key) const
    {
        return const_cast<OctreeNode*>(this)->locate(key, nullptr, nullptr, nullptr);
    }

    // The first node on the walk whose key equals key, is present and (when
    // expected is given) holds that value, with the parent slot it hangs
    // from. The walk goes on past an equal key that does not qualify: a key
    // equal to another is only ever stored below it (see addBelow).
    OctreeNode* locate(const Vector4D& key, const T* expected, OctreeNode** parentOut, int* slotOut)
    {
        OctreeNode* parent = nullptr;
        int slot = 0;
        OctreeNode* n = this;
        while (n != nullptr) {
            if (n->present && (expected == nullptr || n->value == *expected) && !surelyDifferent(key, n->point)
                && key == n->point) {
                if (parentOut != nullptr) {
                    *parentOut = parent;
                    *slotOut = slot;
                }
                return n;
            }
            parent = n;
            slot = n->childIndex(key);
            n = n->children[slot];
        }
        return nullptr;
    }

    // Hangs a new node on the walk without looking for an equal key, so
    // that keys that relative equality calls equal can be kept apart.
    void addBelow(const Vector4D& key, const T& data)
    {
        OctreeNode* n = this;
        for (;;) {
            OctreeNode*& child = n->children[n->childIndex(key)];
            if (child == nullptr) {
                child = new OctreeNode(key, data);
                return;
            }
            n = child;
        }
    }

    // Pre-order: this value, then children 0 to 7.
    virtual void getList(std::list<T>& out) const
    {
        walk([&](const OctreeNode& n) {
            out.push_back(n.value);
            return true;
        }, nullptr, nullptr);
    }

    // Values whose key lies inside the box, bounds included.
    virtual void getList(std::list<T>& out, const Box& box) const
    {
        walk([&](const OctreeNode& n) {
            if (inside(n.point, box.min, box.max)) {
                out.push_back(n.value);
            }
            return true;
        }, &box.min, &box.max);
    }

    // Values whose key lies within distance (norm3D) of centre.
    virtual void getList(std::list<T>& out, const Vector4D& centre, float distance) const
    {
        const Vector4D reach(distance, distance, distance, 0.0f);
        const Vector4D lo = centre - reach;
        const Vector4D hi = centre + reach;
        walk([&](const OctreeNode& n) {
            if ((n.point - centre).norm3D() <= distance) {
                out.push_back(n.value);
            }
            return true;
        }, &lo, &hi);
    }

    Vector4D point;
    T value;
    // False once the key has been removed while the node still routes.
    bool present;
    OctreeNode* children[8] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};

private:
    static bool apart(float a, float b)
    {
        const float d = a - b;
        const float ma = a < 0.0f ? -a : a;
        const float mb = b < 0.0f ? -b : b;
        return (d < 0.0f ? -d : d) > 1e-3f * (ma > mb ? ma : mb);
    }

    static bool inside(const Vector4D& p, const Vector4D& lo, const Vector4D& hi)
    {
        return lo.x <= p.x && p.x <= hi.x && lo.y <= p.y && p.y <= hi.y && lo.z <= p.z && p.z <= hi.z;
    }

    // Pre-order walk over present nodes; with a range, children whose octant
    // cannot meet [lo, hi] are skipped.
    template <typename Visit>
    void walk(Visit visit, const Vector4D* lo, const Vector4D* hi) const
    {
        std::vector<const OctreeNode*> stack{this};
        while (!stack.empty()) {
            const OctreeNode* n = stack.back();
            stack.pop_back();
            if (n->present) {
                visit(*n);
            }
            for (int i = 7; i >= 0; --i) {
                const OctreeNode* c = n->children[i];
                if (c == nullptr) {
                    continue;
                }
                if (lo != nullptr && !n->octantMeets(i, *lo, *hi)) {
                    continue;
                }
                stack.push_back(c);
            }
        }
    }

    bool octantMeets(int i, const Vector4D& lo, const Vector4D& hi) const
    {
        const bool xOk = (i & 1) ? hi.x > point.x : lo.x <= point.x;
        const bool yOk = (i & 2) ? hi.y > point.y : lo.y <= point.y;
        const bool zOk = (i & 4) ? hi.z > point.z : lo.z <= point.z;
        return xOk && yOk && zOk;
    }

    void detachChildren(OctreeNode*& chain)
    {
        for (OctreeNode*& c : children) {
            if (c != nullptr) {
                c->teardown = chain;
                chain = c;
                c = nullptr;
            }
        }
    }

    OctreeNode* teardown = nullptr;
};

}  // namespace korvel
