#include <algorithm>

#include "desktop/GlShaders.h"

namespace {

constexpr const char* VERSION = "#version 330 core\n";

// Pixels of a clip-space position and back. Positions on the screen are rounded to 1/256 of a pixel, halves up.
constexpr const char* SCREEN = R"(
uniform vec4 viewport;
vec2 ToPixels(vec4 p) {
    vec2 pixels = viewport.xy + (p.xy / p.w * 0.5 + 0.5) * viewport.zw;
    return floor(pixels * 256.0 + 0.5) / 256.0;
}
vec2 ToClip(vec2 pixels, float w) {
    return ((pixels - viewport.xy) / viewport.zw * 2.0 - 1.0) * w;
}
)";

std::string Number(uint32_t value) { return std::to_string(value); }

uint32_t SetsNeeded(const GlShaderKey& key) {
    uint32_t sets = 0;
    for (uint32_t i = 0; i < key.stage_count; ++i)
        if (key.stages[i].textured)
            sets = std::max<uint32_t>(sets, key.stages[i].coordinates + 1u);
    return sets;
}

// Declares what goes from one stage of the program to the next; brackets: of an array of corners.
std::string Varyings(const GlShaderKey& key, const char* direction, const char* prefix, const char* brackets = "") {
    const auto declare = [&](const std::string& type, const std::string& name) {
        return std::string(direction) + " " + type + " " + prefix + name + brackets + ";\n";
    };
    std::string text = (key.flat ? "flat " : "") + declare("vec4", "color");
    for (uint32_t i = 0; i < SetsNeeded(key); ++i)
        text += declare("vec2", "uv" + Number(i));
    return text;
}

const char* PixelPrefix(const GlShaderKey& key) { return key.shape == GlShape::Lines ? "end_" : "corner_"; }

std::string Argument(uint32_t arg) {
    const uint32_t source = arg & ARG_SELECT;
    std::string text = source == ARG_TEXTURE   ? "texel"
                       : source == ARG_CURRENT ? "current"
                       : source == ARG_TFACTOR ? "factor"
                                               : "diffuse";
    if ((arg & ARG_ALPHAREPLICATE) != 0)
        text += ".aaaa";
    return (arg & ARG_COMPLEMENT) != 0 ? "(255.0 - " + text + ")" : text;
}

std::string Operation(uint32_t op, const uint8_t (&args)[2]) {
    const std::string a = Argument(args[0]), b = Argument(args[1]);
    switch (op) {
    case OP_SELECTARG2:
        return b;
    case OP_MODULATE:
        return "Times(" + a + ", " + b + ")";
    case OP_MODULATE2X:
        return "min(2.0 * Times(" + a + ", " + b + "), 255.0)";
    case OP_MODULATE4X:
        return "min(4.0 * Times(" + a + ", " + b + "), 255.0)";
    case OP_ADD:
        return "min(" + a + " + " + b + ", 255.0)";
    default:
        return a;
    }
}

std::string StageText(const GlStage& stage, const std::string& index) {
    std::string text = "    texel = ";
    text += stage.textured ? "ToBytes(texture(texture" + index + ", UV" + Number(stage.coordinates) + "))"
                           : std::string("vec4(255.0)");
    text += ";\n    current = vec4((" + Operation(stage.color_op, stage.color_arg) + ").rgb, ";
    text += stage.alpha_op == OP_DISABLE ? "current" : "(" + Operation(stage.alpha_op, stage.alpha_arg) + ")";
    return text + ".a);\n";
}

std::string AlphaTest(uint32_t func) {
    constexpr const char* PASSES[] = {nullptr, "false", "<", "==", "<=", ">", "!=", ">="};
    if (func == CMP_OFF || func >= std::size(PASSES))
        return "";
    const std::string passes =
        func == CMP_NEVER ? PASSES[func] : std::string("current.a ") + PASSES[func] + " alpha_ref";
    return "    if (!(" + passes + "))\n        discard;\n";
}

} // namespace

std::string GlVertexText(const GlShaderKey& key) {
    std::string text = std::string(VERSION) + SCREEN;
    text += "layout(location = " + Number(GL_AT_POSITION) + ") in vec4 position;\n";
    if (key.colored)
        text += "layout(location = " + Number(GL_AT_COLOR) + ") in vec4 color;\n";
    const uint32_t sets = SetsNeeded(key), given = std::min<uint32_t>(sets, key.given_sets);
    for (uint32_t i = 0; i < given; ++i)
        text += "layout(location = " + Number(GL_AT_UV + i) + ") in vec2 uv" + Number(i) + ";\n";
    text += "uniform mat4 to_clip, world;\nuniform vec4 planes[" + Number(CLIP_PLANES) + "];\n";
    text += "invariant gl_Position;\n" + Varyings(key, "out", "corner_") + "void main() {\n";
    if (key.transformed)
        text += "    float w = position.w > 0.0 ? 1.0 / position.w : 1.0;\n"
                "    gl_Position = vec4(ToClip(position.xy, w), (2.0 * position.z - 1.0) * w, w);\n";
    else
        text += "    vec4 p = to_clip * vec4(position.xyz, 1.0);\n"
                "    gl_Position = vec4(p.x, -p.y, 2.0 * p.z - p.w, p.w);\n";
    if (key.planes) {
        text += "    vec4 in_world = world * vec4(position.xyz, 1.0);\n";
        for (uint32_t i = 0; i < CLIP_PLANES; ++i)
            text += "    gl_ClipDistance[" + Number(i) + "] = dot(planes[" + Number(i) + "].xyz, in_world.xyz) + " +
                    "planes[" + Number(i) + "].w;\n";
    }
    if (key.shape == GlShape::Points) // the pixel that it lies in
        text += "    if (gl_Position.w > 0.0)\n"
                "        gl_Position.xy = ToClip(floor(ToPixels(gl_Position)) + 0.5, gl_Position.w);\n";
    text += key.colored ? "    corner_color = color;\n" : "    corner_color = vec4(1.0);\n";
    for (uint32_t i = 0; i < sets; ++i)
        text += "    corner_uv" + Number(i) + " = " + (i < given ? "uv" + Number(i) : "vec2(0.0)") + ";\n";
    return text + "}\n";
}

