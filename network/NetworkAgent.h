#pragma once
// Common base of Server and Client: the socket, the buffer size, the message
// counter, and the framing of outgoing messages.
//
// A message is one datagram: the payload, then the message id (uint64), then
// the type (short). Buffer is a stack, so a reader pops the type first, then
// the id, and what remains is the payload. An acknowledgement is exactly the
// acknowledged id and the type 2, 10 bytes.
//
// Threads: the main thread frames and sends; each agent has one reading
// thread that only receives and hands messages over. `messageId` belongs to
// the main thread.

#include "core/Object.h"
#include "network/Buffer.h"
#include "network/Socket.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

namespace korvel {

class NetworkAgent : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static constexpr short typeACK = 0;              // asks for an acknowledgement
    static constexpr short typeNACK = 1;             // asks for none
    static constexpr short typeAcknowledgement = 2;  // answers a typeACK message
    static constexpr uint64_t framingSize = 10;
    static constexpr uint64_t defaultBufferSize = 8082;

    NetworkAgent();
    NetworkAgent(const NetworkAgent&) = delete;
    NetworkAgent& operator=(const NetworkAgent&) = delete;
    ~NetworkAgent() override;

    // Takes effect at the next start of the reading thread.
    virtual void setBufferSize(uint64_t size);
    virtual bool initConnection();

    // Appends the id and the type. When the id does not fit nothing is added;
    // when the type does not fit the id stays. Either way the message goes out
    // all the same if the caller sends it.
    bool prepareMessageWithCode(Buffer& buffer, short type);

    uint64_t getBufferSize() const { return bufferSize; }
    uint64_t getMessageId() const { return messageId; }
    bool getIsReading() const { return isReading; }
    // The reading thread has started and not ended yet; false once it
    // stopped by itself after a failed receive, even while isReading holds.
    bool isReaderRunning() const { return running; }
    void setPort(int32_t port) { socket.setPort(port); }
    int32_t getPort() const { return socket.getPort(); }
    Socket& getSocket() { return socket; }

protected:
    // Joins a reading thread that ended by itself (after a failed receive);
    // false while one is still running.
    bool reapReader();
    // Runs body on the reading thread with a fresh receive buffer; who names
    // the agent in the failure line.
    bool launchReader(const std::function<void()>& body, const char* who);
    // Clears isReading, wakes the blocked receive with a shutdown, joins the
    // thread, then closes the socket: closing alone does not wake a receive.
    void stopReader();

    Socket socket;
    uint64_t messageId;
    uint64_t bufferSize;
    std::atomic<bool> isReading;
    std::thread reader;
    std::atomic<bool> running;  // the reading thread has not ended yet
    std::unique_ptr<Buffer> receiveBuffer;
};

}  // namespace korvel
