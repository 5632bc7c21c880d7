#include "desktop/GlShaders.h"

#include <QtDebug>

GlShaders::Program* GlShaders::Find(const GlShaderKey& key) {
    const auto known = programs.find(key);
    Program& program = known != programs.end() ? known->second : programs.emplace(key, Make(key)).first->second;
    return program.name != 0 ? &program : nullptr;
}

GLuint GlShaders::Compile(GLenum kind, const std::string& text) {
    const GLuint shader = gl.glCreateShader(kind);
    const char* const start = text.c_str();
    gl.glShaderSource(shader, 1, &start, nullptr);
    gl.glCompileShader(shader);
    GLint compiled = GL_FALSE;
    gl.glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_TRUE)
        return shader;
    constexpr GLsizei LONGEST_LOG = 4096;
    std::string log(LONGEST_LOG, '\0');
    GLsizei length = 0;
    gl.glGetShaderInfoLog(shader, LONGEST_LOG, &length, log.data());
    log.resize(static_cast<size_t>(length));
    qWarning("A shader of the OpenGL device was refused: %s", log.c_str());
    gl.glDeleteShader(shader);
    return 0;
}

GlShaders::Program GlShaders::Make(const GlShaderKey& key) {
    Program program;
    std::array<GLuint, 3> parts{Compile(GL_VERTEX_SHADER, GlVertexText(key)),
                                Compile(GL_FRAGMENT_SHADER, GlPixelText(key)), 0};
    const bool lines = key.shape == GlShape::Lines;
    if (lines)
        parts[2] = Compile(GL_GEOMETRY_SHADER, GlLineText(key));
    if (parts[0] != 0 && parts[1] != 0 && (parts[2] != 0 || !lines)) {
        program.name = gl.glCreateProgram();
        for (const GLuint part : parts)
            if (part != 0)
                gl.glAttachShader(program.name, part);
        gl.glLinkProgram(program.name);
        GLint linked = GL_FALSE;
        gl.glGetProgramiv(program.name, GL_LINK_STATUS, &linked);
        if (linked != GL_TRUE) {
            qWarning("A program of the OpenGL device could not be linked");
            gl.glDeleteProgram(program.name);
            program.name = 0;
        }
    }
    for (const GLuint part : parts)
        if (part != 0)
            gl.glDeleteShader(part);
    if (program.name == 0)
        return program;
    const auto place = [&](const char* name) { return gl.glGetUniformLocation(program.name, name); };
    program.to_clip = place("to_clip"), program.world = place("world"), program.viewport = place("viewport");
    program.planes = place("planes"), program.factor = place("factor"), program.alpha_ref = place("alpha_ref");
    gl.glUseProgram(program.name);
    for (uint32_t i = 0; i < key.stage_count; ++i)
        if (key.stages[i].textured)
            gl.glUniform1i(place(("texture" + std::to_string(i)).c_str()), static_cast<GLint>(i));
    gl.glUseProgram(0); // the next batch sets its own
    return program;
}

// Row vectors by rows are column vectors by columns.
void GlShaders::Send(Program& program, const GlUniforms& u) {
    GlUniforms& sent = program.sent;
    const bool all = !program.any_sent;
    program.any_sent = true;
    if (program.to_clip >= 0 && (all || !(sent.to_clip == u.to_clip)))
        gl.glUniformMatrix4fv(program.to_clip, 1, GL_FALSE, &u.to_clip.m[0][0]);
    if (program.world >= 0 && (all || !(sent.world == u.world)))
        gl.glUniformMatrix4fv(program.world, 1, GL_FALSE, &u.world.m[0][0]);
    if (program.viewport >= 0 && (all || sent.viewport != u.viewport))
        gl.glUniform4fv(program.viewport, 1, u.viewport.data());
    if (program.planes >= 0 && (all || sent.planes != u.planes))
        gl.glUniform4fv(program.planes, CLIP_PLANES, u.planes.data());
    if (program.factor >= 0 && (all || sent.factor != u.factor))
        gl.glUniform4fv(program.factor, 1, u.factor.data());
    if (program.alpha_ref >= 0 && (all || sent.alpha_ref != u.alpha_ref))
        gl.glUniform1f(program.alpha_ref, u.alpha_ref);
    sent = u;
}

void GlShaders::Release() {
    for (const auto& [key, program] : programs)
        if (program.name != 0)
            gl.glDeleteProgram(program.name);
    programs.clear();
}
