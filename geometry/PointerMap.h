#pragma once
// A hash map from pointers to small values, for the hot look-ups of the
// shapes (point to node, triangle to list position): open addressing with
// linear probing over a power-of-two table, deletion by backward shift (no
// tombstones), no allocation per entry. Keys are never null.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace korvel {

template <typename K, typename V>
class PointerMap {
public:
    static constexpr const char* className = "PointerMap";
    static const char* getClassName() { return className; }
    virtual const char* getInstanceClassName() const { return className; }
    virtual ~PointerMap() = default;

    // The value of key, or null.
    V* find(const K* key)
    {
        if (count == 0) {
            return nullptr;
        }
        for (std::size_t i = home(key);; i = (i + 1) & mask) {
            if (slots[i].first == key) {
                return &slots[i].second;
            }
            if (slots[i].first == nullptr) {
                return nullptr;
            }
        }
    }
    const V* find(const K* key) const { return const_cast<PointerMap*>(this)->find(key); }
    bool contains(const K* key) const { return find(key) != nullptr; }

    // False (and nothing changed) when key is already there.
    bool insert(const K* key, const V& value)
    {
        // At most half full: short probe runs matter more than the room.
        if ((count + 1) * 2 > slots.size()) {
            grow(slots.empty() ? 16 : slots.size() * 2);
        }
        std::size_t i = home(key);
        for (; slots[i].first != nullptr; i = (i + 1) & mask) {
            if (slots[i].first == key) {
                return false;
            }
        }
        slots[i] = {key, value};
        ++count;
        return true;
    }

    // Sets the value, inserting the key if needed.
    void set(const K* key, const V& value)
    {
        if (V* v = find(key)) {
            *v = value;
        } else {
            insert(key, value);
        }
    }

    bool erase(const K* key)
    {
        if (count == 0) {
            return false;
        }
        std::size_t i = home(key);
        while (slots[i].first != key) {
            if (slots[i].first == nullptr) {
                return false;
            }
            i = (i + 1) & mask;
        }
        // Backward shift: pull later entries of the run into the hole when
        // their home does not lie between the hole and them.
        std::size_t hole = i;
        for (std::size_t j = (i + 1) & mask; slots[j].first != nullptr; j = (j + 1) & mask) {
            const std::size_t h = home(slots[j].first);
            const bool stays = hole <= j ? (hole < h && h <= j) : (hole < h || h <= j);
            if (!stays) {
                slots[hole] = slots[j];
                hole = j;
            }
        }
        slots[hole] = {nullptr, V()};
        --count;
        return true;
    }

    void reserve(std::size_t n)
    {
        std::size_t size = 16;
        while (size < n * 2) {
            size *= 2;
        }
        if (size > slots.size()) {
            grow(size);
        }
    }

    void clear()
    {
        slots.clear();
        mask = 0;
        count = 0;
    }

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }

private:
    std::size_t home(const K* key) const
    {
        // Fibonacci hashing of the address; the low bits of heap addresses
        // are alignment and carry nothing.
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key));
        return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ull) >> shift) & mask;
    }

    void grow(std::size_t size)
    {
        std::vector<std::pair<const K*, V>> old(size, {nullptr, V()});
        old.swap(slots);
        mask = size - 1;
        shift = 64;
        for (std::size_t s = size; s > 1; s /= 2) {
            --shift;
        }
        count = 0;
        for (const auto& entry : old) {
            if (entry.first != nullptr) {
                insert(entry.first, entry.second);
            }
        }
    }

    std::vector<std::pair<const K*, V>> slots;
    std::size_t mask = 0;
    unsigned shift = 64;
    std::size_t count = 0;
};

}  // namespace korvel
