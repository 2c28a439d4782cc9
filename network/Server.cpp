#include "network/Server.h"

#include "network/NetworkLog.h"

#include <algorithm>
#include <new>
#include <sstream>
#include <system_error>

namespace korvel {

const char* Server::className = "Server";

Server::Server(int maxClients)
    : maxClients(std::max(maxClients, 0)), clients(new ClientStub[static_cast<std::size_t>(std::max(maxClients, 0))]),
      queueFull(false), droppedRequests(0), droppedSinceFull(0), acknowledgement(framingSize)
{
    for (int i = 0; i < this->maxClients; ++i) {
        clients[i].setSocket(&socket);
    }
}

Server::~Server()
{
    if (reader.joinable()) {
        endReadPoolClients();
    }
}

bool Server::initConnection()
{
    if (reader.joinable()) {
        networkLog("[ERROR] server cannot reopen its socket while reading");
        return false;
    }
    return socket.openConnections();
}

bool Server::initReadPoolClients()
{
    if (!reapReader()) {
        networkLog("[ERROR] server is already reading clients in pooling !");
        return false;
    }
    if (!socket.isOpen()) {
        networkLog("[ERROR] server socket is not open for reading clients");
        return false;
    }
    sender.reset(new ClientStub());
    return launchReader([this] { threadRead(this); }, "server");
}

void Server::endReadPoolClients()
{
    networkLog("[Information] server requested end of pooling");
    stopReading();
}

void Server::stopReading()
{
    stopReader();
    sender.reset();
}

void Server::releaseClients()
{
    endReadPoolClients();
    std::lock_guard<std::mutex> guard(clientsLock);
    for (int i = 0; i < maxClients; ++i) {
        clients[i].setIsActive(false);
    }
}

bool Server::clientAddress(int index, sockaddr_in& address) const
{
    if (index < 0 || index >= maxClients) {
        return false;
    }
    std::lock_guard<std::mutex> guard(clientsLock);
    if (!clients[index].getIsActive()) {
        return false;
    }
    address = clients[index].getAddress();
    return true;
}

bool Server::isClientActive(int index) const
{
    sockaddr_in ignored;
    return clientAddress(index, ignored);
}

bool Server::sendMessage(const Buffer& buffer, int clientIndex)
{
    sockaddr_in address;
    if (!clientAddress(clientIndex, address)) {
        return false;
    }
    return socket.sendTo(address, buffer);
}

bool Server::sendMessageNACK(Buffer& buffer, int clientIndex)
{
    sockaddr_in address;
    if (!clientAddress(clientIndex, address)) {
        return false;
    }
    if (!prepareMessageWithCode(buffer, typeNACK)) {
        networkLog("[ERROR] message to small for sending to client in NACK operation !");
    }
    socket.sendTo(address, buffer);
    return true;
}

bool Server::broadcastMessage(const Buffer& buffer)
{
    for (int i = 0; i < maxClients; ++i) {
        sockaddr_in address;
        if (clientAddress(i, address)) {
            socket.sendTo(address, buffer);
        }
    }
    return true;
}

bool Server::broadcastMessageNACK(Buffer& buffer)
{
    if (!prepareMessageWithCode(buffer, typeNACK)) {
        networkLog("[ERROR] message to small for broadcasting to clients in NACK operation !");
    }
    return broadcastMessage(buffer);
}

bool Server::checkAddClient(const ClientStub& stub, int& index)
{
    std::lock_guard<std::mutex> guard(clientsLock);
    for (int i = 0; i < maxClients; ++i) {
        if (clients[i].getIsActive() && clients[i] == stub) {
            index = i;
            return true;
        }
    }
    for (int i = 0; i < maxClients; ++i) {
        if (!clients[i].getIsActive()) {
            clients[i].setAddress(stub.getAddress());
            clients[i].setVerbose(stub.isVerbose());
            clients[i].setIsActive(true);
            index = i;
            return true;
        }
    }
    return false;
}

bool Server::hasRequest() const
{
    std::lock_guard<std::mutex> guard(requestsLock);
    return !requests.empty();
}

std::size_t Server::countPendingRequests() const
{
    std::lock_guard<std::mutex> guard(requestsLock);
    return requests.size();
}

uint64_t Server::countDroppedRequests() const
{
    std::lock_guard<std::mutex> guard(requestsLock);
    return droppedRequests;
}

Buffer* Server::feedRequest()
{
    std::vector<unsigned char> bytes;
    {
        std::lock_guard<std::mutex> guard(requestsLock);
        if (requests.empty()) {
            return nullptr;
        }
        bytes.swap(requests.front());
        requests.pop_front();
    }
    // A request keeps the size of the buffer it was received in.
    const uint64_t size = std::max<uint64_t>(bufferSize, bytes.size());
    Buffer* request = new (std::nothrow) Buffer(size);
    if (request == nullptr || !request->setContent(bytes.data(), bytes.size())) {
        delete request;
        networkLog("[ERROR] server cannot hold a request of " + std::to_string(bytes.size()) + " bytes");
        return nullptr;
    }
    return request;
}

bool Server::queueRequest(const Buffer& buffer)
{
    bool queued = false;
    bool warnFull = false;
    uint64_t recovered = 0;
    {
        std::lock_guard<std::mutex> guard(requestsLock);
        if (requests.size() >= maxPendingRequests) {
            ++droppedRequests;
            ++droppedSinceFull;
            warnFull = !queueFull;
            queueFull = true;
        } else {
            requests.emplace_back(buffer.getData(), buffer.getData() + buffer.getUsed());
            queued = true;
            if (queueFull && requests.size() <= maxPendingRequests / 2) {
                recovered = droppedSinceFull;
                queueFull = false;
                droppedSinceFull = 0;
            }
        }
    }
    // One line when the queue fills and one once it has drained to half,
    // however many datagrams are dropped in between: under a flood the queue
    // would otherwise flip between full and not full for every request taken.
    if (warnFull) {
        networkLog("[Warning] server request queue is full (" + std::to_string(maxPendingRequests) +
                   " requests), new requests are dropped while it is full");
    }
    if (recovered > 0) {
        networkLog("[Information] server request queue accepts requests again after dropping " +
                   std::to_string(recovered));
    }
    return queued;
}

bool Server::receiveMessage(Buffer& buffer, int& clientIndex)
{
    // A caller of its own (the main thread) gets a stub of its own: the one
    // made for the reading thread exists only while that thread runs and
    // belongs to it.
    ClientStub stub;
    return receiveInto(stub, buffer, clientIndex);
}

bool Server::receiveInto(ClientStub& stub, Buffer& buffer, int& clientIndex)
{
    clientIndex = -1;
    if (!socket.receiveFrom(stub, buffer)) {
        return false;
    }
    // Whatever the datagram holds, its sender is a client: found among the
    // known ones or given the first free slot.
    if (!checkAddClient(stub, clientIndex)) {
        clientIndex = -1;
        networkLog("[Warning] cannot add client at message reception!");
    }
    return true;
}

void Server::threadRead(Server* server)
{
    if (server == nullptr) {
        std::ostringstream line;
        line << "[ERROR] Server is not instantiated in reading thread: " << static_cast<const void*>(server);
        networkLog(line.str());
        return;
    }
    server->readLoop();
}

void Server::readLoop()
{
    networkLog("[Information] size buffer: " + std::to_string(receiveBuffer ? receiveBuffer->getCapacity() : 0));
    if (!receiveBuffer || !sender) {
        // Made by initReadPoolClients(): engine objects are made on the main thread.
        networkLog("[ERROR] server reading thread started without its receive buffer");
        running = false;
        return;
    }
    networkLog("[Information] Server starts listening");
    bool failed = false;
    while (isReading) {
        int clientIndex = -1;
        if (!receiveInto(*sender, *receiveBuffer, clientIndex)) {
            if (isReading) {
                networkLog("[ERROR] socket cannot receive message!");
                failed = true;
            }
            break;
        }
        handleMessage(*receiveBuffer, clientIndex);
    }
    if (failed) {
        networkLog("[ERROR] Server cannot read client messages !");
    }
    networkLog("[Information] server is ending pooling");
    running = false;
}

void Server::handleMessage(Buffer& buffer, int clientIndex)
{
    const uint64_t length = buffer.getUsed();
    short type = 0;
    if (!buffer.get(type)) {
        networkLog("[Warning] server dropped a message of " + std::to_string(length) + " bytes, too short for its type");
        return;
    }
    networkLog("[Success] server got message! Type is: " + std::to_string(type));
    uint64_t id = 0;
    if (!buffer.get(id)) {
        networkLog("[Warning] server dropped a message of " + std::to_string(length) + " bytes, too short for its id");
        return;
    }
    networkLog("[Information] server got message! Id is: " + std::to_string(id));
    // Queued before it is acknowledged, and not acknowledged when the full
    // queue drops it: an acknowledgement always stands for a request the
    // main thread will see.
    if (!queueRequest(buffer)) {
        return;
    }
    sockaddr_in address;
    if (type == typeACK && clientAddress(clientIndex, address)) {
        acknowledgement.clear();
        acknowledgement.add(id);
        acknowledgement.add(typeAcknowledgement);
        socket.sendTo(address, acknowledgement);
    }
}

}  // namespace korvel
