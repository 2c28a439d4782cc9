#include "geometry/LoaderFormatOBJ.h"

#include "geometry/MaterialBase.h"
#include "geometry/Shape.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/TriangleTextured.h"
#include "parser/TextFile.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "render/TextureBase.h"
#include "render/TextureManager.h"
#include "scene/Compound3D.h"
#include "scene/ShapeIndexed3D.h"

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sys/stat.h>

namespace korvel {

const char* LoaderFormatOBJ::className = "LoaderFormatOBJ";

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

const char* findBlank(const char* p, const char* end)
{
    while (p < end && !isBlank(*p)) {
        ++p;
    }
    return p;
}

// atof of the field [p, q) alone. The usual decimal forms go through
// from_chars (as a double, then narrowed, as atof's result would be);
// anything else (hexadecimal, leading spaces, out of range) through strtod.
float fieldToFloat(const char* p, const char* q)
{
    if (p == q) {
        return 0.0f;
    }
    const char* s = (*p == '+') ? p + 1 : p;
    const bool plain = s < q && (std::isdigit(static_cast<unsigned char>(*s)) || *s == '.' || (*s == '-' && s == p));
    double value = 0.0;
    if (plain) {
        const auto [stop, error] = std::from_chars(s, q, value);
        if (error != std::errc() || (stop < q && (*stop == 'x' || *stop == 'X'))) {
            value = std::strtod(std::string(p, q).c_str(), nullptr);
        }
    } else {
        value = std::strtod(std::string(p, q).c_str(), nullptr);
    }
    if (value > FLT_MAX) {
        return HUGE_VALF;
    }
    if (value < -FLT_MAX) {
        return -HUGE_VALF;
    }
    return static_cast<float>(value);
}

// atoi of the field [p, q) alone, as glibc computes it: strtol (clamped to
// the long range) narrowed to int.
int fieldToInt(const char* p, const char* q)
{
    while (p < q && std::isspace(static_cast<unsigned char>(*p))) {
        ++p;
    }
    bool negative = false;
    if (p < q && (*p == '+' || *p == '-')) {
        negative = *p == '-';
        ++p;
    }
    unsigned long magnitude = 0;
    bool overflow = false;
    const unsigned long limit = negative ? static_cast<unsigned long>(LONG_MAX) + 1 : LONG_MAX;
    for (; p < q && *p >= '0' && *p <= '9'; ++p) {
        const unsigned digit = static_cast<unsigned>(*p - '0');
        if (magnitude > (limit - digit) / 10) {
            overflow = true;
        } else if (!overflow) {
            magnitude = magnitude * 10 + digit;
        }
    }
    long value = 0;
    if (overflow) {
        value = negative ? LONG_MIN : LONG_MAX;
    } else if (negative) {
        value = magnitude == limit ? LONG_MIN : -static_cast<long>(magnitude);
    } else {
        value = static_cast<long>(magnitude);
    }
    return static_cast<int>(value);
}

std::vector<std::string> tokenize(std::string_view line)
{
    std::vector<std::string> tokens;
    const char* p = line.data();
    const char* end = p + line.size();
    while (p < end) {
        while (p < end && isBlank(*p)) {
            ++p;
        }
        const char* q = findBlank(p, end);
        if (q > p) {
            tokens.emplace_back(p, q);
        }
        p = q;
    }
    return tokens;
}

ShaderProgramBase* findProgram(const std::string& name)
{
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    return manager != nullptr ? dynamic_cast<ShaderProgramBase*>(manager->getProgram(name)) : nullptr;
}

}  // namespace

LoaderFormatOBJ::LoaderFormatOBJ()
    : multiObject(false),
      textured(false),
      placementMode(1),
      pointCounter(1),
      uvCounter(1),
      normalCounter(1),
      current(nullptr),
      compound(nullptr),
      currentMaterial(nullptr),
      objectCount(0),
      triangleCount(0),
      objectsCapped(false),
      trianglesCapped(false),
      currentIndexed(false)
{
}

LoaderFormatOBJ::~LoaderFormatOBJ()
{
    // An object still being built (load not finished) is not in the list.
    delete (compound != nullptr ? static_cast<IObject3D*>(compound) : current);
    clean();
}

