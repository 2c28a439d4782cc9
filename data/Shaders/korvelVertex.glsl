// The vertex stage every program shares: world position and normal for the
// lighting, object-space position for the procedural patterns, eye distance
// for the fog. Stages that move their points (a swaying leaf, a boiling
// fireball) place the moved point; the others place the model's own.
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

void korvelPlaceVertex(vec3 position)
{
    vec4 world = refObject * vec4(position, 1.0);
    vec4 eye = modelview * world;
    worldPosition = world.xyz;
    worldNormal = mat3(refObject) * in_Normal;
    objectPosition = position;
    surfaceUV = in_UV;
    eyeDistance = length(eye.xyz);
    gl_Position = projection * eye;
}

void korvelPlaceVertex()
{
    korvelPlaceVertex(in_Position);
}
