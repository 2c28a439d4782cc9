#pragma once
// The server's record of one remote client: its IPv4 address and whether the
// slot is in use. write() sends through the server's socket, which the stub
// links and does not own.

#include "core/Object.h"

#include <netinet/in.h>

namespace korvel {

class Buffer;
class Socket;

class ClientStub : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    ClientStub();

    // Same family, port and address.
    bool operator==(const ClientStub& other) const;

    bool write(const Buffer& buffer) const;

    const sockaddr_in& getAddress() const { return address; }
    void setAddress(const sockaddr_in& value) { address = value; }
    bool getIsActive() const { return isActive; }
    void setIsActive(bool value) { isActive = value; }
    void setSocket(Socket* value) { socket = value; }

private:
    sockaddr_in address;
    bool isActive;
    Socket* socket;
};

}  // namespace korvel
