#pragma once
// Helpers of the tests that run whole programs: files read whole, a shell
// command's output, and lines expected in order in what a program wrote.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
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
