#include "core/Vector4D.h"

#include "core/MathExtended.h"
#include "core/Matrix4D.h"

#include <cmath>
#include <iostream>

const char* Vector4D::className = "Vector4D";
// Constant-initialised (constexpr constructor), so usable by any static
// initialiser of another file.
const Vector4D Vector4D::axisX(1.0f, 0.0f, 0.0f, 0.0f);
const Vector4D Vector4D::axisY(0.0f, 1.0f, 0.0f, 0.0f);
const Vector4D Vector4D::axisZ(0.0f, 0.0f, 1.0f, 0.0f);
const Vector4D Vector4D::axisW(0.0f, 0.0f, 0.0f, 1.0f);
uint32_t Vector4D::countInstance = 0;

bool Vector4D::save(std::ostream& out) const
{
    out << static_cast<double>(x) << "\t\n";
    out << static_cast<double>(y) << "\t\n";
    out << static_cast<double>(z) << "\t\n";
    out << static_cast<double>(w) << "\t\n";
    return true;
}

bool Vector4D::load(std::istream& in)
{
    float values[4];
    for (float& value : values) {
        if (!(in >> value)) {
            std::cout << "[Error] Vector4D::load: four numbers expected, vector left unchanged" << std::endl;
            return false;
        }
    }
    copyBase(values);
    // Deliberately false even after a good read; callers never test it.
    return false;
}

void Vector4D::copyBase(const float* values)
{
    x = values[0];
    y = values[1];
    z = values[2];
    w = values[3];
}

Vector4D& Vector4D::operator=(const float* values)
{
    copyBase(values);
    return *this;
}

Vector4D& Vector4D::operator=(const Vector4D& other)
{
    x = other.x;
    y = other.y;
    z = other.z;
    w = other.w;
    return *this;
}

void Vector4D::setNull()
{
    x = y = z = w = 0.0f;
}

void Vector4D::setCoord(float xValue, float yValue, float zValue, float wValue)
{
    x = xValue;
    y = yValue;
    z = zValue;
    w = wValue;
}

void Vector4D::add(float dx, float dy, float dz, float dw)
{
    x += dx;
    y += dy;
    z += dz;
    w += dw;
}

void Vector4D::setValue(float value, int index)
{
    switch (static_cast<unsigned>(index)) {
    case 0: x = value; break;
    case 1: y = value; break;
    case 2: z = value; break;
    case 3: w = value; break;
    default: break;
    }
}

float Vector4D::getValue(int index) const
{
    switch (static_cast<unsigned>(index)) {
    case 0: return x;
    case 1: return y;
    case 2: return z;
    case 3: return w;
    default: return 0.0f;
    }
}

Vector4D Vector4D::operator+(const Vector4D& o) const
{
    return Vector4D(x + o.x, y + o.y, z + o.z, w + o.w);
}

Vector4D& Vector4D::operator+=(const Vector4D& o)
{
    x += o.x;
    y += o.y;
    z += o.z;
    w += o.w;
    return *this;
}

Vector4D Vector4D::operator-(const Vector4D& o) const
{
    return Vector4D(x - o.x, y - o.y, z - o.z, w - o.w);
}

Vector4D& Vector4D::operator-=(const Vector4D& o)
{
    x -= o.x;
    y -= o.y;
    z -= o.z;
    w -= o.w;
    return *this;
}

Vector4D Vector4D::operator*(float f) const
{
    return Vector4D(x * f, y * f, z * f, w * f);
}

Vector4D& Vector4D::operator*=(float f)
{
    x *= f;
    y *= f;
    z *= f;
    w *= f;
    return *this;
}

Vector4D& Vector4D::operator/=(float f)
{
    x /= f;
    y /= f;
    z /= f;
    w /= f;
    return *this;
}

Vector4D& Vector4D::operator*=(const Matrix4D& m)
{
    *this = m * *this;
    return *this;
}

float Vector4D::scal3D(const Vector4D& o) const
{
    return x * o.x + y * o.y + z * o.z;
}

