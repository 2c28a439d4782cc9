#include "network/Client.h"

#include "network/NetworkLog.h"

#include <sstream>
#include <system_error>

namespace korvel {

const char* Client::className = "Client";

Client::Client()
    : fresh(defaultBufferSize), acknowledgement(framingSize), acknowledgements(0), lastAcknowledged(0)
{
}

Client::~Client()
{
    if (reader.joinable()) {
        endReadPoolLastServer();
    }
}

void Client::setServerAddress(const std::string& address)
{
    serverAddress = address;
}

bool Client::initConnection()
{
    if (reader.joinable()) {
        networkLog("[ERROR] client cannot reconnect while reading");
        return false;
    }
    socket.setAddress(serverAddress);
    return socket.connectTo();
}

bool Client::initReadPoolLastServer()
{
    if (!reapReader()) {
        networkLog("[ERROR] client is already reading server in pooling !");
        return false;
    }
    if (!socket.isOpen()) {
        networkLog("[ERROR] client socket is not open for reading the server");
        return false;
    }
    return launchReader([this] { threadRead(this); }, "client");
}

void Client::endReadPoolLastServer()
{
    networkLog("[Information] client requested end of pooling");
    stopReading();
}

void Client::stopReading()
{
    stopReader();
}

bool Client::writeServer(const Buffer& buffer)
{
    return socket.send(buffer);
}

bool Client::writeServerACK(Buffer& buffer)
{
    if (!prepareMessageWithCode(buffer, typeACK)) {
        networkLog("[ERROR] message to small for writing to server in ACK operation !");
    }
    return socket.send(buffer);
}

bool Client::writeServerNACK(Buffer& buffer)
{
    if (!prepareMessageWithCode(buffer, typeNACK)) {
        networkLog("[ERROR] message to small for writing to server in NACK operation !");
    }
    return socket.send(buffer);
}

bool Client::readLastServer(Buffer& buffer)
{
    return fresh.pop(buffer);
}

bool Client::readLastServer(Buffer& buffer, uint64_t& id)
{
    return fresh.pop(buffer, id);
}

bool Client::readServer(Buffer& buffer)
{
    return socket.receive(buffer);
}

void Client::manageACK(uint64_t id)
{
    networkLog("[Information] client got ACK for: " + std::to_string(id));
    lastAcknowledged = id;
    ++acknowledgements;
}

void Client::manageMessageNACK(const Buffer& buffer, uint64_t id)
{
    fresh.push(buffer, id);
}

void Client::manageMessageACK(const Buffer& buffer, uint64_t id)
{
    (void)buffer;
    acknowledgement.clear();
    acknowledgement.add(id);
    acknowledgement.add(static_cast<int>(typeAcknowledgement));  // 12 bytes asked of 10: never fits
    acknowledgement.clear();
}

void Client::threadRead(Client* client)
{
    if (client == nullptr) {
        std::ostringstream line;
        line << "[ERROR] client is null in reading thread: " << static_cast<const void*>(client);
        networkLog(line.str());
        return;
    }
    client->readLoop();
}

void Client::readLoop()
{
    networkLog("[Information] size buffer: " + std::to_string(receiveBuffer ? receiveBuffer->getCapacity() : 0));
    if (!receiveBuffer) {
        // Made by initReadPoolLastServer(): engine objects are made on the main thread.
        networkLog("[ERROR] client reading thread started without its receive buffer");
        running = false;
        return;
    }
    networkLog("[Information] client starts listening");
    const sockaddr_in& server = socket.getRemote();
    while (isReading) {
        sockaddr_in from;
        if (!socket.receive(*receiveBuffer, &from)) {
            if (isReading) {
                networkLog("[ERROR] client cannot read server messages !");
            }
            break;
        }
        if (from.sin_addr.s_addr != server.sin_addr.s_addr || from.sin_port != server.sin_port) {
            networkLog("[Warning] client dropped a message from " + Socket::describe(from) + ", not its server");
            continue;
        }
        handleMessage(*receiveBuffer);
    }
    networkLog("[Information] client is ending pooling");
    running = false;
}

void Client::handleMessage(Buffer& buffer)
{
    const uint64_t length = buffer.getUsed();
    short type = 0;
    uint64_t id = 0;
    if (!buffer.get(type) || !buffer.get(id)) {
        networkLog("[Warning] client dropped a message of " + std::to_string(length) + " bytes, too short for its id and type");
        return;
    }
    switch (type) {
    case typeNACK:
        manageMessageNACK(buffer, id);
        break;
    case typeAcknowledgement:
        manageACK(id);
        break;
    case typeACK:
        manageMessageACK(buffer, id);
        break;
    default:
        networkLog("[Warning] client dropped a message of unknown type " + std::to_string(type));
        break;
    }
}

}  // namespace korvel
