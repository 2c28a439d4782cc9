#include "network/QueueSafe.h"

namespace korvel {

const char* QueueSafe::className = "QueueSafe";

void QueueSafe::push(Buffer* buffer)
{
    std::lock_guard<std::mutex> guard(lock);
    items.push_back(buffer);
}

bool QueueSafe::pop(Buffer*& buffer)
{
    std::lock_guard<std::mutex> guard(lock);
    if (items.empty()) {
        return false;
    }
    buffer = items.front();
    items.pop_front();
    return true;
}

bool QueueSafe::isEmpty() const
{
    std::lock_guard<std::mutex> guard(lock);
    return items.empty();
}

std::size_t QueueSafe::size() const
{
    std::lock_guard<std::mutex> guard(lock);
    return items.size();
}

}  // namespace korvel
