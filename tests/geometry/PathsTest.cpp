// The three paths make the same bytes of faces that a model seldom has.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ScriptedHost.h"
#include "geometry/FaceExporter.h"
#include "geometry/GeometryPipeline.h"
#include "geometry/ParallelFaces.h"

namespace quellix {
namespace {

using Points = std::vector<glm::dvec3>;

class KeepingSink : public MeshSink {
 public:
  void SendMesh(const MeshBuffer& mesh, const MeshPlacement&, std::uint8_t) override {
    kept = mesh;
  }
  void SendPlacement(const MeshPlacement&) override {}
  MeshBuffer kept;
};

MeshBuffer Serial(const FaceSource& source) {
  FaceCollector collector;
  MeshBuffer mesh;
  source([&](SUFaceRef su_face, const FaceContext& context) {
    ExportFaceSerial(collector, su_face, context, mesh);
  });
  return mesh;
}

MeshBuffer Parallel(const FaceSource& source) {
  FaceCollector collector;
  WorkerPool pool(2);
  MeshBuffer mesh;
  ExportFacesParallel(collector, pool, source, mesh);
  return mesh;
}

MeshBuffer Pipelined(const FaceSource& source) {
  FaceCollector collector;
  KeepingSink sink;
  GeometryPipeline pipeline(collector, sink, 2);
  pipeline.OpenMesh({}, 0);
  pipeline.ProduceFaceWork(source);
  pipeline.CloseMesh();
  pipeline.Finish();
  return sink.kept;
}

bool SameBytes(const MeshBuffer& a, const MeshBuffer& b) {
  return a.triangles == b.triangles && a.vertices.size() == b.vertices.size() &&
         std::memcmp(a.vertices.data(), b.vertices.data(),
                     a.vertices.size() * sizeof(MeshVertex)) == 0;
}

// The serial path's mesh; the others' must be the same.
MeshBuffer InEveryPath(const std::vector<scripted::Face*>& faces, const FaceContext& context) {
  const FaceSource source = [&](const FaceSink& add) {
    for (scripted::Face* face : faces) add(face->ref(), context);
  };
  const MeshBuffer mesh = Serial(source);
  EXPECT_TRUE(SameBytes(Parallel(source), mesh)) << "parallel";
  EXPECT_TRUE(SameBytes(Pipelined(source), mesh)) << "pipeline";
  return mesh;
}

TEST(EveryPath, LeavesAFaceOutThatIsNotFiniteAndKeepsThoseAroundIt) {
  scripted::Host host;
  scripted::Face* square = host.AddFace(Points{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}});
  scripted::Face* distant = host.AddFace(Points{{0, 0, 0}, {1e39, 0, 0}, {1e39, 1e39, 0}});
  scripted::Face* unread = host.AddFace(Points{{5, 0, 0}, {6, 0, 0}, {6, 1, 0}, {5, 1, 0}});
  unread->planeFails = true;
  host.GiveHelperFan(unread);
  std::vector<scripted::Face*> faces = {square, distant, unread};
  std::sort(faces.begin(), faces.end());
  do {
    std::string order;
    for (scripted::Face* face : faces) order += face == square ? 's' : face == distant ? 'd' : 'u';
    SCOPED_TRACE(order);
    const MeshBuffer mesh = InEveryPath(faces, {});
    ASSERT_EQ(mesh.vertices.size(), 8u);
    EXPECT_EQ(mesh.triangles.size(), 4 * kTriangleWords);
    const bool squareFirst = order.find('s') < order.find('u');
    EXPECT_EQ(mesh.vertices[squareFirst ? 2 : 6].position, glm::vec3(2, 2, 0));
  } while (std::next_permutation(faces.begin(), faces.end()));
}

// Coordinates in a texture that the host gives as no numbers, or as too large ones, and normals
// whose matrix cannot be had in single precision: the face is where it is all the same.
TEST(EveryPath, KeepsAFaceWhoseTextureCoordinatesOrNormalsAreNotFinite) {
  scripted::Host host;
  scripted::Face* square = host.AddFace(Points{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}});
  scripted::Face* unread = host.AddFace(Points{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}});
  unread->planeFails = true;
  host.GiveHelperFan(unread);
  FaceContext context;
  context.front.textured = context.back.textured = true;
  context.front.textureId = scripted::kTextureWithoutNumbers;
  context.back.textureId = 1;
  MeshBuffer mesh = InEveryPath({square, unread}, context);
  ASSERT_EQ(mesh.vertices.size(), 8u);
  EXPECT_EQ(mesh.triangles.size(), 4 * kTriangleWords);
  for (const MeshVertex& vertex : mesh.vertices) {
    EXPECT_EQ(vertex.frontUv, glm::vec2(0, 0)) << "one of the two is finite";
    EXPECT_EQ(vertex.backUv, glm::vec2(-vertex.position.x, 10 * vertex.position.y));
  }

  for (const glm::vec3 scale :
       {glm::vec3(1e20f), glm::vec3(1e25f, 1e25f, 1e-30f), glm::vec3(1e-30f, 1e20f, 1e25f)}) {
    FaceContext large;
    large.transform = glm::mat4(glm::mat3(scale.x, 0, 0, 0, scale.y, 0, 0, 0, scale.z));
    mesh = InEveryPath({square, unread}, large);
    ASSERT_EQ(mesh.vertices.size(), 8u) << scale.x;
    for (const MeshVertex& vertex : mesh.vertices) {
      EXPECT_EQ(vertex.normal, glm::vec3(0)) << scale.x;
      EXPECT_LE(std::abs(vertex.position.x), 2 * scale.x);
    }
  }
}

}  // namespace
}  // namespace quellix
