#include "ModelHost.h"

#include <cmath>
#include <exception>
#include <sstream>
#include <string>

#include "core/Args.h"
#include "core/CallModes.h"
#include "import/Load.h"
#include "model/Model.h"

using namespace modelhost;

SUResult modelhost_load(const char* path, SUModelRef* out_model, SUStringRef* message) {
  if (const SUResult may = mayCreate(out_model); may != SU_ERROR_NONE) return may;
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  const LoadResult loaded = loadFile(path);
  if (message != nullptr) putText(loaded.message, message);
  if (loaded.model.ptr == nullptr) return SU_ERROR_SERIALIZATION;
  *out_model = loaded.model;
  return SU_ERROR_NONE;
}

SUResult modelhost_get_camera(SUModelRef model, ModelHostCamera* camera) {
  const Model* m = find(model);
  if (m != nullptr && !m->camera) return SU_ERROR_NO_DATA;
  return give(model, camera, [](const Model& from) {
    const Camera& c = *from.camera;
    return ModelHostCamera{c.eye, c.target, c.up, c.fieldOfView};
  });
}

SUResult modelhost_set_camera(SUModelRef model, const ModelHostCamera* camera) {
  return changeFrom(model, camera, [](Model& m, const ModelHostCamera& c) {
    m.camera = Camera{c.eye, c.target, c.up, c.field_of_view};
  });
}

SUResult modelhost_set_persistent_id(SUEntityRef entity, int64_t id) {
  Entity* e = find(entity);
  if (e == nullptr || e->model() == nullptr) return SU_ERROR_INVALID_INPUT;
  if (id <= 0) return SU_ERROR_OUT_OF_RANGE;
  return e->model()->setPersistentId(*e, id) ? SU_ERROR_NONE : SU_ERROR_DUPLICATE;
}

SUResult modelhost_face_add_opening(SUFaceRef face, size_t len, const SUPoint3D points[]) {
  return changeFrom(face, points, [&](Face& f, const SUPoint3D&) {
    f.openings.emplace_back(points, points + len);
  });
}

SUResult modelhost_face_clear_openings(SUFaceRef face) {
  return change(face, [](Face& f) { f.openings.clear(); });
}

SUResult modelhost_material_set_workflow(SUMaterialRef material, SUMaterialWorkflow workflow) {
  return change(material, [&](Material& m) { m.workflow = workflow; });
}

SUResult modelhost_material_set_colorize(SUMaterialRef material, double hue, double saturation,
                                         double lightness) {
  if (!std::isfinite(hue) || !std::isfinite(saturation) || !std::isfinite(lightness)) {
    return SU_ERROR_OUT_OF_RANGE;
  }
  return change(material, [&](Material& m) {
    m.deltas = ColorDeltas{hue, saturation, lightness};
    if (m.texture) m.type = SUMaterialType_ColorizedTexture;
  });
}

SUResult modelhost_texture_set_use_alpha(SUTextureRef texture, bool use) {
  return change(texture, [&](Texture& t) { t.useAlpha = use; });
}

SUResult modelhost_delete_attribute(SUAttributeDictionaryRef dictionary, const char* key) {
  Dictionary* d = find(dictionary);
  if (d == nullptr) return SU_ERROR_INVALID_INPUT;
  if (key == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (d->find(key) == nullptr) return SU_ERROR_NO_DATA;
  willChange(*d);
  d->erase(key);
  return SU_ERROR_NONE;
}

SUResult modelhost_remove(SUEntityRef entity) {
  Entity* e = find(entity);
  if (e == nullptr || e->model() == nullptr) return SU_ERROR_INVALID_INPUT;
  Model& model = *e->model();
  switch (e->kind()) {
    case Kind::Material:
      model.remove(static_cast<Material&>(*e));
      return SU_ERROR_NONE;
    case Kind::Layer:
      return model.remove(static_cast<Layer&>(*e)) ? SU_ERROR_NONE : SU_ERROR_INVALID_OPERATION;
    case Kind::Definition:
      if (static_cast<Definition&>(*e).type != SUComponentType_Normal) break;
      model.remove(static_cast<Definition&>(*e));
      return SU_ERROR_NONE;
    case Kind::LayerFolder:
      model.remove(static_cast<LayerFolder&>(*e));
      return SU_ERROR_NONE;
    default:
      break;
  }
  return SU_ERROR_INVALID_INPUT;
}

size_t modelhost_owned_objects(void) {
  const HandleTable& table = HandleTable::instance();
  size_t count = 0;
  for (const Kind kind :
       {Kind::String, Kind::TypedValue, Kind::ImageRep, Kind::TextureWriter, Kind::UvHelper,
        Kind::MeshHelper, Kind::Opening, Kind::GeometryInput, Kind::LoopInput}) {
    count += table.liveCount(kind);
  }
  return count;
}

SUResult modelhost_watch(const char* serialised_categories) {
  if (serialised_categories == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  std::vector<std::string> names;
  std::istringstream list(serialised_categories);
  for (std::string name; std::getline(list, name, ',');) names.push_back(name);
  return CallModes::instance().watch(names) ? SU_ERROR_NONE : SU_ERROR_INVALID_ARGUMENT;
}

SUResult modelhost_fail(const char* function, int64_t nth, SUResult result, bool onwards) {
  if (function == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (nth < 1 || result == SU_ERROR_NONE) return SU_ERROR_OUT_OF_RANGE;
  CallModes::instance().fail(function, nth, result, onwards);
  return SU_ERROR_NONE;
}

SUResult modelhost_cost(const char* function, int64_t nanoseconds) {
  if (function == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (nanoseconds < 0) return SU_ERROR_OUT_OF_RANGE;
  CallModes::instance().cost(function, nanoseconds);
  return SU_ERROR_NONE;
}

void modelhost_allow_circles(void) {
  CallModes::instance().allowCircles();
}

void modelhost_reset_modes(void) {
  CallModes::instance().reset();
}

uint64_t modelhost_calls(const char* function) {
  if (function == nullptr) return 0;
  const auto counts = CallModes::instance().counts();
  const auto at = counts.find(function);
  return at == counts.end() ? 0 : at->second;
}

SUResult modelhost_call_list(SUStringRef* list) {
  std::string text;
  for (const auto& [name, count] : CallModes::instance().counts()) {
    text += name + " " + std::to_string(count) + "\n";
  }
  return putText(text, list);
}

size_t modelhost_overlaps(SUStringRef* report) {
  const auto overlaps = CallModes::instance().overlaps();
  std::string text;
  for (const std::string& line : overlaps) text += line + "\n";
  if (report != nullptr) putText(text, report);
  return overlaps.size();
}
