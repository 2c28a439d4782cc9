#pragma once
// Registers a factory for every concrete scene kind with the factory
// manager, so that an object saved under its class name can be created and
// loaded again, and copied without knowing its type (a joint copies its
// component so). A kind already registered keeps its factory: calling this
// again, after FactoryManager::endService too, is harmless.

namespace korvel {

void registerSceneFactories();

// Objects that hold objects (compounds, joints, handlers) load them in turn;
// a saved file nesting them deeper than this is refused rather than read by
// ever deeper recursion.
constexpr int maxLoadNesting = 64;

// Counts one level of nesting for the object being loaded: false, with a
// message, when the file nests too deep (nothing is counted then).
// Every true is matched by leaveNestedLoad.
bool enterNestedLoad(const char* kind);
void leaveNestedLoad();

}  // namespace korvel
