#include "core/Subject.h"

#include "core/Observer.h"

#include <algorithm>
#include <iostream>
#include <set>

namespace korvel {

const char* Subject::className = "Subject";

namespace {

std::set<const Subject*>& liveSubjects()
{
    static std::set<const Subject*> subjects;
    return subjects;
}

}  // namespace

Subject::Subject()
{
    liveSubjects().insert(this);
}

Subject::~Subject()
{
    releaseObservers();
    liveSubjects().erase(this);
}

bool Subject::isLive(const Subject* subject)
{
    return liveSubjects().count(subject) != 0;
}

void Subject::addObserver(Observer* observer)
{
    if (observer == nullptr) {
        std::cout << "[Error] Subject::addObserver: no observer given" << std::endl;
        return;
    }
    observers.push_back(observer);
    observer->subjects.push_back(this);
    // A new observer may reuse the address of one destroyed in this walk.
    destroyedDuringWalk.erase(std::remove(destroyedDuringWalk.begin(), destroyedDuringWalk.end(), observer),
                              destroyedDuringWalk.end());
}

void Subject::removeObserver(Observer* observer)
{
    pendingRemovals.push_back(observer);
}

void Subject::cleanObservers()
{
    for (Observer* leaving : pendingRemovals) {
        observers.erase(std::remove(observers.begin(), observers.end(), leaving), observers.end());
    }
    pendingRemovals.clear();
}

void Subject::notify(Object* source, int32_t event)
{
    cleanObservers();
    callObservers(source, event);
}

void Subject::releaseObservers()
{
    cleanObservers();
    callObservers(this, Observer::eventSubjectEnd);
    pendingRemovals.clear();
}

void Subject::callObservers(Object* source, int32_t event)
{
    ++walkDepth;
    // By index: an observer may add others to the list from its onNotify.
    for (std::size_t i = 0; i < observers.size(); ++i) {
        Observer* observer = observers[i];
        if (!destroyedDuringWalk.empty() &&
            std::find(destroyedDuringWalk.begin(), destroyedDuringWalk.end(), observer) != destroyedDuringWalk.end()) {
            continue;
        }
        observer->onNotify(source, event);
    }
    if (--walkDepth == 0) {
        destroyedDuringWalk.clear();
    }
}

void Subject::observerDestroyed(Observer* observer)
{
    if (walkDepth > 0) {
        destroyedDuringWalk.push_back(observer);
    }
}

}  // namespace korvel
