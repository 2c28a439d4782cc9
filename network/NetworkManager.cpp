#include "network/NetworkManager.h"

#include <csignal>

namespace korvel {

const char* NetworkManager::className = "NetworkManager";

NetworkManager& NetworkManager::getInstance()
{
    static NetworkManager instance;
    return instance;
}

bool NetworkManager::init()
{
    // Sends already pass MSG_NOSIGNAL; this covers every other path.
    std::signal(SIGPIPE, SIG_IGN);
    return true;
}

void NetworkManager::endService() {}

}  // namespace korvel
