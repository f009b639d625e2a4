// Edits that the API has no calls for, and recording them.
#include <algorithm>
#include <filesystem>

#include "ModelHost.h"
#include "core/Args.h"
#include "core/Paths.h"
#include "model/Model.h"
#include "model/Reshape.h"

using namespace modelhost;

namespace {

// The elements behind handles; false when one is not among `entities`.
bool collect(const Entities& entities, size_t len, const SUEntityRef refs[], Elements& elements) {
  for (size_t i = 0; i < len; ++i) {
    const DrawingElement* element = find(SUDrawingElementRef{refs[i].ptr});
    if (element == nullptr || element->parent != &entities) return false;
    elements.insert(element);
  }
  return true;
}

SUResult giveFound(SUModelRef model, SUEntityRef* entity,
                   const std::function<bool(const Entity&)>& wanted) {
  return giveRef(model, entity, [&](const Model& m) { return m.findEntity(wanted); });
}

// Calls use(recorder) for a model that is watched.
template <class Use>
SUResult withRecorder(SUModelRef model, Use use) {
  const Model* m = find(model);
  if (m == nullptr || m->watcher() == nullptr) return SU_ERROR_INVALID_INPUT;
  return use(*m->watcher());
}

}  // namespace

SUResult modelhost_get_num_definitions(SUModelRef model, size_t* count) {
  return give(model, count, [](const Model& m) { return m.allDefinitions().size(); });
}

SUResult modelhost_get_definitions(SUModelRef model, size_t len,
                                   SUComponentDefinitionRef definitions[], size_t* count) {
  return giveList(model, len, definitions, count,
                  [](const Model& m) { return m.allDefinitions(); });
}

SUResult modelhost_find_persistent_id(SUModelRef model, int64_t id, SUEntityRef* entity) {
  return giveFound(model, entity, [id](const Entity& e) { return e.persistentId() == id; });
}

SUResult modelhost_find_id(SUModelRef model, int32_t id, SUEntityRef* entity) {
  return giveFound(model, entity, [id](const Entity& e) { return e.id() == id; });
}

SUResult modelhost_get_num_model_dictionaries(SUModelRef model, size_t* count) {
  return give(model, count, [](const Model& m) { return m.dictionaries.size(); });
}

SUResult modelhost_get_model_dictionaries(SUModelRef model, size_t len,
                                          SUAttributeDictionaryRef dictionaries[], size_t* count) {
  return giveList(model, len, dictionaries, count,
                  [](const Model& m) -> const Dictionaries& { return m.dictionaries; });
}

SUResult modelhost_folder_to_top(SULayerFolderRef folder) {
  return change(folder, [](LayerFolder& f) {
    if (f.parent == nullptr) return;
    willChange(*f.parent);
    std::erase(f.parent->folders, &f);
    f.parent = nullptr;
  });
}

SUResult modelhost_set_path(SUModelRef model, const char* path) {
  return changeFrom(model, path, [&](Model& m, char) {
    m.path = path;
    m.title = utf8(filePath(path).stem());
  });
}

SUResult modelhost_get_owner(SUEntitiesRef entities, SUComponentDefinitionRef* definition) {
  return giveRef(entities, definition, [](const Entities& e) { return e.owner(); });
}

