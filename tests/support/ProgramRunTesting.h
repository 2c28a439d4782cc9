#pragma once
// Helpers of the tests that run whole programs: files read whole, a shell
// command's output, and lines expected in order in what a program wrote.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace program_run {

inline std::string readFile(const std::filesystem::path& file)
{
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The command's standard output, without its final line ends.
inline std::string shell(const std::string& command)
{
    std::string output;
    if (FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r")) {
        char buffer[256];
        while (fgets(buffer, sizeof buffer, pipe) != nullptr) {
            output += buffer;
        }
        pclose(pipe);
    }
    return output.substr(0, output.find_last_not_of('\n') + 1);
}

// The first window of the process, or empty after a minute without one.
// Polled rather than waited for with --sync: on a display shared with other
// tests, windows come and go, and a search that meets one going fails.
inline std::string windowOf(int pid)
{
    for (int tick = 0; tick < 600; ++tick) {
        const std::string window = shell("xdotool search --pid " + std::to_string(pid) + " | head -n 1");
        if (!window.empty()) {
            return window;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return std::string();
}

// Each entry must begin a line, in this order (other lines may interleave).
inline ::testing::AssertionResult linesInOrder(const std::string& text, const std::vector<std::string>& lines)
{
    std::istringstream in(text);
    std::string line;
    std::size_t next = 0;
    while (next < lines.size() && std::getline(in, line)) {
        next += line.rfind(lines[next], 0) == 0 ? 1 : 0;
    }
    if (next < lines.size()) {
        return ::testing::AssertionFailure() << "missing or out of order: \"" << lines[next] << "\"\n---\n" << text;
    }
    return ::testing::AssertionSuccess();
}

}  // namespace program_run
