// The OBJ and MTL dialect, as a table of small files: faces and their fans,
// index forms, undefined entries, groups and compounds, materials, programs
// and textures, the sharp commands, ill-formed lines, and the files the
// loader cannot read.

#include "geometry/LoaderFormatOBJ.h"

#include "geometry/MaterialBase.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/TriangleTextured.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "render/TextureBase.h"
#include "render/TextureManager.h"
#include "scene/Compound3D.h"
#include "scene/Joint3D.h"
#include "scene/ShapeIndexed3D.h"
#include "support/CaptureStdout.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using korvel::IObject3D;
using korvel::LoaderFormatOBJ;
using korvel::Shape3D;
using korvel::Triangle;

const std::string directory = scratchDirectory("geometry_obj_test");

void writeFile(const std::string& name, const std::string& text)
{
    std::filesystem::create_directories(directory);
    std::ofstream(directory + name, std::ios::binary) << text;
}

// The drawable leaves of a loaded model, in name order.
std::vector<Shape3D*> leaves(IObject3D* object)
{
    std::list<IObject3D*> found;
    object->supplyElements(found, 0xFF);
    std::vector<Shape3D*> result;
    for (IObject3D* leaf : found) {
        result.push_back(dynamic_cast<Shape3D*>(leaf));
    }
    return result;
}

// "x,y,z" per corner, triangles separated by "|".
std::string corners(const Shape3D& object)
{
    std::ostringstream text;
    for (const Triangle* t : object.getShape()->getTriangles()) {
        text << (text.tellp() > 0 ? "|" : "");
        for (int i = 0; i < 3; ++i) {
            text << (i > 0 ? " " : "") << t->points[i]->x << "," << t->points[i]->y << "," << t->points[i]->z;
        }
    }
    return text.str();
}

struct Loaded {
    bool result = false;
    bool compound = false;
    std::string log;
    IObject3D* object = nullptr;
    std::unique_ptr<LoaderFormatOBJ> loader;  // keeps the materials alive
    ~Loaded() { delete object; }
};

void load(Loaded& out, const std::string& name, bool trace = false)
{
    out.loader = std::make_unique<LoaderFormatOBJ>();
    out.loader->setPath(directory);
    out.loader->setVerbose(trace);
    std::istringstream entry(name + ".obj");
    CaptureStdout capture;
    out.result = out.loader->load(entry);
    out.object = out.loader->feedObject(out.compound);
    out.log = capture.text();
}

// Its lowest point, the first, is alone at y = 0: resting the model on it
// moves nothing.
const char* const square = "v 0 0 0\nv 1 1 0\nv 1 2 0\nv 0 2 0\nv 2 1 0\n";

