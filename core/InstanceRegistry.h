#pragma once
#include "core/Object.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// Live instances by id, listed in increasing id order.
//
// Ids come from a counter, so a new instance nearly always has the largest
// id so far: recent ids live in a window table indexed by id (insertion and
// erasure in constant time, no allocation per instance), and the survivors
// of a mostly emptied window move to a sorted list of older entries. Erased
// entries leave holes (null) that are squeezed out once they dominate.
// Not an Object itself: it would have to be listed in itself.
class InstanceRegistry {
public:
    // Enters object under id; an existing entry is overwritten only when
    // replace is set.
    void set(int32_t id, Object* object, bool replace)
    {
        if (id >= windowStart) {
            setInWindow(id, object, replace);
        } else {
            setInOlder(id, object, replace);
        }
    }

    void erase(int32_t id)
    {
        if (id >= windowStart) {
            eraseInWindow(id);
        } else {
            eraseInOlder(id);
        }
    }

    std::size_t size() const { return olderLive + windowLive; }

    template <typename Visit>
    void forEach(Visit visit) const
    {
        for (const auto& [id, object] : older) {
            if (object != nullptr) {
                visit(id, object);
            }
        }
        for (std::size_t i = 0; i < window.size(); ++i) {
            if (window[i] != nullptr) {
                visit(static_cast<int32_t>(windowStart + static_cast<int64_t>(i)), window[i]);
            }
        }
    }

private:
    using Entry = std::pair<int32_t, Object*>;

    void setInWindow(int32_t id, Object* object, bool replace)
    {
        auto offset = static_cast<std::size_t>(static_cast<int64_t>(id) - windowStart);
        if (offset >= window.size()) {
            // An empty window, or one far behind (ids taken without
            // registering), starts again at id rather than growing a gap.
            if (windowLive == 0 || offset - window.size() > window.size() + 4096) {
                flushWindow();
                windowStart = id;
                offset = 0;
            }
            window.resize(offset + 1, nullptr);
        }
        Object*& slot = window[offset];
        if (slot == nullptr) {
            slot = object;
            ++windowLive;
        } else if (replace) {
            slot = object;
        }
    }

    void eraseInWindow(int32_t id)
    {
        const auto offset = static_cast<std::size_t>(static_cast<int64_t>(id) - windowStart);
        if (offset >= window.size() || window[offset] == nullptr) {
            return;
        }
        window[offset] = nullptr;
        --windowLive;
        if (window.size() >= 1024 && windowLive * 4 < window.size()) {
            flushWindow();
        }
    }

    // The window's survivors join the older entries (their ids are all
    // larger); the window starts empty after its last id.
    void flushWindow()
    {
        for (std::size_t i = 0; i < window.size(); ++i) {
            if (window[i] != nullptr) {
                older.emplace_back(static_cast<int32_t>(windowStart + static_cast<int64_t>(i)), window[i]);
            }
        }
        olderLive += windowLive;
        windowStart = static_cast<int32_t>(windowStart + static_cast<int64_t>(window.size()));
        window.clear();
        windowLive = 0;
    }

    std::vector<Entry>::iterator findOlder(int32_t id)
    {
        return std::lower_bound(older.begin(), older.end(), id,
                                [](const Entry& e, int32_t key) { return e.first < key; });
    }

    void setInOlder(int32_t id, Object* object, bool replace)
    {
        auto it = findOlder(id);
        if (it == older.end() || it->first != id) {
            older.emplace(it, id, object);
            ++olderLive;
        } else if (it->second == nullptr) {
            it->second = object;
            ++olderLive;
        } else if (replace) {
            it->second = object;
        }
    }

    void eraseInOlder(int32_t id)
    {
        auto it = findOlder(id);
        if (it == older.end() || it->first != id || it->second == nullptr) {
            return;
        }
        it->second = nullptr;
        --olderLive;
        if (older.size() >= 64 && olderLive * 2 < older.size()) {
            older.erase(std::remove_if(older.begin(), older.end(), [](const Entry& e) { return e.second == nullptr; }),
                        older.end());
        }
    }

    std::vector<Entry> older;
    std::size_t olderLive = 0;
    std::vector<Object*> window;
    int32_t windowStart = 0;
    std::size_t windowLive = 0;
};
