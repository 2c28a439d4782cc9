// What the lit vertex stage hands every surface fragment stage, and the
// program's age.
uniform float time;

in vec3 worldPosition;
in vec3 worldNormal;
in vec3 objectPosition;
in vec2 surfaceUV;
in float eyeDistance;

out vec4 fragColor;
