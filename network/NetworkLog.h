#pragma once
// One log line from the network layer. The reading threads log while the main
// thread logs too, so every line of this layer is written whole, under one
// lock, and flushed: lines never interleave and the stream is never touched
// by two threads of this layer at once.

#include <string>

namespace korvel {

void networkLog(const std::string& line);

}  // namespace korvel
