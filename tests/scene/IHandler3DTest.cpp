// Detail handlers: the range of their slots, the representative that
// follows the handler, and the single delete of an object standing for
// several levels.

#include "scene/IHandler3D.h"

#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

namespace {

using korvel::IHandler3D;
using korvel::IObject3D;

// Counts its deletions, so a second delete of the same object (which the
// sanitizer build also catches) shows as a count.
class Counted : public IObject3D {
public:
    explicit Counted(int& deletions) : counter(deletions) {}
    ~Counted() override { ++counter; }

private:
    int& counter;
};

TEST(IHandler3DTest, SlotsOutsideTheRangeAreRefusedAndReadersFindNothingThere)
{
    IHandler3D handler;
    IObject3D object;
    handler.setOwnsRepresentatives(false);
    CaptureStdout out;
    handler.setRepresentative(4, &object);
    handler.setRepresentative(-1, &object);
    EXPECT_EQ(out.text(), "[ERROR] representative lod of IHandler3D over range\n"
                          "[ERROR] representative lod of IHandler3D under range\n");
    for (short lod = -1; lod <= 4; ++lod) {
        EXPECT_EQ(handler.getRepresentative(lod), nullptr) << lod;
    }
    handler.setRepresentative(3, &object);
    handler.setLOD(3);
    EXPECT_EQ(handler.getCurrent(), &object);
    handler.setLOD(9);  // no check: nothing to show there
    EXPECT_EQ(handler.getLOD(), 9);
    EXPECT_EQ(handler.getCurrent(), nullptr);
    handler.draw();
}

TEST(IHandler3DTest, TheShownRepresentativeFollowsTheHandlerAndEachObjectIsDeletedOnce)
{
    int deletions = 0;
    auto* far = new Counted(deletions);
    {
        IHandler3D handler;
        auto* near = new Counted(deletions);
        for (short lod = 0; lod < 4; ++lod) {
            handler.setRepresentative(lod, near);  // one object in every slot
        }
        handler.setRepresentative(1, far);
        handler.setLOD(0);
        handler.getMatrixObjectChange()->setPosition(1.0f, 2.0f, 3.0f);
        handler.changeMatrixObject();
        EXPECT_FLOAT_EQ(near->getMatrixObject()->m[13], 2.0f);
        EXPECT_FLOAT_EQ(far->getMatrixObject()->m[13], 0.0f);
        EXPECT_NE(near->getMatrixObject(), handler.getMatrixObject());  // a copy

        // Switching takes the handler's place along.
        handler.setLOD(1);
        EXPECT_EQ(handler.getCurrent(), far);
        EXPECT_FLOAT_EQ(far->getMatrixObject()->m[12], 1.0f);

        handler.removeRepresentative(far);
        EXPECT_EQ(handler.getCurrent(), nullptr);
        handler.setRepresentative(2, new Counted(deletions));
    }
    EXPECT_EQ(deletions, 2);
    delete far;
}

}  // namespace
