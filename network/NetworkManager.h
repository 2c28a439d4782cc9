#pragma once
// Starts and stops the platform's socket service. BSD sockets need no
// service; init() only makes sure that a send on a dead socket cannot end the
// process with SIGPIPE.

#include "core/Object.h"

namespace korvel {

class NetworkManager : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static NetworkManager& getInstance();

    bool init();
    void endService();

    NetworkManager(const NetworkManager&) = delete;
    NetworkManager& operator=(const NetworkManager&) = delete;

private:
    NetworkManager() = default;
};

}  // namespace korvel
