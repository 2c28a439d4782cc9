#include "network/NetworkAgent.h"

#include "network/NetworkLog.h"

namespace korvel {

const char* NetworkAgent::className = "NetworkAgent";

NetworkAgent::NetworkAgent() : messageId(0), bufferSize(defaultBufferSize), isReading(false) {}

NetworkAgent::~NetworkAgent() = default;

void NetworkAgent::setBufferSize(uint64_t size)
{
    bufferSize = size;
}

bool NetworkAgent::initConnection()
{
    return false;
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
