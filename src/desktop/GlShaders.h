// The programs of the OpenGL device: one for each combination of what stages, alpha test and shapes do, made when it is
// first drawn with.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include <QOpenGLFunctions_3_3_Core>

#include "render/Device.h"

using GlFunctions = QOpenGLFunctions_3_3_Core;

enum class GlShape : uint8_t { Points, Lines, Triangles };

// Places of the fields of a vertex.
enum GlAttribute : GLuint { GL_AT_POSITION, GL_AT_COLOR, GL_AT_UV };
inline constexpr uint32_t GL_COORDINATE_SETS = 3;

struct GlStage {
    uint8_t color_op = 0, color_arg[2] = {}, alpha_op = 0, alpha_arg[2] = {};
    bool textured = false;   // else the texture is white
    uint8_t coordinates = 0; // the set, of a textured stage
    auto operator<=>(const GlStage&) const = default;
};

struct GlShaderKey {
    GlShape shape = GlShape::Triangles;
    bool transformed = false; // positions are pixels
    bool colored = false;     // the vertices have colours; else they are white
    uint8_t given_sets = 0;   // of coordinates of the vertices; others are 0
    bool flat = false;        // the colour of a triangle is that of its first corner
    bool planes = false;      // clip planes cut
    uint8_t line_width = 1;   // pixels, of lines
    uint8_t alpha_func = CMP_OFF;
    uint8_t stage_count = 0;
    std::array<GlStage, TEXTURE_STAGES> stages;
    auto operator<=>(const GlShaderKey&) const = default;
};

// The values that go with a program.
struct GlUniforms {
    D3DMATRIX to_clip, world; // world: with clip planes only
    std::array<float, 4> viewport{};
    std::array<float, 4 * CLIP_PLANES> planes{};
    std::array<float, 4> factor{}; // 0 to 255
    float alpha_ref = 0;           // 0 to 255
    bool operator==(const GlUniforms&) const = default;
};

class GlShaders {
public:
    struct Program {
        GLuint name = 0; // 0: it cannot be made
        GLint to_clip = -1, world = -1, viewport = -1, planes = -1, factor = -1, alpha_ref = -1;
        GlUniforms sent;
        bool any_sent = false;
    };

    explicit GlShaders(GlFunctions& functions) : gl(functions) {}

    Program* Find(const GlShaderKey& key);                   // null when it cannot be made. It stays where it is
    void Send(Program& program, const GlUniforms& uniforms); // what differs; the program is in use
    void Release();

private:
    Program Make(const GlShaderKey& key);
    GLuint Compile(GLenum kind, const std::string& text);

    GlFunctions& gl;
    std::map<GlShaderKey, Program> programs;
};

// The texts of a program. The picture's first row is row 0 of the framebuffer, so that y runs down.
std::string GlVertexText(const GlShaderKey& key);
std::string GlLineText(const GlShaderKey& key); // the geometry stage of lines
std::string GlPixelText(const GlShaderKey& key);
