this is not GLSL
