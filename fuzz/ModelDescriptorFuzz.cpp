// Feeds arbitrary bytes to the model manager as its descriptor
// ("models.txt"), beside two small OBJ models it may name (a.obj, a sphere
// that gets levels of detail, and b.obj, two groups), then clones what
// loaded and releases it all.

#include "geometry/Shape.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"
#include "scene/IHandler3D.h"
#include "scene/IModel3D.h"
#include "scene/ModelManager.h"

#include "FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>

namespace {

void writeSphere(std::ostream& out, int firstIndex)
{
    korvel::Shape shape;
    korvel::Sphere sphere(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), 1.0f);
    sphere.setDivision(8);
    sphere.includeShape(&shape, nullptr);
    int corner = firstIndex;
    for (const korvel::Triangle* t : shape.getTriangles()) {
        for (const Vector4D* p : t->points) {
            out << "v " << p->x << ' ' << p->y << ' ' << p->z << '\n';
        }
        out << "f " << corner << ' ' << corner + 1 << ' ' << corner + 2 << '\n';
        corner += 3;
    }
}

std::string directory()
{
    static const std::string dir = [] {
        const std::string name = makeFuzzDirectory("korvel-modelfuzz");
        std::ofstream a(name + "a.obj");
        writeSphere(a, 1);
        std::ofstream b(name + "b.obj");
        b << "g one\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\ng two\nv 0 0 1\nf 1 2 4\n";
        return name;
    }();
    return dir;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static NullBuffer null;
    std::streambuf* old = std::cout.rdbuf(&null);
    const std::string dir = directory();
    std::ofstream(dir + "models.txt", std::ios::binary).write(reinterpret_cast<const char*>(data),
                                                                static_cast<std::streamsize>(size));
    korvel::ModelManager* manager = korvel::ModelManager::getInstance();
    manager->setPath(dir);
    manager->loadModels("models.txt");
    for (int i = 0; i < 3; ++i) {
        delete manager->createCurrentClone();
        if (korvel::IModel3D* model = manager->getModel(manager->getCurrentModelName())) {
            delete model->createClones();
        }
        manager->modelNext();
    }
    manager->releaseModels();
    std::cout.rdbuf(old);
    return 0;
}
