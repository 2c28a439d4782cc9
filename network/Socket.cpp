#include "network/Socket.h"

#include "network/Buffer.h"
#include "network/ClientStub.h"
#include "network/NetworkLog.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace korvel {

const char* Socket::className = "Socket";

Socket::Socket() : socketHandle(-1), port(0), address(), remote(), owned(false)
{
    std::memset(&remote, 0, sizeof remote);
}

Socket::Socket(const Socket& other)
    : Object(other), socketHandle(other.socketHandle), port(other.port), address(other.address),
      remote(other.remote), owned(false)
{
}

Socket& Socket::operator=(const Socket& other)
{
    if (this == &other) {
        return *this;
    }
    if (owned && socketHandle >= 0 && socketHandle != other.socketHandle) {
        ::close(socketHandle);
    }
    Object::operator=(other);
    socketHandle = other.socketHandle;
    port = other.port;
    address = other.address;
    remote = other.remote;
    owned = false;
    return *this;
}

Socket::~Socket()
{
    if (owned && socketHandle >= 0) {
        ::close(socketHandle);
    }
}

bool Socket::portIsValid() const
{
    return port >= 0 && port <= 65535;
}

bool Socket::openConnections()
{
    end();
    if (!portIsValid()) {
        networkLog("[ERROR] port out of range for opening socket entrance: " + std::to_string(port));
        return false;
    }
    return openBound(static_cast<uint16_t>(port));
}

bool Socket::connectTo()
{
    end();
    if (port <= 0 || port > 65535) {
        networkLog("[ERROR] port out of range for reaching the server: " + std::to_string(port));
        return false;
    }
    addrinfo hints;
    std::memset(&hints, 0, sizeof hints);
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* found = nullptr;
    if (address.empty() || ::getaddrinfo(address.c_str(), nullptr, &hints, &found) != 0 || found == nullptr) {
        if (found != nullptr) {
            ::freeaddrinfo(found);
        }
        networkLog("Unknown host");
        return false;
    }
    std::memcpy(&remote, found->ai_addr, sizeof remote);
    ::freeaddrinfo(found);
    remote.sin_family = AF_INET;
    remote.sin_port = htons(static_cast<uint16_t>(port));

    // A port of the system's choice, so that replies can arrive before the
    // first send.
    return openBound(0);
}

