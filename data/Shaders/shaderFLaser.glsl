#version 330
// Laser bolt: emissive. A white-hot core where the bolt faces the eye, red
// and more transparent at its edges, flickering with its age. It has no
// shading of its own; the main light only adds a faint glint.
uniform vec3 light;
uniform vec3 camera;
uniform vec4 phong;
uniform vec4 fogcolor;
uniform float fogstart;
uniform float fogend;
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
    float core = pow(abs(dot(n, toEye)), 3.0);
    float flicker = 0.85 + 0.15 * sin(time * 40.0 + surfaceUV.y * 30.0);
    vec3 color = mix(vec3(1.0, 0.1, 0.05), vec3(1.0, 0.9, 0.85), core) * (1.5 * flicker);
    float glint = pow(max(dot(reflect(normalize(light), n), toEye), 0.0), max(phong.w, 1.0) * 8.0);
    color += vec3(phong.z * glint);
    // Fog dims a glowing bolt less than it does lit matter.
    float fog = clamp((fogend - eyeDistance) / max(fogend - fogstart, 0.0001), 0.0, 1.0);
    color = mix(fogcolor.rgb, color, max(fog, 0.4));
    fragColor = vec4(color, clamp(0.55 + 0.45 * core, 0.0, 1.0));
}