IObject3D* LoaderFormatOBJ::feedObject(bool& isCompound)
{
    isCompound = multiObject;
    if (finished.empty()) {
        return nullptr;
    }
    IObject3D* first = finished.front();
    finished.pop_front();
    return first;
}

void LoaderFormatOBJ::feedObjects(std::list<IObject3D*>& out)
{
    out.splice(out.end(), finished);
}

bool LoaderFormatOBJ::load(std::istream& in)
{
    fileName.clear();
    in >> fileName;
    const std::string file = path + fileName;
    if (verbose) {
        std::cout << "[Information] Loading OBJ model" << std::endl;
    }
    loadMaterial(file);
    if (verbose) {
        std::cout << "[Information] Loading file: " << file << std::endl;
    }
    struct stat info;
    if (!fileName.empty() && ::stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode)
        && static_cast<unsigned long long>(info.st_size) > maxTextFileSize) {
        std::cout << "[ERROR] file for model too large: " << file << " (" << info.st_size << " bytes)" << std::endl;
        return false;
    }
    std::string text;
    if (fileName.empty() || !readTextLines(file, text)) {
        std::cout << "[ERROR] file for model not found: " << file << std::endl;
        return false;
    }
    if (verbose) {
        std::cout << "[Information] file open" << std::endl;
    }
    readLines(text);
    finalize();
    if (finished.empty()) {
        std::cout << "[ERROR] model is empty" << std::endl;
        return false;
    }
    return true;
}

void LoaderFormatOBJ::readLines(const std::string& text)
{
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        const char* newline = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
        const char* stop = newline != nullptr ? newline : end;
        dispatch(std::string_view(p, static_cast<std::size_t>(stop - p)));
        p = stop + 1;
    }
}

void LoaderFormatOBJ::dispatch(std::string_view line)
{
    // The keyword is what stands before the first blank; the fields start
    // right after that blank.
    const char* begin = line.data();
    const char* lineEnd = begin + line.size();
    const char* blank = findBlank(begin, lineEnd);
    const std::string_view keyword(begin, static_cast<std::size_t>(blank - begin));
    const bool hasRest = blank < lineEnd;
    const char* fields = hasRest ? blank + 1 : lineEnd;
    const std::string_view rest(fields, static_cast<std::size_t>(lineEnd - fields));

    if (keyword == "o" || keyword == "g") {
        createShape3D();
    } else if (keyword == "usemtl") {
        useMaterial(rest);
    } else if (keyword == "v") {
        if (!hasRest || !readEntry(rest, points, pointCounter, 1.0f)) {
            std::cout << "[ERROR] point ill-formed" << std::endl;
        }
    } else if (keyword == "vn") {
        if (!hasRest || !readEntry(rest, normals, normalCounter, 0.0f)) {
            std::cout << "[ERROR] normal ill-formed" << std::endl;
        }
    } else if (keyword == "vt") {
        if (!hasRest || !readEntry(rest, uvs, uvCounter, 0.0f)) {
            std::cout << "[ERROR] UV ill-formed" << std::endl;
        }
    } else if (keyword == "f") {
        if (!readFace(rest)) {
            std::cout << "[ERROR] face ill-formed" << std::endl;
        }
    } else if (keyword == "#" && hasRest) {
        sharpCommand(rest);
    }
}

bool LoaderFormatOBJ::readEntry(std::string_view rest, std::vector<Entry>& table, int32_t& counter, float w)
{
    // Fields are what lies between single blanks: "1  2" has an empty
    // (zero) field between 1 and 2. Two fields leave the third at 0.
    float values[3] = {0.0f, 0.0f, 0.0f};
    int count = 0;
    const char* p = rest.data();
    const char* end = p + rest.size();
    if (p == end) {
        return false;
    }
    while (count < 3) {
        const char* q = findBlank(p, end);
        values[count++] = fieldToFloat(p, q);
        if (q == end) {
            break;
        }
        p = q + 1;
    }
    if (count < 2) {
        return false;
    }
    if (verbose) {
        std::cout << "[" << counter << "] x: " << values[0] << " y: " << values[1] << " z: " << values[2] << std::endl;
    }
    table.push_back({values[0], values[1], values[2], w});
    ++counter;
    return true;
}

