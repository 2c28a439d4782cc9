#pragma once
// Writes a model as the engine reads it: <name>.obj and <name>.mtl side by
// side. Every part opens with a "usemtl" line (which starts a new object in
// the engine's loader, so no object is left empty), followed by its points
// and its faces. Numbers are printed with a fixed format and fields are
// separated by single blanks, so the same model always gives the same bytes.
#include "tools/MeshPart.h"

#include <string>
#include <vector>

namespace tools {

struct MaterialSpec {
    std::string name;
    // The engine's program bound with "#mapmaterial".
    std::string program;
    // Diffuse colour for other viewers; the engine ignores it.
    double red = 0.8;
    double green = 0.8;
    double blue = 0.8;
    // Image file for "map_Kd" (empty: none).
    std::string texture;
};

class ObjWriter {
public:
    ObjWriter(std::string modelName, std::string origin);

    void addMaterial(const MaterialSpec& material);
    void addPart(const MeshPart& part);

    std::string objText() const;
    std::string mtlText() const;
    // Writes <directory>/<name>.obj and .mtl; false (with a line on standard
    // error) when a file cannot be written.
    bool write(const std::string& directory) const;

    // Fixed five decimals; a negative zero is written as zero.
    static std::string number(double value);

private:
    void writePart(std::string& out, const MeshPart& part, int& pointBase, int& uvBase, int& normalBase) const;

    std::string name;
    std::string origin;
    std::vector<MaterialSpec> materials;
    std::vector<const MeshPart*> parts;
};

// Writes text to a file; false with a line on standard error on failure.
bool writeTextFile(const std::string& path, const std::string& text);

}  // namespace tools
