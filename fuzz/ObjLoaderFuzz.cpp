// Feeds arbitrary bytes to the OBJ and MTL loader: the input is cut at its
// first byte 0x01, the part before written as the OBJ file and the part
// after as its MTL file. What loads is then taken as a model: its levels of
// detail are generated and clones of every level made and dropped.

#include "geometry/LoaderFormatOBJ.h"
#include "render/TextureManager.h"
#include "scene/IHandler3D.h"
#include "scene/ModelShape.h"
#include "scene/SceneFactories.h"

#include "FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

std::string directory()
{
    static const std::string dir = [] {
        return makeFuzzDirectory("korvel-objfuzz");
    }();
    return dir;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static NullBuffer null;
    std::streambuf* old = std::cout.rdbuf(&null);
    const std::string dir = directory();
    korvel::registerSceneFactories();
    korvel::TextureManager::getInstance()->setPath(dir);

    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t marker = input.find('\x01');
    std::ofstream(dir + "model.obj", std::ios::binary) << input.substr(0, marker);
    std::ofstream(dir + "model.mtl", std::ios::binary)
        << (marker == std::string::npos ? std::string() : input.substr(marker + 1));

    korvel::ModelShape model;
    {
        korvel::LoaderFormatOBJ loader;
        loader.setPath(dir);
        std::istringstream entry("model.obj");
        if (loader.load(entry)) {
            bool compound = false;
            model.addObject(0, loader.feedObject(compound));
        }
    }
    model.generateLOD();
    delete model.createClones();

    std::cout.rdbuf(old);
    return 0;
}
