#pragma once
// The game. Its world population and rules arrive as the initWorld and
// updateWorld hooks; until then it runs the engine frame as it stands.

#include "app/Application3D.h"

namespace korvel {

class ApplicationQuorbane : public Application3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    ApplicationQuorbane() = default;
    ~ApplicationQuorbane() override = default;

    const char* getInstanceClassName() const override { return className; }

    bool initWorld() override;
    using Application3D::updateWorld;
    bool updateWorld(float elapsed) override;
};

}  // namespace korvel
