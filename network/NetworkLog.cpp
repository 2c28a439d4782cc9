#include "network/NetworkLog.h"

#include <iostream>
#include <mutex>

namespace korvel {

void networkLog(const std::string& line)
{
    static std::mutex lock;
    std::lock_guard<std::mutex> guard(lock);
    std::cout << line << std::endl;
}

}  // namespace korvel