TEST(LoaderFormatOBJTest, DialectTable)
{
    struct Case {
        const char* name;
        std::string obj;
        const char* mtl;       // nullptr: no material file
        int objects;           // leaves of the model
        bool textured;         // plain textured shapes rather than indexed ones
        const char* geometry;  // corners of the first leaf ("" to skip)
        std::vector<const char*> lines;  // each appears in the log
    };
    const Case cases[] = {
        {"quad", std::string(square) + "f 1 2 3 4\n", "", 1, false, "0,0,0 1,1,0 1,2,0|0,0,0 1,2,0 0,2,0", {}},
        {"pentagon", std::string(square) + "f 1 5 2 3 4\n", "", 1, false,
         "0,0,0 2,1,0 1,1,0|0,0,0 1,1,0 1,2,0|0,0,0 1,2,0 0,2,0", {}},
        {"runsOfBlanks", std::string(square) + "f  1\t\t2   3 \n", "", 1, false, "0,0,0 1,1,0 1,2,0", {}},
        // Fields between single blanks: "0  1" reads 0, an empty field (0), 1.
        {"singleBlanks", "v 0 -1 0\nv 1  1 0\nv 0 1 0\nf 1 2 3\n", "", 1, false, "0,0,0 1,1,1 0,2,0", {}},
        {"twoFields", "v 0 -1\nv 1 0 5\nv 0 1 0\nf 1 2 3\n", "", 1, false, "0,0,0 1,1,5 0,2,0", {}},
        {"atofNumbers", "v 1e0 0 0\nv +2.5abc 0x1p1 0\nv 0 .5e1 0\nf 1 2 3\n", "", 1, false, "0,0,0 1.5,2,0 -1,5,0",
         {}},
        {"twoGroupsInARow", std::string(square) + "g a\ng b\nf 1 2 3\n", "", 1, false, "",
         {"[Warning] At load OBJ Format, attempt to create new shape when previous shape is kept empty !\n"}},
        {"twoGroups", std::string(square) + "g a\nf 1 2 3\ng b\nf 1 3 4\n", "", 2, false, "0,0,0 1,1,0 1,2,0", {}},
        {"unknownMaterial", std::string(square) + "f 1 2 3\nusemtl marble\nf 1 3 4\n", "", 1, false,
         "0,0,0 1,1,0 1,2,0|0,0,0 1,2,0 0,2,0", {"[Warning] material not found: marble\n"}},
        {"knownMaterial", std::string(square) + "f 1 2 3\nusemtl stone\nf 1 3 4\n", "newmtl stone\n", 2, false, "", {}},
        {"sharpMapuv", std::string("# mapuv\n") + square + "f 1 2 3\n", nullptr, 1, true, "0,0,0 1,1,0 1,2,0",
         {"[ERROR] file for model not found: "}},
        {"sharpWithoutBlank", std::string("#mapuv\n") + square + "f 1 2 3\n", "", 1, false, "", {}},
        // Never applies: the text compared with holds a blank.
        {"shapeCenter", std::string("# [Information] shapecenter\nv 0 5 0\nv 1 6 0\nv 0 7 0\nf 1 2 3\n"), "", 1, false,
         "0,0,0 1,1,0 0,2,0", {}},
        {"illFormed",
         std::string(square) + "v 1\nv\nvn 1\nvt x\nf 1 2\nf 1/2 2 3\nf 1/2/3/4 2 3\nf\nfoo bar\nf 1 2 3\n", "", 1,
         false, "0,0,0 1,1,0 1,2,0",
         {"[ERROR] point ill-formed\n[ERROR] point ill-formed\n[ERROR] normal ill-formed\n[ERROR] UV ill-formed\n"
          "[ERROR] face ill-formed\n"
          "[ERROR] face index definition not consistent with OBJ specification on v/vt/vn or v//vn\n"
          "[ERROR] face ill-formed\n"
          "[ERROR] face index definition not consistent with OBJ specification on v/vt/vn or v//vn\n"
          "[ERROR] face ill-formed\n[ERROR] face ill-formed\n"}},
        // Indices that name nothing read as the zero vector, huge or not; as
        // atoi reads it, 4294967299 wraps to 3.
        {"hugeAndNegative", "v 0 1 0\nv 1 1 0\nv 0 2 0\nf 2000000000 1 2\nf -1 1 2\nf 0 1 2\nf 4294967299 1 2\n", "",
         1, false, "0,0,0 0,1,0 1,1,0|0,0,0 0,1,0 1,1,0|0,0,0 0,1,0 1,1,0|0,2,0 0,1,0 1,1,0", {}},
        {"empty", "", "", 0, false, "", {"[ERROR] model is empty\n"}},
        {"onlyPoints", square, "", 0, false, "", {"[ERROR] model is empty\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        writeFile(std::string(c.name) + ".obj", c.obj);
        std::filesystem::remove(directory + c.name + ".mtl");
        if (c.mtl != nullptr) {
            writeFile(std::string(c.name) + ".mtl", c.mtl);
        }
        Loaded model;
        load(model, c.name);
        for (const char* line : c.lines) {
            EXPECT_NE(model.log.find(line), std::string::npos) << model.log;
        }
        EXPECT_EQ(model.result, c.objects > 0) << model.log;
        if (c.objects == 0) {
            EXPECT_EQ(model.object, nullptr);
            continue;
        }
        ASSERT_NE(model.object, nullptr) << model.log;
        EXPECT_EQ(model.compound, c.objects > 1);
        const std::vector<Shape3D*> found = leaves(model.object);
        ASSERT_EQ(found.size(), static_cast<std::size_t>(c.objects));
        for (Shape3D* leaf : found) {
            EXPECT_EQ(leaf->getInstanceClassName(), std::string(c.textured ? "Shape3D" : "ShapeIndexed3D"));
        }
        if (c.geometry[0] != '\0') {
            EXPECT_EQ(corners(*found[0]), c.geometry) << model.log;
        }
        if (c.mtl != nullptr) {
            EXPECT_EQ(model.log.find("[ERROR] file for model not found"), std::string::npos) << model.log;
        }
    }
}

TEST(LoaderFormatOBJTest, FaceFieldsPickPointsNormalsAndTextureCoordinates)
{
    std::string obj = "# mapuv\n";
    for (int i = 1; i <= 9; ++i) {
        obj += "v " + std::to_string(i) + " " + std::to_string(i) + " 0\n";
        obj += "vt 0." + std::to_string(i) + " 0.5\n";
        obj += "vn 0 0 " + std::to_string(i) + "\n";
    }
    obj += "f 1/2/3 4/5/6 7/8/9\nf 1//3 4//6 7//9\n";
    writeFile("indexForms.obj", obj);
    Loaded model;
    load(model, "indexForms");
    ASSERT_NE(model.object, nullptr);
    const auto& triangles = leaves(model.object)[0]->getShape()->getTriangles();
    ASSERT_EQ(triangles.size(), 2u);
    // Rested on the lowest point (1, 1, 0): points 1, 4, 7 moved by (-1, -1).
    EXPECT_EQ(corners(*leaves(model.object)[0]), "0,0,0 3,3,0 6,6,0|0,0,0 3,3,0 6,6,0");
    const auto* first = dynamic_cast<const korvel::TriangleTextured*>(triangles.front());
    const auto* second = dynamic_cast<const korvel::TriangleTextured*>(triangles.back());
    ASSERT_TRUE(first != nullptr && second != nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FLOAT_EQ(first->normals[i]->z, 1.0f) << "normals 3, 6, 9, normalised";
        EXPECT_FLOAT_EQ(first->mapCoords[i]->x, 0.2f + 0.3f * i) << "coordinates 2, 5, 8";
        EXPECT_FLOAT_EQ(second->mapCoords[i]->x, 0.0f) << "v//vn has no coordinate";
    }
}

TEST(LoaderFormatOBJTest, TrianglesOfAnIndexedObjectKeepWhatTheirFaceLineSaw)
{
    // An indexed object takes its triangles when it is complete; each one
    // still has the points defined before its face line, and the kind of
    // triangle chosen there.
    writeFile("heldBack.obj", "v 0 1 0\nv 1 1 0\nf 1 2 3\nv 0 2 0\nf 1 2 3\n# mapuv\nf 1 2 3\ng next\nf 2 3 1\n");
    Loaded model;
    load(model, "heldBack");
    ASSERT_NE(model.object, nullptr) << model.log;
    const std::vector<Shape3D*> parts = leaves(model.object);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0]->getInstanceClassName(), std::string("ShapeIndexed3D"));
    EXPECT_EQ(parts[1]->getInstanceClassName(), std::string("Shape3D"));
    EXPECT_EQ(corners(*parts[0]), "0,1,0 1,1,0 0,0,0|0,1,0 1,1,0 0,2,0|0,1,0 1,1,0 0,2,0");
    std::vector<bool> textured;
    for (const Triangle* t : parts[0]->getShape()->getTriangles()) {
        textured.push_back(dynamic_cast<const korvel::TriangleTextured*>(t) != nullptr);
    }
    EXPECT_EQ(textured, (std::vector<bool>{false, false, true}));
    EXPECT_EQ(corners(*parts[1]), "1,1,0 0,2,0 0,1,0");
}

