#include "parser/Preprocessor.h"

#include "parser/TextFile.h"

#include <algorithm>
#include <cstring>
#include <iostream>

namespace korvel {

const char* Preprocessor::className = "Preprocessor";

namespace {

const char directive[] = "#include";

}  // namespace

Preprocessor::Preprocessor() : output(nullptr), position(0), pendingStart(0), processing(false) {}

// The output is kept in two parts while it is built: what lies before
// position is final and sits in the caller's string; the rest is in
// `pending`, behind a free gap of pendingStart bytes where included texts are
// put. Erasing a directive and inserting a file then cost the size of the
// file, not the size of everything after it.
bool Preprocessor::process(std::string& result)
{
    position = 0;
    if (source.empty()) {
        std::cout << "[Warning] stop pre-processing empty source" << std::endl;
        return true;
    }
    output = &result;
    result.clear();
    pending = source;
    pendingStart = 0;
    processing = true;

    openIncludes.clear();
    bool ok = true;
    for (;;) {
        const std::size_t found = pending.find(directive, pendingStart);
        if (found == std::string::npos) {
            break;
        }
        result.append(pending, pendingStart, found - pendingStart);
        pendingStart = found;
        position = result.size();
        const std::size_t opening = pending.find('"', found);
        if (opening == std::string::npos) {
            std::cout << "[Error] preprocessing include with no defined file" << std::endl;
            ok = false;
            break;
        }
        const std::size_t closing = pending.find('"', opening + 1);
        if (closing == std::string::npos) {
            std::cout << "[Error] preprocessing include with ill-formed file name" << std::endl;
            ok = false;
            break;
        }
        const std::string fileName = pending.substr(opening + 1, closing - opening - 1);
        std::string cycle;
        if (includesItself(fileName, cycle)) {
            // Expanding it would bring the same directive back for ever.
            std::cout << "[Error] preprocessing include cycle, a file includes itself: " << cycle << std::endl;
            ok = false;
            break;
        }
        const std::size_t directiveLength = closing + 1 - found;
        pendingStart = closing + 1;
        const std::size_t restBefore = pending.size() - pendingStart;
        if (!processInclude(fileName)) {
            ok = false;
            break;
        }
        openIncludes.push_back({fileName, restBefore});
        if (outputSize() > maxOutputSize) {
            std::cout << "[Error] preprocessing output grew beyond " << maxOutputSize << " bytes" << std::endl;
            ok = false;
            break;
        }
        // The search goes on from the index just past the directive's
        // closing quote as it was before the replacement: the start of an
        // included text is skipped, and so is the text after a short one.
        const std::size_t skip = std::min(directiveLength, pending.size() - pendingStart);
        result.append(pending, pendingStart, skip);
        pendingStart += skip;
        position += directiveLength;
    }
    result.append(pending, pendingStart, std::string::npos);
    pending.clear();
    pending.shrink_to_fit();
    pendingStart = 0;
    processing = false;
    openIncludes.clear();
    return ok;
}

bool Preprocessor::includesItself(const std::string& fileName, std::string& cycle)
{
    while (!openIncludes.empty() && outputSize() - openIncludes.back().tail <= position) {
        openIncludes.pop_back();
    }
    for (std::size_t i = 0; i < openIncludes.size(); ++i) {
        if (openIncludes[i].fileName == fileName) {
            for (std::size_t j = i; j < openIncludes.size(); ++j) {
                cycle += openIncludes[j].fileName + " -> ";
            }
            cycle += fileName;
            return true;
        }
    }
    return false;
}

bool Preprocessor::processInclude(const std::string& fileName)
{
    std::string text;
    if (!getStringFromFile(directory + "/" + fileName, text)) {
        std::cout << "[Error] preprocessing cannot find include file: " << fileName << std::endl;
        return false;
    }
    if (processing) {
        insertPending(text);
    } else if (output != nullptr) {
        // Called on its own after a process(): the caller's string is the
        // output.
        output->insert(std::min(position, output->size()), text);
    }
    return true;
}

void Preprocessor::insertPending(const std::string& text)
{
    if (text.size() <= pendingStart) {
        pendingStart -= text.size();
        std::memcpy(&pending[pendingStart], text.data(), text.size());
        return;
    }
    // Leave a gap as large as the new contents so that a run of includes
    // costs linear time overall.
    const std::size_t rest = pending.size() - pendingStart;
    const std::size_t gap = rest + text.size();
    std::string grown;
    grown.reserve(gap + text.size() + rest);
    grown.append(gap, '\0');
    grown.append(text);
    grown.append(pending, pendingStart, rest);
    pending.swap(grown);
    pendingStart = gap;
}

bool Preprocessor::getStringFromFile(const std::string& fileName, std::string& result)
{
    if (!readTextLines(fileName, result)) {
        std::cout << "[Error] unable to open file" << std::endl;
        return false;
    }
    return true;
}

}  // namespace korvel
