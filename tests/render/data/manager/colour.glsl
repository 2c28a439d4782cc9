vec3 includedColour(vec2 uv)
{
    return vec3(uv, 0.5);
}
