// Value noise for the procedural materials; no texture needed.
float korvelHash(vec3 p)
{
    p = fract(p * 0.3183099 + vec3(0.1, 0.2, 0.3));
    p *= 17.0;
    return fract(p.x * p.y * p.z * (p.x + p.y + p.z));
}

float korvelNoise(vec3 p)
{
    vec3 i = floor(p);
    vec3 f = fract(p);
    f = f * f * (3.0 - 2.0 * f);
    return mix(mix(mix(korvelHash(i + vec3(0, 0, 0)), korvelHash(i + vec3(1, 0, 0)), f.x),
                   mix(korvelHash(i + vec3(0, 1, 0)), korvelHash(i + vec3(1, 1, 0)), f.x), f.y),
               mix(mix(korvelHash(i + vec3(0, 0, 1)), korvelHash(i + vec3(1, 0, 1)), f.x),
                   mix(korvelHash(i + vec3(0, 1, 1)), korvelHash(i + vec3(1, 1, 1)), f.x), f.y),
               f.z);
}
