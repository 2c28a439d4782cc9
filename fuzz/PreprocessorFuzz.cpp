// Feeds arbitrary bytes as a source to the include preprocessor, with a
// directory of small files that include each other and themselves.

#include "parser/Preprocessor.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

std::string directory;

void writeFile(const std::string& name, const std::string& text)
{
    std::ofstream(directory + "/" + name, std::ios::binary) << text;
}

void removeDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    directory = "/tmp/korvel-preprocessor-fuzz-" + std::to_string(::getpid());
    ::mkdir(directory.c_str(), 0700);
    std::atexit(removeDirectory);
    writeFile("a", "x\r\ny");
    writeFile("e", "");
    writeFile("n", "#include \"a\"\n");
    writeFile("s", "#include \"s\"\n");
    writeFile("g", "0123456789abcdef#include \"g\"");
    writeFile("l", "0123456789abcdef#include \"a\"#include \"l\"#include \"n\"");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static NullBuffer null;
    std::streambuf* old = std::cout.rdbuf(&null);

    korvel::Preprocessor preprocessor;
    preprocessor.setDirectory(directory);
    preprocessor.setSource(std::string(reinterpret_cast<const char*>(data), size));
    std::string output;
    const bool result = preprocessor.process(output);
    // Without a directive there is nothing to change.
    const std::string source = preprocessor.getSource();
    if (result && !source.empty() && source.find("#include") == std::string::npos && output != source) {
        std::abort();
    }
    if (output.size() > korvel::Preprocessor::maxOutputSize + source.size() + 1024) {
        std::abort();
    }

    std::cout.rdbuf(old);
    return 0;
}
