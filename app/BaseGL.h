#pragma once
// Swap interval of the window's context. GLX hands out a stub for any name,
// so looking the extension up proves nothing: init instead answers whether a
// GL context is current, which is what makes setVSync safe to call.

#include "core/Object.h"

class BaseGL : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // True when a GL context is current on this thread.
    static bool init();
    // 1 (wait for the vertical retrace) or 0; ignored until init succeeded.
    static void setVSync(bool enabled);

private:
    static bool ready;
};
