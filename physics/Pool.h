#pragma once
// A fixed array of reusable elements, held by value, built once with their
// owner and never resized. Finding a free element is the user's business
// (for forces: the first whose released flag is set).

#include <cstddef>

namespace korvel {

template <class Element, std::size_t count>
class Pool {
public:
    static_assert(count > 0, "a pool holds at least one element");

    virtual ~Pool() = default;

    Element elements[count];
};

}  // namespace korvel
