#pragma once

#include <string>
#include <unordered_map>

#include <glm/glm.hpp>

#include "picture/Gl.h"
#include "picture/Model.h"

// Thin owners of graphics objects. All throw std::runtime_error; all belong to the current context.

namespace kvpicture {

class Program {
 public:
  Program(const char* name, const std::string& vertexSource, const std::string& fragmentSource);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void Use() const;
  void Set(const char* name, int value) const;
  void Set(const char* name, float value) const;
  void Set(const char* name, const glm::vec2& value) const;
  void Set(const char* name, const glm::vec3& value) const;
  void Set(const char* name, const glm::vec4& value) const;
  void Set(const char* name, const glm::mat3& value) const;
  void Set(const char* name, const glm::mat4& value) const;

 private:
  GLint Place(const char* name) const;

  GLuint id_ = 0;
  mutable std::unordered_map<std::string, GLint> places_;
};

// A texture that is drawn to, or made from an image.
class GlTexture {
 public:
  struct Format {
    GLint internal;
    GLenum external;
    GLenum type;
    GLint filter;
  };

  GlTexture(int width, int height, const Format& format);
  // Repeating, with mipmaps; `coded` for colours that are coded for the screen.
  GlTexture(const Image& image, bool coded);
  // Six square sides for distances.
  explicit GlTexture(int cubeSide);
  ~GlTexture();
  GlTexture(GlTexture&& other) noexcept : id_(other.id_), target_(other.target_) { other.id_ = 0; }
  GlTexture(const GlTexture&) = delete;
  GlTexture& operator=(const GlTexture&) = delete;

  void Bind(int unit) const;
  GLuint Id() const { return id_; }

 private:
  GLuint id_ = 0;
  GLenum target_ = GL_TEXTURE_2D;
};

// Somewhere to draw: a colour texture, a depth texture, or both (0 for none).
class Framebuffer {
 public:
  Framebuffer(GLuint color, GLuint depth);
  ~Framebuffer();
  Framebuffer(const Framebuffer&) = delete;
  Framebuffer& operator=(const Framebuffer&) = delete;

  void Use(int width, int height) const;
  // Exchanges the colour attachment for one side of a cube texture.
  void AttachCubeSide(GLuint cube, int side) const;

 private:
  GLuint id_ = 0;
};

// The vertices and indices of one part.
class PartBuffers {
 public:
  explicit PartBuffers(const Part& part);
  ~PartBuffers();
  PartBuffers(PartBuffers&& other) noexcept;
  PartBuffers(const PartBuffers&) = delete;
  PartBuffers& operator=(const PartBuffers&) = delete;

  void Draw() const;

 private:
  GLuint array_ = 0;
  GLuint buffers_[4] = {};
  GLsizei count_ = 0;
};

// Covers the whole target; the vertex shader makes the triangle.
class FullScreen {
 public:
  FullScreen();
  ~FullScreen();
  FullScreen(const FullScreen&) = delete;
  FullScreen& operator=(const FullScreen&) = delete;
  void Draw() const;

 private:
  GLuint array_ = 0;
};

}  // namespace kvpicture
