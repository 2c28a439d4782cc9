#include "geometry/Material.h"

namespace korvel {

const char* Material::className = "Material";

}  // namespace korvel
