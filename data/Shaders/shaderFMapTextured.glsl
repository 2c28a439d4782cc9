#version 330
// Textured materials of the model files: the diffuse map, lit and fogged,
// keeping the map's alpha. An object whose age is still negative (not yet
// born) is not drawn.
#include "korvelLighting.glsl"

uniform sampler2D textureSampler;
#include "korvelSurface.glsl"

void main()
{
    if (time < 0.0) {
        discard;
    }
    vec4 texel = texture(textureSampler, surfaceUV);
    vec3 color = korvelShade(texel.rgb, worldNormal, worldPosition, 4.0, vec3(0.3));
    fragColor = korvelFog(color, texel.a, eyeDistance);
}
