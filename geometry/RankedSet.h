#pragma once
// An ordered set of keys that answers "the k-th key" in O(log n) while keys
// are erased.
//
// Built once from sorted keys, it only shrinks. Presence is one bit per slot,
// 64 slots to a word, and a Fenwick tree counts the keys left in each word:
// selecting the k-th key walks the small tree to its word, then the bits of
// that word. Detail reduction uses it to walk the points index by rank,
// making the same choices as an iterator walk without stepping over every
// entry. Insertion is not supported; the owner rebuilds when keys are added.

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
        const std::size_t words = (keys.size() + 63) / 64;
        bits.assign(words, ~std::uint64_t(0));
        if (words > 0 && keys.size() % 64 != 0) {
            bits.back() = (std::uint64_t(1) << (keys.size() % 64)) - 1;
        }
        tree.assign(words + 1, 0);
        // Linear-time Fenwick build: each node hands its sum to its parent.
        for (std::size_t i = 1; i <= words; ++i) {
            tree[i] += static_cast<std::uint32_t>(popcount(bits[i - 1]));
            const std::size_t parent = i + (i & (~i + 1));
            if (parent <= words) {
                tree[parent] += tree[i];
            }
        }
        count = keys.size();
        top = 1;
        while (top * 2 <= words) {
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
        return eraseSlot(static_cast<std::size_t>(it - keys.begin()));
    }

    // The same by slot (position in the sorted keys), without the search.
    bool eraseSlot(std::size_t slot)
    {
        if (slot >= keys.size()) {
            return false;
        }
        const std::uint64_t bit = std::uint64_t(1) << (slot % 64);
        std::uint64_t& word = bits[slot / 64];
        if ((word & bit) == 0) {
            return false;
        }
        word &= ~bit;
        for (std::size_t i = slot / 64 + 1; i < tree.size(); i += i & (~i + 1)) {
            --tree[i];
        }
        --count;
        return true;
    }

    // The key of rank r (0-based) among those still present; r < size().
    const K& at(std::size_t r) const { return keys[slotAt(r)]; }
    bool isPresent(std::size_t slot) const
    {
        return slot < keys.size() && (bits[slot / 64] >> (slot % 64) & 1u) != 0;
    }
    // The key of a slot, present or not.
    const K& keyAt(std::size_t slot) const { return keys[slot]; }

    // The slot (position in the sorted keys given to assign) of rank r, for
    // owners that keep data beside the keys.
    std::size_t slotAt(std::size_t r) const
    {
        std::size_t word = 0;
        std::size_t remaining = r;  // keys to skip inside the found word
        for (std::size_t step = top; step > 0; step /= 2) {
            const std::size_t next = word + step;
            if (next < tree.size() && tree[next] <= remaining) {
                word = next;
                remaining -= tree[next];
            }
        }
        // word is now the 0-based index of the word holding the key: skip
        // whole bytes, then single bits.
        std::uint64_t b = bits[word];
        std::size_t base = word * 64;
        const ByteTables& bytes = byteTables();
        for (unsigned pc = bytes.count[b & 0xFF]; pc <= remaining; pc = bytes.count[b & 0xFF]) {
            remaining -= pc;
            b >>= 8;
            base += 8;
        }
        return base + bytes.select[b & 0xFF][remaining];
    }

    std::size_t size() const { return count; }
    // Slots given to assign, erased ones included.
    std::size_t slotCount() const { return keys.size(); }
    bool empty() const { return count == 0; }

private:
    // Bit-parallel count, inline (the builtin becomes a library call on
    // targets without a popcount instruction).
    static int popcount(std::uint64_t v)
    {
        v = v - ((v >> 1) & 0x5555555555555555ull);
        v = (v & 0x3333333333333333ull) + ((v >> 2) & 0x3333333333333333ull);
        v = (v + (v >> 4)) & 0x0F0F0F0F0F0F0F0Full;
        return static_cast<int>((v * 0x0101010101010101ull) >> 56);
    }

    // Per byte value: its number of set bits, and the position of its k-th
    // set bit.
    struct ByteTables {
        unsigned char count[256];
        unsigned char select[256][8];
        ByteTables()
        {
            for (unsigned v = 0; v < 256; ++v) {
                unsigned n = 0;
                for (unsigned bit = 0; bit < 8; ++bit) {
                    select[v][bit] = 0;
                }
                for (unsigned bit = 0; bit < 8; ++bit) {
                    if (v & (1u << bit)) {
                        select[v][n++] = static_cast<unsigned char>(bit);
                    }
                }
                count[v] = static_cast<unsigned char>(n);
            }
        }
    };
    static const ByteTables& byteTables()
    {
        static const ByteTables tables;
        return tables;
    }

    std::vector<K> keys;
    std::vector<std::uint64_t> bits;
    std::vector<std::uint32_t> tree;
    std::size_t count = 0;
    std::size_t top = 1;
};

}  // namespace korvel
