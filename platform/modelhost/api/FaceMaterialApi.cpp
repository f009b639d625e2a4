#include <SketchUpAPI/model/face.h>
#include <SketchUpAPI/model/mesh_helper.h>
#include <SketchUpAPI/model/uv_helper.h>

#include "core/Args.h"
#include "model/Build.h"
#include "model/Helpers.h"
#include "model/Model.h"

using namespace modelhost;

namespace {

SUResult paintSide(SUFaceRef face, bool front, SUMaterialRef material) {
  Material* m = find(material);
  // A null handle takes the material away.
  if (material.ptr != nullptr && m == nullptr) return SU_ERROR_INVALID_INPUT;
  return change(face, [&](Face& f) { f.paint(front, m); });
}

SUResult giveAffine(SUFaceRef face, bool front, bool* affine) {
  return give(face, affine, [&](const Face& f) {
    const UvMapping* mapping = f.sideMapping(front);
    return mapping == nullptr || mapping->affine();
  });
}

SUResult createUvHelper(SUFaceRef face, bool front, bool back, SUTextureWriterRef texture_writer,
                        long texture_id, SUUVHelperRef* out_helper) {
  const Face* f = find(face);
  if (f == nullptr) return SU_ERROR_INVALID_INPUT;
  const TextureWriter* writer = find(texture_writer);
  if (texture_writer.ptr != nullptr && writer == nullptr) return SU_ERROR_INVALID_INPUT;
  const SUResult created = create(out_helper);
  if (created != SU_ERROR_NONE) return created;
  const TextureWriter::Entry* entry = writer != nullptr ? writer->entry(texture_id) : nullptr;
  UvHelper& helper = *find(*out_helper);
  if (front) helper.front = shownMapping(*f, true, entry);
  if (back) helper.back = shownMapping(*f, false, entry);
  return SU_ERROR_NONE;
}

SUResult giveUvq(SUUVHelperRef helper, const SUPoint3D* point, SUUVQ* uvq,
                 std::optional<UvMapping> UvHelper::*side) {
  const UvHelper* h = find(helper);
  if (h == nullptr) return SU_ERROR_INVALID_INPUT;
  if (point == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (uvq == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (!(h->*side)) return SU_ERROR_NO_DATA;
  *uvq = (h->*side)->at(*point);
  return SU_ERROR_NONE;
}

SUResult giveStq(SUMeshHelperRef helper, size_t len, SUPoint3D stq[], size_t* count,
                 UvMapping MeshHelper::*side) {
  const MeshHelper* h = find(helper);
  if (h == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(h->vertices, len, stq, count, [&](const SUPoint3D& p) {
    const SUUVQ uvq = (h->*side).at(p);
    return SUPoint3D{uvq.u, uvq.v, uvq.q};
  });
}

SUResult createMeshHelper(SUMeshHelperRef* out_helper, SUFaceRef face) {
  if (const SUResult may = mayCreate(out_helper); may != SU_ERROR_NONE) return may;
  const Face* f = find(face);
  return f == nullptr ? SU_ERROR_INVALID_INPUT : create(out_helper, *f);
}

}  // namespace

SUResult SUFaceGetFrontMaterial(SUFaceRef face, SUMaterialRef* material) {
  MODELHOST_CALL(SUFaceGetFrontMaterial);
  return giveRef(face, material, [](const Face& f) { return f.sideMaterial(true); });
}

SUResult SUFaceSetFrontMaterial(SUFaceRef face, SUMaterialRef material) {
  MODELHOST_CALL(SUFaceSetFrontMaterial);
  return paintSide(face, true, material);
}

SUResult SUFaceGetBackMaterial(SUFaceRef face, SUMaterialRef* material) {
  MODELHOST_CALL(SUFaceGetBackMaterial);
  return giveRef(face, material, [](const Face& f) { return f.sideMaterial(false); });
}

SUResult SUFaceSetBackMaterial(SUFaceRef face, SUMaterialRef material) {
  MODELHOST_CALL(SUFaceSetBackMaterial);
  return paintSide(face, false, material);
}

SUResult SUFaceIsFrontMaterialAffine(SUFaceRef face, bool* affine) {
  MODELHOST_CALL(SUFaceIsFrontMaterialAffine);
  return giveAffine(face, true, affine);
}

SUResult SUFaceIsBackMaterialAffine(SUFaceRef face, bool* affine) {
  MODELHOST_CALL(SUFaceIsBackMaterialAffine);
  return giveAffine(face, false, affine);
}

SUResult SUFacePositionMaterial(SUFaceRef face, bool front, SUMaterialRef material,
                                size_t num_points, const SUPoint3D points[],
                                const SUPoint2D uv_coords[]) {
  MODELHOST_CALL(SUFacePositionMaterial);
  Face* f = find(face);
  Material* m = find(material);
  if (f == nullptr || m == nullptr) return SU_ERROR_INVALID_INPUT;
  if (points == nullptr || uv_coords == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (num_points < 1 || num_points > 4) return SU_ERROR_OUT_OF_RANGE;
  const auto mapping = UvMapping::through({points, num_points}, {uv_coords, num_points},
                                          f->sideNormal(front), tileOf(m));
  if (!mapping) return SU_ERROR_INVALID_ARGUMENT;
  willChange(*f);
  f->paint(front, m, mapping);
  return SU_ERROR_NONE;
}

SUResult SUFaceGetUVHelper(SUFaceRef face, bool front, bool back, SUTextureWriterRef texture_writer,
                           SUUVHelperRef* out_helper) {
  MODELHOST_CALL(SUFaceGetUVHelper);
  return createUvHelper(face, front, back, texture_writer, 0, out_helper);
}

SUResult SUFaceGetUVHelperWithTextureHandle(SUFaceRef face, bool front, bool back,
                                            SUTextureWriterRef texture_writer, long texture_id,
                                            SUUVHelperRef* out_helper) {
  MODELHOST_CALL(SUFaceGetUVHelperWithTextureHandle);
  return createUvHelper(face, front, back, texture_writer, texture_id, out_helper);
}

SUResult SUUVHelperRelease(SUUVHelperRef* helper) {
  MODELHOST_CALL(SUUVHelperRelease);
  return release(helper);
}

SUResult SUUVHelperGetFrontUVQ(SUUVHelperRef helper, const SUPoint3D* point, SUUVQ* uvq) {
  MODELHOST_CALL(SUUVHelperGetFrontUVQ);
  return giveUvq(helper, point, uvq, &UvHelper::front);
}

SUResult SUUVHelperGetBackUVQ(SUUVHelperRef helper, const SUPoint3D* point, SUUVQ* uvq) {
  MODELHOST_CALL(SUUVHelperGetBackUVQ);
  return giveUvq(helper, point, uvq, &UvHelper::back);
}

SUResult SUMeshHelperCreate(SUMeshHelperRef* out_helper, SUFaceRef face) {
  MODELHOST_CALL(SUMeshHelperCreate);
  return createMeshHelper(out_helper, face);
}

SUResult SUMeshHelperCreateWithTextureWriter(SUMeshHelperRef* out_helper, SUFaceRef face,
                                             SUTextureWriterRef writer) {
  MODELHOST_CALL(SUMeshHelperCreateWithTextureWriter);
  TextureWriter* w = find(writer);
  const Face* f = find(face);
  if (w == nullptr || f == nullptr) return SU_ERROR_INVALID_INPUT;
  const SUResult created = createMeshHelper(out_helper, face);
  if (created != SU_ERROR_NONE) return created;
  MeshHelper& helper = *find(*out_helper);
  // As the writer will write them: distorted textures are baked into pictures of their own.
  helper.front = shownMapping(*f, true, w->entry(w->load(*f, true)));
  helper.back = shownMapping(*f, false, w->entry(w->load(*f, false)));
  return SU_ERROR_NONE;
}

SUResult SUMeshHelperRelease(SUMeshHelperRef* helper) {
  MODELHOST_CALL(SUMeshHelperRelease);
  return release(helper);
}

SUResult SUMeshHelperGetNumTriangles(SUMeshHelperRef helper, size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetNumTriangles);
  return give(helper, count, [](const MeshHelper& h) { return h.indices.size() / 3; });
}

SUResult SUMeshHelperGetNumVertices(SUMeshHelperRef helper, size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetNumVertices);
  return give(helper, count, [](const MeshHelper& h) { return h.vertices.size(); });
}

SUResult SUMeshHelperGetVertexIndices(SUMeshHelperRef helper, size_t len, size_t indices[],
                                      size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetVertexIndices);
  const MeshHelper* h = find(helper);
  if (h == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(h->indices, len, indices, count, [](size_t index) { return index; });
}

SUResult SUMeshHelperGetVertices(SUMeshHelperRef helper, size_t len, SUPoint3D vertices[],
                                 size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetVertices);
  const MeshHelper* h = find(helper);
  if (h == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(h->vertices, len, vertices, count, [](const SUPoint3D& p) { return p; });
}

SUResult SUMeshHelperGetNormals(SUMeshHelperRef helper, size_t len, SUVector3D normals[],
                                size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetNormals);
  const MeshHelper* h = find(helper);
  if (h == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(h->normals, len, normals, count, [](const SUVector3D& n) { return n; });
}

SUResult SUMeshHelperGetFrontSTQCoords(SUMeshHelperRef helper, size_t len, SUPoint3D stq[],
                                       size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetFrontSTQCoords);
  return giveStq(helper, len, stq, count, &MeshHelper::front);
}

SUResult SUMeshHelperGetBackSTQCoords(SUMeshHelperRef helper, size_t len, SUPoint3D stq[],
                                      size_t* count) {
  MODELHOST_CALL(SUMeshHelperGetBackSTQCoords);
  return giveStq(helper, len, stq, count, &MeshHelper::back);
}
