#pragma once
// Sends notifications to its observers, in the order they were added.
//
// Removal is deferred: removeObserver only marks the observer, and the mark
// is applied at the start of the next notify (or by cleanObservers /
// releaseObservers). An observer may so leave, even be destroyed, from its
// own onNotify without disturbing the walk in progress. Until the marks are
// applied a destroyed observer is still listed, so notify or clean before
// anything else reaches the list.

#include "core/Object.h"

#include <cstdint>
#include <vector>

namespace korvel {

class Observer;

class Subject : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Subject();
    // Observers learn of the end through event 6 (see releaseObservers).
    ~Subject() override;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    // No duplicate check: an observer added twice is called twice.
    void addObserver(Observer* observer);
    void removeObserver(Observer* observer);
    void cleanObservers();
    void notify(Object* source, int32_t event);
    // Applies the marks, then sends event 6 from this subject to every
    // observer left. The list itself is kept.
    void releaseObservers();

    const std::vector<Observer*>& getObservers() const { return observers; }

private:
    friend class Observer;

    void callObservers(Object* source, int32_t event);
    // An observer destroyed while a walk is under way must not be called
    // later in that walk.
    void observerDestroyed(Observer* observer);
    // An observer that left a subject still lists it; when the subject has
    // gone since, the observer must not reach it any more.
    static bool isLive(const Subject* subject);

    std::vector<Observer*> observers;
    std::vector<Observer*> pendingRemovals;
    std::vector<Observer*> destroyedDuringWalk;
    int walkDepth = 0;
};

}  // namespace korvel
