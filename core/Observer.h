#pragma once
// Receives a subject's notifications and remembers the subjects it is
// attached to, so that it can leave them when it goes away.

#include "core/Object.h"

#include <cstdint>
#include <vector>

namespace korvel {

class Subject;

class Observer : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Event codes this layer gives a meaning to; others are free.
    static constexpr int32_t eventAttach = 0;      // source is a subject to remember
    static constexpr int32_t eventSubjectEnd = 6;  // source subject is going away

    Observer() = default;
    // Asks every subject to drop this observer (deferred, see Subject).
    ~Observer() override;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    // Overrides must call this one so that subjects stay tracked.
    virtual void onNotify(Object* source, int32_t event);
    // Asks every subject to drop this observer; the list here is kept.
    void releaseSubjects();

    const std::vector<Subject*>& getSubjects() const { return subjects; }

private:
    friend class Subject;

    std::vector<Subject*> subjects;
};

}  // namespace korvel