bool LoaderFormatOBJ::readCorner(std::string_view field, Corner& corner)
{
    const char* p = field.data();
    const char* end = p + field.size();
    const char* slashes[3];
    int count = 0;
    for (const char* s = p; s < end; ++s) {
        if (*s == '/') {
            if (count == 2) {
                count = 3;
                break;
            }
            slashes[count++] = s;
        }
    }
    if (count == 1 || count > 2) {
        std::cout << "[ERROR] face index definition not consistent with OBJ specification on v/vt/vn or v//vn"
                  << std::endl;
        return false;
    }
    corner.vt = -1;
    corner.vn = -1;
    if (count == 0) {
        corner.v = fieldToInt(p, end);
    } else {
        corner.v = fieldToInt(p, slashes[0]);
        if (slashes[1] != slashes[0] + 1) {
            corner.vt = fieldToInt(slashes[0] + 1, slashes[1]);
        }
        corner.vn = fieldToInt(slashes[1] + 1, end);
    }
    if (verbose) {
        std::cout << "v: " << corner.v << " vt: " << corner.vt << " vn: " << corner.vn << std::endl;
    }
    return true;
}

bool LoaderFormatOBJ::readFace(std::string_view rest)
{
    faceCorners.clear();
    const char* p = rest.data();
    const char* end = p + rest.size();
    while (p < end) {
        while (p < end && isBlank(*p)) {
            ++p;
        }
        if (p == end) {
            break;
        }
        const char* q = findBlank(p, end);
        Corner corner;
        if (!readCorner(std::string_view(p, static_cast<std::size_t>(q - p)), corner)) {
            return false;
        }
        faceCorners.push_back(corner);
        if (faceCorners.size() > maxTriangles + 2) {
            break;  // a fan this long is refused whole by addFan: no need to read on
        }
        p = q;
    }
    if (faceCorners.size() < 3) {
        return false;
    }
    addFan(faceCorners);
    return true;
}

void LoaderFormatOBJ::addFan(const std::vector<Corner>& corners)
{
    if (trianglesCapped) {
        return;
    }
    const std::size_t fan = corners.size() - 2;
    if (triangleCount + fan > maxTriangles) {
        std::cout << "[ERROR] model holds more than " << maxTriangles << " triangles, the faces beyond are ignored"
                  << std::endl;
        trianglesCapped = true;
        return;
    }
    if (currentShape() == nullptr) {
        if (verbose) {
            std::cout << "[information] shape created in face building" << std::endl;
        }
        createShape3D();
    }
    // A key that names no entry (yet) reads as the zero vector: the tables
    // only grow, so a position taken now names the same entry later.
    auto position = [](const std::vector<Entry>& table, int key) {
        return key >= 1 && static_cast<std::size_t>(key) <= table.size() ? static_cast<uint32_t>(key) : 0u;
    };
    const Corner& first = corners[0];
    for (std::size_t k = 1; k + 1 < corners.size(); ++k) {
        const Corner& b = corners[k];
        const Corner& c = corners[k + 1];
        const PendingTriangle t = {{position(points, first.v), position(points, b.v), position(points, c.v)},
                                   {position(uvs, first.vt), position(uvs, b.vt), position(uvs, c.vt)},
                                   {position(normals, first.vn), position(normals, b.vn), position(normals, c.vn)},
                                   textured};
        if (currentIndexed) {
            pending.push_back(t);
        } else {
            currentShape()->addTriangle(makeTriangle(t));
        }
    }
    triangleCount += fan;
}

