// The scene object base: matrix ownership, limits that follow the matrix,
// the boundary line test, serialisation and the observer that makes an
// object follow a moving subject.

#include "scene/IObject3D.h"
#include "scene/Observer3D.h"
#include "SceneTesting.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using korvel::IObject3D;

TEST(IObject3DTest, OwnedMatricesAreFreedLinkedOnesFollowedAndKept)
{
    Matrix4D body = moved(1.0f, 2.0f, 3.0f);  // on the stack: freeing it would be caught
    {
        IObject3D object;
        EXPECT_TRUE(object.isMatrixObjectOwned() && object.isMatrixObjectChanged());
        expectVector(object.getWorldMax(), 1, 1, 1, 1);

        // The owned identity goes (the leak checker sees it otherwise).
        object.unchangeMatrixObject();
        ASSERT_TRUE(object.setMatriceObjectLinked(&body));
        EXPECT_FALSE(object.isMatrixObjectOwned());
        EXPECT_TRUE(object.isMatrixObjectChanged());
        expectVector(object.getWorldMin(), 1, 2, 3, 1);
        expectVector(object.getWorldMax(), 2, 3, 4, 1);

        // A copy owns a copy, even of a linked matrix.
        IObject3D copy(object);
        EXPECT_TRUE(copy.isMatrixObjectOwned());
        EXPECT_NE(copy.getMatrixObject(), &body);

        // Handing back the owned matrix already held keeps it alive.
        auto* own = new Matrix4D(moved(0.0f, 5.0f, 0.0f));
        ASSERT_TRUE(object.setMatriceObjectOwned(own));
        ASSERT_TRUE(object.setMatriceObjectOwned(own));
        expectVector(object.getWorldMin(), 0, 5, 0, 1);

        CaptureStdout out;
        EXPECT_FALSE(object.setMatriceObjectLinked(nullptr));
        EXPECT_EQ(object.getMatrixObject(), own);
        EXPECT_EQ(out.text(), "[Error] setMatriceObjectLinked in IObject3D given no matrix, the current one is kept\n");

        ASSERT_TRUE(object.setMatriceObjectLinked(&body));
        object.releaseMatrixObject();
        EXPECT_EQ(object.getMatrixObject(), nullptr);
    }
    expectVector(body.getPosition(), 1, 2, 3, 1);
}

TEST(IObject3DTest, LineTestFollowsTheMatrixAndTheLimits)
{
    IObject3D probe;  // the default box spans (0, 0, 0) to (1, 1, 1)
    const Vector4D alongZ(0.0f, 0.0f, 1.0f, 0.0f);
    const Vector4D throughBox(0.5f, 0.5f, -5.0f, 1.0f);
    const Vector4D throughMoved(10.5f, 0.5f, -5.0f, 1.0f);

    EXPECT_TRUE(probe.isIntersectingBoundariesLine(throughBox, alongZ));
    EXPECT_FALSE(probe.isMatrixObjectChanged());
    EXPECT_FALSE(probe.isIntersectingBoundariesLine(throughMoved, alongZ));
    // Lines square to the diagonal, just inside and just outside a corner:
    // the quick refusal of far lines does not refuse the first.
    const Vector4D acrossDiagonal(1.0f, -1.0f, 0.0f, 0.0f);
    EXPECT_TRUE(probe.isIntersectingBoundariesLine(Vector4D(0.999f, 0.999f, 0.999f, 1.0f), acrossDiagonal));
    EXPECT_FALSE(probe.isIntersectingBoundariesLine(Vector4D(1.001f, 1.001f, 1.001f, 1.0f), acrossDiagonal));

    probe.getMatrixObjectChange()->setPosition(10.0f, 0.0f, 0.0f);
    probe.changeMatrixObject();
    EXPECT_TRUE(probe.isIntersectingBoundariesLine(throughMoved, alongZ));
    EXPECT_FALSE(probe.isIntersectingBoundariesLine(throughBox, alongZ));

    // New geometry in the same place: the box follows the new limits.
    probe.setLocalLimits(Vector4D(-10.0f, 0.0f, 0.0f, 1.0f), Vector4D(-9.0f, 1.0f, 1.0f, 1.0f));
    EXPECT_TRUE(probe.isIntersectingBoundariesLine(throughBox, alongZ));
    EXPECT_FALSE(probe.isIntersectingBoundariesLine(throughMoved, alongZ));
}

TEST(IObject3DTest, ElementKindSurvivesASaveAndBadKindsAreRefused)
{
    IObject3D saved;
    saved.setElementKind(3);
    std::stringstream text;
    ASSERT_TRUE(saved.save(text));
    EXPECT_EQ(text.str(), "IObject3D\n3\n");

    IObject3D loaded;
    ASSERT_TRUE(loaded.load(text));
    EXPECT_EQ(loaded.getElementKind(), 3u);

    for (const char* bad : {"IObject3D\nblended\n", "-1\n", "4294967296\n", ""}) {
        std::istringstream in(bad);
        CaptureStdout out;
        EXPECT_FALSE(loaded.load(in)) << bad;
        EXPECT_EQ(out.text(), "[Error] element kind ill-formed in IObject3D load\n") << bad;
        EXPECT_EQ(loaded.getElementKind(), 3u);
    }
}

TEST(IObject3DTest, ObserverIsMadeOnceAndFollowsPlacementEvents)
{
    korvel::Subject body;
    Matrix4D place = Matrix4D::getI4();
    {
        IObject3D object;
        ASSERT_TRUE(object.setMatriceObjectLinked(&place));
        korvel::Observer3D* observer = object.getObserver();
        ASSERT_NE(observer, nullptr);
        EXPECT_EQ(object.getObserver(), observer);
        body.addObserver(observer);

        for (int event : {3, 2, 4}) {
            place.setPosition(0.0f, static_cast<float>(event), 0.0f);
            object.unchangeMatrixObject();
            body.notify(&body, event);
            const bool placement = event != 3;
            EXPECT_EQ(object.isMatrixObjectChanged(), placement) << event;
            expectVector(object.getWorldMin(), 0, placement ? static_cast<float>(event) : 0.0f, 0, 1);
        }
    }
    // The object took its observer along: notifying again reaches nobody.
    body.notify(&body, 2);
    EXPECT_TRUE(body.getObservers().empty());
}

}  // namespace
