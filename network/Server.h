#pragma once
// The serving end: up to `maxClients` known clients, a reading thread that
// receives requests, acknowledges those that ask for it and queues them, and
// the main thread that takes them in order of arrival (hasRequest,
// feedRequest) and sends to the clients.
//
// Objects of the engine are made and destroyed on the main thread only, so
// the reading thread works with a receive buffer, a sender stub and an
// acknowledgement made for it before it starts, and queues the raw bytes of
// each request; feedRequest() turns the oldest into a Buffer on the main
// thread. The queue holds at most maxPendingRequests: a flood of the port
// cannot grow it without bound, and play never comes near the cap.

#include "network/Buffer.h"
#include "network/ClientStub.h"
#include "network/NetworkAgent.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace korvel {

class Server : public NetworkAgent {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static constexpr std::size_t maxPendingRequests = 1024;

    explicit Server(int maxClients);
    ~Server() override;

    bool initConnection() override;
    bool initReadPoolClients();
    // Stops and joins the reading thread, then closes the socket.
    void endReadPoolClients();
    // Stops reading and forgets every client.
    void releaseClients();

    bool listen() { return socket.listen(); }
    bool accept(ClientStub& stub) { return socket.accept(stub); }

    bool sendMessage(const Buffer& buffer, int clientIndex);
    bool sendMessageNACK(Buffer& buffer, int clientIndex);
    bool broadcastMessage(const Buffer& buffer);
    bool broadcastMessageNACK(Buffer& buffer);

    bool checkAddClient(const ClientStub& stub, int& index);

    bool hasRequest() const;
    // The oldest request, now owned by the caller, or null.
    Buffer* feedRequest();

    // One datagram into `buffer`, its sender in a new stub; `clientIndex` is
    // the sender's slot (found or just given), or -1 when every slot is
    // taken by someone else. While the reading thread runs, the two share
    // the datagrams that come.
    bool receiveMessage(Buffer& buffer, int& clientIndex);

    static void threadRead(Server* server);

    int getMaxClients() const { return maxClients; }
    bool isClientActive(int index) const;
    std::size_t countPendingRequests() const;
    uint64_t countDroppedRequests() const;

private:
    void readLoop();
    bool receiveInto(ClientStub& stub, Buffer& buffer, int& clientIndex);
    void handleMessage(Buffer& buffer, int clientIndex);
    bool queueRequest(const Buffer& buffer);
    bool clientAddress(int index, sockaddr_in& address) const;
    void stopReading();

    int maxClients;
    std::unique_ptr<ClientStub[]> clients;
    mutable std::mutex clientsLock;

    mutable std::mutex requestsLock;
    std::deque<std::vector<unsigned char>> requests;
    bool queueFull;
    uint64_t droppedRequests;
    uint64_t droppedSinceFull;

    std::unique_ptr<ClientStub> sender;
    Buffer acknowledgement;
};

}  // namespace korvel
