#pragma once
// Reading of the engine's text files with text-mode line ends: one "\r"
// before a "\n", or at the very end of the file, is dropped, so files saved
// with Windows line ends read the same as on the platform they come from.

#include <cstddef>
#include <string>

namespace korvel {

// No text file of the engine comes near this; anything larger (or a kernel
// file claiming terabytes) is refused rather than read into memory.
constexpr std::size_t maxTextFileSize = 256u * 1024u * 1024u;

// result = every line of the file followed by "\n" (also the last one, when
// the file does not end with a line end). False, result untouched, when the
// file cannot be opened, is not a regular file (a device or a pipe could
// block or never end) or is larger than maxTextFileSize.
bool readTextLines(const std::string& fileName, std::string& result);

}  // namespace korvel
