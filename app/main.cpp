// Entry point of Quorbane. No argument is read: path.def beside the
// executable (or in its parent) says where the data lives, and config.def
// there says whether this instance plays alone, serves or joins.

#include "app/ApplicationQuorbane.h"

#include <cstdlib>
#include <iostream>

namespace {

korvel::ApplicationQuorbane* game = nullptr;

// run() ends the process itself, after the world and the log are released;
// the application goes last, so that a network agent stops and joins its
// reading thread before the process is gone.
void releaseGame()
{
    delete game;
    game = nullptr;
}

}  // namespace

int main()
{
    auto* application = new korvel::ApplicationQuorbane();
    // The path is resolved here and again as the first step of init; the
    // second call keeps what the first found.
    application->initPath();
    std::cout << "Path changed: " << application->getPath() << std::endl;
    application->setApplicationName("Quorbane");
    application->setup();
    game = application;
    std::atexit(releaseGame);
    application->run();
    return 0;
}
