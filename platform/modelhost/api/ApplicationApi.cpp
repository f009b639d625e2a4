#include <SketchUpAPI/application/application.h>

#include <atomic>

#include "ModelHost.h"
#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

namespace {

// A handle that may have been released since; the table knows.
std::atomic<void*> activeModel{nullptr};

}  // namespace

SUResult SUApplicationGetActiveModel(SUModelRef* model) {
  MODELHOST_CALL(SUApplicationGetActiveModel);
  if (model == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  const SUModelRef active{activeModel.load()};
  if (find(active) == nullptr) return SU_ERROR_NO_DATA;
  *model = active;
  return SU_ERROR_NONE;
}

SUResult modelhost_set_active_model(SUModelRef model) {
  if (model.ptr != nullptr && find(model) == nullptr) return SU_ERROR_INVALID_INPUT;
  activeModel = model.ptr;
  return SU_ERROR_NONE;
}
