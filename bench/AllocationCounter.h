#pragma once
// Counts every heap allocation of a benchmark program, so that a loop can
// show it allocates nothing: read benchAllocations before and after.
// Replaces the global operator new and delete: include it in exactly one
// source of a program (each benchmark is a single source).

#include <atomic>
#include <cstdlib>
#include <new>

inline std::atomic<long> benchAllocations{0};

// Kept out of line: inlined, GCC pairs the malloc with a delete it cannot see
// is ours and warns of a mismatch.
__attribute__((noinline)) void* operator new(std::size_t size)
{
    benchAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}

__attribute__((noinline)) void operator delete(void* p) noexcept
{
    std::free(p);
}

__attribute__((noinline)) void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
