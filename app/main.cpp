// Entry point of Quorbane. No argument is read: path.def beside the
// executable (or in its parent) says where the data lives.

#include "app/ApplicationQuorbane.h"

#include <iostream>

int main()
{
    // Never deleted: run() ends the process itself.
    auto* application = new korvel::ApplicationQuorbane();
    // The path is resolved here and again as the first step of init; the
    // second call keeps what the first found.
    application->initPath();
    std::cout << "Path changed: " << application->getPath() << std::endl;
    application->setApplicationName("Quorbane");
    application->setup();
    application->run();
    return 0;
}