Triangle* LoaderFormatOBJ::makeTriangle(const PendingTriangle& corners) const
{
    auto entry = [](const std::vector<Entry>& table, uint32_t position) {
        if (position == 0) {
            return Vector4D();
        }
        const Entry& e = table[position - 1];
        return Vector4D(e.x, e.y, e.z, e.w);
    };
    const Vector4D p0 = entry(points, corners.v[0]);
    const Vector4D p1 = entry(points, corners.v[1]);
    const Vector4D p2 = entry(points, corners.v[2]);
    const Vector4D n0 = entry(normals, corners.vn[0]);
    const Vector4D n1 = entry(normals, corners.vn[1]);
    const Vector4D n2 = entry(normals, corners.vn[2]);
    if (!corners.textured) {
        return new Triangle(p0, p1, p2, nullptr, &n0, &n1, &n2);
    }
    const Vector4D t0 = entry(uvs, corners.vt[0]);
    const Vector4D t1 = entry(uvs, corners.vt[1]);
    const Vector4D t2 = entry(uvs, corners.vt[2]);
    return new TriangleTextured(p0, p1, p2, nullptr, &n0, &n1, &n2, &t0, &t1, &t2);
}

std::vector<Vector4D> LoaderFormatOBJ::pendingPoints() const
{
    std::vector<uint32_t> positions;
    positions.reserve(pending.size() * 3);
    for (const PendingTriangle& t : pending) {
        positions.insert(positions.end(), std::begin(t.v), std::end(t.v));
    }
    // Each position once. A mark per table entry costs the table's size:
    // a few triangles after a large table (one more group past the cap on
    // objects, say) sort their positions instead.
    if (points.size() <= positions.size() * 8) {
        std::vector<bool> seen(points.size() + 1, false);
        positions.erase(std::remove_if(positions.begin(), positions.end(),
                                       [&seen](uint32_t p) { return seen[p] ? true : (seen[p] = true, false); }),
                        positions.end());
    } else {
        std::sort(positions.begin(), positions.end());
        positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    }
    std::vector<Vector4D> result;
    result.reserve(positions.size());
    for (uint32_t position : positions) {
        const Entry* e = position > 0 ? &points[position - 1] : nullptr;
        result.push_back(e != nullptr ? Vector4D(e->x, e->y, e->z, e->w) : Vector4D());
    }
    return result;
}

void LoaderFormatOBJ::flushTriangles()
{
    if (pending.empty()) {
        return;
    }
    Shape* shape = currentShape();
    auto* indexed = dynamic_cast<ShapeIndexed*>(shape);
    if (indexed == nullptr) {
        // Only an indexed shape has triangles held back; should another
        // ever hold them, it takes them as they are.
        for (const PendingTriangle& t : pending) {
            shape->addTriangle(makeTriangle(t));
        }
        std::vector<PendingTriangle>().swap(pending);
        return;
    }
    indexed->expectPoints(pendingPoints());
    indexed->reserveTriangles(indexed->getTriangleCount() + pending.size());
    for (const PendingTriangle& t : pending) {
        indexed->addTriangle(makeTriangle(t));
    }
    indexed->endExpectedPoints();
    std::vector<PendingTriangle>().swap(pending);
}

void LoaderFormatOBJ::sharpCommand(std::string_view rest)
{
    const char* q = findBlank(rest.data(), rest.data() + rest.size());
    const std::string_view command(rest.data(), static_cast<std::size_t>(q - rest.data()));
    if (verbose) {
        std::cout << "sharp Command: " << command << std::endl;
    }
    // Kept as it is: a command never holds a blank, so this never matches.
    if (command == "[Information] shapecenter") {
        if (verbose) {
            std::cout << "[Information] shapecenter mode applied" << std::endl;
        }
        placementMode = 2;
    } else if (command == "mapuv") {
        textured = true;
        if (verbose) {
            std::cout << "[Information] mapuv mode applied" << std::endl;
        }
    }
}

void LoaderFormatOBJ::useMaterial(std::string_view rest)
{
    const char* q = findBlank(rest.data(), rest.data() + rest.size());
    const std::string name(rest.data(), static_cast<std::size_t>(q - rest.data()));
    if (verbose) {
        std::cout << "[information] Change Material" << std::endl;
        std::cout << "[Information] MaterialName: [" << name << "]" << std::endl;
    }
    const auto found = materials.find(name);
    if (found == materials.end()) {
        std::cout << "[Warning] material not found: " << name << std::endl;
        return;
    }
    currentMaterial = found->second;
    if (verbose) {
        ShaderProgramBase* program = currentMaterial->shaderProgram;
        std::cout << "ShaderProgram: [" << (program != nullptr ? program->codeName : std::string()) << "]"
                  << std::endl;
    }
    createShape3D();
    if (current != nullptr) {
        // A material that names no program leaves the object's own: without
        // one it could not be drawn at all.
        if (currentMaterial->shaderProgram != nullptr) {
            current->setShaderProgram(currentMaterial->shaderProgram);
        }
        current->setTexture(currentMaterial->texture);
    }
}

