// The lit vertex stage: world position and normal for the lighting,
// object-space position for the procedural patterns. Stages that hand more
// to their fragments call korvelSolidVertex first.
in vec3 in_Position;
in vec3 in_Normal;
in vec2 in_UV;

uniform mat4 projection;
uniform mat4 modelview;
uniform mat4 refObject;

out vec3 worldPosition;
out vec3 worldNormal;
out vec3 objectPosition;
out vec2 surfaceUV;
out float eyeDistance;

void korvelSolidVertex()
{
    vec4 world = refObject * vec4(in_Position, 1.0);
    vec4 eye = modelview * world;
    worldPosition = world.xyz;
    worldNormal = mat3(refObject) * in_Normal;
    objectPosition = in_Position;
    surfaceUV = in_UV;
    eyeDistance = length(eye.xyz);
    gl_Position = projection * eye;
}
