#include <cmath>
#include <numbers>
#include <set>

#include "HostFixture.h"

namespace {

class GeometryTest : public HostTest {
 protected:
  static double meshArea(SUFaceRef face) {
    SUMeshHelperRef helper = SU_INVALID;
    EXPECT_EQ(SUMeshHelperCreate(&helper, face), SU_ERROR_NONE);
    size_t n = 0;
    SUMeshHelperGetNumVertices(helper, &n);
    Points points(n);
    SUMeshHelperGetVertices(helper, n, points.data(), &n);
    size_t triangles = 0;
    SUMeshHelperGetNumTriangles(helper, &triangles);
    std::vector<size_t> indices(triangles * 3);
    SUMeshHelperGetVertexIndices(helper, indices.size(), indices.data(), &n);
    EXPECT_EQ(n, indices.size());
    SUMeshHelperRelease(&helper);
    SUVector3D normal{};
    SUFaceGetNormal(face, &normal);
    double area = 0;
    for (size_t i = 0; i < indices.size(); i += 3) {
      const SUPoint3D &a = points[indices[i]], &b = points[indices[i + 1]],
                      &c = points[indices[i + 2]];
      const SUVector3D u{b.x - a.x, b.y - a.y, b.z - a.z};
      const SUVector3D v{c.x - a.x, c.y - a.y, c.z - a.z};
      // Signed: a triangle that is turned the wrong way takes away.
      area += ((u.y * v.z - u.z * v.y) * normal.x + (u.z * v.x - u.x * v.z) * normal.y +
               (u.x * v.y - u.y * v.x) * normal.z) /
              2;
    }
    return area;
  }

