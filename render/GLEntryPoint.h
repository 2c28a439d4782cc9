#pragma once
// Lookup of the OpenGL entry points above version 1.1, which the system's GL
// library does not export reliably: each rendering class fetches the ones it
// uses by name from the current context and keeps them in file-local
// pointers. GL 1.1 functions are linked directly.

#include <GL/gl.h>
#include <GL/glext.h>

namespace korvel {

// Fetches one entry point of the current context into target and tells
// whether the context knows it. Chained with && so that a list stops at its
// first missing name and leaves the later pointers as they were.
template <typename Function>
bool fetchEntryPoint(Function& target, const char* name);

// Untyped lookup through GLFW; kept out of line so that only one source file
// includes the GLFW header.
using GenericEntryPoint = void (*)();
GenericEntryPoint lookupEntryPoint(const char* name);

template <typename Function>
bool fetchEntryPoint(Function& target, const char* name)
{
    GenericEntryPoint found = lookupEntryPoint(name);
    if (found == nullptr) {
        return false;
    }
    target = reinterpret_cast<Function>(found);
    return true;
}

}  // namespace korvel
