#pragma once

#include <string>
#include <vector>

#include <SketchUpAPI/sketchup.h>

namespace CW {

class Entities;
class Layer;
class TypedValue;

// A model of the host. Null when the call that gave it did not succeed.
class Model {
 public:
  // Makes an empty model, released with the wrapper.
  Model();
  // The host's model: not owned, unless `owned`; `result` is that of the call that gave it.
  explicit Model(SUModelRef su_model, bool owned = false, SUResult result = SU_ERROR_NONE);
  // A copy is a mere name.
  Model(const Model& other);
  Model(Model&& other) noexcept;
  Model& operator=(Model other) noexcept;
  ~Model();

  bool is_null() const { return result_ != SU_ERROR_NONE; }
  SUModelRef ref() const { return su_model_; }

  // The root's content.
  Entities entities() const;
  std::vector<Layer> layers() const;
  SURenderingOptionsRef rendering_options() const;
  // The option under `key`; an empty value when there is none.
  TypedValue rendering_option(const std::string& key) const;

 private:
  SUModelRef su_model_ = SU_INVALID;
  bool owned_ = false;
  SUResult result_ = SU_ERROR_GENERIC;
};

}  // namespace CW