TEST(LoaderFormatOBJTest, MaterialsBindProgramsAndAnExistingTextureMakesTheModelTextured)
{
    korvel::ShaderProgramManagerBase::init();
    auto& programs = korvel::ShaderProgramManager::getInstance()->getPrograms();
    for (const char* name : {"Wood", "Hull", "MapTextured"}) {
        auto* program = new ShaderProgramBase();
        program->codeName = name;
        programs[name] = program;
    }
    // Without a GL context the texture is decoded and its GL calls do nothing.
    std::filesystem::create_directories(directory);
    ASSERT_EQ(lodepng::encode(directory + "rockskin.png", std::vector<unsigned char>(16, 255), 2, 2), 0u);
    korvel::TextureManager::getInstance()->setPath(directory);

    const std::string faces = std::string(square) + "usemtl hull\nf 1 2 3\nusemtl skin\nf 1 3 4\n";
    writeFile("materials.obj", faces);
    writeFile("materials.mtl",
              "newmtl hull\n#mapmaterial hull Hull\n#mapmaterial skin Marble\nnewmtl hull\nmap_Kd\n"
              "newmtl skin\n\tmap_Kd   missing.png\n");
    writeFile("textured.obj", faces);
    writeFile("textured.mtl", "newmtl hull\n#mapmaterial hull Hull\nnewmtl skin\nmap_Kd rockskin.png\n");

    Loaded plain;
    load(plain, "materials");
    EXPECT_NE(plain.log.find("[ERROR] ShaderProgram does not exist !\n[Warning] Material mapping failed!\n"
                             "[Warning] Material [hull] already exists cannot be recreated ! It is now the current "
                             "applicable material\n[Warning] mapping is not applicable with no image name!\n"
                             "[Warning] Material UV mapping failed!\n"),
              std::string::npos)
        << plain.log;
    EXPECT_NE(plain.log.find("[Warning] in loading material, Texture is missing!\n"), std::string::npos);
    const std::vector<Shape3D*> parts = leaves(plain.object);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0]->getShaderProgram()->codeName, "Hull");
    EXPECT_EQ(parts[1]->getShaderProgram()->codeName, "MapTextured");  // given by map_Kd
    EXPECT_EQ(parts[1]->getTexture(), nullptr);

    Loaded textured;
    load(textured, "textured");
    ASSERT_TRUE(textured.result) << textured.log;
    EXPECT_TRUE(textured.loader->isTextured());
    const std::vector<Shape3D*> skins = leaves(textured.object);
    ASSERT_EQ(skins.size(), 2u);
    EXPECT_EQ(skins[0]->getInstanceClassName(), std::string("Shape3D"));
    EXPECT_EQ(skins[0]->getShaderProgram()->codeName, "Hull");
    EXPECT_EQ(skins[1]->getShaderProgram()->codeName, "MapTextured");
    EXPECT_EQ(skins[1]->getTexture(),
              static_cast<korvel::Texture*>(korvel::TextureManager::getInstance()->getTexture("rockskin")));
    EXPECT_NE(dynamic_cast<const korvel::TriangleTextured*>(skins[1]->getShape()->getTriangles().front()), nullptr);
    korvel::ShaderProgramManager::releaseInstance();
}

