#include "ScriptedHost.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace scripted {

namespace {

Host* current = nullptr;

// Newell's normal: twice the area of the outline, right-handed.
glm::dvec3 NewellNormal(const std::vector<Vertex*>& outline) {
  glm::dvec3 normal(0.0);
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const glm::dvec3& a = outline[i]->position;
    const glm::dvec3& b = outline[(i + 1) % outline.size()]->position;
    normal += glm::cross(a, b);
  }
  return normal;
}

struct Opening {
  const std::vector<glm::dvec3>* points;
};

struct Helper {
  Face* face;
  bool front;
  bool numbers = true;
};

template <class T, class Ref>
T& Get(Ref su_ref) {
  return *static_cast<T*>(su_ref.ptr);
}

SUPoint3D ToPoint(const glm::dvec3& p) {
  return {p.x, p.y, p.z};
}

}  // namespace

Host::Host() {
  current = this;
}
Host::~Host() {
  current = nullptr;
}

Vertex* Host::AddVertex(const glm::dvec3& position) {
  return &vertices.emplace_back(position);
}

Edge* Host::EdgeBetween(Vertex* a, Vertex* b) {
  std::unique_ptr<Edge>& edge = edges[std::minmax(a, b)];
  if (!edge) {
    edge = std::make_unique<Edge>();
    edge->ends[0] = a;
    edge->ends[1] = b;
  }
  return edge.get();
}

void Host::AddLoop(Face* face, const std::vector<Vertex*>& loopVertices) {
  Loop& loop = face->loops.emplace_back();
  loop.vertices = loopVertices;
  for (std::size_t i = 0; i < loopVertices.size(); ++i) {
    Edge* edge = EdgeBetween(loopVertices[i], loopVertices[(i + 1) % loopVertices.size()]);
    loop.edges.push_back(edge);
    if (std::find(edge->faces.begin(), edge->faces.end(), face) == edge->faces.end()) {
      edge->faces.push_back(face);
    }
  }
  loop.edgesWritten = loop.edges.size();
}

Face* Host::AddFace(const std::vector<Vertex*>& outline,
                    const std::vector<std::vector<Vertex*>>& holes) {
  Face* face = &faces.emplace_back();
  face->id = static_cast<int>(faces.size());
  AddLoop(face, outline);
  for (const std::vector<Vertex*>& hole : holes) AddLoop(face, hole);
  const glm::dvec3 normal = glm::normalize(NewellNormal(outline));
  face->plane = glm::dvec4(normal, -glm::dot(normal, outline.front()->position));
  return face;
}

Face* Host::AddFace(const std::vector<glm::dvec3>& outline,
                    const std::vector<std::vector<glm::dvec3>>& holes) {
  const auto add = [this](const std::vector<glm::dvec3>& points) {
    std::vector<Vertex*> added;
    for (const glm::dvec3& point : points) added.push_back(AddVertex(point));
    return added;
  };
  std::vector<std::vector<Vertex*>> holeVertices;
  for (const std::vector<glm::dvec3>& hole : holes) holeVertices.push_back(add(hole));
  return AddFace(add(outline), holeVertices);
}

void Host::GiveHelperFan(Face* face) {
  face->helper = {};
  for (const Vertex* vertex : face->loops.front().vertices) {
    face->helper.positions.push_back(vertex->position);
    face->helper.normals.push_back(glm::dvec3(face->plane));
  }
  for (std::size_t i = 1; i + 1 < face->helper.positions.size(); ++i) {
    face->helper.indexes.insert(face->helper.indexes.end(), {0, i, i + 1});
  }
}

int Host::Calls(const std::string& name) const {
  const std::lock_guard lock(callsMutex);
  const auto it = calls.find(name);
  return it == calls.end() ? 0 : it->second;
}

}  // namespace scripted

using namespace scripted;

