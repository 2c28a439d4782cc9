#pragma once
// A directory of the build tree that belongs to this test process alone.
// CTest runs every case of a test program as a process of its own, several
// at a time: cases that wrote their fixtures into one shared directory read
// each other's half-written files. Everything is removed when the process
// ends.

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

inline std::string scratchDirectory(const std::string& name)
{
    struct Root {
        std::filesystem::path path;
        ~Root()
        {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const Root root{std::filesystem::path(KORVEL_BINARY_DIR) / ("scratch-" + std::to_string(::getpid()))};
    const std::filesystem::path directory = root.path / name;
    std::filesystem::create_directories(directory);
    return directory.string() + "/";
}
