#include "core/ISerializable.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
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
    const auto posA = text.find(lineOf(a->getId(), "Object"));
    ASSERT_NE(posA, std::string::npos);
    EXPECT_LT(posA, text.find(lineOf(c->getId(), "Derived")));
    EXPECT_NE(text.find(lineOf(c->getId(), "Derived")), std::string::npos);
    EXPECT_EQ(text.find("Object ID: " + std::to_string(idB) + " "), std::string::npos);
    EXPECT_EQ(Object().getId(), c->getId() + 1);

    // A copy is a new instance with its own id and entry.
    const Derived copy(static_cast<const Derived&>(*c));
    EXPECT_EQ(copy.getId(), c->getId() + 2);
    EXPECT_EQ(Object::countInstances(), before + 3);
}

TEST(ObjectTest, IdentifyTakesAFreshIdAndReturnsOneMoreLeavingTheRegistryEntry)
{
    // Never deleted: the registry keeps listing it under its old id, which
    // its destructor would not remove.
    auto* o = new Object();
    const int32_t oldId = o->getId();
    const int32_t fresh = Object().getId() + 1;
    EXPECT_EQ(o->identify(), fresh + 1);
    EXPECT_EQ(o->getId(), fresh);
    const std::string text = logOf(Object::dumpInstances);
    EXPECT_NE(text.find(lineOf(oldId, "Object")), std::string::npos);
    EXPECT_EQ(text.find("Object ID: " + std::to_string(fresh) + " "), std::string::npos);
}

TEST(ObjectTest, SerializableBaseWritesItsClassNameAndDumpShowsClass)
{
    ISerializable s;
    std::stringstream text;
    EXPECT_TRUE(s.save(text));
    EXPECT_EQ(text.str(), "ISerializable\n");
    EXPECT_TRUE(s.load(text));
    EXPECT_FALSE(s.isSerializable());
    const std::string dumped = logOf([&s] { s.dump(); });
    EXPECT_EQ(dumped.rfind("Object address: ", 0), 0u);
    EXPECT_NE(dumped.find("\nObject class: ISerializable\n"), std::string::npos);
}

}  // namespace
