#pragma once
// Expands "#include" directives in a source text by the contents of files in
// a directory.
//
// The rule is deliberately neither flat nor fully recursive: after an
// include, the search for the next directive starts at the index that lay
// just past the directive's closing quote before the replacement. A directive
// near the start of an included text is therefore left as it is; one lying
// beyond that index is expanded in turn.

#include "core/Object.h"

#include <cstddef>
#include <string>
#include <vector>

namespace korvel {

class Preprocessor : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Files that include each other in turn (a cycle) are stopped as soon as
    // a directive is found inside a text that the same file brought in. Any
    // number of includes is fine otherwise, but a few files that include
    // others many times over can still multiply the output: it is cut short
    // past this size.
    static constexpr std::size_t maxOutputSize = 16u * 1024u * 1024u;

    Preprocessor();

    void setSource(const std::string& text) { source = text; }
    const std::string& getSource() const { return source; }
    // Directory of the included files, without a trailing "/".
    void setDirectory(const std::string& path) { directory = path; }
    const std::string& getDirectory() const { return directory; }
    std::size_t getPosition() const { return position; }

    // Empty source: a warning, true, and result untouched. On failure result
    // keeps what was built so far.
    bool process(std::string& result);
    // Inserts directory + "/" + fileName into the output at position. Outside
    // process() the output is the string given to the last process(), which
    // must still exist.
    bool processInclude(const std::string& fileName);
    // Every line of the file followed by "\n".
    bool getStringFromFile(const std::string& fileName, std::string& result);

private:
    // An included text still being searched: the file it came from, and how
    // far its end lies from the end of the whole output. Later insertions
    // all happen before that end, so the distance stays right as the output
    // grows.
    struct OpenInclude {
        std::string fileName;
        std::size_t tail;
    };

    void insertPending(const std::string& text);
    std::size_t outputSize() const { return position + pending.size() - pendingStart; }
    // Forgets the included texts that end before position; true when
    // fileName is one of those still around it, with the chain in `cycle`.
    bool includesItself(const std::string& fileName, std::string& cycle);

    std::string source;
    std::string* output;
    std::size_t position;
    std::string directory;
    // The part of the output still to be searched, while process() runs.
    std::string pending;
    std::size_t pendingStart;
    bool processing;
    // Innermost last; each lies within the one before it.
    std::vector<OpenInclude> openIncludes;
};

}  // namespace korvel