  // Six outward faces around the unit cube.
  static void addCube(SUEntitiesRef entities) {
    const SUPoint3D p[8] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                            {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    for (const auto& f : {std::array{3, 2, 1, 0},
                          {4, 5, 6, 7},
                          {0, 1, 5, 4},
                          {1, 2, 6, 5},
                          {2, 3, 7, 6},
                          {3, 0, 4, 7}}) {
      addFace(entities, {p[f[0]], p[f[1]], p[f[2]], p[f[3]]});
    }
  }

  static std::vector<SUVector3D> normalsOf(SUFaceRef face) {
    SUMeshHelperRef helper = SU_INVALID;
    SUMeshHelperCreate(&helper, face);
    size_t n = 0;
    SUMeshHelperGetNumVertices(helper, &n);
    std::vector<SUVector3D> normals(n);
    SUMeshHelperGetNormals(helper, n, normals.data(), &n);
    SUMeshHelperRelease(&helper);
    return normals;
  }
};

TEST_F(GeometryTest, NeighboursShareVerticesAndEdges) {
  addCube(root);
  EXPECT_EQ(facesOf(root).size(), 6u);
  const auto edges = edgesOf(root);
  EXPECT_EQ(edges.size(), 12u);
  std::set<void*> vertices;
  for (const SUEdgeRef edge : edges) {
    size_t faces = 0;
    SUEdgeGetNumFaces(edge, &faces);
    EXPECT_EQ(faces, 2u);
    SUVertexRef end = SU_INVALID;
    SUEdgeGetStartVertex(edge, &end);
    vertices.insert(end.ptr);
    SUEdgeGetEndVertex(edge, &end);
    vertices.insert(end.ptr);
    size_t around = 0;
    SUVertexGetNumEdges(end, &around);
    EXPECT_EQ(around, 3u);
  }
  EXPECT_EQ(vertices.size(), 8u);
}

TEST_F(GeometryTest, WeldingJoinsWhatIsCloseAndNothingElse) {
  const struct {
    const char* what;
    double shift;
    size_t edges;
  } cases[] = {{"same place", 0, 7},
               {"rounding noise", 1e-9, 7},
               {"noise across a boundary", -3e-7, 7},
               {"a visible gap", 1e-3, 8}};
  for (const auto& [what, shift, edges] : cases) {
    SUGroupRef group = SU_INVALID;
    SUGroupCreate(&group);
    SUEntitiesAddGroup(root, group);
    SUEntitiesRef entities = SU_INVALID;
    SUGroupGetEntities(group, &entities);
    addFace(entities, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    addFace(entities, {{1 + shift, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1 + shift, 1, 0}});
    EXPECT_EQ(edgesOf(entities).size(), edges) << what;
  }
}

TEST_F(GeometryTest, LoopsHolesAndWinding) {
  SUFaceRef face = SU_INVALID;
  const Points outer = square(0, 0, 5);
  SULoopInputRef loop = loopOver(4);
  SULoopInputEdgeSetSmooth(loop, 2, true);
  ASSERT_EQ(SUFaceCreate(&face, outer.data(), &loop), SU_ERROR_NONE);
  EXPECT_TRUE(SUIsInvalid(loop)) << "the face takes the loop over";
  const Points hole = square(2, 2);
  loop = loopOver(4);
  SULoopInputEdgeSetSoft(loop, 0, true);
  ASSERT_EQ(SUFaceAddInnerLoop(face, hole.data(), &loop), SU_ERROR_NONE);
  ASSERT_EQ(SUEntitiesAddFaces(root, 1, &face), SU_ERROR_NONE);

  SUPlane3D plane{};
  SUFaceGetPlane(face, &plane);
  EXPECT_DOUBLE_EQ(plane.c, 1);
  EXPECT_DOUBLE_EQ(plane.d, 0);
  const SUVector3D up{0, 0, 1};
  SULoopRef outerLoop = SU_INVALID;
  SUFaceGetOuterLoop(face, &outerLoop);
  const auto holes = listOf<SULoopRef>(&SUFaceGetNumInnerLoops, &SUFaceGetInnerLoops, face);
  ASSERT_EQ(holes.size(), 1u);
  SULoopWindingType winding = SULoopWindingType_CW;
  SULoopGetWinding(outerLoop, &up, &winding);
  EXPECT_EQ(winding, SULoopWindingType_CCW);
  SULoopGetWinding(holes[0], &up, &winding);
  EXPECT_EQ(winding, SULoopWindingType_CW);

  // Edge i leaves vertex i, and flags stay with their edges though the hole has been turned.
  for (const SULoopRef l : {outerLoop, holes[0]}) {
    SUEdgeRef edges[4];
    SUVertexRef vertices[4];
    size_t n = 0;
    SULoopGetEdges(l, 4, edges, &n);
    SULoopGetVertices(l, 4, vertices, &n);
    for (size_t i = 0; i < 4; ++i) {
      SUVertexRef a = SU_INVALID, b = SU_INVALID;
      SUEdgeGetStartVertex(edges[i], &a);
      SUEdgeGetEndVertex(edges[i], &b);
      const SUVertexRef from = vertices[i], to = vertices[(i + 1) % 4];
      EXPECT_TRUE((SUAreEqual(a, from) && SUAreEqual(b, to)) ||
                  (SUAreEqual(a, to) && SUAreEqual(b, from)));
      SUPoint3D p{}, q{};
      SUVertexGetPosition(from, &p);
      SUVertexGetPosition(to, &q);
      bool smooth = false, soft = false;
      SUEdgeGetSmooth(edges[i], &smooth);
      SUEdgeGetSoft(edges[i], &soft);
      EXPECT_EQ(smooth, p.y == 5 && q.y == 5);
      EXPECT_EQ(soft, p.y == 1 && q.y == 1);
    }
  }
  double area = 0;
  SUFaceGetArea(face, nullptr, &area);
  EXPECT_NEAR(area, 96, 1e-9);
  EXPECT_NEAR(meshArea(face), 96, 1e-9);
}

TEST_F(GeometryTest, FacesThatAreNone) {
  const double nan = std::nan("");
  const struct {
    const char* what;
    Points points;
  } cases[] = {
      {"two points", {{0, 0, 0}, {1, 0, 0}}},
      {"on one line", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}},
      {"one point three times", {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}},
      {"bent", {{0, 0, 0}, {1, 0, 0}, {1, 1, 1}, {0, 1, 0}}},
      {"not a number", {{0, 0, 0}, {1, nan, 0}, {1, 1, 0}}},
      {"infinite", {{0, 0, 0}, {INFINITY, 0, 0}, {1, 1, 0}}},
  };
  for (const auto& [what, points] : cases) {
    SUFaceRef face = SU_INVALID;
    EXPECT_EQ(SUFaceCreateSimple(&face, points.data(), points.size()), SU_ERROR_INVALID_INPUT)
        << what;
    EXPECT_TRUE(SUIsInvalid(face)) << what;
  }
  const SUFaceRef face = addFace(root, square(0, 0, 5));
  const Points above{{1, 1, 3}, {2, 1, 3}, {2, 2, 3}};
  SULoopInputRef loop = loopOver(3);
  EXPECT_EQ(SUFaceAddInnerLoop(face, above.data(), &loop), SU_ERROR_INVALID_INPUT);
  EXPECT_TRUE(SUIsValid(loop)) << "a loop that is refused stays its maker's";
  SULoopInputRelease(&loop);
}

TEST_F(GeometryTest, OpeningsAreCutOutAndReleasedByTheCaller) {
  const SUFaceRef face = addFace(root, square(0, 0, 5));
  // In either direction.
  Points opening = square(2, 0);
  modelhost_face_add_opening(face, opening.size(), opening.data());
  Points other{{-3, -1, 0}, {-3, 1, 0}, {-1, 1, 0}, {-1, -1, 0}};
  modelhost_face_add_opening(face, other.size(), other.data());
  auto openings = listOf<SUOpeningRef>(&SUFaceGetNumOpenings, &SUFaceGetOpenings, face);
  ASSERT_EQ(openings.size(), 2u);
  Points read(4);
  size_t n = 0;
  EXPECT_EQ(SUOpeningGetPoints(openings[1], 4, read.data(), &n), SU_ERROR_NONE);
  EXPECT_EQ(n, 4u);
  EXPECT_EQ(read[1].y, 1);
  for (SUOpeningRef& o : openings) EXPECT_EQ(SUOpeningRelease(&o), SU_ERROR_NONE);
  EXPECT_NEAR(meshArea(face), 92, 1e-9);
}

// Concave, with holes, tilted, tiny and far from the origin: triangles cover exactly the face.
TEST_F(GeometryTest, MeshCoversTheFace) {
  const SUVector3D tilt{0.6, 0, 0.8};
  for (const double scale : {1e-2, 1.0, 1e4}) {
    for (const double away : {0.0, 1e5}) {
      const auto at = [&](double u, double v) {
        return SUPoint3D{away + scale * u * tilt.x, away + scale * v, scale * u * tilt.z};
      };
      Points star;
      for (int i = 0; i < 10; ++i) {
        const double r = i % 2 == 0 ? 3 : 1;
        star.push_back(
            at(r * std::cos(i * std::numbers::pi / 5), r * std::sin(i * std::numbers::pi / 5)));
      }
      const SUFaceRef face = addFace(root, star);
      const Points hole{at(-.3, -.3), at(.3, -.3), at(.3, .3), at(-.3, .3)};
      SULoopInputRef loop = loopOver(4);
      ASSERT_EQ(SUFaceAddInnerLoop(face, hole.data(), &loop), SU_ERROR_NONE);
      const double wanted = scale * scale * (5 * 3 * 1 * std::sin(std::numbers::pi / 5) - 0.36);
      EXPECT_NEAR(meshArea(face) / wanted, 1, 1e-6) << "scale " << scale << " away " << away;
    }
  }
}

TEST_F(GeometryTest, NormalsAreSmoothedAcrossSmoothEdgesOnly) {
  addCube(root);
  const SUFaceRef top = facesOf(root)[1];
  for (const SUVector3D& n : normalsOf(top)) EXPECT_DOUBLE_EQ(n.z, 1);
  for (const SUEdgeRef edge : edgesOf(root)) SUEdgeSetSmooth(edge, true);
  for (const SUVector3D& n : normalsOf(top)) EXPECT_NEAR(n.z, 1 / std::sqrt(3), 1e-12);
}

TEST_F(GeometryTest, Manifold) {
  const auto isManifold = [](SUComponentDefinitionRef d) {
    bool manifold = false;
    EXPECT_EQ(SUComponentDefinitionIsManifold(d, &manifold), SU_ERROR_NONE);
    return manifold;
  };
  const auto closed = addDefinition("closed");
  EXPECT_FALSE(isManifold(closed)) << "nothing is no solid";
  addCube(inside(closed));
  EXPECT_TRUE(isManifold(closed));
  const auto outer = addDefinition("outer");
  place(closed, inside(outer));
  EXPECT_TRUE(isManifold(outer)) << "nested solids";
  SUEntityRef face = SUFaceToEntity(facesOf(inside(closed))[0]);
  ASSERT_EQ(SUEntitiesErase(inside(closed), 1, &face), SU_ERROR_NONE);
  EXPECT_FALSE(isManifold(closed));
  EXPECT_FALSE(isManifold(outer));
}

TEST_F(GeometryTest, BoundsGoThroughPlacements) {
  const auto definition = addDefinition("d");
  addCube(inside(definition));
  SUBoundingBox3D box{};
  SUDrawingElementGetBoundingBox(SUComponentDefinitionToDrawingElement(definition), &box);
  EXPECT_EQ(box.max_point.x, 1);
  const auto instance = place(definition, root);
  // A quarter turn about Z, twice as large, moved.
  const SUTransformation t = {{0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, 10, 20, 30, 1}};
  SUComponentInstanceSetTransform(instance, &t);
  SUEntitiesGetBoundingBox(root, &box);
  EXPECT_EQ(box.min_point.x, 8);
  EXPECT_EQ(box.max_point.x, 10);
  EXPECT_EQ(box.min_point.y, 20);
  EXPECT_EQ(box.max_point.z, 32);
}

// Each level places the next twice: 2^40 cubes that are never walked one by one.
TEST_F(GeometryTest, DeepSharingIsCheapToMeasure) {
  auto lower = addDefinition("cube");
  addCube(inside(lower));
  for (int i = 0; i < 40; ++i) {
    const auto upper = addDefinition("level");
    place(lower, inside(upper));
    place(lower, inside(upper));
    lower = upper;
  }
  place(lower, root);
  SUBoundingBox3D box{};
  EXPECT_EQ(SUEntitiesGetBoundingBox(root, &box), SU_ERROR_NONE);
  EXPECT_EQ(box.max_point.z, 1);
  bool manifold = false;
  SUComponentDefinitionIsManifold(lower, &manifold);
  EXPECT_TRUE(manifold);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUComponentDefinitionGetName(lower, s); }),
            "level#39")
      << "names are made different";
}

