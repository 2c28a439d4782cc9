#include "core/Matrix4D.h"

#include "core/MathExtended.h"

#include <cmath>
#include <iostream>

const char* Matrix4D::className = "Matrix4D";
uint32_t Matrix4D::countInstance = 0;

namespace {

bool validIndex(int i, const char* operation)
{
    if (static_cast<unsigned>(i) < 4u) {
        return true;
    }
    std::cout << "[Error] Matrix4D::" << operation << ": index " << i << " is not a line or column (0 to 3)" << std::endl;
    return false;
}

void sinCos(float a, float& s, float& c)
{
    s = static_cast<float>(std::sin(static_cast<double>(a)));
    c = static_cast<float>(std::cos(static_cast<double>(a)));
}

}  // namespace

Matrix4D::Matrix4D(const Vector4D& c0, const Vector4D& c1, const Vector4D& c2, const Vector4D& c3) : m{}
{
    setColumns(c0, c1, c2, c3);
}

bool Matrix4D::save(std::ostream& out) const
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            out << static_cast<double>(m[4 * c + r]) << '\n';
        }
        out << '\n';
    }
    return true;
}

bool Matrix4D::load(std::istream& in)
{
    float values[16];
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            if (!(in >> values[4 * c + r])) {
                std::cout << "[Error] Matrix4D::load: sixteen numbers expected, matrix left unchanged" << std::endl;
                return false;
            }
        }
    }
    for (int i = 0; i < 16; ++i) {
        m[i] = values[i];
    }
    return true;
}

Matrix4D Matrix4D::getI4()
{
    Matrix4D result;
    result.setI4();
    return result;
}

void Matrix4D::setI4()
{
    for (int i = 0; i < 16; ++i) {
        m[i] = (i % 5 == 0) ? 1.0f : 0.0f;
    }
}

Matrix4D Matrix4D::getRx(float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    Matrix4D r = getI4();
    r.m[5] = c;
    r.m[6] = s;
    r.m[9] = -s;
    r.m[10] = c;
    return r;
}

Matrix4D Matrix4D::getRy(float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    Matrix4D r = getI4();
    r.m[0] = c;
    r.m[2] = -s;
    r.m[8] = s;
    r.m[10] = c;
    return r;
}

Matrix4D Matrix4D::getRz(float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    Matrix4D r = getI4();
    r.m[0] = c;
    r.m[1] = s;
    r.m[4] = -s;
    r.m[5] = c;
    return r;
}

void Matrix4D::rotX(float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    for (int j = 0; j < 4; ++j) {
        const float m1 = m[4 * j + 1];
        const float m2 = m[4 * j + 2];
        m[4 * j + 1] = c * m1 - s * m2;
        m[4 * j + 2] = c * m2 + s * m1;
    }
}

void Matrix4D::rotY(float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    for (int j = 0; j < 4; ++j) {
        const float m0 = m[4 * j];
        const float m2 = m[4 * j + 2];
        m[4 * j] = c * m0 + s * m2;
        m[4 * j + 2] = c * m2 - s * m0;
    }
}

void Matrix4D::rotZ(float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    for (int j = 0; j < 4; ++j) {
        const float m0 = m[4 * j];
        const float m1 = m[4 * j + 1];
        m[4 * j] = c * m0 - s * m1;
        m[4 * j + 1] = c * m1 + s * m0;
    }
}

void Matrix4D::rotULocal(const Vector4D& u, float a)
{
    float s;
    float c;
    sinCos(a, s, c);
    const float t = 1.0f - c;
    const float x = u.x;
    const float y = u.y;
    const float z = u.z;
    // r[line][column] of the axis-angle rotation.
    const float r[3][3] = {
        {t * x * x + c, t * x * y - s * z, t * x * z + s * y},
        {t * x * y + s * z, t * y * y + c, t * y * z - s * x},
        {t * x * z - s * y, t * y * z + s * x, t * z * z + c},
    };
    float block[3][3];
    for (int col = 0; col < 3; ++col) {
        for (int line = 0; line < 3; ++line) {
            block[line][col] = m[4 * col + line];
        }
    }
    for (int col = 0; col < 3; ++col) {
        for (int line = 0; line < 3; ++line) {
            m[4 * col + line] = r[line][0] * block[0][col] + r[line][1] * block[1][col] + r[line][2] * block[2][col];
        }
    }
}

void Matrix4D::rotRLocal(const Vector4D& r)
{
    const float angle = r.norm3D();
    if (angle == 0.0f) {
        return;
    }
    Vector4D axis(r);
    axis.normalize3D();
    rotULocal(axis, angle);
}

void Matrix4D::setPosition(float x, float y, float z)
{
    m[12] = x;
    m[13] = y;
    m[14] = z;
}

void Matrix4D::setPosition(const Vector4D& p)
{
    m[12] = p.x;
    m[13] = p.y;
    m[14] = p.z;
    m[15] = p.w;
}

Vector4D Matrix4D::getPosition() const
{
    return Vector4D(m[12], m[13], m[14], m[15]);
}

void Matrix4D::translate3D(const Vector4D& d)
{
    m[12] += d.x;
    m[13] += d.y;
    m[14] += d.z;
    m[15] = 1.0f;
}

