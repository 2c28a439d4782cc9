#pragma once
// The connecting end. The main thread sends requests (writeServer...) and
// reads the freshest message from the server (readLastServer); the reading
// thread receives, keeps only the freshest message by id, and notes the
// acknowledgements.
//
// Only datagrams from the server's own address and port are read; anything
// else is dropped with a warning, so that a stranger cannot feed the client a
// state or push its freshest id out of reach.

#include "network/Buffer.h"
#include "network/BufferFreshSafe.h"
#include "network/NetworkAgent.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace korvel {

class Client : public NetworkAgent {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Client();
    ~Client() override;

    void setServerAddress(const std::string& address);
    const std::string& getServerAddress() const { return serverAddress; }
    bool initConnection() override;
    bool initReadPoolLastServer();
    // Stops and joins the reading thread, then closes the socket.
    void endReadPoolLastServer();

    bool writeServer(const Buffer& buffer);
    bool writeServerACK(Buffer& buffer);
    bool writeServerNACK(Buffer& buffer);

    // The freshest message since the last read, or false when none came.
    bool readLastServer(Buffer& buffer);
    bool readLastServer(Buffer& buffer, uint64_t& id);
    // Blocking receive on the socket; not while the reading thread runs.
    bool readServer(Buffer& buffer);

    void manageACK(uint64_t id);
    void manageMessageNACK(const Buffer& buffer, uint64_t id);
    // The client never acknowledges: this builds the acknowledgement in a
    // 10-byte buffer that cannot hold it, and sends nothing.
    void manageMessageACK(const Buffer& buffer, uint64_t id);

    static void threadRead(Client* client);

    // How many acknowledgements came, and the id of the latest.
    uint64_t countAcknowledgements() const { return acknowledgements; }
    uint64_t getLastAcknowledged() const { return lastAcknowledged; }

private:
    void readLoop();
    void handleMessage(Buffer& buffer);
    void stopReading();

    std::string serverAddress;
    BufferFreshSafe fresh;
    Buffer acknowledgement;
    std::atomic<uint64_t> acknowledgements;
    std::atomic<uint64_t> lastAcknowledged;
};

}  // namespace korvel
