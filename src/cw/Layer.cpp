#include "cw/Layer.h"

#include "cw/String.h"

namespace CW {

namespace {

SUEntityRef create() {
  SULayerRef su_layer = SU_INVALID;
  SULayerCreate(&su_layer);
  return SULayerToEntity(su_layer);
}

}  // namespace

Layer::Layer() : Entity(create(), false) {}

Layer::Layer(SULayerRef su_layer) : Entity(SULayerToEntity(su_layer)) {}

Layer::Layer(const Layer& other) : Entity(other) {
  if (!other.owns()) return;
  reset(create(), false);
  if (is_null()) return;
  name(other.name());
  copy_attributes_from(other);
}

Layer& Layer::operator=(Layer other) noexcept {
  swap(other);
  return *this;
}

std::string Layer::name() const {
  require_valid(is_null(), "Layer", "name");
  return fetch_text([this](SUStringRef* su_name) { return SULayerGetName(ref(), su_name); });
}

void Layer::name(const std::string& name) {
  require_valid(is_null(), "Layer", "name");
  SULayerSetName(ref(), name.c_str());
}

}  // namespace CW
