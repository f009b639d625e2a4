#include "geometry/GeometryPath.h"

#include "geometry/FaceProbe.h"
#include "geometry/TessValidation.h"
#include "support/Switches.h"

namespace quellix {

GeometryPath ChooseGeometryPath(const std::function<bool()>& containsImages) {
  if (TessValidationEnabled() || FaceProbeEnabled()) return GeometryPath::Serial;
  if (GeoPipelineEnabled() && !containsImages()) return GeometryPath::Pipeline;
  return GeoParallelEnabled() ? GeometryPath::Parallel : GeometryPath::Serial;
}

}  // namespace quellix