TEST(LoaderFormatOBJTest, UnreadableFilesAndTextModeLineEnds)
{
    Loaded missing;
    load(missing, "nowhere");
    EXPECT_FALSE(missing.result);
    EXPECT_EQ(missing.log, "[ERROR] file for model not found: " + directory + "nowhere.mtl\n"
                               + "[ERROR] file for model not found: " + directory + "nowhere.obj\n");

    // Windows line ends and tabs: the same model as with "\n" and blanks.
    Loaded crlf;
    crlf.loader = std::make_unique<LoaderFormatOBJ>();
    crlf.loader->setPath(KORVEL_TEST_DATA);
    std::istringstream entry("crlf.obj");
    CaptureStdout capture;
    ASSERT_TRUE(crlf.loader->load(entry));
    crlf.object = crlf.loader->feedObject(crlf.compound);
    EXPECT_EQ(capture.text(), "[ERROR] vertex buffers used before their OpenGL functions were initiated\n");
    EXPECT_EQ(corners(*leaves(crlf.object)[0]), "0,0,0 1,0.5,0 1,1,0");
    EXPECT_EQ(crlf.loader->getMaterials().count("plain"), 1u);

    // A directory is no model file.
    std::istringstream itself(".");
    LoaderFormatOBJ loader;
    loader.setPath(directory);
    capture.clear();
    EXPECT_FALSE(loader.load(itself));
}

TEST(LoaderFormatOBJTest, TraceSwitchShowsInformationLinesAndEchoes)
{
    writeFile("trace.obj", "# mapuv\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    writeFile("trace.mtl", "newmtl a\n");
    Loaded quiet;
    load(quiet, "trace");
    EXPECT_EQ(quiet.log, "[ERROR] vertex buffers used before their OpenGL functions were initiated\n");
    Loaded traced;
    load(traced, "trace", true);
    const std::string path = directory + "trace";
    EXPECT_EQ(traced.log.substr(0, traced.log.find("[0]")),
              "[Information] Loading OBJ model\n[Information] Loading Material descriptor file: " + path + ".mtl\n"
                  + "[Information] material file open\n[newmtl]\n[a]\n[Information] newmtl request\n"
                  + "TokenMaterial: [a]\n[Information] material file is closed\n[Information] Loading file: " + path
                  + ".obj\n[Information] file open\nsharp Command: mapuv\n[Information] mapuv mode applied\n"
                  + "[1] x: 0 y: 0 z: 0\n[2] x: 1 y: 0 z: 0\n[3] x: 0 y: 1 z: 0\nv: 1 vt: -1 vn: -1\n"
                  + "v: 2 vt: -1 vn: -1\nv: 3 vt: -1 vn: -1\n[information] shape created in face building\n"
                  + "[information] Shape created for UV object\n"
                  + "[ERROR] vertex buffers used before their OpenGL functions were initiated\n");
}

}  // namespace