TEST_F(GeometryTest, FillBuildsAllOrNothing) {
  SUGeometryInputRef input = SU_INVALID;
  SUGeometryInputCreate(&input);
  const Points points{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 1}};
  SUGeometryInputSetVertices(input, points.size(), points.data());
  const auto add = [&](std::initializer_list<size_t> ring) {
    SULoopInputRef loop = SU_INVALID;
    SULoopInputCreate(&loop);
    for (const size_t i : ring) SULoopInputAddVertexIndex(loop, i);
    size_t face = 99;
    EXPECT_EQ(SUGeometryInputAddFace(input, &loop, &face), SU_ERROR_NONE);
    return face;
  };
  EXPECT_EQ(add({0, 1, 4}), 0u);
  EXPECT_EQ(add({1, 2, 4}), 1u);
  EXPECT_EQ(add({3, 2, 1, 0}), 2u);
  SUGeometryInputFaceSetReverse(input, 2, true);
  ASSERT_EQ(SUEntitiesFill(root, input, true), SU_ERROR_NONE);
  EXPECT_EQ(facesOf(root).size(), 3u);
  EXPECT_EQ(edgesOf(root).size(), 7u);
  SUVector3D normal{};
  SUFaceGetNormal(facesOf(root)[2], &normal);
  EXPECT_EQ(normal.z, 1);
  add({0, 1, 7});
  EXPECT_EQ(SUEntitiesFill(root, input, true), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(facesOf(root).size(), 3u);
  SUGeometryInputRelease(&input);
}

