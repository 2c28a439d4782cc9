#pragma once
// One vertex of the interleaved vertex buffers: position, normal, texture
// coordinates, eight packed floats (32 bytes). The field order is the buffer
// layout; the attribute offsets of the vertex buffers depend on it, so it
// must not change.

#include <cstddef>

class Vector4D;

struct GPattern {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float nx = 0.0f;
    float ny = 0.0f;
    float nz = 0.0f;
    float u = 0.0f;
    float v = 0.0f;

    // Copies x, y, z of p (w is not part of the record).
    void setPoint(const Vector4D& p);
    // Copies x, y, z of n into nx, ny, nz.
    void setNormal(const Vector4D& n);
    void setUV(float uValue, float vValue)
    {
        u = uValue;
        v = vValue;
    }
    void dump() const;
};

static_assert(sizeof(GPattern) == 32, "GPattern is the 32-byte vertex record");
static_assert(offsetof(GPattern, nx) == 12, "normal follows the position");
static_assert(offsetof(GPattern, u) == 24, "texture coordinates follow the normal");