void Matrix4D::enlarge(float f)
{
    for (int col = 0; col < 3; ++col) {
        for (int line = 0; line < 3; ++line) {
            m[4 * col + line] *= f;
        }
    }
}

void Matrix4D::setProjection(float angle, float ratio, float near, float far)
{
    for (float& value : m) {
        value = 0.0f;
    }
    if (far == near) {
        far = 2.0f * near;
    }
    const double t = std::tan(static_cast<double>(angle));
    m[0] = static_cast<float>(1.0 / t);
    m[5] = static_cast<float>(static_cast<double>(ratio) / t);
    m[10] = -(far + near) / (far - near);
    m[14] = near * (far * (-2.0f)) / (far - near);
    m[11] = -1.0f;
    m[15] = 0.0f;
}

Vector4D Matrix4D::operator*(const Vector4D& v) const
{
    return Vector4D(m[0] * v.x + m[4] * v.y + m[8] * v.z + m[12] * v.w,
                    m[1] * v.x + m[5] * v.y + m[9] * v.z + m[13] * v.w,
                    m[2] * v.x + m[6] * v.y + m[10] * v.z + m[14] * v.w,
                    m[3] * v.x + m[7] * v.y + m[11] * v.z + m[15] * v.w);
}

Matrix4D Matrix4D::operator*(const Matrix4D& b) const
{
    // Column c of the product is the columns of this weighted by column c of
    // b: four-wide multiply-adds the compiler can vectorise.
    Matrix4D result;
    for (int c = 0; c < 4; ++c) {
        const float* weights = b.m + 4 * c;
        for (int r = 0; r < 4; ++r) {
            result.m[4 * c + r] = m[r] * weights[0] + m[4 + r] * weights[1] + m[8 + r] * weights[2] + m[12 + r] * weights[3];
        }
    }
    return result;
}

Matrix4D Matrix4D::mul3(const Matrix4D& b) const
{
    Matrix4D result(b);
    for (int c = 0; c < 3; ++c) {
        for (int r = 0; r < 3; ++r) {
            result.m[4 * c + r] = m[r] * b.m[4 * c] + m[4 + r] * b.m[4 * c + 1] + m[8 + r] * b.m[4 * c + 2];
        }
    }
    return result;
}

Matrix4D Matrix4D::operator+(const Matrix4D& b) const
{
    Matrix4D result(*this);
    result += b;
    return result;
}

Matrix4D& Matrix4D::operator+=(const Matrix4D& b)
{
    for (int i = 0; i < 16; ++i) {
        m[i] += b.m[i];
    }
    return *this;
}

Matrix4D Matrix4D::operator-(const Matrix4D& b) const
{
    Matrix4D result(*this);
    result -= b;
    return result;
}

Matrix4D& Matrix4D::operator-=(const Matrix4D& b)
{
    for (int i = 0; i < 16; ++i) {
        m[i] -= b.m[i];
    }
    return *this;
}

Matrix4D Matrix4D::operator*(float f) const
{
    Matrix4D result(*this);
    result *= f;
    return result;
}

Matrix4D& Matrix4D::operator*=(float f)
{
    for (float& value : m) {
        value *= f;
    }
    return *this;
}

void Matrix4D::setColumn(int i, const Vector4D& v)
{
    if (!validIndex(i, "setColumn")) {
        return;
    }
    m[4 * i] = v.x;
    m[4 * i + 1] = v.y;
    m[4 * i + 2] = v.z;
    m[4 * i + 3] = v.w;
}

void Matrix4D::setLine(int i, const Vector4D& v)
{
    if (!validIndex(i, "setLine")) {
        return;
    }
    m[i] = v.x;
    m[i + 4] = v.y;
    m[i + 8] = v.z;
    m[i + 12] = v.w;
}

void Matrix4D::setColumns(const Vector4D& c0, const Vector4D& c1, const Vector4D& c2, const Vector4D& c3)
{
    setColumn(0, c0);
    setColumn(1, c1);
    setColumn(2, c2);
    setColumn(3, c3);
}

void Matrix4D::setLines(const Vector4D& l0, const Vector4D& l1, const Vector4D& l2, const Vector4D& l3)
{
    setLine(0, l0);
    setLine(1, l1);
    setLine(2, l2);
    setLine(3, l3);
}

Vector4D Matrix4D::getColumn(int i) const
{
    if (!validIndex(i, "getColumn")) {
        return Vector4D();
    }
    return Vector4D(m[4 * i], m[4 * i + 1], m[4 * i + 2], m[4 * i + 3]);
}

Vector4D Matrix4D::getLine(int i) const
{
    if (!validIndex(i, "getLine")) {
        return Vector4D();
    }
    return Vector4D(m[i], m[i + 4], m[i + 8], m[i + 12]);
}

