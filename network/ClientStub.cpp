#include "network/ClientStub.h"

#include "network/Socket.h"

#include <cstring>

namespace korvel {

const char* ClientStub::className = "ClientStub";

ClientStub::ClientStub() : address(), isActive(false), socket(nullptr)
{
    std::memset(&address, 0, sizeof address);
}

bool ClientStub::operator==(const ClientStub& other) const
{
    return address.sin_family == other.address.sin_family && address.sin_port == other.address.sin_port &&
           address.sin_addr.s_addr == other.address.sin_addr.s_addr;
}

bool ClientStub::write(const Buffer& buffer) const
{
    if (socket == nullptr) {
        return false;
    }
    return socket->sendTo(address, buffer);
}

}  // namespace korvel
