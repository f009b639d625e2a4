#include <SketchUpAPI/model/edge.h>
#include <SketchUpAPI/model/entities.h>
#include <SketchUpAPI/model/face.h>
#include <SketchUpAPI/model/loop.h>
#include <SketchUpAPI/model/loop_input.h>

#include "ModelHost.h"
#include "import/Scene.h"
#include "import/Shapes.h"

namespace modelhost {

namespace {

// Flags of the edges of an outline: true for all, or a list of their numbers.
template <class Set>
void readEdgeFlags(const SceneNode& node, const char* key, std::size_t edges, Set set) {
  const auto flags = node.get(key);
  if (!flags) return;
  if (flags->isBool()) {
    for (std::size_t i = 0; flags->flag() && i < edges; ++i) set(i);
    return;
  }
  for (std::size_t i = 0; i < flags->size(); ++i) set(flags->item(i).index(edges));
}

// A loop over the first points, until it is taken over or goes out of scope.
class LoopOver {
 public:
  explicit LoopOver(std::size_t n) {
    SULoopInputCreate(&ref);
    for (std::size_t i = 0; i < n; ++i) SULoopInputAddVertexIndex(ref, i);
  }
  ~LoopOver() { SULoopInputRelease(&ref); }
  LoopOver(const LoopOver&) = delete;
  LoopOver& operator=(const LoopOver&) = delete;

