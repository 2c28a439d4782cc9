// Arbitrary bytes as a font descriptor (.oft), through the whole import: the
// file is read from disk as the game reads it, parsed, its definition and
// every glyph taken in. The atlas lookup comes last and fails cleanly here
// (an empty texture directory, no GL context), so every glyph has been read
// by then. Besides crashes and sanitizer reports it checks that each sign
// sits under its own code and that a successful definition has a positive
// image size.

#include "render/TextFont.h"
#include "render/TextSign.h"
#include "render/TextureManager.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include <unistd.h>

namespace {

// Swallows the log lines, which would otherwise dominate the run time.
class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// A directory of this process: the descriptor lands there, and it holds no
// image for the atlas to be found in.
const std::string& scratch()
{
    static const std::string directory = [] {
        std::string pattern = "/tmp/korvel-fontfuzz-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            std::abort();
        }
        return pattern + "/";
    }();
    return directory;
}

void check(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static NullBuffer null;
    const std::string name = scratch() + "font";
    {
        std::ofstream file(name + ".oft", std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    korvel::TextureManager::getInstance()->setPath(scratch() + "images/");
    std::streambuf* old = std::cout.rdbuf(&null);
    korvel::TextFont font;
    const bool imported = font.importOFT(name);
    std::cout.rdbuf(old);
    check(!imported);
    for (const auto& [code, sign] : font.getSigns()) {
        check(sign != nullptr && static_cast<unsigned char>(sign->getCode()) == code);
    }
    check(font.getSigns().empty() || (font.getImageWidth() > 0 && font.getImageHeight() > 0));
    return 0;
}
