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

namespace korvel {

class Preprocessor : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // An include cycle makes the output grow for ever, so one process() is
    // cut short past these bounds.
    static constexpr std::size_t maxIncludes = 1000;
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
    void insertPending(const std::string& text);

    std::string source;
    std::string* output;
    std::size_t position;
    std::string directory;
    // The part of the output still to be searched, while process() runs.
    std::string pending;
    std::size_t pendingStart;
    bool processing;
};

}  // namespace korvel
