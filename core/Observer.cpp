#include "core/Observer.h"

#include "core/Subject.h"

#include <algorithm>
#include <iostream>

namespace korvel {

const char* Observer::className = "Observer";

Observer::~Observer()
{
    for (Subject* subject : subjects) {
        if (Subject::isLive(subject)) {
            subject->removeObserver(this);
            subject->observerDestroyed(this);
        }
    }
    subjects.clear();
}

void Observer::onNotify(Object* source, int32_t event)
{
    if (event == eventAttach) {
        auto* subject = dynamic_cast<Subject*>(source);
        if (subject == nullptr) {
            std::cout << "[Warning] Observer::onNotify: attach event from something that is not a subject, ignored"
                      << std::endl;
            return;
        }
        subjects.push_back(subject);
    } else if (event == eventSubjectEnd) {
        subjects.erase(std::remove(subjects.begin(), subjects.end(), source), subjects.end());
    }
}

void Observer::releaseSubjects()
{
    for (Subject* subject : subjects) {
        if (Subject::isLive(subject)) {
            subject->removeObserver(this);
        }
    }
}

}  // namespace korvel
