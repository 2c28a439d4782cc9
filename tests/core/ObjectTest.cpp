#include "core/ISerializable.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace {

class Derived : public Object {
public:
    static const char* className;
    const char* getInstanceClassName() const override { return className; }
};
const char* Derived::className = "Derived";

// Forgets to override getInstanceClassName, so it is listed as its base.
class Forgetful : public Derived {};

class Renamable : public Object {
public:
    void restoreId(int32_t value) { id = value; }
};

std::string logOf(const std::function<void()>& action)
{
    CaptureStdout out;
    action();
    return out.text();
}

std::string lineOf(int32_t id, const char* name)
{
    return "Object ID: " + std::to_string(id) + " / instance of class: " + name + "\n";
}

TEST(ObjectTest, RegistryListsLiveInstancesInCreationOrderAndNeverReusesIds)
{
    const std::size_t before = Object::countInstances();
    auto a = std::make_unique<Object>();
    auto b = std::make_unique<Derived>();
    auto c = std::make_unique<Forgetful>();
    const int32_t idB = b->getId();
    EXPECT_EQ(idB, a->getId() + 1);
    b.reset();
    EXPECT_EQ(logOf(Object::dumpSizeInstances), "Count of initialized Objects: " + std::to_string(before + 2) + "\n");
    const std::string text = logOf(Object::dumpInstances);
    const auto posC = text.find(lineOf(c->getId(), "Derived"));
    ASSERT_NE(posC, std::string::npos);
    EXPECT_LT(text.find(lineOf(a->getId(), "Object")), posC);
    EXPECT_EQ(text.find("Object ID: " + std::to_string(idB) + " "), std::string::npos);
    EXPECT_EQ(Object().getId(), c->getId() + 1);

    // A copy is a new instance with its own id and entry.
    const Derived copy(static_cast<const Derived&>(*c));
    EXPECT_EQ(copy.getId(), c->getId() + 2);
    EXPECT_EQ(Object::countInstances(), before + 3);
}

TEST(ObjectTest, IdentifyTakesAFreshIdAndReturnsOneMoreLeavingTheRegistryEntry)
{
    Renamable o;  // listed as Object, like Forgetful
    const int32_t oldId = o.getId();
    const int32_t fresh = Object().getId() + 1;
    EXPECT_EQ(o.identify(), fresh + 1);
    EXPECT_EQ(o.getId(), fresh);
    const std::string text = logOf(Object::dumpInstances);
    EXPECT_NE(text.find(lineOf(oldId, "Object")), std::string::npos);
    EXPECT_EQ(text.find("Object ID: " + std::to_string(fresh) + " "), std::string::npos);
    // Back under the id it is registered with, so that its destructor leaves
    // no stale entry behind.
    o.restoreId(oldId);
}

}  // namespace
