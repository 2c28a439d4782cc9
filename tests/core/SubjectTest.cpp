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
using Log = std::vector<std::string>;

// Records every notification into a shared log, then runs an optional action.
class Recorder : public Observer {
public:
    Recorder(std::string name, Log& log) : name(std::move(name)), log(log) {}
    void onNotify(Object* source, int32_t event) override
    {
        Observer::onNotify(source, event);
        log.push_back(name + ":" + std::to_string(event));
        if (action) {
            action();
        }
    }
    std::string name;
    Log& log;
    std::function<void()> action;
};

TEST(SubjectTest, ObserversAreCalledInOrderAndRemovalWaitsForTheNextNotify)
{
    Log log;
    Subject subject;
    Recorder a("a", log);
    Recorder b("b", log);
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.addObserver(&a);
    subject.notify(&subject, 3);
    EXPECT_EQ(log, (Log{"a:3", "b:3", "a:3"}));

    // Removal asked for during a walk: b still hears this one.
    a.action = [&] { subject.removeObserver(&b); };
    log.clear();
    subject.notify(nullptr, 1);
    EXPECT_EQ(log, (Log{"a:1", "b:1", "a:1"}));

    // One removal takes every occurrence, at the next notify.
    a.action = nullptr;
    subject.removeObserver(&a);
    EXPECT_EQ(subject.getObservers().size(), 3u);
    log.clear();
    subject.notify(nullptr, 4);
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(subject.getObservers().empty());
}

TEST(SubjectTest, ObserversDestroyedDuringANotificationAreNeverCalledAgain)
{
    Log log;
    Subject subject;
    auto* victim = new Recorder("victim", log);
    Recorder killer("killer", log);
    killer.action = [&] { delete std::exchange(victim, nullptr); };
    subject.addObserver(victim);
    subject.addObserver(&killer);
    subject.addObserver(victim);  // a second occurrence, after its deletion
    subject.notify(nullptr, 5);
    EXPECT_EQ(log, (Log{"victim:5", "killer:5"}));
    log.clear();
    killer.action = nullptr;
    subject.notify(nullptr, 7);
    EXPECT_EQ(log, (Log{"killer:7"}));
    EXPECT_EQ(subject.getObservers().size(), 1u);
}

TEST(SubjectTest, SubjectEndAttachAndObserverDestruction)
{
    Log log;
    Recorder a("a", log);
    auto* b = new Recorder("b", log);
    Subject kept;
    kept.addObserver(&a);
    kept.addObserver(b);
    {
        Subject leaving;
        leaving.addObserver(&a);
        leaving.addObserver(b);
        b->releaseSubjects();  // deferred, and b's own list is kept
        EXPECT_EQ(b->getSubjects().size(), 2u);
    }
    // b had asked to leave, so only a hears of the end.
    EXPECT_EQ(log, (Log{"a:6"}));
    EXPECT_EQ(a.getSubjects(), (std::vector<Subject*>{&kept}));

    // Destruction marks it on every subject still there; the next notify drops it.
    delete b;
    log.clear();
    a.onNotify(&kept, Observer::eventAttach);
    kept.notify(&kept, 2);
    EXPECT_EQ(log, (Log{"a:0", "a:2"}));
    EXPECT_EQ(kept.getObservers().size(), 1u);
    EXPECT_EQ(a.getSubjects(), (std::vector<Subject*>{&kept, &kept}));

    CaptureStdout out;
    Object notASubject;
    a.onNotify(&notASubject, Observer::eventAttach);
    EXPECT_EQ(a.getSubjects().size(), 2u);
    EXPECT_EQ(out.text(), "[Warning] Observer::onNotify: attach event from something that is not a subject, ignored\n");
}

}  // namespace
