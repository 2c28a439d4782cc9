// Draws a model written by the generators into a PNG picture (three views
// side by side), for looking at a model without the game.
//
//   preview-model <model.obj> <picture.png> [view size in pixels]
#include "tools/ModelPreview.h"

#include <cstdlib>
#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    if (argc < 3 || argc > 4) {
        std::cerr << "usage: preview-model <model.obj> <picture.png> [view size]" << std::endl;
        return 2;
    }
    const std::string path = argv[1];
    const unsigned size = argc == 4 ? static_cast<unsigned>(std::atoi(argv[3])) : 360;
    tools::ObjModel model;
    if (!tools::ObjReader::read(path, model) || size < 16) {
        std::cerr << "cannot read " << path << std::endl;
        return 1;
    }
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash);
    return tools::ModelPreview(model, directory).render(size).save(argv[2]) ? 0 : 1;
}
