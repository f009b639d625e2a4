#include "support/Switches.h"

#include <optional>

#include "support/Platform.h"

namespace quellix {

namespace {

bool IsExactlyZero(const char* value) {
  return value[0] == '0' && value[1] == '\0';
}

std::string TextOf(const char* variable) {
  return EnvironmentVariable(variable).value_or(std::string());
}

bool DefaultOn(const char* variable) {
  const std::optional<std::string> value = EnvironmentVariable(variable);
  return IsDefaultOnFlagSet(value ? value->c_str() : nullptr);
}

bool DefaultOff(const char* variable) {
  return IsDefaultOffFlagSet(TextOf(variable).c_str());
}

}  // namespace

bool IsDefaultOnFlagSet(const char* value) {
  return value == nullptr || !IsExactlyZero(value);
}

bool IsDefaultOffFlagSet(const char* value) {
  return value != nullptr && value[0] != '\0' && !IsExactlyZero(value);
}

bool IpcPipelineEnabled() {
  static const bool on = DefaultOn("QUELLIX_IPC_PIPELINE");
  return on;
}

bool UnifiedScanEnabled() {
  static const bool on = DefaultOn("QUELLIX_UNIFIED_SCAN");
  return on;
}

bool MatPipelineEnabled() {
  static const bool on = DefaultOn("QUELLIX_MAT_PIPELINE");
  return on;
}

bool OwnTessEnabled() {
  static const bool on = DefaultOn("QUELLIX_OWN_TESS");
  return on;
}

bool GeoParallelEnabled() {
  static const bool on = DefaultOn("QUELLIX_GEO_PARALLEL");
  return on;
}

bool GeoPipelineEnabled() {
  static const bool on = DefaultOn("QUELLIX_GEO_PIPELINE");
  return on;
}

bool TexDownscaleDisabled() {
  static const bool on = DefaultOff("QUELLIX_NO_TEX_DOWNSCALE");
  return on;
}

bool MeshPerPaintEnabled() {
  static const bool on = DefaultOff("QUELLIX_MESH_PER_PAINT");
  return on;
}

const std::string& IpcDigestPath() {
  static const std::string path = TextOf("QUELLIX_IPC_DIGEST");
  return path;
}

const std::string& PerfLogPath() {
  static const std::string path = TextOf("QUELLIX_PERF_LOG_FILE");
  return path;
}

const std::string& TessValidatePath() {
  static const std::string path = TextOf("QUELLIX_TESS_VALIDATE");
  return path;
}

const std::string& TessProbePath() {
  static const std::string path = TextOf("QUELLIX_TESS_PROBE");
  return path;
}

const std::string& SuGatesText() {
  static const std::string text = TextOf("QUELLIX_SU_GATES");
  return text;
}

}  // namespace quellix
