#include "picture/Framing.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <glm/gtc/matrix_transform.hpp>

namespace kvpicture {

namespace {

constexpr float kDefaultView = 0.56f;  // 32 degrees: little distortion, as in a portrait

// Corners of the boxes of all items; of the whole model when they are very many.
std::vector<glm::vec3> CornersOf(const Model& model, const Box& box) {
  constexpr std::size_t kMostItems = 20000;
  std::vector<glm::vec3> corners;
  const auto add = [&corners](const glm::vec3& low, const glm::vec3& high, const glm::mat4& to) {
    for (int corner = 0; corner < 8; ++corner) {
      corners.emplace_back(to * glm::vec4((corner & 1) != 0 ? high.x : low.x,
                                          (corner & 2) != 0 ? high.y : low.y,
                                          (corner & 4) != 0 ? high.z : low.z, 1));
    }
  };
  if (model.items.empty() || model.items.size() > kMostItems) {
    add(box.low, box.high, glm::mat4(1));
    return corners;
  }
  for (const Item& item : model.items) {
    const Part& part = model.parts[static_cast<std::size_t>(item.part)];
    add(part.low, part.high, item.transform);
  }
  return corners;
}

View ThreeQuarterView(const Model& model, const Box& box, float aspect) {
  const glm::vec3 direction = glm::normalize(glm::vec3(0.62f, 0.42f, 0.78f));
  const glm::mat3 turn(glm::lookAt(direction, glm::vec3(0), glm::vec3(0, 1, 0)));
  const glm::vec2 slope = std::tan(kDefaultView / 2) * glm::vec2(aspect, 1);
  const std::vector<glm::vec3> corners = CornersOf(model, box);
  glm::vec3 target = box.Center();
  float distance = 0;
  // The nearest distance at which all is inside the picture.
  const auto fit = [&] {
    distance = 1e-3f;
    for (const glm::vec3& corner : corners) {
      const glm::vec3 seen = turn * (corner - target);
      distance = std::max(
          {distance, std::abs(seen.x) / slope.x + seen.z, std::abs(seen.y) / slope.y + seen.z});
    }
  };
  // It depends on the target, which is to be in the middle of what is seen from there; a few rounds
  // settle both.
  for (int round = 0; round < 6; ++round) {
    fit();
    glm::vec2 low(1e9f), high(-1e9f);
    for (const glm::vec3& corner : corners) {
      const glm::vec3 seen = turn * (corner - target);
      const glm::vec2 place = glm::vec2(seen) / std::max(distance - seen.z, 1e-3f);
      low = glm::min(low, place);
      high = glm::max(high, place);
    }
    target += glm::transpose(turn) * glm::vec3((low + high) * 0.5f * distance, 0);
  }
  fit();
  constexpr float kMargin = 1.12f;
  View view;
  view.eye = target + direction * distance * kMargin;
  view.toEye = glm::lookAt(view.eye, target, glm::vec3(0, 1, 0));
  return view;
}

}  // namespace

View ChooseView(const Model& model, const Box& box, float aspect) {
  View view;
  float angle = kDefaultView;
  if (model.camera) {
    view.eye = glm::vec3(model.camera->toWorld[3]);
    view.toEye = glm::inverse(model.camera->toWorld);
    angle = model.camera->verticalView;
  } else {
    view = ThreeQuarterView(model, box, aspect);
  }
  const float distance = glm::length(view.eye - box.Center());
  const float radius = std::max(box.Radius(), 1e-3f);
  // The ground reaches beyond the box.
  view.farPlane = distance + radius * 14;
  view.nearPlane = std::max(distance - radius * 1.05f, view.farPlane / 4000);
  view.toClip = glm::perspective(angle, aspect, view.nearPlane, view.farPlane);
  return view;
}

Sun ChooseSun(const Model& model, const View& view) {
  if (model.sun) return *model.sun;
  const glm::mat3 toWorld = glm::transpose(glm::mat3(view.toEye));
  glm::vec3 back = toWorld * glm::vec3(0, 0, 1);
  back.y = 0;
  const glm::vec3 level = glm::length(back) > 1e-3f ? glm::normalize(back) : glm::vec3(0, 0, 1);
  const glm::vec3 left = glm::cross(level, glm::vec3(0, 1, 0));
  return Sun{glm::normalize(level * 0.55f + left * 0.75f + glm::vec3(0, 1.05f, 0)),
             glm::vec3(1, 0.95f, 0.86f)};
}

glm::mat4 SunMatrix(const Sun& sun, const Box& box) {
  const float radius = std::max(box.Radius(), 1e-3f) * 1.02f;
  const glm::vec3 up = std::abs(sun.towards.y) > 0.99f ? glm::vec3(0, 0, 1) : glm::vec3(0, 1, 0);
  const glm::mat4 toSun = glm::lookAt(box.Center() + sun.towards * radius * 2.f, box.Center(), up);
  return glm::ortho(-radius, radius, -radius, radius, radius * 0.5f, radius * 3.5f) * toSun;
}

}  // namespace kvpicture
