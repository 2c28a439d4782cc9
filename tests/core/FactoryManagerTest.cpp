#include "core/FactoryManager.h"
#include "core/IFactory.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using korvel::FactoryManager;
using korvel::IFactory;

struct Widget : ISerializable {
    const char* getInstanceClassName() const override { return "Widget"; }
    int size = 1;
    static ISerializable* make() { return new Widget(); }
    static ISerializable* copy(const ISerializable& source) { return new Widget(static_cast<const Widget&>(source)); }
};

// Counts its own deletions, to see who deletes factories and how often.
class CountedFactory : public IFactory {
public:
    static int deleted;
    CountedFactory(const char* name, CreateFunction create) : IFactory(name, create, nullptr) {}
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
    FactoryManager& manager() { return *FactoryManager::getInstance(); }
};

TEST_F(FactoryManagerTest, CreatesByNameAndCopiesByInstanceClassOrGivesNull)
{
    new IFactory("Widget", &Widget::make, &Widget::copy);
    new IFactory("Empty", nullptr, nullptr);
    std::unique_ptr<ISerializable> made(manager().createObject("Widget"));
    ASSERT_NE(made, nullptr);
    EXPECT_STREQ(made->getInstanceClassName(), "Widget");
    Widget source;
    source.size = 42;
    std::unique_ptr<ISerializable> copied(manager().createObject(source));
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(static_cast<Widget&>(*copied).size, 42);

    EXPECT_EQ(manager().createObject("Gadget"), nullptr);
    EXPECT_EQ(manager().createObject("Empty"), nullptr);
    EXPECT_EQ(manager().createObject(ISerializable()), nullptr);

    CaptureStdout out;
    delete new IFactory(nullptr, &Widget::make, nullptr);
    manager().syndicateFactory("Widget", nullptr);
    EXPECT_EQ(out.text(), "[Error] IFactory: a factory needs a class name, this one is not registered\n"
                          "[Error] FactoryManager: no factory given for class Widget, nothing registered\n");
    EXPECT_NE(std::unique_ptr<ISerializable>(manager().createObject("Widget")), nullptr);
}

TEST_F(FactoryManagerTest, OwnershipOfReplacedSharedAndDeletedFactories)
{
    auto* first = new CountedFactory("Widget", nullptr);
    new CountedFactory("Widget", &Widget::make);
    EXPECT_NE(std::unique_ptr<ISerializable>(manager().createObject("Widget")), nullptr);
    // The same factory under a second name must still be deleted once.
    manager().syndicateFactory("Gadget", new CountedFactory("Gizmo", &Widget::make));
    FactoryManager::endService();
    EXPECT_EQ(CountedFactory::deleted, 2);
    delete first;  // ours again since it was replaced
    EXPECT_EQ(CountedFactory::deleted, 3);
    EXPECT_EQ(manager().createObject("Widget"), nullptr);
    EXPECT_EQ(manager().createObject("Gadget"), nullptr);

    // A deleted factory unregisters itself; releaseFactories keeps the manager.
    delete new CountedFactory("Gizmo", &Widget::make);
    EXPECT_EQ(manager().createObject("Gizmo"), nullptr);
    new CountedFactory("Widget", &Widget::make);
    FactoryManager* before = &manager();
    before->releaseFactories();
    EXPECT_EQ(CountedFactory::deleted, 5);
    EXPECT_EQ(manager().createObject("Widget"), nullptr);
    EXPECT_EQ(&manager(), before);
}

}  // namespace
