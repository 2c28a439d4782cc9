#pragma once
// Remembers which node the octree gave for a point value, keyed by the exact
// bits of its four coordinates. A mesh repeats each point value once per
// triangle around it; after the first walk down the tree, the others cost
// one hash probe. Valid only while the tree gains entries: an added entry
// hangs where walks ended, so the walks already made still end on the same
// node. A key that only routed and is filled again can lie above the end of
// such a walk only if it equals the value without equalling the key found
// below (relative equality is not transitive): both answers are then keys
// equal to the value. Anything that removes or moves entries must call
// clear.

#include "core/Vector4D.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace korvel {

class ShapeNode;

class ExactPointCache {
public:
    // The remembered node, or null.
    ShapeNode* find(const Vector4D& p) const
    {
        if (count == 0) {
            return nullptr;
        }
        const Key key = keyOf(p);
        for (std::size_t i = home(key);; i = (i + 1) & mask) {
            if (slots[i].node == nullptr) {
                return nullptr;
            }
            if (slots[i].key == key) {
                return slots[i].node;
            }
        }
    }

    void remember(const Vector4D& p, ShapeNode* node)
    {
        if ((count + 1) * 2 > slots.size()) {
            grow();
        }
        place(keyOf(p), node);
    }

    // Room for n values without growing on the way.
    void reserve(std::size_t n)
    {
        std::size_t size = slots.empty() ? 1024 : slots.size();
        while (size < n * 2) {
            size *= 2;
        }
        while (slots.size() < size) {
            grow();
        }
    }

    // Frees the table too: a shape keeps it only while it is being filled.
    void clear()
    {
        std::vector<Slot>().swap(slots);
        count = 0;
        mask = 0;
    }

private:
    struct Key {
        uint32_t bits[4];
        bool operator==(const Key& other) const { return std::memcmp(bits, other.bits, sizeof bits) == 0; }
    };
    struct Slot {
        Key key;
        ShapeNode* node = nullptr;
    };

    static Key keyOf(const Vector4D& p)
    {
        Key key;
        const float coordinates[4] = {p.x, p.y, p.z, p.w};
        std::memcpy(key.bits, coordinates, sizeof key.bits);
        return key;
    }
    std::size_t home(const Key& key) const
    {
        uint64_t h = 0x9e3779b97f4a7c15ull;
        for (uint32_t b : key.bits) {
            h = (h ^ b) * 0xff51afd7ed558ccdull;
        }
        return static_cast<std::size_t>(h ^ (h >> 29)) & mask;
    }
    void place(const Key& key, ShapeNode* node)
    {
        for (std::size_t i = home(key);; i = (i + 1) & mask) {
            if (slots[i].node == nullptr) {
                slots[i].key = key;
                slots[i].node = node;
                ++count;
                return;
            }
            if (slots[i].key == key) {
                slots[i].node = node;
                return;
            }
        }
    }
    void grow()
    {
        std::vector<Slot> old;
        old.swap(slots);
        slots.resize(old.empty() ? 1024 : old.size() * 2);
        mask = slots.size() - 1;
        count = 0;
        for (const Slot& s : old) {
            if (s.node != nullptr) {
                place(s.key, s.node);
            }
        }
    }

    std::vector<Slot> slots;
    std::size_t count = 0;
    std::size_t mask = 0;
};

}  // namespace korvel
