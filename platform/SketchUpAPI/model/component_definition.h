#ifndef SKETCHUPAPI_MODEL_COMPONENT_DEFINITION_H_
#define SKETCHUPAPI_MODEL_COMPONENT_DEFINITION_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

enum SUSnapToBehavior {
  SUSnapToBehavior_None = 0,
  SUSnapToBehavior_Any,
  SUSnapToBehavior_Horizontal,
  SUSnapToBehavior_Vertical,
  SUSnapToBehavior_Sloped
};

struct SUComponentBehavior {
  enum SUSnapToBehavior component_snap;
  bool component_cuts_opening;
  bool component_always_face_camera;
  bool component_shadows_face_sun;
  size_t component_no_scale_mask;
};

enum SUComponentType { SUComponentType_Normal = 0, SUComponentType_Group, SUComponentType_Image };

#ifndef __cplusplus
typedef struct SUComponentBehavior SUComponentBehavior;
#endif

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUComponentDefinitionToEntity(SUComponentDefinitionRef definition);
SU_EXPORT SUComponentDefinitionRef SUComponentDefinitionFromEntity(SUEntityRef entity);
SU_EXPORT SUDrawingElementRef
SUComponentDefinitionToDrawingElement(SUComponentDefinitionRef definition);
SU_EXPORT SUComponentDefinitionRef
SUComponentDefinitionFromDrawingElement(SUDrawingElementRef element);

SU_EXPORT enum SUResult SUComponentDefinitionCreate(SUComponentDefinitionRef* out_definition);
SU_EXPORT enum SUResult SUComponentDefinitionRelease(SUComponentDefinitionRef* definition);
// The instance belongs to the caller until it is added to entities.
SU_EXPORT enum SUResult SUComponentDefinitionCreateInstance(SUComponentDefinitionRef definition,
                                                            SUComponentInstanceRef* out_instance);
SU_EXPORT enum SUResult SUComponentDefinitionGetName(SUComponentDefinitionRef definition,
                                                     SUStringRef* name);
SU_EXPORT enum SUResult SUComponentDefinitionSetName(SUComponentDefinitionRef definition,
                                                     const char* name);
SU_EXPORT enum SUResult SUComponentDefinitionGetDescription(SUComponentDefinitionRef definition,
                                                            SUStringRef* description);
SU_EXPORT enum SUResult SUComponentDefinitionSetDescription(SUComponentDefinitionRef definition,
                                                            const char* description);
SU_EXPORT enum SUResult SUComponentDefinitionGetEntities(SUComponentDefinitionRef definition,
                                                         SUEntitiesRef* entities);
SU_EXPORT enum SUResult SUComponentDefinitionGetType(SUComponentDefinitionRef definition,
                                                     enum SUComponentType* type);
SU_EXPORT enum SUResult SUComponentDefinitionGetBehavior(SUComponentDefinitionRef definition,
                                                         struct SUComponentBehavior* behavior);
SU_EXPORT enum SUResult SUComponentDefinitionSetBehavior(
    SUComponentDefinitionRef definition, const struct SUComponentBehavior* behavior);
// Whether the faces, with those of everything nested, close a solid: every edge has two of them.
SU_EXPORT enum SUResult SUComponentDefinitionIsManifold(SUComponentDefinitionRef definition,
                                                        bool* manifold);
SU_EXPORT enum SUResult SUComponentDefinitionGetNumInstances(SUComponentDefinitionRef definition,
                                                             size_t* count);
SU_EXPORT enum SUResult SUComponentDefinitionGetInstances(SUComponentDefinitionRef definition,
                                                          size_t len,
                                                          SUComponentInstanceRef instances[],
                                                          size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_COMPONENT_DEFINITION_H_