bool Socket::openBound(uint16_t localPort)
{
    const int handle = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    if (handle < 0) {
        networkLog("[ERROR] socket entrance not being created at first");
        return false;
    }
    sockaddr_in local;
    std::memset(&local, 0, sizeof local);
    local.sin_family = AF_INET;
    local.sin_addr.s_addr = htonl(INADDR_ANY);
    local.sin_port = htons(localPort);
    if (::bind(handle, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
        ::close(handle);
        networkLog("[ERROR] bind() for opening socket entrance");
        return false;
    }
    socketHandle = handle;
    owned = true;
    return true;
}

bool Socket::listen()
{
    if (::listen(socketHandle, 3) != 0) {
        networkLog("[ERROR] listen() is failing with error: " + std::to_string(errno));
        return false;
    }
    return true;
}

bool Socket::accept(ClientStub& stub)
{
    sockaddr_in from;
    std::memset(&from, 0, sizeof from);
    socklen_t length = sizeof from;
    const int accepted = ::accept(socketHandle, reinterpret_cast<sockaddr*>(&from), &length);
    if (accepted < 0) {
        networkLog("[ERROR] client connection in accepting socket is failing with error code " +
                   std::to_string(errno));
        return false;
    }
    // Nothing in the datagram flow keeps a connected handle.
    ::close(accepted);
    stub.setAddress(from);
    return true;
}

bool Socket::send(const Buffer& buffer)
{
    return send(buffer.getData(), buffer.getUsed());
}

bool Socket::send(const void* bytes, uint64_t count)
{
    const ssize_t sent = ::sendto(socketHandle, bytes, count, MSG_NOSIGNAL,
                                  reinterpret_cast<const sockaddr*>(&remote), sizeof remote);
    if (sent < 0) {
        networkLog("[ERROR] sendto() is failing");
        return false;
    }
    return true;
}

bool Socket::sendTo(const sockaddr_in& to, const Buffer& buffer)
{
    const ssize_t sent = ::sendto(socketHandle, buffer.getData(), buffer.getUsed(), MSG_NOSIGNAL,
                                  reinterpret_cast<const sockaddr*>(&to), sizeof to);
    if (sent < 0) {
        networkLog("[ERROR] sendto() to a client is failing with error: " + std::to_string(errno));
        return false;
    }
    return true;
}

Socket::Received Socket::receiveDatagram(Buffer& buffer, sockaddr_in& from)
{
    for (;;) {
        std::memset(&from, 0, sizeof from);
        socklen_t length = sizeof from;
        // MSG_TRUNC makes the call answer the datagram's real length, so a
        // datagram longer than the buffer is seen as such and never taken for
        // a whole message.
        const ssize_t got = ::recvfrom(socketHandle, buffer.getData(), buffer.getCapacity(), MSG_TRUNC,
                                       reinterpret_cast<sockaddr*>(&from), &length);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            buffer.setUsed(0);
            return Received::failed;
        }
        if (got == 0 && length == 0) {
            // No sender: the socket was shut down, not a datagram received.
            buffer.setUsed(0);
            return Received::stopped;
        }
        if (static_cast<uint64_t>(got) > buffer.getCapacity()) {
            networkLog("[Warning] datagram of " + std::to_string(got) + " bytes from " + describe(from) +
                       " is longer than the buffer of " + std::to_string(buffer.getCapacity()) +
                       " bytes, dropped");
            continue;
        }
        buffer.setUsed(static_cast<uint64_t>(got));
        return Received::message;
    }
}

bool Socket::receive(Buffer& buffer, sockaddr_in* from)
{
    sockaddr_in sender;
    const Received result = receiveDatagram(buffer, sender);
    if (result == Received::failed) {
        networkLog("[ERROR] recvfrom() is failing with error: " + std::to_string(errno));
        return false;
    }
    if (result == Received::stopped) {
        return false;
    }
    networkLog("[Information] sender: " + dotted(sender) + " Port: " + std::to_string(ntohs(sender.sin_port)));
    if (from != nullptr) {
        *from = sender;
    }
    return true;
}

bool Socket::receiveFrom(ClientStub& stub, Buffer& buffer)
{
    sockaddr_in sender;
    const Received result = receiveDatagram(buffer, sender);
    if (result == Received::failed) {
        networkLog("[ERROR] recvfrom() is failing");
        return false;
    }
    if (result == Received::stopped) {
        return false;
    }
    stub.setAddress(sender);
    networkLog("[Information] client: " + dotted(sender) + " Port: " + std::to_string(ntohs(sender.sin_port)));
    return true;
}

void Socket::shutdown()
{
    if (socketHandle >= 0) {
        // An unconnected datagram socket answers ENOTCONN but is shut down
        // all the same, and a receive blocked on it returns.
        ::shutdown(socketHandle, SHUT_RDWR);
    }
}

bool Socket::end()
{
    if (socketHandle >= 0) {
        ::close(socketHandle);
    }
    socketHandle = -1;
    owned = false;
    return true;
}

int32_t Socket::getLocalPort() const
{
    if (socketHandle < 0) {
        return -1;
    }
    sockaddr_in local;
    socklen_t length = sizeof local;
    if (::getsockname(socketHandle, reinterpret_cast<sockaddr*>(&local), &length) != 0) {
        return -1;
    }
    return ntohs(local.sin_port);
}

std::string Socket::dotted(const sockaddr_in& where)
{
    char text[INET_ADDRSTRLEN] = {0};
    if (::inet_ntop(AF_INET, &where.sin_addr, text, sizeof text) == nullptr) {
        return "?";
    }
    return text;
}

std::string Socket::describe(const sockaddr_in& where)
{
    return dotted(where) + ":" + std::to_string(ntohs(where.sin_port));
}

}  // namespace korvel
