#pragma once
// Captures what the code under test writes to std::cout, the log's stream,
// so tests can assert the exact lines. Restores the old buffer on scope exit.

#include <iostream>
#include <sstream>
#include <string>

class CaptureStdout {
public:
    CaptureStdout() : old(std::cout.rdbuf(captured.rdbuf())) {}
    ~CaptureStdout() { restore(); }
    CaptureStdout(const CaptureStdout&) = delete;
    CaptureStdout& operator=(const CaptureStdout&) = delete;

    std::string text() const { return captured.str(); }
    void clear() { captured.str(""); }
    void restore()
    {
        if (old != nullptr) {
            std::cout.rdbuf(old);
            std::cout.clear();
            old = nullptr;
        }
    }

private:
    std::ostringstream captured;
    std::streambuf* old;
};
