#include "tools/ObjReader.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tools {

const ObjMaterial* ObjModel::materialOf(const ObjObject& object) const
{
    const auto found = materials.find(object.material);
    return found == materials.end() ? nullptr : &found->second;
}

namespace {

std::string withoutExtension(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? name : name.substr(0, dot);
}

// Fields separated by single blanks, as the loader cuts them.
std::vector<std::string> singleBlankFields(const std::string& rest)
{
    std::vector<std::string> fields;
    std::size_t start = 0;
    while (start <= rest.size()) {
        const std::size_t blank = rest.find(' ', start);
        fields.push_back(rest.substr(start, blank == std::string::npos ? std::string::npos : blank - start));
        if (blank == std::string::npos) {
            break;
        }
        start = blank + 1;
    }
    return fields;
}

bool readVector(const std::string& rest, Vector4D& out)
{
    const std::vector<std::string> fields = singleBlankFields(rest);
    if (fields.size() < 2 || fields.size() > 3) {
        return false;
    }
    float values[3] = {0.0f, 0.0f, 0.0f};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].empty()) {
            return false;
        }
        values[i] = static_cast<float>(std::atof(fields[i].c_str()));
    }
    out = Vector4D(values[0], values[1], values[2], 1.0f);
    return true;
}

}  // namespace

void ObjReader::startObject(ObjModel& model, const std::string& material)
{
    if (!model.objects.empty() && model.objects.back().points.empty()) {
        model.problems.push_back("an object is left empty before material [" + material + "]");
        model.objects.back().material = material;
        return;
    }
    model.objects.push_back(ObjObject{material, {}, {}});
}

void ObjReader::readFace(const std::string& rest, ObjModel& model)
{
    std::istringstream in(rest);
    std::string field;
    std::vector<std::array<int, 2>> corners;
    while (in >> field) {
        const std::size_t first = field.find('/');
        int v = std::atoi(field.c_str());
        int vt = -1;
        if (first != std::string::npos) {
            const std::size_t second = field.find('/', first + 1);
            if (second == std::string::npos || field.find('/', second + 1) != std::string::npos) {
                model.problems.push_back("face field not in the v, v/vt/vn or v//vn form: " + field);
                return;
            }
            if (second > first + 1) {
                vt = std::atoi(field.c_str() + first + 1);
            }
        }
        if (model.points.count(v) == 0) {
            model.problems.push_back("face names an undefined point: " + field);
        }
        corners.push_back({v, vt});
    }
    if (corners.size() < 3) {
        model.problems.push_back("face with fewer than three corners");
        return;
    }
    if (model.objects.empty()) {
        startObject(model, "");
    }
    ObjObject& object = model.objects.back();
    for (std::size_t k = 1; k + 1 < corners.size(); ++k) {
        object.points.push_back({corners[0][0], corners[k][0], corners[k + 1][0]});
        object.uvs.push_back({corners[0][1], corners[k][1], corners[k + 1][1]});
    }
}

void ObjReader::readLine(const std::string& line, ObjModel& model, int counters[3])
{
    const std::size_t blank = line.find(' ');
    const std::string keyword = line.substr(0, blank);
    const std::string rest = blank == std::string::npos ? std::string() : line.substr(blank + 1);
    Vector4D value;
    if (keyword == "o" || keyword == "g") {
        // A new object gets the loader's default program, not the last material.
        startObject(model, std::string());
    } else if (keyword == "usemtl") {
        if (model.materials.count(rest) == 0) {
            model.problems.push_back("unknown material: " + rest);
            return;
        }
        startObject(model, rest);
    } else if (keyword == "v" || keyword == "vt" || keyword == "vn") {
        if (!readVector(rest, value)) {
            model.problems.push_back("ill-formed line: " + line);
            return;
        }
        const int slot = keyword == "v" ? 0 : (keyword == "vt" ? 1 : 2);
        auto& table = slot == 0 ? model.points : (slot == 1 ? model.uvs : model.normals);
        table[counters[slot]++] = value;
    } else if (keyword == "f") {
        readFace(rest, model);
    } else if (keyword == "#" && rest.substr(0, rest.find(' ')) == "mapuv") {
        model.textured = true;
    }
}

void ObjReader::readMaterials(const std::string& path, ObjModel& model)
{
    std::ifstream in(withoutExtension(path) + ".mtl");
    if (!in) {
        model.problems.push_back("no material file beside " + path);
        return;
    }
    std::string line;
    std::string current;
    while (std::getline(in, line)) {
        std::istringstream tokens(line);
        std::string keyword, first, second;
        tokens >> keyword >> first >> second;
        if (keyword == "newmtl") {
            current = first;
            model.materials[current];
        } else if (keyword == "#mapmaterial") {
            model.materials[first].program = second;
        } else if (keyword == "map_Kd") {
            if (current.empty() || first.empty()) {
                model.problems.push_back("map_Kd without a material or an image");
                continue;
            }
            ObjMaterial& m = model.materials[current];
            m.texture = withoutExtension(first);
            if (m.program.empty()) {
                m.program = "MapTextured";
            }
            model.textured = true;
        }
    }
}

bool ObjReader::read(const std::string& path, ObjModel& model)
{
    readMaterials(path, model);
    std::ifstream in(path);
    if (!in) {
        model.problems.push_back("cannot open " + path);
        return false;
    }
    int counters[3] = {1, 1, 1};
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            model.problems.push_back("carriage return in " + path);
            line.pop_back();
        }
        readLine(line, model, counters);
    }
    if (!model.objects.empty() && model.objects.back().points.empty()) {
        model.problems.push_back("the last object is empty");
    }
    return true;
}

}  // namespace tools
