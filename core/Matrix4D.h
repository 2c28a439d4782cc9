#pragma once
// 4x4 float matrix of the engine.
//
// Conventions:
// - Storage is column-major, as OpenGL expects: element (row r, column c) is
//   m[4c + r]; column 3 (m[12], m[13], m[14]) is the translation and m[3],
//   m[7], m[11], m[15] the bottom row. The array uploads as it stands.
// - Vectors are columns multiplied on the right: M * v. Composing A * B
//   applies B first.
// - A "line" is a row: line i is m[i], m[i+4], m[i+8], m[i+12].
// - Angles are radians; rotations are right-handed (counter-clockwise when
//   looking down the axis towards the origin).
// - A default-constructed matrix is all zeros, not the identity.
// No operation allocates.

#include "core/Vector4D.h"

#include <cstdint>
#include <istream>
#include <ostream>

class Matrix4D {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    // Only addInstance/subInstance touch it; constructors do not count.
    static uint32_t countInstance;

    float m[16];

    constexpr Matrix4D() : m{} {}
    // The four vectors become the columns, in order.
    Matrix4D(const Vector4D& c0, const Vector4D& c1, const Vector4D& c2, const Vector4D& c3);
    Matrix4D(const Matrix4D& other) = default;
    virtual ~Matrix4D() = default;

    // Line by line, one value per text line, an empty line after each line.
    virtual bool save(std::ostream& out) const;
    // Reads sixteen floats in the order save writes them. On a short or bad
    // read the matrix is left unchanged and the answer is false.
    virtual bool load(std::istream& in);
    virtual const char* getInstanceClassName() const { return className; }

    Matrix4D& operator=(const Matrix4D& other) = default;

    static Matrix4D getI4();
    void setI4();
    static Matrix4D getRx(float a);
    static Matrix4D getRy(float a);
    static Matrix4D getRz(float a);

    // this <- R * this; only the two lines the rotation mixes change, the
    // translation column included.
    void rotX(float a);
    void rotY(float a);
    void rotZ(float a);
    // Rotates the upper-left 3x3 block by a radians about u (taken as given:
    // pass a unit axis). Translation column and bottom line are kept.
    void rotULocal(const Vector4D& u, float a);
    // r's direction is the axis, its length the angle; a null r does nothing.
    void rotRLocal(const Vector4D& r);

    void setPosition(float x, float y, float z);
    void setPosition(const Vector4D& p);  // all four components into column 3
    Vector4D getPosition() const;
    void translate3D(const Vector4D& d);  // also sets m[15] to 1
    void enlarge(float f);                // scales the 3x3 block only

    // angle is the horizontal half field of view, ratio is width / height;
    // far == near is taken as far = 2 near.
    void setProjection(float angle, float ratio, float near, float far);

    Vector4D operator*(const Vector4D& v) const;
    Matrix4D operator*(const Matrix4D& b) const;
    // 3x3 product of the upper-left blocks; bottom line and translation from b.
    Matrix4D mul3(const Matrix4D& b) const;

    Matrix4D operator+(const Matrix4D& b) const;
    Matrix4D& operator+=(const Matrix4D& b);
    Matrix4D operator-(const Matrix4D& b) const;
    Matrix4D& operator-=(const Matrix4D& b);
    Matrix4D operator*(float f) const;
    Matrix4D& operator*=(float f);

    // Indices outside 0..3 are logged and ignored (getters give a null vector).
    void setColumn(int i, const Vector4D& v);
    void setLine(int i, const Vector4D& v);
    void setColumns(const Vector4D& c0, const Vector4D& c1, const Vector4D& c2, const Vector4D& c3);
    void setLines(const Vector4D& l0, const Vector4D& l1, const Vector4D& l2, const Vector4D& l3);
    Vector4D getColumn(int i) const;
    Vector4D getLine(int i) const;

    // Elementary line operations of the Gauss-Jordan inversion.
    void exchangeLines(int a, int b);
    void mulLine(int i, float f);
    void addMulLineToLine(float f, int src, int dst);  // line dst += f * line src
    // Brings the largest |element| of column i at or below line i onto line i
    // and scales that line to a pivot of 1, mirroring each step on inv.
    // False when i is out of range or the column is all zeros there.
    bool normalisePivot(int i, Matrix4D& inv);
    // Zeroes column i in every line but i, mirroring each step on inv.
    void cleanFromPivot(int i, Matrix4D& inv);

    // Writes the inverse into inv. False for a singular matrix, with inv left
    // partly computed. this is never modified.
    bool invert(Matrix4D& inv) const;
    bool isFinite() const;  // no coefficient is an infinity or a NaN

    // Orthonormal right-handed frame whose first column is x normalised;
    // false (matrix unchanged) for a null x.
    bool setBaseMatrixXAxis(const Vector4D& x);

    void dump() const;

    static void addInstance(Matrix4D* matrix);
    static void subInstance(Matrix4D* matrix);
};

std::ostream& operator<<(std::ostream& out, const Matrix4D& matrix);
