// Lighting and fog shared by the engine's lit programs. The world sends these
// uniforms to every program: the main light's travel direction, the camera
// position, the Phong coefficients (ambient, diffuse, specular, shininess)
// and a linear fog by eye distance.
uniform vec3 light;
uniform vec3 camera;
uniform vec4 phong;
uniform vec4 fogcolor;
uniform float fogstart;
uniform float fogend;

// Blinn-Phong terms at a surface point: x scales the albedo (ambient and
// diffuse), y the specular tint. gloss scales the shininess. Vertex stages
// may call it too, where lighting per corner is enough.
vec2 korvelLight(vec3 normal, vec3 position, float gloss)
{
    vec3 n = normalize(normal);
    vec3 toLight = normalize(-light);
    vec3 toEye = normalize(camera - position);
    // Faces seen from behind (leaves, both-sided objects) are lit as fronts.
    if (dot(n, toEye) < 0.0) {
        n = -n;
    }
    float diffuse = max(dot(n, toLight), 0.0);
    float highlight = 0.0;
    if (diffuse > 0.0) {
        highlight = pow(max(dot(n, normalize(toLight + toEye)), 0.0), max(phong.w * gloss, 1.0));
    }
    return vec2(phong.x + phong.y * diffuse, phong.z * highlight);
}

// Blinn-Phong lighting of albedo; specular tints the highlight.
vec3 korvelShade(vec3 albedo, vec3 normal, vec3 position, float gloss, vec3 specular)
{
    vec2 terms = korvelLight(normal, position, gloss);
    return albedo * terms.x + specular * terms.y;
}

// 1 before the fog starts, 0 past its end.
float korvelFogFactor(float distance)
{
    return clamp((fogend - distance) / max(fogend - fogstart, 0.0001), 0.0, 1.0);
}

vec4 korvelFog(vec3 color, float alpha, float distance)
{
    return vec4(mix(fogcolor.rgb, color, korvelFogFactor(distance)), alpha);
}
