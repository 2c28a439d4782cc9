#pragma once
// Registers a factory for every concrete scene kind with the factory
// manager, so that an object saved under its class name can be created and
// loaded again, and copied without knowing its type (a joint copies its
// component so). A kind already registered keeps its factory: calling this
// again, after FactoryManager::endService too, is harmless.

namespace korvel {

void registerSceneFactories();

}  // namespace korvel
