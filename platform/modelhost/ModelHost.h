// What the stand-in host offers beside the host's own API: loading files, what has no call of its
// own there, and modes for tests. Results are as those of the API.
#ifndef MODELHOST_MODELHOST_H_
#define MODELHOST_MODELHOST_H_

#include <SketchUpAPI/sketchup.h>

struct ModelHostCamera {
  struct SUPoint3D eye;
  struct SUPoint3D target;
  struct SUVector3D up;
  // Vertical, in degrees.
  double field_of_view;
};

#ifndef __cplusplus
typedef struct ModelHostCamera ModelHostCamera;
#endif

SU_EXTERN_C_BEGIN

// Reads a scene (.json) or any file that assimp reads into a new model, which the caller releases.
// `message`, a created string, gets one sentence: on failure what is wrong and where, on success
// what had to be left out, or nothing. SERIALIZATION when the file cannot be read.
SU_EXPORT enum SUResult modelhost_load(const char* path, SUModelRef* out_model,
                                       SUStringRef* message);
// Makes it the model that the host's API calls the active one; a null handle: there is none. It stays
// the caller's; once it is released there is none either.
SU_EXPORT enum SUResult modelhost_set_active_model(SUModelRef model);
// NO_DATA for a model without a camera.
SU_EXPORT enum SUResult modelhost_get_camera(SUModelRef model, struct ModelHostCamera* camera);
SU_EXPORT enum SUResult modelhost_set_camera(SUModelRef model,
                                             const struct ModelHostCamera* camera);

// An id from 1 to 1,000,000 is never given out by a model itself; any other is free as long as
// the model has not given it out. DUPLICATE for an id that is taken.
SU_EXPORT enum SUResult modelhost_set_persistent_id(SUEntityRef entity, int64_t id);
// An outline in the plane of the face, as a component that cuts the face makes it.
SU_EXPORT enum SUResult modelhost_face_add_opening(SUFaceRef face, size_t len,
                                                   const struct SUPoint3D points[]);
SU_EXPORT enum SUResult modelhost_face_clear_openings(SUFaceRef face);
SU_EXPORT enum SUResult modelhost_material_set_workflow(SUMaterialRef material,
                                                        enum SUMaterialWorkflow workflow);
// Makes it a colorized texture with these shifts, whatever its colour.
SU_EXPORT enum SUResult modelhost_material_set_colorize(SUMaterialRef material, double hue,
                                                        double saturation, double lightness);
SU_EXPORT enum SUResult modelhost_texture_set_use_alpha(SUTextureRef texture, bool use);
SU_EXPORT enum SUResult modelhost_delete_attribute(SUAttributeDictionaryRef dictionary,
                                                   const char* key);
// Takes a material, a layer or a component definition out of its model. What was painted with the
// material has none, what was on the layer is on the first one, what placed the definition goes.
SU_EXPORT enum SUResult modelhost_remove(SUEntityRef entity);

// How many objects are alive that a caller has made and has not released or given away: strings,
// typed values, image representations, writers, helpers, openings and inputs.
SU_EXPORT size_t modelhost_owned_objects(void);

// Test modes, all off at first; see core/CallModes.h. Categories are facedata, meshhelper,
// uvhelper, texturewriter, imagerep and attrdict; several are joined by commas, "all" is every one.
SU_EXPORT enum SUResult modelhost_watch(const char* serialised_categories);
// The `nth` call from now of `function` answers `result` and does nothing; with `onwards` so does
// every later one.
SU_EXPORT enum SUResult modelhost_fail(const char* function, int64_t nth, enum SUResult result,
                                       bool onwards);
// Every call of `function` ("*": of any) takes that much longer.
SU_EXPORT enum SUResult modelhost_cost(const char* function, int64_t nanoseconds);
// A definition may be placed inside itself, which only a damaged file holds. What was placed stays
// when the modes are reset.
SU_EXPORT void modelhost_allow_circles(void);
SU_EXPORT void modelhost_reset_modes(void);
// Calls of one function while a mode was on.
SU_EXPORT uint64_t modelhost_calls(const char* function);
// One line per function that was called: its name, a blank and how often.
SU_EXPORT enum SUResult modelhost_call_list(SUStringRef* list);
// How many overlaps the watch has seen; `report`, which may be null, gets a line for each.
SU_EXPORT size_t modelhost_overlaps(SUStringRef* report);

SU_EXTERN_C_END

#endif  // MODELHOST_MODELHOST_H_
