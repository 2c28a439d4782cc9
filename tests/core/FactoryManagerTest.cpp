#include "core/FactoryManager.h"
#include "core/IFactory.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using korvel::FactoryManager;
using korvel::IFactory;

class Widget : public ISerializable {
public:
    static const char* className;
    const char* getInstanceClassName() const override { return className; }
    int size = 1;

    static ISerializable* make() { return new Widget(); }
    static ISerializable* copy(const ISerializable& source)
    {
        auto* widget = new Widget();
        widget->size = static_cast<const Widget&>(source).size;
        return widget;
    }
};
const char* Widget::className = "Widget";

// Counts its own deletions, to see who deletes factories and how often.
class CountedFactory : public IFactory {
public:
    static int deleted;
    CountedFactory(const char* name, CreateFunction create, CopyFunction copy) : IFactory(name, create, copy) {}
    ~CountedFactory() override { ++deleted; }
};
int CountedFactory::deleted = 0;

class FactoryManagerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        FactoryManager::endService();
        CountedFactory::deleted = 0;
    }
    void TearDown() override { FactoryManager::endService(); }
};

TEST_F(FactoryManagerTest, CreatesByNameAndCopiesByInstanceClass)
{
    new IFactory("Widget", &Widget::make, &Widget::copy);
    FactoryManager* manager = FactoryManager::getInstance();
    std::unique_ptr<ISerializable> made(manager->createObject("Widget"));
    ASSERT_NE(made, nullptr);
    EXPECT_STREQ(made->getInstanceClassName(), "Widget");

    Widget source;
    source.size = 42;
    std::unique_ptr<ISerializable> copied(manager->createObject(source));
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(static_cast<Widget&>(*copied).size, 42);
    EXPECT_NE(copied.get(), &source);

    EXPECT_EQ(manager->createObject("Gadget"), nullptr);
    const ISerializable unknown;
    EXPECT_EQ(manager->createObject(unknown), nullptr);
}

TEST_F(FactoryManagerTest, MissingFunctionsGiveNull)
{
    new IFactory("Widget", nullptr, nullptr);
    FactoryManager* manager = FactoryManager::getInstance();
    EXPECT_EQ(manager->createObject("Widget"), nullptr);
    EXPECT_EQ(manager->createObject(Widget()), nullptr);

    CaptureStdout out;
    auto* nameless = new IFactory(nullptr, &Widget::make, nullptr);
    EXPECT_EQ(out.text(), "[Error] IFactory: a factory needs a class name, this one is not registered\n");
    delete nameless;
    out.clear();
    manager->syndicateFactory("Widget", nullptr);
    EXPECT_EQ(out.text(), "[Error] FactoryManager: no factory given for class Widget, nothing registered\n");
}

TEST_F(FactoryManagerTest, ReplacedFactoryIsNoLongerOwnedAndEndServiceStartsAfresh)
{
    auto* first = new CountedFactory("Widget", nullptr, nullptr);
    new CountedFactory("Widget", &Widget::make, nullptr);
    std::unique_ptr<ISerializable> made(FactoryManager::getInstance()->createObject("Widget"));
    EXPECT_NE(made, nullptr);

    // The same factory under a second name must still be deleted once.
    auto* shared = new CountedFactory("Gizmo", &Widget::make, nullptr);
    FactoryManager::getInstance()->syndicateFactory("Gadget", shared);

    FactoryManager::endService();
    EXPECT_EQ(CountedFactory::deleted, 2);
    delete first;  // ours again since it was replaced
    EXPECT_EQ(CountedFactory::deleted, 3);

    FactoryManager* fresh = FactoryManager::getInstance();
    EXPECT_EQ(fresh->createObject("Widget"), nullptr);
    EXPECT_EQ(fresh->createObject("Gadget"), nullptr);
}

TEST_F(FactoryManagerTest, ReleaseFactoriesDeletesAndForgetsThemAndADeletedFactoryUnregisters)
{
    FactoryManager* manager = FactoryManager::getInstance();
    auto* gone = new CountedFactory("Gizmo", &Widget::make, nullptr);
    delete gone;
    EXPECT_EQ(manager->createObject("Gizmo"), nullptr);

    new CountedFactory("Widget", &Widget::make, nullptr);
    manager->releaseFactories();
    EXPECT_EQ(CountedFactory::deleted, 2);
    EXPECT_EQ(manager->createObject("Widget"), nullptr);
    EXPECT_EQ(FactoryManager::getInstance(), manager);
}

}  // namespace
