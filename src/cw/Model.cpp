#include "cw/Model.h"

#include <utility>

#include "cw/Entities.h"
#include "cw/Handle.h"
#include "cw/Layer.h"
#include "cw/TypedValue.h"

namespace CW {

Model::Model() : owned_(true) {
  result_ = SUModelCreate(&su_model_);
}

Model::Model(SUModelRef su_model, bool owned, SUResult result)
    : su_model_(su_model), owned_(owned), result_(result) {}

Model::Model(const Model& other) : su_model_(other.su_model_), result_(other.result_) {}

Model::Model(Model&& other) noexcept {
  *this = std::move(other);
}

Model& Model::operator=(Model other) noexcept {
  std::swap(su_model_, other.su_model_);
  std::swap(owned_, other.owned_);
  std::swap(result_, other.result_);
  return *this;
}

Model::~Model() {
  if (owned_ && !is_null()) SUModelRelease(&su_model_);
}

Entities Model::entities() const {
  require_valid(is_null(), "Model", "entities");
  SUEntitiesRef su_entities = SU_INVALID;
  SUModelGetEntities(su_model_, &su_entities);
  return Entities(su_entities, su_model_);
}

std::vector<Layer> Model::layers() const {
  require_valid(is_null(), "Model", "layers");
  return fetch_wrapped<Layer, SULayerRef>(
      [this](size_t* count) { return SUModelGetNumLayers(su_model_, count); },
      [this](size_t len, SULayerRef* su_layers, size_t* count) {
        return SUModelGetLayers(su_model_, len, su_layers, count);
      });
}

SURenderingOptionsRef Model::rendering_options() const {
  SURenderingOptionsRef su_options = SU_INVALID;
  SUModelGetRenderingOptions(su_model_, &su_options);
  return su_options;
}

TypedValue Model::rendering_option(const std::string& key) const {
  TypedValue value;
  SURenderingOptionsGetValue(rendering_options(), key.c_str(), value.out());
  return value;
}

}  // namespace CW