  SULoopInputRef ref = SU_INVALID;
};

// [[x, y, z, u, v], …]: what the texture shows at up to four points.
void positionTexture(const SceneNode& node, SUFaceRef face, bool front, SUMaterialRef material) {
  const std::size_t n = node.size();
  if (n < 1 || n > 4) node.fail("one to four of [x, y, z, u, v] are wanted here");
  std::vector<SUPoint3D> points;
  std::vector<SUPoint2D> uvs;
  for (std::size_t i = 0; i < n; ++i) {
    const auto pair = node.item(i).numbers(5, 5);
    points.push_back({pair[0], pair[1], pair[2]});
    uvs.push_back({pair[3], pair[4]});
  }
  expect(SUFacePositionMaterial(face, front, material, n, points.data(), uvs.data()), node,
         "these points do not fix how the texture lies");
}

void paint(SceneContext& context, const SceneNode& node, SUFaceRef face, bool front) {
  const char* side = front ? "front" : "back";
  const auto name = node.get(side);
  const auto uv = node.get(front ? "uv" : "back_uv");
  if (!name && uv) uv->fail(std::string("there is no \"") + side + "\" whose texture it could lay");
  if (!name) return;
  const SUMaterialRef material = context.material(*name);
  if (uv) {
    positionTexture(*uv, face, front, material);
  } else if (front) {
    SUFaceSetFrontMaterial(face, material);
  } else {
    SUFaceSetBackMaterial(face, material);
  }
}

void readHoles(const SceneNode& node, SUFaceRef face) {
  if (const auto holes = node.get("holes")) {
    for (std::size_t i = 0; i < holes->size(); ++i) {
      const auto points = holes->item(i).points(3);
      LoopOver loop(points.size());
      expect(SUFaceAddInnerLoop(face, points.data(), &loop.ref), holes->item(i),
             "the hole is not in the plane of the face or has no area");
    }
  }
  if (const auto openings = node.get("openings")) {
    for (std::size_t i = 0; i < openings->size(); ++i) {
      const auto points = openings->item(i).points(1);
      modelhost_face_add_opening(face, points.size(), points.data());
    }
  }
}

void readFace(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  node.allow({"face", "holes", "openings", "front", "back", "uv", "back_uv", "layer", "hidden",
              "smooth", "soft", "hidden_edges", "attributes", "pid", "casts_shadows",
              "receives_shadows"});
  const auto points = node.at("face").points(3);
  LoopOver loop(points.size());
  readEdgeFlags(node, "smooth", points.size(),
                [&](std::size_t i) { SULoopInputEdgeSetSmooth(loop.ref, i, true); });
  readEdgeFlags(node, "soft", points.size(),
                [&](std::size_t i) { SULoopInputEdgeSetSoft(loop.ref, i, true); });
  readEdgeFlags(node, "hidden_edges", points.size(),
                [&](std::size_t i) { SULoopInputEdgeSetHidden(loop.ref, i, true); });
  SUFaceRef face = SU_INVALID;
  expect(SUFaceCreate(&face, points.data(), &loop.ref), node.at("face"),
         "the points are not in one plane or enclose no area");
  expect(SUEntitiesAddFaces(entities, 1, &face), node, "the face cannot be added");
  readHoles(node, face);
  paint(context, node, face, true);
  paint(context, node, face, false);
  readCommon(context, node, SUFaceToDrawingElement(face));
}

void readEdge(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  node.allow(
      {"edge", "soft", "smooth", "color", "layer", "hidden", "attributes", "pid", "material"});
  const auto points = node.at("edge").points(2);
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    SUEdgeRef edge = SU_INVALID;
    expect(SUEdgeCreate(&edge, &points[i], &points[i + 1]), node.at("edge"),
           "an edge joins two different points");
    expect(SUEntitiesAddEdges(entities, 1, &edge), node, "the edge cannot be added");
    if (const auto soft = node.get("soft")) SUEdgeSetSoft(edge, soft->flag());
    if (const auto smooth = node.get("smooth")) SUEdgeSetSmooth(edge, smooth->flag());
    if (const auto color = node.get("color")) {
      const SUColor value = color->color();
      SUEdgeSetColor(edge, &value);
    }
    readCommon(context, node, SUEdgeToDrawingElement(edge));
  }
}

std::vector<std::uint32_t> readRing(const SceneNode& node, std::size_t points) {
  std::vector<std::uint32_t> ring;
  if (node.size() < 3) node.fail("at least 3 points are wanted here");
  for (std::size_t i = 0; i < node.size(); ++i) {
    ring.push_back(static_cast<std::uint32_t>(node.item(i).index(points)));
  }
  return ring;
}

// "mesh": points once, faces as lists of their numbers.
void readMesh(const SceneNode& node, PolygonMesh& mesh) {
  node.allow({"points", "faces", "uvs", "edges"});
  const SceneNode points = node.at("points");
  mesh.points = points.points(0);
  std::vector<SUPoint2D> uvs;
  if (const auto list = node.get("uvs")) {
    if (list->size() != mesh.points.size()) list->fail("one pair for every point is wanted here");
    for (std::size_t i = 0; i < list->size(); ++i) {
      const auto uv = list->item(i).numbers(2, 2);
      uvs.push_back({uv[0], uv[1]});
    }
  }
  const SceneNode faces = node.at("faces");
  for (std::size_t i = 0; i < faces.size(); ++i) {
    const SceneNode face = faces.item(i);
    Polygon& polygon = mesh.polygons.emplace_back();
    const SceneNode ring = face.isObject() ? face.at("face") : face;
    polygon.corners = readRing(ring, mesh.points.size());
    if (!uvs.empty()) {
      for (const std::uint32_t corner : polygon.corners) polygon.uvs.push_back(uvs[corner]);
    }
    if (!face.isObject()) continue;
    face.allow({"face", "holes"});
    if (const auto holes = face.get("holes")) {
      for (std::size_t k = 0; k < holes->size(); ++k) {
        polygon.holes.push_back(readRing(holes->item(k), mesh.points.size()));
      }
    }
  }
  if (const auto edges = node.get("edges")) {
    for (std::size_t i = 0; i < edges->size(); ++i) {
      const SceneNode pair = edges->item(i);
      if (pair.size() != 2) pair.fail("the numbers of two points are wanted here");
      mesh.lines.emplace_back(static_cast<std::uint32_t>(pair.item(0).index(mesh.points.size())),
                              static_cast<std::uint32_t>(pair.item(1).index(mesh.points.size())));
    }
  }
}

std::size_t sidesOf(const SceneNode& node) {
  const auto sides = node.get("sides");
  if (!sides) return 24;
  const std::size_t n = sides->index(4097);
  if (n < 3) sides->fail("at least 3 sides are wanted here");
  return n;
}

// Solids; each key names one.
void readSolid(const SceneNode& node, PolygonMesh& mesh) {
  if (const auto box = node.get("box")) {
    if (box->size() != 2) box->fail("two opposite corners are wanted here");
    const SUPoint3D low = box->item(0).point();
    const SUPoint3D high = box->item(1).point();
    if (!(low.x < high.x && low.y < high.y && low.z < high.z)) {
      box->fail("the first corner is the lowest in every direction, the second the highest");
    }
    addBox(mesh, low, high);
  } else if (const auto outline = node.get("extrude")) {
    std::vector<std::vector<SUPoint3D>> outlines{outline->points(3)};
    if (const auto holes = node.get("holes")) {
      for (std::size_t i = 0; i < holes->size(); ++i) {
        outlines.push_back(holes->item(i).points(3));
      }
    }
    const SUPoint3D by = node.at("by").point();
    const SUVector3D move{by.x, by.y, by.z};
    if (dot(areaVector(outlines[0]), move) == 0) {
      node.at("by").fail("it moves the outline within its own plane");
    }
    addExtrusion(mesh, outlines, move);
  } else if (const auto foot = node.get("cylinder")) {
    const auto top = node.get("top_radius");
    const double radius = node.at("radius").positive();
    const double topRadius = top ? top->number() : radius;
    if (topRadius < 0) top->fail("it is not below 0");
    addCylinder(mesh, foot->point(), radius, topRadius, node.at("height").positive(),
                sidesOf(node));
  } else {
    addSphere(mesh, node.at("sphere").point(), node.at("radius").positive(), sidesOf(node));
  }
}

void readPolygons(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  node.allow({"mesh", "box", "extrude", "holes", "by", "cylinder", "sphere", "radius", "top_radius",
              "height", "sides", "smooth", "front", "back", "layer", "hidden"});
  PolygonMesh mesh;
  if (const auto polygons = node.get("mesh")) {
    readMesh(*polygons, mesh);
  } else {
    readSolid(node, mesh);
  }
  if (const auto smooth = node.get("smooth")) mesh.smoothAngle = smooth->number();
  if (const auto layer = node.get("layer")) mesh.layer = context.layer(*layer);
  if (const auto hidden = node.get("hidden")) mesh.hidden = hidden->flag();
  const auto front = node.get("front");
  const auto back = node.get("back");
  for (Polygon& polygon : mesh.polygons) {
    if (front) polygon.front = context.material(*front);
    if (back) polygon.back = context.material(*back);
  }
  addPolygons(entities, mesh, context.report);
}

}  // namespace

bool readGeometry(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  if (node.has("face")) {
    readFace(context, node, entities);
  } else if (node.has("edge")) {
    readEdge(context, node, entities);
  } else if (node.has("mesh") || node.has("box") || node.has("extrude") || node.has("cylinder") ||
             node.has("sphere")) {
    readPolygons(context, node, entities);
  } else {
    return false;
  }
  return true;
}

}  // namespace modelhost
