#pragma once
// Four-float vector of the engine: points (w = 1) and directions (w = 0), by
// the callers' habit; nothing here enforces w. Operations whose name ends in
// 3D (and floor, floorBase, fractBase) work on x, y, z and leave w alone; the
// others work on all four components.
//
// A plain value: copied freely, never allocates.

#include <cstdint>
#include <istream>
#include <ostream>

class Matrix4D;

class Vector4D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    static const Vector4D axisX;
    static const Vector4D axisY;
    static const Vector4D axisZ;
    static const Vector4D axisW;
    // Only addInstance/subInstance touch it; constructors do not count.
    static uint32_t countInstance;

    // x, y, z, w stay first and contiguous: &x can be read as float[4].
    float x;
    float y;
    float z;
    float w;

    constexpr Vector4D() : x(0.0f), y(0.0f), z(0.0f), w(0.0f) {}
    constexpr Vector4D(float xValue, float yValue, float zValue, float wValue)
        : x(xValue), y(yValue), z(zValue), w(wValue)
    {
    }
    constexpr Vector4D(const Vector4D& other) = default;
    virtual ~Vector4D() = default;

    virtual bool save(std::ostream& out) const;
    // Returns false even after a good read; callers ignore the result.
    virtual bool load(std::istream& in);
    virtual const char* getInstanceClassName() const { return className; }

    void copyBase(const float* values);
    Vector4D& operator=(const float* values);
    Vector4D& operator=(const Vector4D& other);

    void setNull();
    void setCoord(float xValue, float yValue, float zValue, float wValue);
    void add(float dx, float dy, float dz, float dw);
    // index 0..3 is x..w; anything else is ignored (setValue) or reads 0.
    void setValue(float value, int index);
    float getValue(int index) const;

    Vector4D operator+(const Vector4D& o) const;
    Vector4D& operator+=(const Vector4D& o);
    Vector4D operator-(const Vector4D& o) const;
    Vector4D& operator-=(const Vector4D& o);
    Vector4D operator*(float f) const;
    Vector4D& operator*=(float f);
    Vector4D& operator/=(float f);  // a zero divisor gives infinities
    // this <- m * this, over the four components.
    Vector4D& operator*=(const Matrix4D& m);

    float scal3D(const Vector4D& o) const;
    Vector4D pvect3D(const Vector4D& o) const;  // w of the result is 0
    float norm3D() const;
    void normalize3D();  // a zero-length vector is left as it is
    void minimize(Vector4D v);
    void maximize(Vector4D v);
    bool isNull() const;  // every component within 0.0001 of 0
    bool isFinite() const;  // no component is an infinity or a NaN

    // Relative comparison: unequal as soon as |this.c / o.c - 1| > 0.0001 for
    // a component. The quotient is left to IEEE rules on purpose: 0 in both
    // is NaN and passes, 0 in o alone is infinite and fails.
    bool operator==(const Vector4D& o) const;
    bool operator!=(const Vector4D& o) const { return !(*this == o); }

    void floor();
    // c <- floor(c / b) * b on x, y, z; b = 0 leaves the vector alone.
    void floorBase(int b);
    void floorBase(unsigned int b);
    void floorBase(float b);
    // c <- c / b - floor(c / b): the fraction of the quotient, not scaled back.
    void fractBase(int b);
    void fractBase(unsigned int b);
    void fractBase(float b);

    void dump() const;

    static void addInstance(Vector4D* v);
    static void subInstance(Vector4D* v);
};

std::ostream& operator<<(std::ostream& out, const Vector4D& v);
