#pragma once
// Reads a written model back the way the engine's loader does (keyword
// before the first blank, numbers by atof into floats, faces as v, v/vt/vn
// or v//vn fanned from their first corner, "o", "g" and "usemtl" each
// starting an object, the MTL's "#mapmaterial" and "map_Kd"), and notes
// everything the engine would warn about or treat otherwise than meant.
// The generators check what they wrote through it, and the previews draw it.
#include "core/Vector4D.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace tools {

struct ObjMaterial {
    std::string program;
    // Image name without its extension, as the texture manager is asked.
    std::string texture;
};

struct ObjObject {
    std::string material;
    // Per triangle: the OBJ indices of its points and, when textured, of its
    // texture coordinates (-1 when absent).
    std::vector<std::array<int, 3>> points;
    std::vector<std::array<int, 3>> uvs;
};

struct ObjModel {
    std::map<int, Vector4D> points;
    std::map<int, Vector4D> uvs;
    std::map<int, Vector4D> normals;
    std::vector<ObjObject> objects;
    std::map<std::string, ObjMaterial> materials;
    // A material has a diffuse texture: the loader makes plain shapes.
    bool textured = false;
    // Whatever the engine would report, or would read otherwise than meant.
    std::vector<std::string> problems;

    const ObjMaterial* materialOf(const ObjObject& object) const;
};

class ObjReader {
public:
    // Reads <path> (an .obj file) and the .mtl beside it; false when the OBJ
    // cannot be opened.
    static bool read(const std::string& path, ObjModel& model);

private:
    static void readMaterials(const std::string& path, ObjModel& model);
    static void readLine(const std::string& line, ObjModel& model, int counters[3]);
    static void readFace(const std::string& rest, ObjModel& model);
    static void startObject(ObjModel& model, const std::string& material);
};

}  // namespace tools
