#ifndef SKETCHUPAPI_MODEL_ENTITIES_H_
#define SKETCHUPAPI_MODEL_ENTITIES_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/model/geometry_input.h>
#include <SketchUpAPI/transformation.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUEntitiesGetBoundingBox(SUEntitiesRef entities,
                                                 struct SUBoundingBox3D* box);
SU_EXPORT enum SUResult SUEntitiesClear(SUEntitiesRef entities);
// Builds everything that `input` describes; with `weld_vertices`, points that coincide with each
// other or with vertices already there become one vertex.
SU_EXPORT enum SUResult SUEntitiesFill(SUEntitiesRef entities, SUGeometryInputRef input,
                                       bool weld_vertices);

SU_EXPORT enum SUResult SUEntitiesAddFaces(SUEntitiesRef entities, size_t len,
                                           const SUFaceRef faces[]);
SU_EXPORT enum SUResult SUEntitiesAddEdges(SUEntitiesRef entities, size_t len,
                                           const SUEdgeRef edges[]);
SU_EXPORT enum SUResult SUEntitiesAddGroup(SUEntitiesRef entities, SUGroupRef group);
SU_EXPORT enum SUResult SUEntitiesAddImage(SUEntitiesRef entities, SUImageRef image);
// `name` may be null; otherwise the name the instance has got is written there.
SU_EXPORT enum SUResult SUEntitiesAddInstance(SUEntitiesRef entities,
                                              SUComponentInstanceRef instance, SUStringRef* name);
// A face leaves its edges; an edge takes its faces with it, and vertices that no edge uses.
SU_EXPORT enum SUResult SUEntitiesErase(SUEntitiesRef entities, size_t len, SUEntityRef elements[]);

SU_EXPORT enum SUResult SUEntitiesGetNumFaces(SUEntitiesRef entities, size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetFaces(SUEntitiesRef entities, size_t len, SUFaceRef faces[],
                                           size_t* count);
// With `stand_alone_only`, only edges without a face.
SU_EXPORT enum SUResult SUEntitiesGetNumEdges(SUEntitiesRef entities, bool stand_alone_only,
                                              size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetEdges(SUEntitiesRef entities, bool stand_alone_only,
                                           size_t len, SUEdgeRef edges[], size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetNumGroups(SUEntitiesRef entities, size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetGroups(SUEntitiesRef entities, size_t len, SUGroupRef groups[],
                                            size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetNumImages(SUEntitiesRef entities, size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetImages(SUEntitiesRef entities, size_t len, SUImageRef images[],
                                            size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetNumInstances(SUEntitiesRef entities, size_t* count);
SU_EXPORT enum SUResult SUEntitiesGetInstances(SUEntitiesRef entities, size_t len,
                                               SUComponentInstanceRef instances[], size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_ENTITIES_H_
