// Makes sure the generators' model check refuses what the engine would load
// wrongly: a closed sphere passes, and each damaged copy of it (a hole, faces
// turned inwards, a point written twice, a point never used, an empty
// object, a face form the loader does not know, too few points for three
// halvings) fails with its own fault. Run by generate-assets.sh before it
// trusts the check with the real models.
//
//   model-check-test <scratch directory>
#include "geometry/Shape.h"
#include "geometry/Sphere.h"
#include "tools/ModelCheck.h"
#include "tools/ObjWriter.h"

#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string sphereText(int division, std::string& mtl)
{
    korvel::Shape shape;
    korvel::Sphere ball(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), 1.0f);
    ball.setDivision(division);
    ball.includeShape(&shape, nullptr);
    tools::MeshPart part("stone");
    part.addShape(shape);
    tools::ObjWriter writer("case", "case of the model check test");
    writer.addMaterial({"stone", "Soil", 0.5, 0.5, 0.5, ""});
    writer.addPart(part);
    mtl = writer.mtlText();
    return writer.objText();
}

// Replaces the first line that begins with `prefix`.
std::string replaceLine(const std::string& text, const std::string& prefix, const std::string& line)
{
    const std::size_t at = text[0] == prefix[0] && text.compare(0, prefix.size(), prefix) == 0
                               ? 0
                               : text.find("\n" + prefix) + 1;
    const std::size_t end = text.find('\n', at);
    return text.substr(0, at) + line + text.substr(end);
}

std::string firstLine(const std::string& text, const std::string& prefix)
{
    const std::size_t at = text.find("\n" + prefix) + 1;
    return text.substr(at, text.find('\n', at) - at);
}

struct Case {
    const char* name;
    std::function<std::string(const std::string&)> damage;
    // Empty: the check must pass; otherwise a text its report must hold.
    const char* fault;
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: model-check-test <scratch directory>" << std::endl;
        return 2;
    }
    const std::string directory = argv[1];
    std::string mtl;
    const std::string good = sphereText(12, mtl);
    std::string smallMtl;
    const std::string small = sphereText(4, smallMtl);
    int points = 0;
    for (std::size_t at = good.find("\nv "); at != std::string::npos; at = good.find("\nv ", at + 1)) {
        ++points;
    }
    const std::vector<Case> cases = {
        {"closed sphere", [](const std::string& t) { return t; }, ""},
        {"hole", [](const std::string& t) { return replaceLine(t, "f ", "# hole"); }, "not closed"},
        {"inwards",
         [](const std::string& t) {
             std::istringstream in(t);
             std::string line, out;
             while (std::getline(in, line)) {
                 if (line.rfind("f ", 0) == 0) {
                     std::istringstream f(line.substr(2));
                     std::string a, b, c;
                     f >> a >> b >> c;
                     line = "f " + a + " " + c + " " + b;
                 }
                 out += line + "\n";
             }
             return out;
         },
         "faces look inwards"},
        {"point written twice",
         [points](const std::string& t) {
             return t + firstLine(t, "v ") + "\nf " + std::to_string(points + 1) + " 2 3\n";
         },
         "distinct by value"},
        {"point never used", [](const std::string& t) { return t + "v 5.0 5.0 5.0\n"; }, "never used"},
        {"empty object", [](const std::string& t) { return replaceLine(t, "usemtl", "usemtl stone\nusemtl stone"); },
         "left empty"},
        {"v/vt face", [](const std::string& t) { return t + "f 1/1 2/2 3/3\n"; }, "v//vn form"},
        {"too few points", [&small](const std::string&) { return small; }, "part 1: level 1"},
    };
    int failures = 0;
    for (const Case& c : cases) {
        const std::string obj = c.damage(good);
        tools::writeTextFile(directory + "/case.obj", obj);
        tools::writeTextFile(directory + "/case.mtl", mtl);
        std::ostringstream report;
        tools::ModelCheck check;
        const bool passed = check.checkWritten(directory, "case", report);
        const bool expected = c.fault[0] == '\0' ? passed : !passed && report.str().find(c.fault) != std::string::npos;
        if (!expected) {
            ++failures;
            std::cout << "model check test \"" << c.name << "\" went wrong:\n" << report.str();
        }
    }
    std::cout << "  model check test: " << cases.size() - static_cast<std::size_t>(failures) << " passed, "
              << failures << " failed" << std::endl;
    return failures == 0 ? 0 : 1;
}
