#include "network/NetworkAgent.h"

#include "network/NetworkLog.h"

#include <string>
#include <system_error>

namespace korvel {

const char* NetworkAgent::className = "NetworkAgent";

NetworkAgent::NetworkAgent() : messageId(0), bufferSize(defaultBufferSize), isReading(false), running(false) {}

NetworkAgent::~NetworkAgent() = default;

void NetworkAgent::setBufferSize(uint64_t size)
{
    bufferSize = size;
}

bool NetworkAgent::initConnection()
{
    return false;
}

bool NetworkAgent::reapReader()
{
    if (reader.joinable()) {
        if (running) {
            return false;
        }
        reader.join();
    }
    return true;
}

bool NetworkAgent::launchReader(const std::function<void()>& body, const char* who)
{
    receiveBuffer.reset(new Buffer(bufferSize));
    isReading = true;
    running = true;
    try {
        reader = std::thread(body);
    } catch (const std::system_error& error) {
        isReading = false;
        running = false;
        networkLog(std::string("[ERROR] ") + who + " reading thread cannot start: " + error.what());
        return false;
    }
    return true;
}

void NetworkAgent::stopReader()
{
    isReading = false;
    socket.shutdown();
    if (reader.joinable()) {
        reader.join();
    }
    socket.end();
    receiveBuffer.reset();
}

bool NetworkAgent::prepareMessageWithCode(Buffer& buffer, short type)
{
    if (!buffer.add(messageId)) {
        networkLog("[ERROR] buffer to small for sending message in operation / id");
        return false;
    }
    ++messageId;
    if (!buffer.add(type)) {
        networkLog("[ERROR] buffer to small for sending message in operation / id");
        return false;
    }
    return true;
}

}  // namespace korvel