SUResult modelhost_move(SUComponentInstanceRef instance, const SUTransformation* transform) {
  Instance* i = find(instance);
  if (i == nullptr) return SU_ERROR_INVALID_INPUT;
  if (transform == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  i->transform = *transform;
  Recorder* recorder = i->model() != nullptr ? i->model()->recorder() : nullptr;
  if (recorder != nullptr) recorder->tell(Recorder::What::Changed, *i);
  return SU_ERROR_NONE;
}

SUResult modelhost_explode(SUComponentInstanceRef instance) {
  Instance* i = find(instance);
  if (i == nullptr || i->parent == nullptr) return SU_ERROR_INVALID_INPUT;
  return explode(*i) ? SU_ERROR_NONE : SU_ERROR_INVALID_ARGUMENT;
}

SUResult modelhost_make_unique(SUComponentInstanceRef instance) {
  Instance* i = find(instance);
  if (i == nullptr || i->parent == nullptr || i->model() == nullptr) return SU_ERROR_INVALID_INPUT;
  makeUnique(*i);
  return SU_ERROR_NONE;
}

SUResult modelhost_group(SUEntitiesRef entities, size_t len, const SUEntityRef elements[],
                         SUGroupRef* group) {
  Entities* e = find(entities);
  if (e == nullptr || e->model() == nullptr) return SU_ERROR_INVALID_INPUT;
  if (elements == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (group == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  Elements chosen;
  if (!collect(*e, len, elements, chosen)) return SU_ERROR_INVALID_INPUT;
  *group = refOf<SUGroupRef>(&modelhost::group(*e, chosen));
  return SU_ERROR_NONE;
}

SUResult modelhost_transform(SUEntitiesRef entities, size_t len, const SUEntityRef elements[],
                             const SUTransformation* transform) {
  Entities* e = find(entities);
  if (e == nullptr) return SU_ERROR_INVALID_INPUT;
  if (elements == nullptr || transform == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  Elements chosen;
  if (!collect(*e, len, elements, chosen) || !isFinite(*transform)) return SU_ERROR_INVALID_INPUT;
  modelhost::transform(*e, chosen, *transform);
  return SU_ERROR_NONE;
}

SUResult modelhost_record(SUModelRef model) {
  return change(model, [](Model& m) { m.watch(); });
}

SUResult modelhost_pause_recording(SUModelRef model, bool pause) {
  return withRecorder(model, [&](Recorder& recorder) {
    if (pause) recorder.forget();
    recorder.paused = pause;
    return SU_ERROR_NONE;
  });
}

SUResult modelhost_commit(SUModelRef model, bool join, bool* changed) {
  return withRecorder(model, [&](Recorder& recorder) {
    const bool any = recorder.commit(join);
    if (changed != nullptr) *changed = any;
    return SU_ERROR_NONE;
  });
}

SUResult modelhost_abort(SUModelRef model) {
  return withRecorder(model, [](Recorder& recorder) {
    recorder.abort();
    return SU_ERROR_NONE;
  });
}

SUResult modelhost_undo(SUModelRef model) {
  return withRecorder(
      model, [](Recorder& recorder) { return recorder.undo() ? SU_ERROR_NONE : SU_ERROR_NO_DATA; });
}

SUResult modelhost_redo(SUModelRef model) {
  return withRecorder(
      model, [](Recorder& recorder) { return recorder.redo() ? SU_ERROR_NONE : SU_ERROR_NO_DATA; });
}

SUResult modelhost_get_num_changes(SUModelRef model, size_t* count) {
  if (count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  return withRecorder(model, [&](Recorder& recorder) {
    *count = recorder.events().size();
    return SU_ERROR_NONE;
  });
}

SUResult modelhost_take_changes(SUModelRef model, size_t len, ModelHostChange changes[],
                                size_t* count) {
  if (changes == nullptr || count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  return withRecorder(model, [&](Recorder& recorder) {
    *count = 0;
    for (const Recorder::Event& event : recorder.drain()) {
      const SUEntityRef entity{event.handle};
      const SURefType type = SUEntityGetType(entity);
      const SUEntitiesRef among{event.among};
      const bool removed = event.what == Recorder::What::Removed;
      const bool gone =
          removed ? among.ptr != nullptr && find(among) == nullptr : type == SURefType_Unknown;
      if (*count == len || gone) continue;
      changes[(*count)++] = {removed                               ? ModelHostEvent_Removed
                             : event.what == Recorder::What::Added ? ModelHostEvent_Added
                                                                   : ModelHostEvent_Changed,
                             typeOf(event.kind), entity, event.id, among};
    }
    return SU_ERROR_NONE;
  });
}
