#include "core/Observer.h"
#include "core/Subject.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using korvel::Observer;
using korvel::Subject;

// Records every notification into a shared log, then runs an optional action.
class Recorder : public Observer {
public:
    Recorder(std::string name, std::vector<std::string>& log) : name(std::move(name)), log(log) {}
    void onNotify(Object* source, int32_t event) override
    {
        Observer::onNotify(source, event);
        log.push_back(name + ":" + std::to_string(event));
        if (action) {
            action(event);
        }
        if (toDelete != nullptr) {
            delete std::exchange(toDelete, nullptr);
        }
        if (deleteSelf) {
            delete this;
        }
    }
    std::string name;
    std::vector<std::string>& log;
    std::function<void(int32_t)> action;
    Recorder* toDelete = nullptr;
    bool deleteSelf = false;
};

using Log = std::vector<std::string>;

TEST(SubjectTest, ObserversAreCalledInOrderOncePerOccurrence)
{
    Log log;
    Subject subject;
    Recorder a("a", log);
    Recorder b("b", log);
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.addObserver(&a);
    EXPECT_EQ(a.getSubjects().size(), 2u);
    subject.notify(&subject, 3);
    EXPECT_EQ(log, (Log{"a:3", "b:3", "a:3"}));

    // One removal takes every occurrence, and not before the next notify.
    log.clear();
    subject.removeObserver(&a);
    EXPECT_EQ(subject.getObservers().size(), 3u);
    subject.notify(&subject, 4);
    EXPECT_EQ(log, (Log{"b:4"}));
    EXPECT_EQ(subject.getObservers().size(), 1u);
    subject.removeObserver(&b);
    subject.cleanObservers();
    EXPECT_TRUE(subject.getObservers().empty());
}

TEST(SubjectTest, RemovalDuringANotificationWaitsForTheNextOne)
{
    Log log;
    Subject subject;
    Recorder a("a", log);
    Recorder b("b", log);
    a.action = [&](int32_t) { subject.removeObserver(&b); };
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.notify(nullptr, 1);
    EXPECT_EQ(log, (Log{"a:1", "b:1"}));
    log.clear();
    a.action = nullptr;
    subject.notify(nullptr, 2);
    EXPECT_EQ(log, (Log{"a:2"}));
}

TEST(SubjectTest, ObserversDestroyedDuringANotificationAreNeverCalledAgain)
{
    Log log;
    Subject subject;
    auto* self = new Recorder("self", log);
    auto* victim = new Recorder("victim", log);
    Recorder killer("killer", log);
    self->deleteSelf = true;
    killer.toDelete = victim;
    subject.addObserver(self);
    subject.addObserver(&killer);
    subject.addObserver(victim);
    subject.addObserver(self);  // a second occurrence of the already deleted one
    subject.notify(nullptr, 5);
    EXPECT_EQ(log, (Log{"self:5", "killer:5"}));
    log.clear();
    subject.notify(nullptr, 6 + 1);
    EXPECT_EQ(log, (Log{"killer:7"}));
    EXPECT_EQ(subject.getObservers().size(), 1u);
}

TEST(SubjectTest, ADestroyedSubjectSaysSoAndIsForgotten)
{
    Log log;
    Recorder a("a", log);
    Recorder b("b", log);
    Subject kept;
    kept.addObserver(&a);
    {
        Subject leaving;
        leaving.addObserver(&a);
        leaving.addObserver(&b);
        leaving.removeObserver(&b);
        EXPECT_EQ(a.getSubjects().size(), 2u);
    }
    // b had asked to leave, so only a hears of the end.
    EXPECT_EQ(log, (Log{"a:6"}));
    ASSERT_EQ(a.getSubjects().size(), 1u);
    EXPECT_EQ(a.getSubjects()[0], &kept);
    // b's own list is not cleaned by a removal: it still names the gone
    // subject, which its destruction at the end of this test must not reach.
    EXPECT_EQ(b.getSubjects().size(), 1u);

    // releaseObservers keeps the list: the observers are still notified.
    log.clear();
    kept.releaseObservers();
    EXPECT_EQ(log, (Log{"a:6"}));
    EXPECT_TRUE(a.getSubjects().empty());
    log.clear();
    kept.notify(&kept, 2);
    EXPECT_EQ(log, (Log{"a:2"}));
}

TEST(SubjectTest, ObserverSideAttachReleaseAndDestruction)
{
    Log log;
    Subject first;
    Subject second;
    auto* observer = new Recorder("o", log);
    observer->onNotify(&first, Observer::eventAttach);
    EXPECT_EQ(observer->getSubjects().size(), 1u);
    first.addObserver(observer);
    second.addObserver(observer);
    EXPECT_EQ(observer->getSubjects().size(), 3u);

    CaptureStdout out;
    Object notASubject;
    observer->onNotify(&notASubject, Observer::eventAttach);
    EXPECT_EQ(observer->getSubjects().size(), 3u);
    EXPECT_EQ(out.text(), "[Warning] Observer::onNotify: attach event from something that is not a subject, ignored\n");

    observer->releaseSubjects();
    EXPECT_EQ(observer->getSubjects().size(), 3u);
    second.cleanObservers();
    EXPECT_TRUE(second.getObservers().empty());

    // Destruction marks it on every subject; the next notify drops it.
    delete observer;
    EXPECT_EQ(first.getObservers().size(), 1u);
    log.clear();
    first.notify(&first, 1);
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(first.getObservers().empty());
}

}  // namespace
