#pragma once
// What the model fuzz targets share: a sink for the log lines, which would
// otherwise dominate the run time, and a private directory for the files
// each input is written to.

#include <unistd.h>

#include <iostream>
#include <string>

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// A new directory under /tmp named after prefix, with its trailing "/".
inline std::string makeFuzzDirectory(const std::string& prefix)
{
    std::string pattern = "/tmp/" + prefix + "-XXXXXX";
    const char* made = mkdtemp(pattern.data());
    return std::string(made != nullptr ? made : "/tmp") + "/";
}