namespace {

// Unchecked line operations on a column-major array, on the columns from
// `from` on; the public ones check their indices first, inversion calls these
// directly.
inline void swapLines(float* a, int i, int j, int from = 0)
{
    for (int c = 4 * from; c < 16; c += 4) {
        const float kept = a[c + i];
        a[c + i] = a[c + j];
        a[c + j] = kept;
    }
}

inline void scaleLine(float* a, int i, float f, int from = 0)
{
    for (int c = 4 * from; c < 16; c += 4) {
        a[c + i] *= f;
    }
}

inline void addScaledLine(float* a, float f, int src, int dst, int from = 0)
{
    for (int c = 4 * from; c < 16; c += 4) {
        a[c + dst] += f * a[c + src];
    }
}

// from is where the work on a starts: inversion skips the columns already
// reduced, which no later step reads; inv always takes whole lines.
inline bool pivotStep(float* a, float* inv, int i, int from)
{
    int best = i;
    float bestMagnitude = 0.0f;
    float pivot = 0.0f;
    // Strictly greater: on a tie the first line found stays.
    for (int k = i; k < 4; ++k) {
        const float value = a[4 * i + k];
        if (std::fabs(value) > bestMagnitude) {
            bestMagnitude = std::fabs(value);
            best = k;
            pivot = value;
        }
    }
    if (bestMagnitude == 0.0f) {
        return false;
    }
    if (best != i) {
        swapLines(a, i, best, from);
        swapLines(inv, i, best);
    }
    const float scale = 1.0f / pivot;
    scaleLine(a, i, scale, from);
    scaleLine(inv, i, scale);
    return true;
}

inline void eliminate(float* a, float* inv, int i, int from)
{
    for (int k = 0; k < 4; ++k) {
        if (k == i) {
            continue;
        }
        const float f = -a[4 * i + k];
        addScaledLine(a, f, i, k, from);
        addScaledLine(inv, f, i, k);
    }
}

}  // namespace

void Matrix4D::exchangeLines(int a, int b)
{
    if (validIndex(a, "exchangeLines") && validIndex(b, "exchangeLines")) {
        swapLines(m, a, b);
    }
}

void Matrix4D::mulLine(int i, float f)
{
    if (validIndex(i, "mulLine")) {
        scaleLine(m, i, f);
    }
}

void Matrix4D::addMulLineToLine(float f, int src, int dst)
{
    if (validIndex(src, "addMulLineToLine") && validIndex(dst, "addMulLineToLine")) {
        addScaledLine(m, f, src, dst);
    }
}

bool Matrix4D::normalisePivot(int i, Matrix4D& inv)
{
    // An index past the last line is a plain failure of the elimination, not
    // a misuse worth a log line.
    if (static_cast<unsigned>(i) > 3u) {
        return false;
    }
    return pivotStep(m, inv.m, i, 0);
}

void Matrix4D::cleanFromPivot(int i, Matrix4D& inv)
{
    if (validIndex(i, "cleanFromPivot")) {
        eliminate(m, inv.m, i, 0);
    }
}

bool Matrix4D::invert(Matrix4D& inv) const
{
    inv.setI4();
    float a[16];
    for (int i = 0; i < 16; ++i) {
        a[i] = m[i];
    }
    for (int p = 0; p < 4; ++p) {
        if (!pivotStep(a, inv.m, p, p)) {
            return false;
        }
        eliminate(a, inv.m, p, p);
    }
    return true;
}

bool Matrix4D::setBaseMatrixXAxis(const Vector4D& x)
{
    if (x.isNull()) {
        return false;
    }
    Vector4D a(x);
    a.normalize3D();
    setColumn(0, a);
    setColumn(3, Vector4D::axisW);
    if (a == Vector4D::axisX) {
        setColumn(1, Vector4D::axisY);
        setColumn(2, Vector4D::axisZ);
    } else if (a == Vector4D::axisY) {
        setColumn(1, Vector4D::axisZ);
        setColumn(2, Vector4D::axisX);
    } else if (a == Vector4D::axisZ) {
        setColumn(1, Vector4D::axisX);
        setColumn(2, Vector4D::axisY);
    } else {
        // An axis along -X leaves a.y = a.z = 0 and b.z infinite; kept as IEEE
        // arithmetic gives it.
        Vector4D b = (a.y != 0.0f) ? Vector4D(1.0f, -a.x / a.y, 0.0f, 0.0f) : Vector4D(1.0f, 0.0f, -a.x / a.z, 0.0f);
        Vector4D c = a.pvect3D(b);
        b.normalize3D();
        c.normalize3D();
        setColumn(1, b);
        setColumn(2, c);
    }
    return true;
}

void Matrix4D::dump() const
{
    std::cout << *this;
}

void Matrix4D::addInstance(Matrix4D*)
{
    ++countInstance;
    std::cout << "instances of Matrices: " << countInstance << std::endl;
}

void Matrix4D::subInstance(Matrix4D*)
{
    --countInstance;
    std::cout << "instances of Matrices: " << countInstance << std::endl;
}

std::ostream& operator<<(std::ostream& out, const Matrix4D& matrix)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            out << "\tm[" << c << "," << r << "]= " << static_cast<double>(matrix.m[4 * c + r]);
        }
        out << std::endl;
    }
    out << std::endl;
    return out;
}

bool Matrix4D::isFinite() const
{
    return korvel::MathExtended::allFinite(m, 16);
}