Shape* LoaderFormatOBJ::currentShape() const
{
    return current != nullptr ? current->getShape() : nullptr;
}

Shape3D* LoaderFormatOBJ::makeObject()
{
    Shape3D* object = nullptr;
    if (textured) {
        if (verbose) {
            std::cout << "[information] Shape created for UV object" << std::endl;
        }
        object = new Shape3D();
    } else {
        if (verbose) {
            std::cout << "[information] ShapeIndexed created for not UV object" << std::endl;
        }
        object = new ShapeIndexed3D();
    }
    object->setShaderProgram(findProgram("Wood"));
    currentIndexed = !textured;
    ++objectCount;
    return object;
}

void LoaderFormatOBJ::createShape3D()
{
    flushTriangles();
    if (current != nullptr && current->getShape()->getTriangleCount() == 0) {
        std::cout << "[Warning] At load OBJ Format, attempt to create new shape when previous shape is kept empty !"
                  << std::endl;
        return;
    }
    if (current == nullptr) {
        current = makeObject();
        return;
    }
    if (objectCount >= maxObjects) {
        if (!objectsCapped) {
            std::cout << "[Warning] model holds more than " << maxObjects
                      << " objects, the following groups join the last one" << std::endl;
            objectsCapped = true;
        }
        return;
    }
    if (compound == nullptr) {
        multiObject = true;
        compound = new Compound3D();
        compound->addJoinedComponent(current);
    }
    current = makeObject();
    compound->addJoinedComponent(current);
}

void LoaderFormatOBJ::finalize()
{
    flushTriangles();
    IObject3D* target = compound != nullptr ? static_cast<IObject3D*>(compound) : current;
    if (target == nullptr) {
        return;
    }
    if (placementMode == 1) {
        target->setToMinPointY();
    }
    target->make();
    target->updateLimits();
    target->changeMatrixObject();
    finished.push_back(target);
    compound = nullptr;
    current = nullptr;
    currentIndexed = false;
}

void LoaderFormatOBJ::releaseObjects()
{
    for (IObject3D* object : finished) {
        delete object;
    }
    finished.clear();
}

void LoaderFormatOBJ::clean()
{
    releaseObjects();
    cleanMaterials();
}

void LoaderFormatOBJ::cleanMaterials()
{
    for (auto& entry : materials) {
        delete entry.second;
    }
    materials.clear();
    currentMaterial = nullptr;
}

void LoaderFormatOBJ::removeExtensionForFileName(std::string& name)
{
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos) {
        name.erase(dot);
    }
}

// ---- material file ----------------------------------------------------------

bool LoaderFormatOBJ::loadMaterial(const std::string& modelPath)
{
    std::string file = modelPath;
    removeExtensionForFileName(file);
    file += ".mtl";
    if (verbose) {
        std::cout << "[Information] Loading Material descriptor file: " << file << std::endl;
    }
    std::string text;
    if (!readTextLines(file, text)) {
        std::cout << "[ERROR] file for model not found: " << file << std::endl;
        return false;
    }
    if (verbose) {
        std::cout << "[Information] material file open" << std::endl;
    }
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        const char* newline = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
        const char* stop = newline != nullptr ? newline : end;
        const std::vector<std::string> tokens = tokenize(std::string_view(p, static_cast<std::size_t>(stop - p)));
        if (verbose) {
            for (const std::string& token : tokens) {
                std::cout << "[" << token << "]" << std::endl;
            }
        }
        dispatchMaterial(tokens);
        p = stop + 1;
    }
    if (verbose) {
        std::cout << "[Information] material file is closed" << std::endl;
    }
    return true;
}

