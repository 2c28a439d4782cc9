#pragma once
// Standard output's buffer while the log file is open. The network reading
// threads log while the main thread does, and a file buffer is not safe for
// two writers: every write and flush goes through here, under one lock, into
// the file's own buffer.

#include "core/Object.h"

#include <mutex>
#include <streambuf>

namespace korvel {

class LogBuffer : public Object, public std::streambuf {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    explicit LogBuffer(std::streambuf* target);
    LogBuffer(const LogBuffer&) = delete;
    LogBuffer& operator=(const LogBuffer&) = delete;

    std::streambuf* getTarget() const { return target; }

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    int sync() override;

private:
    std::streambuf* target;
    std::mutex lock;
};

}  // namespace korvel
