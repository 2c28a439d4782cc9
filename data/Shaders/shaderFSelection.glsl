#version 330
// Selection marker: a translucent cyan shell with bright edges where it is
// seen edge-on and bands that scroll with its age, so it reads as a marker
// over whatever lies behind it.
#include "korvelLighting.glsl"

uniform float time;

in vec3 worldPosition;
in vec3 worldNormal;
in vec2 surfaceUV;
in float eyeDistance;

out vec4 fragColor;

void main()
{
    vec3 n = normalize(worldNormal);
    vec3 toEye = normalize(camera - worldPosition);
    float rim = pow(1.0 - abs(dot(n, toEye)), 2.0);
    float bands = 0.5 + 0.5 * sin((surfaceUV.y * 10.0 - time * 2.0) * 6.2831853);
    vec3 base = korvelShade(vec3(0.2, 0.8, 1.0), n, worldPosition, 8.0, vec3(1.0));
    vec3 color = base + vec3(0.3, 0.9, 1.0) * rim;
    float alpha = clamp(0.2 + 0.25 * bands + 0.5 * rim, 0.0, 0.85);
    fragColor = korvelFog(color, alpha, eyeDistance);
}
