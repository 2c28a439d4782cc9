#include "tools/ModelCheck.h"

#include "geometry/ShapeIndexed.h"
#include "geometry/Triangle.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace tools {

namespace {

Vector4D pointOf(const ObjModel& model, int index)
{
    const auto found = model.points.find(index);
    return found == model.points.end() ? Vector4D() : found->second;
}

// The object as the loader builds an untextured one.
std::unique_ptr<korvel::ShapeIndexed> buildShape(const ObjModel& model, const ObjObject& object)
{
    auto shape = std::make_unique<korvel::ShapeIndexed>();
    for (const auto& t : object.points) {
        shape->addTriangle(
            new korvel::Triangle(pointOf(model, t[0]), pointOf(model, t[1]), pointOf(model, t[2])));
    }
    return shape;
}

// Every edge of a closed, consistently wound surface is crossed once in each
// direction.
std::size_t countBadEdges(const korvel::ShapeIndexed& shape)
{
    std::map<std::pair<const Vector4D*, const Vector4D*>, int> edges;
    for (const korvel::Triangle* t : shape.getTriangles()) {
        for (int i = 0; i < 3; ++i) {
            ++edges[{t->points[i], t->points[(i + 1) % 3]}];
        }
    }
    std::size_t bad = 0;
    for (const auto& [edge, count] : edges) {
        const auto back = edges.find({edge.second, edge.first});
        if (count != 1 || back == edges.end() || back->second != 1) {
            ++bad;
        }
    }
    return bad;
}

double signedVolume(const korvel::ShapeIndexed& shape)
{
    double volume = 0.0;
    for (const korvel::Triangle* t : shape.getTriangles()) {
        const Vector4D& a = *t->points[0];
        const Vector4D& b = *t->points[1];
        const Vector4D& c = *t->points[2];
        volume += (static_cast<double>(a.x) * (b.y * c.z - b.z * c.y) +
                   static_cast<double>(a.y) * (b.z * c.x - b.x * c.z) +
                   static_cast<double>(a.z) * (b.x * c.y - b.y * c.x)) /
                  6.0;
    }
    return volume;
}

}  // namespace

void ModelCheck::checkUnusedPoints(const ObjModel& model, std::vector<std::string>& faults)
{
    std::set<int> used;
    for (const ObjObject& object : model.objects) {
        for (const auto& t : object.points) {
            used.insert(t.begin(), t.end());
        }
    }
    for (const auto& entry : model.points) {
        if (used.count(entry.first) == 0) {
            faults.push_back("point " + std::to_string(entry.first) + " is written but never used");
            return;
        }
    }
}

bool ModelCheck::checkHalvings(const ObjModel& model, const ObjObject& object, PartFigures& figures,
                               std::vector<std::string>& faults)
{
    std::unique_ptr<korvel::ShapeIndexed> level = buildShape(model, object);
    for (std::size_t lod = 1; lod < 4; ++lod) {
        auto next = std::make_unique<korvel::ShapeIndexed>(*level);
        if (!next->reduceDetail(0.5f)) {
            faults.push_back("level " + std::to_string(lod) + " could not be made");
            return false;
        }
        figures.points[lod] = next->getPointCount();
        figures.triangles[lod] = next->getTriangleCount();
        const double share = static_cast<double>(figures.triangles[lod]) /
                             static_cast<double>(figures.triangles[lod - 1]);
        if (share < minHalving || share > maxHalving) {
            faults.push_back("level " + std::to_string(lod) + " keeps " + std::to_string(figures.triangles[lod]) +
                             " of " + std::to_string(figures.triangles[lod - 1]) + " triangles");
            return false;
        }
        level = std::move(next);
    }
    return true;
}

bool ModelCheck::checkObject(const ObjModel& model, const ObjObject& object, PartFigures& part,
                             std::vector<std::string>& faults) const
{
    const std::size_t before = faults.size();
    std::set<int> written;
    for (const auto& t : object.points) {
        written.insert(t.begin(), t.end());
    }
    std::unique_ptr<korvel::ShapeIndexed> shape = buildShape(model, object);
    part.points[0] = shape->getPointCount();
    part.triangles[0] = shape->getTriangleCount();
    if (object.points.empty()) {
        faults.push_back("empty object");
        return false;
    }
    if (part.points[0] != written.size()) {
        faults.push_back(std::to_string(written.size()) + " points written, " + std::to_string(part.points[0]) +
                         " distinct by value");
    }
    if (part.triangles[0] != object.points.size()) {
        faults.push_back(std::to_string(object.points.size() - part.triangles[0]) + " faces refused");
    }
    const std::size_t bad = countBadEdges(*shape);
    if (bad > 0) {
        faults.push_back("not closed: " + std::to_string(bad) + " edges not shared by exactly two faces");
    }
    if (signedVolume(*shape) <= 0.0) {
        faults.push_back("faces look inwards");
    }
    if (model.textured) {
        for (const auto& uv : object.uvs) {
            for (int index : uv) {
                const auto found = model.uvs.find(index);
                if (found == model.uvs.end() || found->second.x < 0.0f || found->second.x > 1.0f ||
                    found->second.y < 0.0f || found->second.y > 1.0f) {
                    faults.push_back("a corner has no texture coordinate in [0, 1]");
                    return false;
                }
            }
        }
    } else if (faults.size() == before) {
        checkHalvings(model, object, part, faults);
    }
    return faults.size() == before;
}

bool ModelCheck::check(const std::string& name, const ObjModel& model, std::ostream& report)
{
    std::srand(seed);
    figures.clear();
    std::vector<std::string> faults = model.problems;
    checkUnusedPoints(model, faults);
    if (model.objects.empty()) {
        faults.push_back("no object");
    }
    for (const ObjObject& object : model.objects) {
        PartFigures part;
        part.material = object.material;
        const ObjMaterial* material = model.materialOf(object);
        part.program = material != nullptr && !material->program.empty() ? material->program : "Wood";
        std::vector<std::string> local;
        checkObject(model, object, part, local);
        figures.push_back(part);
        for (const std::string& fault : local) {
            faults.push_back("part " + std::to_string(figures.size()) + ": " + fault);
        }
        report << "  " << name << " part " << figures.size() << " " << part.material << " (" << part.program
               << "): " << part.points[0] << " points, " << part.triangles[0] << " triangles";
        if (!model.textured) {
            report << "; levels 1-3: " << part.triangles[1] << ", " << part.triangles[2] << ", "
                   << part.triangles[3] << " triangles (" << part.points[1] << ", " << part.points[2] << ", "
                   << part.points[3] << " points)";
        }
        report << "\n";
    }
    for (const std::string& fault : faults) {
        report << "  FAULT in " << name << ": " << fault << "\n";
    }
    return faults.empty();
}

bool ModelCheck::checkWritten(const std::string& directory, const std::string& name, std::ostream& report)
{
    ObjModel model;
    ObjReader::read(directory + "/" + name + ".obj", model);
    return check(name, model, report);
}

}  // namespace tools
