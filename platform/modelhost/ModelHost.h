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

enum ModelHostEvent { ModelHostEvent_Added, ModelHostEvent_Changed, ModelHostEvent_Removed };

// Something happened to an entity of a watched model.
struct ModelHostChange {
  enum ModelHostEvent event;
  enum SURefType type;
  // Stands for nothing once the entity is gone; its id and the entities it was among are told.
  SUEntityRef entity;
  int32_t id;
  // Null for what is among none: definitions, materials, layers and folders.
  SUEntitiesRef among;
};

#ifndef __cplusplus
typedef struct ModelHostCamera ModelHostCamera;
typedef struct ModelHostChange ModelHostChange;
#endif

SU_EXTERN_C_BEGIN

// Reads a scene (.json) or any file that assimp reads into a new model, which the caller releases.
// `message`, a created string, gets one sentence: on failure what is wrong and where, on success
// what had to be left out, or nothing. SERIALIZATION when the file cannot be read.
SU_EXPORT enum SUResult modelhost_load(const char* path, SUModelRef* out_model,
                                       SUStringRef* message);
// Makes it the model that the host's API calls the active one; a null handle: there is none. It
// stays the caller's; once it is released there is none either.
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
SU_EXPORT enum SUResult modelhost_get_num_model_dictionaries(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult modelhost_get_model_dictionaries(SUModelRef model, size_t len,
                                                         SUAttributeDictionaryRef dictionaries[],
                                                         size_t* count);
SU_EXPORT enum SUResult modelhost_delete_attribute(SUAttributeDictionaryRef dictionary,
                                                   const char* key);
// Takes a material, a layer, a layer folder or a component definition out of its model. What was
// painted with the material has none, what was on the layer is on the first one, what was in the
// folder is where the folder was, what placed the definition goes.
SU_EXPORT enum SUResult modelhost_remove(SUEntityRef entity);

// The definition that holds these entities; NO_DATA for the root of a model.
SU_EXPORT enum SUResult modelhost_get_owner(SUEntitiesRef entities,
                                            SUComponentDefinitionRef* definition);
// Those of groups and images too, each once: first the components, in their order.
SU_EXPORT enum SUResult modelhost_get_num_definitions(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult modelhost_get_definitions(SUModelRef model, size_t len,
                                                  SUComponentDefinitionRef definitions[],
                                                  size_t* count);
// The material, layer, folder, definition or drawing element of that id; NO_DATA when there is
// none. Looks through the whole model.
SU_EXPORT enum SUResult modelhost_find_persistent_id(SUModelRef model, int64_t id,
                                                     SUEntityRef* entity);
SU_EXPORT enum SUResult modelhost_find_id(SUModelRef model, int32_t id, SUEntityRef* entity);
// Where the model is kept from now on; nothing is written. The title follows from it.
SU_EXPORT enum SUResult modelhost_set_path(SUModelRef model, const char* path);

// Edits of several elements at once; INVALID_INPUT for elements that are not among `entities`.

// Puts what a component or group places in its place. What has no material, or lies on the first
// layer, gets those of the instance. INVALID_ARGUMENT for an image, and for what flattens.
SU_EXPORT enum SUResult modelhost_explode(SUComponentInstanceRef instance);
// As setting the transformation, but nothing that can be undone.
SU_EXPORT enum SUResult modelhost_move(SUComponentInstanceRef instance,
                                       const struct SUTransformation* transform);
// Gives an instance, group or image a definition of its own, unless it has one.
SU_EXPORT enum SUResult modelhost_make_unique(SUComponentInstanceRef instance);
// Moves elements into a new group. They get new ids there; edges go with their faces.
SU_EXPORT enum SUResult modelhost_group(SUEntitiesRef entities, size_t len,
                                        const SUEntityRef elements[], SUGroupRef* group);
// Moves elements, and with the vertices of edges and faces whatever else touches those.
SU_EXPORT enum SUResult modelhost_transform(SUEntitiesRef entities, size_t len,
                                            const SUEntityRef elements[],
                                            const struct SUTransformation* transform);

// From now on changes are recorded, whoever makes them, until the model is released. Costs nothing
// before, and for a model that nobody edits.
SU_EXPORT enum SUResult modelhost_record(SUModelRef model);
// While paused, changes are neither recorded nor told. What could be undone is forgotten: it may
// not fit any more.
SU_EXPORT enum SUResult modelhost_pause_recording(SUModelRef model, bool pause);
// Ends an operation, which began where the last one ended; `join` makes it part of that one.
// `changed` says whether anything has changed in it. The last 100 operations are kept.
SU_EXPORT enum SUResult modelhost_commit(SUModelRef model, bool join, bool* changed);
// Takes back what the open operation has done. What comes back has its place and its ids, and the
// handles that stood for it do so again.
SU_EXPORT enum SUResult modelhost_abort(SUModelRef model);
// NO_DATA when there is nothing to undo, or to do again.
SU_EXPORT enum SUResult modelhost_undo(SUModelRef model);
SU_EXPORT enum SUResult modelhost_redo(SUModelRef model);
// What has happened since the last call, in order, as often as it happened. What was only touched
// and is gone by now is left out.
SU_EXPORT enum SUResult modelhost_get_num_changes(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult modelhost_take_changes(SUModelRef model, size_t len,
                                               struct ModelHostChange changes[], size_t* count);

// Takes a folder out of the one that it is in.
SU_EXPORT enum SUResult modelhost_folder_to_top(SULayerFolderRef folder);

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
