#include "tools/ObjWriter.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <utility>

namespace tools {

ObjWriter::ObjWriter(std::string modelName, std::string originText)
    : name(std::move(modelName)), origin(std::move(originText))
{
}

void ObjWriter::addMaterial(const MaterialSpec& material)
{
    materials.push_back(material);
}

void ObjWriter::addPart(const MeshPart& part)
{
    parts.push_back(&part);
}

std::string ObjWriter::number(double value)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.5f", value);
    std::string s(text);
    if (s == "-0.00000") {
        s = "0.00000";
    }
    return s;
}

namespace {

std::string vertexLine(const char* keyword, double x, double y, double z)
{
    return std::string(keyword) + ' ' + ObjWriter::number(x) + ' ' + ObjWriter::number(y) + ' ' +
           ObjWriter::number(z) + '\n';
}

Point3 faceNormal(const MeshPart& part, const MeshPart::Corners& t)
{
    const Point3& a = part.getPoints()[static_cast<std::size_t>(t[0])];
    const Point3& b = part.getPoints()[static_cast<std::size_t>(t[1])];
    const Point3& c = part.getPoints()[static_cast<std::size_t>(t[2])];
    const double ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
    const double vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
    Point3 n{uy * vz - uz * vy, uz * vx - ux * vz, ux * vy - uy * vx};
    const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
    if (length > 0.0) {
        n = {n.x / length, n.y / length, n.z / length};
    }
    return n;
}

}  // namespace

void ObjWriter::writePart(std::string& out, const MeshPart& part, int& pointBase, int& uvBase,
                          int& normalBase) const
{
    out += "usemtl " + part.getMaterial() + '\n';
    for (const Point3& p : part.getPoints()) {
        out += vertexLine("v", p.x, p.y, p.z);
    }
    const auto& triangles = part.getTriangles();
    if (!part.isTextured()) {
        for (const MeshPart::Corners& t : triangles) {
            out += "f " + std::to_string(pointBase + t[0]) + ' ' + std::to_string(pointBase + t[1]) + ' ' +
                   std::to_string(pointBase + t[2]) + '\n';
        }
        pointBase += static_cast<int>(part.getPoints().size());
        return;
    }
    // Textured faces need the v/vt/vn form: the loader knows no v/vt.
    for (const auto& uv : part.getUVs()) {
        out += "vt " + number(uv[0]) + ' ' + number(uv[1]) + '\n';
    }
    for (const MeshPart::Corners& t : triangles) {
        const Point3 n = faceNormal(part, t);
        out += vertexLine("vn", n.x, n.y, n.z);
    }
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        const MeshPart::Corners& t = triangles[i];
        const MeshPart::Corners& uv = part.getUVTriangles()[i];
        const std::string normal = std::to_string(normalBase + static_cast<int>(i));
        out += 'f';
        for (int k = 0; k < 3; ++k) {
            out += ' ' + std::to_string(pointBase + t[static_cast<std::size_t>(k)]) + '/' +
                   std::to_string(uvBase + uv[static_cast<std::size_t>(k)]) + '/' + normal;
        }
        out += '\n';
    }
    pointBase += static_cast<int>(part.getPoints().size());
    uvBase += static_cast<int>(part.getUVs().size());
    normalBase += static_cast<int>(triangles.size());
}

std::string ObjWriter::objText() const
{
    std::string out = "# " + origin + '\n';
    out += "mtllib " + name + ".mtl\n";
    int pointBase = 1;
    int uvBase = 1;
    int normalBase = 1;
    for (const MeshPart* part : parts) {
        writePart(out, *part, pointBase, uvBase, normalBase);
    }
    return out;
}

std::string ObjWriter::mtlText() const
{
    std::string out = "# " + origin + '\n';
    for (const MaterialSpec& m : materials) {
        out += "newmtl " + m.name + '\n';
        out += "Kd " + number(m.red) + ' ' + number(m.green) + ' ' + number(m.blue) + '\n';
        out += "#mapmaterial " + m.name + ' ' + m.program + '\n';
        if (!m.texture.empty()) {
            out += "map_Kd " + m.texture + '\n';
        }
    }
    return out;
}

bool ObjWriter::write(const std::string& directory) const
{
    return writeTextFile(directory + "/" + name + ".obj", objText()) &&
           writeTextFile(directory + "/" + name + ".mtl", mtlText());
}

bool writeTextFile(const std::string& path, const std::string& text)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
        std::cerr << "cannot write " << path << std::endl;
        return false;
    }
    return true;
}

}  // namespace tools
