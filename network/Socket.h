#pragma once
// One IPv4 UDP socket. One send of a buffer is one datagram and one receive
// fills one buffer.
//
// A socket made by openConnections() or connectTo() owns its handle and
// closes it when destroyed; a copy or an assignment shares the handle without
// owning it. Not locked: the reading thread receives while the main thread
// sends, which the platform allows on one handle; opening and closing happen
// only while no reading thread runs.

#include "core/Object.h"

#include <netinet/in.h>

#include <cstdint>
#include <string>

namespace korvel {

class Buffer;
class ClientStub;

class Socket : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Socket();
    Socket(const Socket& other);
    Socket& operator=(const Socket& other);
    ~Socket() override;

    // Server side: a datagram socket bound to any local address at `port`
    // (0 lets the system choose; getLocalPort() tells which).
    bool openConnections();
    // Client side: a datagram socket aimed at `address`:`port`. It is bound at
    // once to a port of the system's choice so that it can be read before it
    // has sent anything.
    bool connectTo();

    // Kept for completeness; a datagram socket refuses both.
    bool listen();
    bool accept(ClientStub& stub);

    bool send(const Buffer& buffer);
    bool send(const void* bytes, uint64_t count);
    bool sendTo(const sockaddr_in& to, const Buffer& buffer);

    // Blocks for one datagram. A datagram longer than the buffer is detected,
    // dropped with a warning, and the wait goes on, so a caller only ever sees
    // whole messages. After shutdown() the wait ends with false and no error
    // line. `from` receives the sender when given.
    bool receive(Buffer& buffer, sockaddr_in* from = nullptr);
    bool receiveFrom(ClientStub& stub, Buffer& buffer);

    // Wakes a thread blocked in a receive; the handle stays open until end().
    void shutdown();
    bool end();

    bool operator==(const Socket& other) const { return socketHandle == other.socketHandle; }

    bool isOpen() const { return socketHandle >= 0; }
    int getHandle() const { return socketHandle; }
    int32_t getPort() const { return port; }
    void setPort(int32_t value) { port = value; }
    const std::string& getAddress() const { return address; }
    void setAddress(const std::string& value) { address = value; }
    const sockaddr_in& getRemote() const { return remote; }
    int32_t getLocalPort() const;  // -1 when not open

    static std::string describe(const sockaddr_in& where);  // "a.b.c.d" and port
    static std::string dotted(const sockaddr_in& where);

private:
    // Opens a datagram socket bound to localPort on every interface.
    bool openBound(uint16_t localPort);
    enum class Received { message, stopped, failed };
    Received receiveDatagram(Buffer& buffer, sockaddr_in& from);
    bool portIsValid() const;

    int socketHandle;
    int32_t port;
    std::string address;
    sockaddr_in remote;
    bool owned;
};

}  // namespace korvel
