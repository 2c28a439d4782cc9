#include "geometry/MaterialBase.h"

namespace korvel {

const char* MaterialBase::className = "MaterialBase";

}  // namespace korvel
