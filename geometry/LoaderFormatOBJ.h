#pragma once
// Reads a Wavefront OBJ model and its MTL material file into scene objects:
// one object per group ("o", "g") or material change ("usemtl"), gathered
// into a Compound3D when there are several. Untextured objects are indexed
// shapes (ShapeIndexed3D: shared points, smooth normals, reducible detail);
// textured ones are plain shapes of textured triangles (Shape3D).
//
// Additions of our own to the formats:
//   MTL  "#mapmaterial <material> <program>"  binds a shader program
//   OBJ  "# mapuv"                            textured triangles from now on
//   MTL  "map_Kd <image>"                     when the texture loads, the
//                                             whole model is textured
// A comment without a blank after "#" is no command ("#mapuv" is ignored).
// The shape-centre command is compared with a text that holds a blank,
// which no command can hold: it never applies, every object is rested on
// its lowest point. That comparison is kept on purpose.
//
// Both files are read in text mode (one "\r" before a line end dropped).
// OBJ fields are separated by single blanks (space or tab) and read as
// atof reads them: a malformed number is 0, not an error; face fields may
// be separated by runs of blanks. A face index that names no entry (never
// defined, zero, negative, huge) reads as the zero vector, as an entry
// inserted on demand would; no entry is stored for it, so such an index
// costs nothing.
//
// The trace switch is Object's verbose flag: it enables the information
// lines and the echoes of tokens; warnings and errors are always written.
//
// One loader serves one model: set the path and the trace switch, load,
// take the result with feedObject, destroy. Whatever was not handed over is
// deleted with the loader.

#include "core/Object.h"
#include "core/Vector4D.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

class Compound3D;
class IObject3D;
class MaterialBase;
class Shape;
class Shape3D;
class Triangle;

class LoaderFormatOBJ : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Bounds that keep a hostile file from costing memory out of proportion
    // to it: beyond them the loader says so once and goes on without.
    static constexpr std::size_t maxObjects = 4096;
    static constexpr std::size_t maxTriangles = std::size_t(1) << 21;
    static constexpr std::size_t maxMaterials = 16384;

    LoaderFormatOBJ();
    LoaderFormatOBJ(const LoaderFormatOBJ&) = delete;
    LoaderFormatOBJ& operator=(const LoaderFormatOBJ&) = delete;
    ~LoaderFormatOBJ() override;

    // Removes and returns the first finished object (null when none);
    // isCompound tells whether the model was gathered into a compound.
    virtual IObject3D* feedObject(bool& isCompound);
    // Hands over every finished object, in order of completion.
    virtual void feedObjects(std::list<IObject3D*>& out);
    // Reads one word, the model's file name (relative to the path), loads
    // its MTL file and then the model. False when the file cannot be read
    // or no object results.
    virtual bool load(std::istream& in);

    void setPath(const std::string& directory) { path = directory; }
    const std::string& getPath() const { return path; }
    // The file name load read last.
    const std::string& getFileName() const { return fileName; }

    // Reads the material file of the model at modelPath (its extension
    // replaced by ".mtl"); false when it cannot be read.
    bool loadMaterial(const std::string& modelPath);
    // Dispatches every line of an OBJ text held in memory (each line ending
    // with "\n", carriage returns already dropped). load reads the file,
    // calls this, then finalize.
    void readLines(const std::string& text);
    // Rests, makes and lists the object being built (the compound if any).
    void finalize();

    void releaseObjects();
    void clean();
    void cleanMaterials();
    static void removeExtensionForFileName(std::string& name);

    bool isTextured() const { return textured; }
    bool isMultiObject() const { return multiObject; }
    int getPlacementMode() const { return placementMode; }
    const std::map<std::string, MaterialBase*>& getMaterials() const { return materials; }
    const std::list<IObject3D*>& getFinishedObjects() const { return finished; }

private:
    struct Entry {
        float x;
        float y;
        float z;
        float w;
    };
    // One face corner: indices as read (-1 when absent).
    struct Corner {
        int v;
        int vt;
        int vn;
    };

    void dispatch(std::string_view line);
    // Points are stored with w = 1, normals and texture coordinates (which
    // no placement may move) with w = 0.
    bool readEntry(std::string_view rest, std::vector<Entry>& table, int32_t& counter, float w);
    bool readFace(std::string_view rest);
    bool readCorner(std::string_view field, Corner& corner);
    // One triangle of a face, its corners as positions in the tables read
    // so far (0 for an index naming no entry: the zero vector), and whether
    // it is a textured one.
    struct PendingTriangle {
        uint32_t v[3];
        uint32_t vt[3];
        uint32_t vn[3];
        bool textured;
    };

    void addFan(const std::vector<Corner>& corners);
    Triangle* makeTriangle(const PendingTriangle& corners) const;
    // Adds the triangles held back for the current indexed shape, telling
    // it first which points they bring.
    void flushTriangles();
    // The points of the triangles held back, each once.
    std::vector<Vector4D> pendingPoints() const;
    void sharpCommand(std::string_view rest);
    void useMaterial(std::string_view rest);
    void createShape3D();
    Shape3D* makeObject();
    Shape* currentShape() const;

    void dispatchMaterial(const std::vector<std::string>& tokens);
    bool mapMaterial(const std::vector<std::string>& tokens);
    bool mapTexture(const std::vector<std::string>& tokens);
    bool newMaterial(const std::vector<std::string>& tokens);

    bool multiObject;
    bool textured;
    int placementMode;
    std::vector<Entry> points;
    std::vector<Entry> uvs;
    std::vector<Entry> normals;
    int32_t pointCounter;
    int32_t uvCounter;
    int32_t normalCounter;
    Shape3D* current;
    Compound3D* compound;
    MaterialBase* currentMaterial;
    std::map<std::string, MaterialBase*> materials;
    std::list<IObject3D*> finished;
    std::string path;
    std::string fileName;
    std::size_t objectCount;
    std::size_t triangleCount;
    bool objectsCapped;
    bool trianglesCapped;
    std::vector<Corner> faceCorners;  // kept between faces to spare allocations
    // An indexed shape gets its triangles when its object is complete, all
    // at once: it can then lay out its point octree for their points before
    // the first one comes, however the file orders them.
    bool currentIndexed;
    std::vector<PendingTriangle> pending;
};

}  // namespace korvel
