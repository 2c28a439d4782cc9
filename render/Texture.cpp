#include "render/Texture.h"

namespace korvel {

const char* Texture::className = "Texture";

}  // namespace korvel
