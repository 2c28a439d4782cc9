// Entry point of the model viewer. Like the game it reads no argument:
// path.def beside the executable (or in its parent) says where the data is.

#include "viewer/ApplicationViewer.h"

#include <iostream>

int main()
{
    // Never deleted: run() ends the process itself.
    auto* viewer = new korvel::ApplicationViewer();
    viewer->initPath();
    std::cout << "Path changed: " << viewer->getPath() << std::endl;
    viewer->setApplicationName("KorvelViewer");
    viewer->setup();
    viewer->run();
    return 0;
}