void LoaderFormatOBJ::dispatchMaterial(const std::vector<std::string>& tokens)
{
    if (tokens.empty()) {
        return;
    }
    const std::string& keyword = tokens[0];
    if (keyword == "#mapmaterial") {
        if (verbose) {
            std::cout << "[Information] mapmaterial request" << std::endl;
        }
        if (!mapMaterial(tokens)) {
            std::cout << "[Warning] Material mapping failed!" << std::endl;
        }
    } else if (keyword == "map_Kd") {
        if (verbose) {
            std::cout << "[Information] maKd request" << std::endl;
        }
        if (!mapTexture(tokens)) {
            std::cout << "[Warning] Material UV mapping failed!" << std::endl;
        }
    } else if (keyword == "newmtl") {
        if (verbose) {
            std::cout << "[Information] newmtl request" << std::endl;
        }
        if (!newMaterial(tokens)) {
            std::cout << "[Warning] Material creation failed!" << std::endl;
        }
    }
}

bool LoaderFormatOBJ::newMaterial(const std::vector<std::string>& tokens)
{
    if (tokens.size() < 2) {
        return false;
    }
    const std::string& name = tokens[1];
    if (verbose) {
        std::cout << "TokenMaterial: [" << name << "]" << std::endl;
    }
    const auto found = materials.find(name);
    if (found != materials.end()) {
        std::cout << "[Warning] Material [" << name
                  << "] already exists cannot be recreated ! It is now the current applicable material" << std::endl;
        currentMaterial = found->second;
        return true;
    }
    if (materials.size() >= maxMaterials) {
        std::cout << "[Warning] material file holds more than " << maxMaterials << " materials" << std::endl;
        return false;
    }
    currentMaterial = new MaterialBase(name);
    materials.emplace(name, currentMaterial);
    return true;
}

bool LoaderFormatOBJ::mapMaterial(const std::vector<std::string>& tokens)
{
    if (tokens.size() < 3) {
        return false;
    }
    const std::string& materialName = tokens[1];
    const std::string& programName = tokens[2];
    if (verbose) {
        std::cout << "TokenMaterial: [" << materialName << "]" << std::endl;
        std::cout << "TokenShader: [" << programName << "]" << std::endl;
    }
    ShaderProgramBase* program = findProgram(programName);
    if (program == nullptr) {
        std::cout << "[ERROR] ShaderProgram does not exist !" << std::endl;
        return false;
    }
    if (verbose) {
        std::cout << "ShaderProgram: " << program->codeName << std::endl;
    }
    auto found = materials.find(materialName);
    if (found == materials.end()) {
        if (materials.size() >= maxMaterials) {
            std::cout << "[Warning] material file holds more than " << maxMaterials << " materials" << std::endl;
            return false;
        }
        if (verbose) {
            std::cout << "[Information] Material [" << materialName << "] does not exists to be mapped, it shall be added"
                      << std::endl;
        }
        found = materials.emplace(materialName, new MaterialBase(materialName)).first;
    }
    found->second->shaderProgram = program;
    return true;
}

bool LoaderFormatOBJ::mapTexture(const std::vector<std::string>& tokens)
{
    if (currentMaterial == nullptr) {
        std::cout << "[Warning] mapping is not applicable to no material!" << std::endl;
        return false;
    }
    if (currentMaterial->shaderProgram == nullptr) {
        currentMaterial->shaderProgram = findProgram("MapTextured");
        if (currentMaterial->shaderProgram == nullptr) {
            std::cout << "[Warning] basic applicable mapping shader is missing!" << std::endl;
        }
    }
    if (tokens.size() < 2) {
        std::cout << "[Warning] mapping is not applicable with no image name!" << std::endl;
        return false;
    }
    std::string image = tokens[1];
    removeExtensionForFileName(image);
    TextureManager* textures = TextureManager::getInstance();
    if (verbose) {
        std::cout << "TokenImage: [" << image << "]" << std::endl;
        std::cout << "[Information] Texture manager path: " << textures->getPath() << std::endl;
    }
    TextureBase* texture = textures->getTexture(image);
    if (texture == nullptr) {
        std::cout << "[Warning] in loading material, Texture is missing!" << std::endl;
        return false;
    }
    currentMaterial->texture = texture;
    textured = true;
    return true;
}

}  // namespace korvel