extern "C" {

SUResult SUFaceGetPlane(SUFaceRef su_face, SUPlane3D* plane) {
  current->Count(__func__);
  if (su_face.ptr == nullptr) return SU_ERROR_INVALID_INPUT;
  if (Get<Face>(su_face).onRead) Get<Face>(su_face).onRead();
  if (Get<Face>(su_face).planeFails) return SU_ERROR_INVALID_INPUT;
  const glm::dvec4& p = Get<Face>(su_face).plane;
  *plane = {p.x, p.y, p.z, p.w};
  return SU_ERROR_NONE;
}

SUResult SUFaceGetOuterLoop(SUFaceRef su_face, SULoopRef* loop) {
  if (Get<Face>(su_face).loops.empty()) return SU_ERROR_NO_DATA;
  *loop = {&Get<Face>(su_face).loops.front()};
  return SU_ERROR_NONE;
}

SUResult SUFaceGetNumInnerLoops(SUFaceRef su_face, size_t* count) {
  *count = Get<Face>(su_face).loops.size() - 1;
  return SU_ERROR_NONE;
}

SUResult SUFaceGetInnerLoops(SUFaceRef su_face, size_t len, SULoopRef loops[], size_t* count) {
  for (size_t i = 0; i < len; ++i) loops[i] = {&Get<Face>(su_face).loops[i + 1]};
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUFaceGetNumOpenings(SUFaceRef su_face, size_t* count) {
  *count = Get<Face>(su_face).openings.size();
  return SU_ERROR_NONE;
}

SUResult SUFaceGetOpenings(SUFaceRef su_face, size_t len, SUOpeningRef openings[], size_t* count) {
  for (size_t i = 0; i < len; ++i) {
    openings[i] = {new Opening{&Get<Face>(su_face).openings[i]}};
    ++current->outstanding;
  }
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUOpeningGetNumPoints(SUOpeningRef opening, size_t* count) {
  *count = Get<Opening>(opening).points->size();
  return SU_ERROR_NONE;
}

SUResult SUOpeningGetPoints(SUOpeningRef opening, size_t len, SUPoint3D points[], size_t* count) {
  for (size_t i = 0; i < len; ++i) points[i] = ToPoint((*Get<Opening>(opening).points)[i]);
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUOpeningRelease(SUOpeningRef* opening) {
  delete static_cast<Opening*>(opening->ptr);
  opening->ptr = nullptr;
  --current->outstanding;
  return SU_ERROR_NONE;
}

SUResult SULoopGetNumVertices(SULoopRef loop, size_t* count) {
  *count = Get<Loop>(loop).vertices.size();
  return SU_ERROR_NONE;
}

SUResult SULoopGetVertices(SULoopRef loop, size_t len, SUVertexRef vertices[], size_t* count) {
  for (size_t i = 0; i < len; ++i) vertices[i] = {Get<Loop>(loop).vertices[i]};
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SULoopGetEdges(SULoopRef loop, size_t len, SUEdgeRef edges[], size_t* count) {
  for (size_t i = 0; i < len; ++i) edges[i] = {Get<Loop>(loop).edges[i]};
  *count = Get<Loop>(loop).edgesWritten;
  return SU_ERROR_NONE;
}

SUResult SUVertexGetPosition(SUVertexRef vertex, SUPoint3D* position) {
  *position = ToPoint(Get<Vertex>(vertex).position);
  return SU_ERROR_NONE;
}

SUResult SUEdgeGetSmooth(SUEdgeRef edge, bool* smooth) {
  current->Count(__func__);
  *smooth = Get<Edge>(edge).smooth;
  return Get<Edge>(edge).smoothFails ? SU_ERROR_INVALID_INPUT : SU_ERROR_NONE;
}

SUResult SUEdgeGetNumFaces(SUEdgeRef edge, size_t* count) {
  *count = Get<Edge>(edge).faces.size();
  return SU_ERROR_NONE;
}

SUResult SUEdgeGetFaces(SUEdgeRef edge, size_t len, SUFaceRef faces[], size_t* count) {
  for (size_t i = 0; i < len; ++i) faces[i] = {Get<Edge>(edge).faces[i]};
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperCreate(SUMeshHelperRef* helper, SUFaceRef su_face) {
  current->Count(__func__);
  if (Get<Face>(su_face).onHelper) Get<Face>(su_face).onHelper();
  if (Get<Face>(su_face).helper.positions.empty()) return SU_ERROR_GENERIC;
  *helper = {new Helper{&Get<Face>(su_face), true}};
  ++current->outstanding;
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperRelease(SUMeshHelperRef* helper) {
  delete static_cast<Helper*>(helper->ptr);
  helper->ptr = nullptr;
  --current->outstanding;
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperGetNumVertices(SUMeshHelperRef helper, size_t* count) {
  *count = Get<Helper>(helper).face->helper.positions.size();
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperGetVertices(SUMeshHelperRef helper, size_t len, SUPoint3D points[],
                                 size_t* count) {
  for (size_t i = 0; i < len; ++i)
    points[i] = ToPoint(Get<Helper>(helper).face->helper.positions[i]);
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperGetNormals(SUMeshHelperRef helper, size_t len, SUVector3D normals[],
                                size_t* count) {
  for (size_t i = 0; i < len; ++i) {
    const glm::dvec3& n = Get<Helper>(helper).face->helper.normals[i];
    normals[i] = {n.x, n.y, n.z};
  }
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperGetNumTriangles(SUMeshHelperRef helper, size_t* count) {
  *count = Get<Helper>(helper).face->helper.indexes.size() / 3;
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperGetVertexIndices(SUMeshHelperRef helper, size_t len, size_t indices[],
                                      size_t* count) {
  std::copy_n(Get<Helper>(helper).face->helper.indexes.begin(), len, indices);
  *count = len;
  return SU_ERROR_NONE;
}

SUResult SUFaceGetUVHelperWithTextureHandle(SUFaceRef su_face, bool front, bool back,
                                            SUTextureWriterRef, long texture_id,
                                            SUUVHelperRef* helper) {
  current->Count(__func__);
  if (front == back || texture_id == kTextureWithoutHelper) return SU_ERROR_GENERIC;
  *helper = {new Helper{&Get<Face>(su_face), front, texture_id != kTextureWithoutNumbers}};
  ++current->outstanding;
  return SU_ERROR_NONE;
}

// The front is mapped to (x, y, 2), the back to (-x, 10 y, 2).
SUResult SUUVHelperGetFrontUVQ(SUUVHelperRef helper, const SUPoint3D* point, SUUVQ* uvq) {
  if (!Get<Helper>(helper).front) return SU_ERROR_INVALID_INPUT;
  *uvq = {Get<Helper>(helper).numbers ? point->x : std::nan(""), point->y, 2.0};
  return SU_ERROR_NONE;
}

SUResult SUUVHelperGetBackUVQ(SUUVHelperRef helper, const SUPoint3D* point, SUUVQ* uvq) {
  if (Get<Helper>(helper).front) return SU_ERROR_INVALID_INPUT;
  *uvq = {-point->x, 10.0 * point->y, 2.0};
  return SU_ERROR_NONE;
}

SUResult SUUVHelperRelease(SUUVHelperRef* helper) {
  delete static_cast<Helper*>(helper->ptr);
  helper->ptr = nullptr;
  --current->outstanding;
  return SU_ERROR_NONE;
}

// What only the dumps ask for.

SUEntityRef SUFaceToEntity(SUFaceRef su_face) {
  return {su_face.ptr};
}

SUResult SUEntityGetID(SUEntityRef entity, int32_t* id) {
  *id = Get<Face>(entity).id;
  return SU_ERROR_NONE;
}

// Loops of faces that are looked at from below have no winding here.
SUResult SULoopGetWinding(SULoopRef, const SUVector3D* normal, SULoopWindingType* winding) {
  if (normal->z < 0) return SU_ERROR_GENERIC;
  *winding = SULoopWindingType_CCW;
  return SU_ERROR_NONE;
}

SUResult SUEdgeGetSoft(SUEdgeRef edge, bool* soft) {
  *soft = Get<Edge>(edge).soft;
  return SU_ERROR_NONE;
}

SUResult SUEdgeGetStartVertex(SUEdgeRef edge, SUVertexRef* vertex) {
  *vertex = {Get<Edge>(edge).ends[0]};
  return SU_ERROR_NONE;
}

SUResult SUEdgeGetEndVertex(SUEdgeRef edge, SUVertexRef* vertex) {
  *vertex = {Get<Edge>(edge).ends[1]};
  return SU_ERROR_NONE;
}

}  // extern "C"
