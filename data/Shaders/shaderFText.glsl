#version 330
// Text: glyphs from the font atlas, unlit so that text reads the same under
// any light; fog still applies, and text seen from behind is dimmed. Text
// whose age is still negative is not drawn.
uniform sampler2D textureSampler;
uniform float time;
uniform vec3 camera;
uniform vec4 fogcolor;
uniform float fogstart;
uniform float fogend;

in vec3 worldPosition;
in vec3 worldNormal;
in vec2 surfaceUV;
in float eyeDistance;

out vec4 fragColor;

void main()
{
    if (time < 0.0) {
        discard;
    }
    vec4 glyph = texture(textureSampler, surfaceUV);
    if (glyph.a < 0.02) {
        discard;
    }
    float fog = clamp((fogend - eyeDistance) / max(fogend - fogstart, 0.0001), 0.0, 1.0);
    bool fromBehind = dot(worldNormal, camera - worldPosition) < 0.0;
    vec3 color = mix(fogcolor.rgb, glyph.rgb * (fromBehind ? 0.4 : 1.0), fog);
    fragColor = vec4(color, glyph.a);
}