// A line becomes the parallelogram that covers as many pixels as it is wide of each column or row of its longer
// direction, and reaches as far over its ends. A pixel centre on an upper or left edge is inside, so that what a line
// takes from the other side is moved by the least step.
std::string GlLineText(const GlShaderKey& key) {
    const uint32_t sets = SetsNeeded(key), planes = key.planes ? CLIP_PLANES : 0;
    std::string text = std::string(VERSION) + SCREEN;
    text += "layout(lines) in;\nlayout(triangle_strip, max_vertices = 4) out;\n";
    text += "const float BELOW = " + Number((key.line_width - 1u) / 2) + ".0, ABOVE = " + Number(key.line_width / 2u) +
            ".0; // pixels beside the first\n";
    text += Varyings(key, "in", "corner_", "[]") + Varyings(key, "out", "end_");
    text += R"(
void Emit(vec4 p, vec2 pixels, float t) {
    gl_Position = vec4(ToClip(pixels, p.w), p.zw);
    end_color = mix(corner_color[0], corner_color[1], t);
)";
    for (uint32_t i = 0; i < sets; ++i) {
        const std::string set = Number(i);
        text += "    end_uv" + set + " = mix(corner_uv" + set + "[0], corner_uv" + set + "[1], t);\n";
    }
    for (uint32_t i = 0; i < planes; ++i) {
        const std::string place = ".gl_ClipDistance[" + Number(i) + "]";
        text += "    gl_ClipDistance[" + Number(i) + "] = mix(gl_in[0]" + place + ", gl_in[1]" + place + ", t);\n";
    }
    return text + R"(    EmitVertex();
}
void Cut(vec2 inside, inout float t0, inout float t1) { // inside: of the ends, not negative
    if (inside.x < 0.0 && inside.y < 0.0)
        t1 = -1.0;
    else if (inside.x < 0.0)
        t0 = max(t0, inside.x / (inside.x - inside.y));
    else if (inside.y < 0.0)
        t1 = min(t1, inside.x / (inside.x - inside.y));
}
void main() {
    const float SMALLEST_W = 1e-6, STEP = 1.0 / 256.0;
    vec4 a = gl_in[0].gl_Position, b = gl_in[1].gl_Position;
    float t0 = 0.0, t1 = 1.0;
    Cut(vec2(a.w, b.w) - SMALLEST_W, t0, t1);
    Cut(vec2(a.w + a.z, b.w + b.z), t0, t1);
    if (t0 > t1)
        return;
    vec4 first = t0 > 0.0 ? mix(a, b, t0) : a, last = t1 < 1.0 ? mix(a, b, t1) : b;
    vec2 from = ToPixels(first), to = ToPixels(last), growth = to - from;
    bool across = abs(growth.x) >= abs(growth.y);
    float along = across ? growth.x : growth.y;
    if (along == 0.0)
        return;
    vec2 one = growth / abs(along);
    from -= one * (along < 0.0 ? ABOVE : BELOW);
    to += one * (along < 0.0 ? BELOW : ABOVE);
    float start = along < 0.0 ? STEP : 0.0; // the first point belongs to the line, the last does not
    float near = STEP - 0.5 - BELOW, far = STEP + 0.5 + ABOVE;
    vec2 upper = across ? vec2(start, near) : vec2(near, start);
    vec2 lower = across ? vec2(start, far) : vec2(far, start);
    Emit(first, from + upper, t0);
    Emit(first, from + lower, t0);
    Emit(last, to + upper, t1);
    Emit(last, to + lower, t1);
    EndPrimitive();
}
)";
}

// Colours are whole numbers 0 to 255 from the corners on; each operation rounds to the nearest.
std::string GlPixelText(const GlShaderKey& key) {
    std::string text = std::string(VERSION) + Varyings(key, "in", PixelPrefix(key));
    for (uint32_t i = 0; i < SetsNeeded(key); ++i)
        text += "#define UV" + Number(i) + " " + PixelPrefix(key) + "uv" + Number(i) + "\n";
    for (uint32_t i = 0; i < key.stage_count; ++i)
        if (key.stages[i].textured)
            text += "uniform sampler2D texture" + Number(i) + ";\n";
    text += R"(
uniform vec4 factor;
uniform float alpha_ref;
out vec4 pixel;
vec4 ToBytes(vec4 color) { return floor(clamp(color, 0.0, 1.0) * 255.0 + 0.5); }
vec4 Times(vec4 a, vec4 b) { return floor((a * b + 127.5) / 255.0); }
void main() {
    vec4 texel;
)";
    text += std::string("    vec4 diffuse = ToBytes(") + PixelPrefix(key) + "color), current = diffuse;\n";
    for (uint32_t i = 0; i < key.stage_count; ++i)
        text += StageText(key.stages[i], Number(i));
    return text + AlphaTest(key.alpha_func) + "    pixel = current / 255.0;\n}\n";
}