TEST_F(GeometryTest, EraseTakesWhatCannotStay) {
  addCube(root);
  addFace(root, {{1, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}});
  const SUFaceRef top = facesOf(root)[1];
  const SUEdgeRef edge = edgesOf(root)[0];
  SUEntityRef doomed = SUFaceToEntity(top);
  ASSERT_EQ(SUEntitiesErase(root, 1, &doomed), SU_ERROR_NONE);
  EXPECT_EQ(facesOf(root).size(), 6u);
  EXPECT_EQ(edgesOf(root).size(), 15u) << "a face leaves its edges";
  size_t before = 0;
  SUEdgeGetNumFaces(edge, &before);
  doomed = SUEdgeToEntity(edge);
  ASSERT_EQ(SUEntitiesErase(root, 1, &doomed), SU_ERROR_NONE);
  EXPECT_EQ(facesOf(root).size(), 6 - before) << "an edge takes its faces";
  EXPECT_EQ(SUEntitiesErase(root, 1, &doomed), SU_ERROR_INVALID_INPUT);
  // The places are free for new faces.
  addCube(root);
}

TEST_F(GeometryTest, NothingCanLieInsideItself) {
  const auto a = addDefinition("a");
  const auto b = addDefinition("b");
  place(a, inside(b));
  SUGroupRef group = SU_INVALID;
  SUGroupCreate(&group);
  SUEntitiesAddGroup(inside(a), group);
  SUEntitiesRef deep = SU_INVALID;
  SUGroupGetEntities(group, &deep);
  for (const auto& [definition, entities] :
       {std::pair{a, inside(a)}, {b, inside(a)}, {b, deep}, {a, deep}}) {
    SUComponentInstanceRef instance = SU_INVALID;
    SUComponentDefinitionCreateInstance(definition, &instance);
    EXPECT_EQ(SUEntitiesAddInstance(entities, instance, nullptr), SU_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(SUComponentInstanceRelease(&instance), SU_ERROR_NONE);
  }
}

TEST_F(GeometryTest, PersistentIdsAreUniqueAndSurviveEdits) {
  std::set<int64_t> ids;
  const auto idOf = [&](SUEntityRef entity) {
    int64_t id = 0;
    EXPECT_EQ(SUEntityGetPersistentID(entity, &id), SU_ERROR_NONE);
    return id;
  };
  // A component filled before it is part of a model gets its ids with it.
  SUComponentDefinitionRef definition = SU_INVALID;
  SUComponentDefinitionCreate(&definition);
  addCube(inside(definition));
  EXPECT_EQ(idOf(SUFaceToEntity(facesOf(inside(definition))[0])), 0);
  SUModelAddComponentDefinitions(model, 1, &definition);
  addCube(root);
  for (const SUEntitiesRef entities : {root, inside(definition)}) {
    for (const SUFaceRef face : facesOf(entities)) ids.insert(idOf(SUFaceToEntity(face)));
    for (const SUEdgeRef edge : edgesOf(entities)) ids.insert(idOf(SUEdgeToEntity(edge)));
  }
  EXPECT_EQ(ids.size(), 36u);
  EXPECT_FALSE(ids.contains(0));
  const SUEntityRef face = SUFaceToEntity(facesOf(root)[3]);
  const int64_t id = idOf(face);
  SUEntityRef other = SUFaceToEntity(facesOf(root)[0]);
  SUEntitiesErase(root, 1, &other);
  SUDrawingElementSetHidden(SUDrawingElementFromEntity(face), true);
  EXPECT_EQ(idOf(face), id);
  EXPECT_EQ(modelhost_set_persistent_id(face, 42), SU_ERROR_NONE);
  EXPECT_EQ(idOf(face), 42);
  EXPECT_EQ(modelhost_set_persistent_id(SUFaceToEntity(facesOf(root)[0]), 42), SU_ERROR_DUPLICATE);
  EXPECT_EQ(modelhost_set_persistent_id(face, -1), SU_ERROR_OUT_OF_RANGE);
}

TEST_F(GeometryTest, RemovingMaterialsLayersAndDefinitionsLeavesNoTrace) {
  const SUMaterialRef material = addMaterial("M");
  const SUFaceRef face = addFace(root, square(0, 0));
  SUFaceSetFrontMaterial(face, material);
  SUFaceSetBackMaterial(face, material);
  SULayerRef layer = SU_INVALID, first = SU_INVALID, now = SU_INVALID;
  SULayerCreate(&layer);
  SULayerSetName(layer, "L");
  SUModelAddLayers(model, 1, &layer);
  SUDrawingElementSetLayer(SUFaceToDrawingElement(face), layer);
  const auto definition = addDefinition("D");
  const auto instance = place(definition, root);

  EXPECT_EQ(modelhost_remove(SUMaterialToEntity(material)), SU_ERROR_NONE);
  SUMaterialRef none = SU_INVALID;
  EXPECT_EQ(SUFaceGetFrontMaterial(face, &none), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUFaceGetBackMaterial(face, &none), SU_ERROR_NO_DATA);
  EXPECT_EQ(modelhost_remove(SULayerToEntity(layer)), SU_ERROR_NONE);
  SUModelGetDefaultLayer(model, &first);
  SUDrawingElementGetLayer(SUFaceToDrawingElement(face), &now);
  EXPECT_TRUE(SUAreEqual(first, now));
  EXPECT_EQ(modelhost_remove(SULayerToEntity(first)), SU_ERROR_INVALID_OPERATION);
  EXPECT_EQ(modelhost_remove(SUComponentDefinitionToEntity(definition)), SU_ERROR_NONE);
  EXPECT_EQ(SUEntityGetType(SUComponentInstanceToEntity(instance)), SURefType_Unknown);
  EXPECT_TRUE(instancesOf(root).empty());
}

}  // namespace