Vector4D Vector4D::pvect3D(const Vector4D& o) const
{
    return Vector4D(y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x, 0.0f);
}

float Vector4D::norm3D() const
{
    const double dx = x;
    const double dy = y;
    const double dz = z;
    return static_cast<float>(std::sqrt(dx * dx + dy * dy + dz * dz));
}

void Vector4D::normalize3D()
{
    const float n = norm3D();
    if (n == 0.0f) {
        return;
    }
    x /= n;
    y /= n;
    z /= n;
}

void Vector4D::minimize(Vector4D v)
{
    x = std::fmin(x, v.x);
    y = std::fmin(y, v.y);
    z = std::fmin(z, v.z);
    w = std::fmin(w, v.w);
}

void Vector4D::maximize(Vector4D v)
{
    x = std::fmax(x, v.x);
    y = std::fmax(y, v.y);
    z = std::fmax(z, v.z);
    w = std::fmax(w, v.w);
}

bool Vector4D::isFinite() const
{
    return korvel::MathExtended::allFinite(&x, 4);
}

bool Vector4D::isNull() const
{
    constexpr float epsilon = 0.0001f;
    return std::fabs(x) <= epsilon && std::fabs(y) <= epsilon && std::fabs(z) <= epsilon && std::fabs(w) <= epsilon;
}

bool Vector4D::operator==(const Vector4D& o) const
{
    constexpr float epsilon = 0.0001f;
    const float mine[4] = {x, y, z, w};
    const float theirs[4] = {o.x, o.y, o.z, o.w};
    for (int i = 0; i < 4; ++i) {
        // A NaN quotient fails the test and so counts as equal.
        if (std::fabs(mine[i] / theirs[i] - 1.0f) > epsilon) {
            return false;
        }
    }
    return true;
}

void Vector4D::floor()
{
    x = std::floor(x);
    y = std::floor(y);
    z = std::floor(z);
}

namespace {

void floorBy(Vector4D& v, float b)
{
    v.x = std::floor(v.x / b) * b;
    v.y = std::floor(v.y / b) * b;
    v.z = std::floor(v.z / b) * b;
}

void fractBy(Vector4D& v, float b)
{
    const float qx = v.x / b;
    const float qy = v.y / b;
    const float qz = v.z / b;
    v.x = qx - std::floor(qx);
    v.y = qy - std::floor(qy);
    v.z = qz - std::floor(qz);
}

}  // namespace

void Vector4D::floorBase(int b)
{
    if (b != 0) {
        floorBy(*this, static_cast<float>(b));
    }
}

void Vector4D::floorBase(unsigned int b)
{
    if (b != 0) {
        floorBy(*this, static_cast<float>(b));
    }
}

void Vector4D::floorBase(float b)
{
    if (b != 0.0f) {
        floorBy(*this, b);
    }
}

void Vector4D::fractBase(int b)
{
    if (b != 0) {
        fractBy(*this, static_cast<float>(b));
    }
}

void Vector4D::fractBase(unsigned int b)
{
    if (b != 0) {
        fractBy(*this, static_cast<float>(b));
    }
}

void Vector4D::fractBase(float b)
{
    if (b != 0.0f) {
        fractBy(*this, b);
    }
}

void Vector4D::dump() const
{
    for (int i = 0; i < 4; ++i) {
        std::cout << "v[" << i << "]=" << static_cast<double>(getValue(i)) << "\t";
    }
    std::cout << std::endl;
}

void Vector4D::addInstance(Vector4D*)
{
    ++countInstance;
    std::cout << "instances of Vectors: " << countInstance << std::endl;
}

void Vector4D::subInstance(Vector4D*)
{
    --countInstance;
    std::cout << "instances of Vectors: " << countInstance << std::endl;
}

std::ostream& operator<<(std::ostream& out, const Vector4D& v)
{
    for (int i = 0; i < 4; ++i) {
        out << "\tv[" << i << "]= " << static_cast<double>(v.getValue(i));
    }
    return out;
}
