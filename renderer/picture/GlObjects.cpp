#include "picture/GlObjects.h"

#include <stdexcept>
#include <utility>

#include <glm/gtc/type_ptr.hpp>

namespace kvpicture {

namespace {

GLuint Compile(const char* name, GLenum kind, const std::string& source) {
  const GLuint shader = glCreateShader(kind);
  const char* text = source.c_str();
  glShaderSource(shader, 1, &text, nullptr);
  glCompileShader(shader);
  GLint good = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &good);
  if (good == 0) {
    char log[2048] = {};
    glGetShaderInfoLog(shader, sizeof log, nullptr, log);
    throw std::runtime_error(std::string("shader ") + name + ": " + log);
  }
  return shader;
}

}  // namespace

Program::Program(const char* name, const std::string& vertexSource,
                 const std::string& fragmentSource) {
  const GLuint vertex = Compile(name, GL_VERTEX_SHADER, vertexSource);
  const GLuint fragment = Compile(name, GL_FRAGMENT_SHADER, fragmentSource);
  id_ = glCreateProgram();
  glAttachShader(id_, vertex);
  glAttachShader(id_, fragment);
  glLinkProgram(id_);
  glDeleteShader(vertex);
  glDeleteShader(fragment);
  GLint good = 0;
  glGetProgramiv(id_, GL_LINK_STATUS, &good);
  if (good == 0) {
    char log[2048] = {};
    glGetProgramInfoLog(id_, sizeof log, nullptr, log);
    throw std::runtime_error(std::string("program ") + name + ": " + log);
  }
}

Program::~Program() {
  glDeleteProgram(id_);
}

void Program::Use() const {
  glUseProgram(id_);
}

GLint Program::Place(const char* name) const {
  const auto [found, added] = places_.try_emplace(name, -1);
  if (added) found->second = glGetUniformLocation(id_, name);
  return found->second;
}

void Program::Set(const char* name, int value) const {
  glUniform1i(Place(name), value);
}
void Program::Set(const char* name, float value) const {
  glUniform1f(Place(name), value);
}
void Program::Set(const char* name, const glm::vec2& value) const {
  glUniform2fv(Place(name), 1, glm::value_ptr(value));
}
void Program::Set(const char* name, const glm::vec3& value) const {
  glUniform3fv(Place(name), 1, glm::value_ptr(value));
}
void Program::Set(const char* name, const glm::vec4& value) const {
  glUniform4fv(Place(name), 1, glm::value_ptr(value));
}
void Program::Set(const char* name, const glm::mat3& value) const {
  glUniformMatrix3fv(Place(name), 1, GL_FALSE, glm::value_ptr(value));
}
void Program::Set(const char* name, const glm::mat4& value) const {
  glUniformMatrix4fv(Place(name), 1, GL_FALSE, glm::value_ptr(value));
}

GlTexture::GlTexture(int width, int height, const Format& format) {
  glGenTextures(1, &id_);
  glBindTexture(GL_TEXTURE_2D, id_);
  glTexImage2D(GL_TEXTURE_2D, 0, format.internal, width, height, 0, format.external, format.type,
               nullptr);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, format.filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, format.filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

GlTexture::GlTexture(const Image& image, bool coded) {
  glGenTextures(1, &id_);
  glBindTexture(GL_TEXTURE_2D, id_);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexImage2D(GL_TEXTURE_2D, 0, coded ? GL_SRGB8_ALPHA8 : GL_RGBA8, image.width, image.height, 0,
               GL_RGBA, GL_UNSIGNED_BYTE, image.rgba.data());
  glGenerateMipmap(GL_TEXTURE_2D);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

GlTexture::GlTexture(int cubeSide) : target_(GL_TEXTURE_CUBE_MAP) {
  glGenTextures(1, &id_);
  glBindTexture(target_, id_);
  for (GLenum side = 0; side < 6; ++side) {
    glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + side, 0, GL_R32F, cubeSide, cubeSide, 0, GL_RED,
                 GL_FLOAT, nullptr);
  }
  glTexParameteri(target_, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(target_, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

GlTexture::~GlTexture() {
  glDeleteTextures(1, &id_);
}

void GlTexture::Bind(int unit) const {
  glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
  glBindTexture(target_, id_);
}

Framebuffer::Framebuffer(GLuint color, GLuint depth) {
  glGenFramebuffers(1, &id_);
  glBindFramebuffer(GL_FRAMEBUFFER, id_);
  if (color != 0) {
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, color, 0);
  } else {
    glDrawBuffer(GL_NONE);
    glReadBuffer(GL_NONE);
  }
  if (depth != 0) {
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, depth, 0);
  }
}

Framebuffer::~Framebuffer() {
  glDeleteFramebuffers(1, &id_);
}

void Framebuffer::Use(int width, int height) const {
  glBindFramebuffer(GL_FRAMEBUFFER, id_);
  glViewport(0, 0, width, height);
}

void Framebuffer::AttachCubeSide(GLuint cube, int side) const {
  glBindFramebuffer(GL_FRAMEBUFFER, id_);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                         GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(side), cube, 0);
  glDrawBuffer(GL_COLOR_ATTACHMENT0);
}

PartBuffers::PartBuffers(const Part& part) : count_(static_cast<GLsizei>(part.indices.size())) {
  glGenVertexArrays(1, &array_);
  glBindVertexArray(array_);
  glGenBuffers(4, buffers_);
  const auto attribute = [this](GLuint place, GLint size, const void* data, std::size_t bytes) {
    glBindBuffer(GL_ARRAY_BUFFER, buffers_[place]);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
    glVertexAttribPointer(place, size, GL_FLOAT, GL_FALSE, 0, nullptr);
    glEnableVertexAttribArray(place);
  };
  attribute(0, 3, part.positions.data(), part.positions.size() * sizeof(glm::vec3));
  attribute(1, 3, part.normals.data(), part.normals.size() * sizeof(glm::vec3));
  if (!part.uvs.empty()) attribute(2, 2, part.uvs.data(), part.uvs.size() * sizeof(glm::vec2));
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers_[3]);
  glBufferData(GL_ELEMENT_ARRAY_BUFFER,
               static_cast<GLsizeiptr>(part.indices.size() * sizeof(std::uint32_t)),
               part.indices.data(), GL_STATIC_DRAW);
}

PartBuffers::PartBuffers(PartBuffers&& other) noexcept
    : array_(std::exchange(other.array_, 0)), count_(other.count_) {
  for (int i = 0; i < 4; ++i) buffers_[i] = std::exchange(other.buffers_[i], 0);
}

PartBuffers::~PartBuffers() {
  glDeleteBuffers(4, buffers_);
  glDeleteVertexArrays(1, &array_);
}

void PartBuffers::Draw() const {
  glBindVertexArray(array_);
  glDrawElements(GL_TRIANGLES, count_, GL_UNSIGNED_INT, nullptr);
}

FullScreen::FullScreen() {
  glGenVertexArrays(1, &array_);
}

FullScreen::~FullScreen() {
  glDeleteVertexArrays(1, &array_);
}

void FullScreen::Draw() const {
  glBindVertexArray(array_);
  glDrawArrays(GL_TRIANGLES, 0, 3);
}

}  // namespace kvpicture
