#include "geometry/FaceExporter.h"

#include <cmath>

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include "ScriptedHost.h"

namespace quellix {
namespace {

using Points = std::vector<glm::dvec3>;
const Points kSquare = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};

FaceContext Context(const glm::mat4& transform = glm::mat4(1.0f)) {
  FaceContext context;
  context.transform = transform;
  context.front.index = 7;
  context.back.index = 9;
  return context;
}

MeshBuffer Export(scripted::Face* face, const FaceContext& context) {
  FaceCollector collector;
  MeshBuffer buffer;
  ExportFaceSerial(collector, face->ref(), context, buffer);
  return buffer;
}

void ExpectNear(const glm::vec3& got, const glm::vec3& wanted) {
  EXPECT_NEAR(glm::distance(got, wanted), 0.0f, 1e-6f)
      << "got " << got.x << " " << got.y << " " << got.z << ", wanted " << wanted.x << " "
      << wanted.y << " " << wanted.z;
}

TEST(ExportFaceSerial, AppendsFacesOneAfterTheOther) {
  scripted::Host host;
  scripted::Face* square = host.AddFace(kSquare);
  FaceCollector collector;
  MeshBuffer buffer;
  const glm::mat4 moved = glm::translate(glm::mat4(1.0f), {10.0f, 0.0f, 0.0f});
  ExportFaceSerial(collector, square->ref(), Context(), buffer);
  ExportFaceSerial(collector, square->ref(), Context(moved), buffer);
  ASSERT_EQ(buffer.vertices.size(), 8u);
  EXPECT_EQ(buffer.triangles, (std::vector<std::uint32_t>{0, 1, 2, 7, 9, 0, 2, 3, 7, 9,
                                                          4, 5, 6, 7, 9, 4, 6, 7, 7, 9}));
  EXPECT_EQ(buffer.vertices[6].position, glm::vec3(12, 2, 0));
  EXPECT_EQ(buffer.vertices[6].normal, glm::vec3(0, 0, 1));
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 1);
  EXPECT_EQ(host.Calls("SUMeshHelperCreate"), 0);
}

TEST(ExportFaceSerial, DropsTrianglesWithoutAreaAfterTheTransform) {
  struct Case {
    const char* what;
    double leg;
    float scale;
    std::size_t triangles;
  };
  const Case cases[] = {
      {"area 5e-11", 1e-5, 1.0f, 0},
      {"area 2e-10", 2e-5, 1.0f, 1},
      {"small after the transform", 1.0, 1e-5f, 0},
      {"large after the transform", 1e-5, 1e5f, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scripted::Host host;
    scripted::Face* face = host.AddFace(Points{{0, 0, 0}, {c.leg, 0, 0}, {0, c.leg, 0}});
    const MeshBuffer buffer =
        Export(face, Context(glm::scale(glm::mat4(1.0f), glm::vec3(c.scale))));
    EXPECT_EQ(buffer.vertices.size(), 3u) << "vertices of dropped triangles stay";
    EXPECT_EQ(buffer.triangles.size(), 5 * c.triangles);
  }
}

TEST(ExportFaceSerial, KeepsNormalsPerpendicular) {
  struct Case {
    const char* what;
    glm::vec3 scale;
    glm::vec3 normal;
  };
  // The face's own normal is (1, 0, 1) / sqrt 2.
  const Points slope = {{0, 0, 1}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}};
  const Case cases[] = {
      {"as it is", {1, 1, 1}, glm::normalize(glm::vec3(1, 0, 1))},
      {"uniform", {3, 3, 3}, glm::normalize(glm::vec3(1, 0, 1))},
      {"stretched", {2, 1, 1}, glm::normalize(glm::vec3(0.5f, 0, 1))},
      {"mirrored", {-1, 1, 1}, glm::normalize(glm::vec3(-1, 0, 1))},
      {"turned inside out", {-1, -1, -1}, glm::normalize(glm::vec3(-1, 0, -1))},
      {"flattened along z", {1, 1, 0}, {1, 0, 0}},
      {"flattened to a line", {0, 1, 0}, {0, 0, 0}},
      {"too small to invert", {1e-5f, 1e-5f, 1e-5f}, glm::normalize(glm::vec3(1, 0, 1)) * 1e-5f},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scripted::Host host;
    const MeshBuffer buffer =
        Export(host.AddFace(slope), Context(glm::scale(glm::mat4(1.0f), c.scale)));
    ASSERT_EQ(buffer.vertices.size(), 4u);
    for (const MeshVertex& vertex : buffer.vertices) {
      if (glm::length(c.normal) < 1e-4f) {
        EXPECT_LE(glm::length(vertex.normal), 1.0001e-5f) << "left as it is";
      } else {
        ExpectNear(vertex.normal, c.normal);
      }
    }
  }
}

TEST(ExportFaceSerial, TakesTextureCoordinatesOfTexturedSidesUndivided) {
  struct Case {
    const char* what;
    bool front, back;
    std::int32_t frontTexture;
    glm::vec2 frontUv, backUv;  // at (2, 2, 0)
  };
  const Case cases[] = {
      {"plain", false, false, 1, {0, 0}, {0, 0}},
      {"front", true, false, 1, {2, 2}, {0, 0}},
      {"back", false, true, 1, {0, 0}, {-2, 20}},
      {"both", true, true, 1, {2, 2}, {-2, 20}},
      {"the host has no helper for the front",
       true,
       true,
       scripted::kTextureWithoutHelper,
       {0, 0},
       {-2, 20}},
  };
  for (const Case& c : cases) {
    // The own tessellation, and the host's mesh for a face whose outline cannot be read.
    for (const bool own : {true, false}) {
      SCOPED_TRACE(std::string(c.what) + (own ? ", own" : ", host's"));
      scripted::Host host;
      scripted::Face* face = host.AddFace(kSquare);
      host.GiveHelperFan(face);
      if (!own) face->planeFails = true;
      FaceContext context = Context(glm::scale(glm::mat4(1.0f), glm::vec3(5.0f)));
      context.front.textured = c.front;
      context.front.textureId = c.frontTexture;
      context.back.textured = c.back;
      context.back.textureId = 2;
      const MeshBuffer buffer = Export(face, context);
      ASSERT_EQ(buffer.vertices.size(), 4u);
      EXPECT_EQ(buffer.vertices[2].frontUv, c.frontUv);
      EXPECT_EQ(buffer.vertices[2].backUv, c.backUv);
      EXPECT_EQ(buffer.triangles.size(), 10u);
      EXPECT_EQ(host.Calls("SUMeshHelperCreate"), own ? 0 : 1);
      EXPECT_EQ(host.Outstanding(), 0);
    }
  }
}

TEST(ExportFaceSerial, AddsNothingWhenNobodyCanTriangulate) {
  scripted::Host host;
  scripted::Face* face = host.AddFace(kSquare);
  face->planeFails = true;
  FaceContext context = Context();
  context.front.textured = context.back.textured = true;
  EXPECT_TRUE(Export(face, context).vertices.empty());
  EXPECT_EQ(host.Outstanding(), 0);

  // What the host gives is not trusted: a triangle beyond the vertices is left out.
  host.GiveHelperFan(face);
  face->helper.indexes[4] = 4;
  const MeshBuffer buffer = Export(face, Context());
  EXPECT_EQ(buffer.vertices.size(), 4u);
  EXPECT_EQ(buffer.triangles, (std::vector<std::uint32_t>{0, 1, 2, 7, 9}));
}

}  // namespace
}  // namespace quellix
