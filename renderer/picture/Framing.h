#pragma once

#include <glm/glm.hpp>

#include "picture/Model.h"

namespace kvpicture {

// Where the picture is taken from.
struct View {
  glm::vec3 eye{0};
  glm::mat4 toEye{1};
  glm::mat4 toClip{1};  // from eye space
  float nearPlane = 0.1f;
  float farPlane = 100;
};

// The model's camera, else a three-quarter view from above that shows the whole box.
View ChooseView(const Model& model, const Box& box, float aspect);

// The model's sun, else one from over the viewer's left shoulder.
Sun ChooseSun(const Model& model, const View& view);

// From the world to the shadow map of a sun: the box fits, the map's texels stay square.
glm::mat4 SunMatrix(const Sun& sun, const Box& box);

}  // namespace kvpicture
