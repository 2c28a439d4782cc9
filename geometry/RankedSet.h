#pragma once
// An ordered set of keys that answers "the k-th key" and "how many keys come
// before this one" in O(log n) while keys are erased.
//
// Built once from sorted keys, it only shrinks: a presence bit per slot in a
// Fenwick tree. Detail reduction uses it to walk the points index by rank,
// making the same choices as an iterator walk without stepping over every
// entry. Insertion is not supported; the owner rebuilds when keys are added.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace korvel {

template <typename K, typename Less = std::less<K>>
class RankedSet {
public:
    static constexpr const char* className = "RankedSet";
    static const char* getClassName() { return className; }
    virtual const char* getInstanceClassName() const { return className; }
    virtual ~RankedSet() = default;

    // keys must be sorted by Less and distinct.
    void assign(std::vector<K> sortedKeys)
    {
        keys = std::move(sortedKeys);
        present.assign(keys.size(), 1);
        tree.assign(keys.size() + 1, 0);
        // Linear-time Fenwick build: each node hands its sum to its parent.
        for (std::size_t i = 1; i <= keys.size(); ++i) {
            tree[i] += 1;
            const std::size_t parent = i + (i & (~i + 1));
            if (parent <= keys.size()) {
                tree[parent] += tree[i];
            }
        }
        count = keys.size();
        top = 1;
        while (top * 2 <= keys.size()) {
            top *= 2;
        }
    }

    void clear() { assign({}); }

    // False when the key is not (or no longer) in the set.
    bool erase(const K& key)
    {
        const auto it = std::lower_bound(keys.begin(), keys.end(), key, Less());
        if (it == keys.end() || Less()(key, *it)) {
            return false;
        }
        const std::size_t slot = static_cast<std::size_t>(it - keys.begin());
        if (present[slot] == 0) {
            return false;
        }
        present[slot] = 0;
        for (std::size_t i = slot + 1; i <= keys.size(); i += i & (~i + 1)) {
            --tree[i];
        }
        --count;
        return true;
    }

    // The key of rank r (0-based) among those still present; r < size().
    const K& at(std::size_t r) const { return keys[slotAt(r)]; }

    // The slot (position in the sorted keys given to assign) of rank r, for
    // owners that keep data beside the keys.
    std::size_t slotAt(std::size_t r) const
    {
        std::size_t pos = 0;
        std::size_t remaining = r + 1;
        for (std::size_t step = top; step > 0; step /= 2) {
            const std::size_t next = pos + step;
            if (next <= keys.size() && tree[next] < remaining) {
                pos = next;
                remaining -= tree[next];
            }
        }
        return pos;
    }

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }

private:
    std::vector<K> keys;
    std::vector<unsigned char> present;
    std::vector<std::size_t> tree;
    std::size_t count = 0;
    std::size_t top = 1;
};

}  // namespace korvel
