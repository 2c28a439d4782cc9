#include "physics/IncarnationObserver.h"

#include "core/Subject.h"
#include "physics/PhysicalObject.h"
#include "scene/IObject3D.h"

namespace korvel {

const char* IncarnationObserver::className = "IncarnationObserver";

IncarnationObserver::IncarnationObserver(PhysicalObject* owner) : body(owner), watched(nullptr)
{
}

void IncarnationObserver::onNotify(Object* source, int32_t event)
{
    Observer::onNotify(source, event);
    if (event == eventSubjectEnd && watched != nullptr && source == static_cast<Object*>(watched)) {
        watched = nullptr;
        body->incarnationEnded();
    }
}

void IncarnationObserver::watch(IObject3D* object)
{
    if (watched != nullptr) {
        // Applied at once: watching the same object again later must not be
        // undone by a removal still pending.
        watched->removeObserver(this);
        watched->cleanObservers();
        // Forgotten here as when a subject ends, so no stale entry remains.
        Observer::onNotify(watched, eventSubjectEnd);
        watched = nullptr;
    }
    if (object != nullptr) {
        watched = static_cast<Subject*>(object);
        watched->addObserver(this);
    }
}

}  // namespace korvel
