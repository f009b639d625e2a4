#pragma once

#include <string>

// The environment switches. Each variable is read once, at its accessor's first call, and then
// fixed for the life of the process. Every accessor may be called from any thread.

namespace quellix {

// The rule of a switch that is on by default: only a value of exactly "0" turns it off; `value` is
// null when the variable is unset.
bool IsDefaultOnFlagSet(const char* value);

// The rule of a switch that is off by default: unset, empty and exactly "0" leave it off.
bool IsDefaultOffFlagSet(const char* value);

bool IpcPipelineEnabled();    // QUELLIX_IPC_PIPELINE, default on
bool UnifiedScanEnabled();    // QUELLIX_UNIFIED_SCAN, default on
bool MatPipelineEnabled();    // QUELLIX_MAT_PIPELINE, default on
bool OwnTessEnabled();        // QUELLIX_OWN_TESS, default on
bool GeoParallelEnabled();    // QUELLIX_GEO_PARALLEL, default on
bool GeoPipelineEnabled();    // QUELLIX_GEO_PIPELINE, default on
bool TexDownscaleDisabled();  // QUELLIX_NO_TEX_DOWNSCALE, default off
bool MeshPerPaintEnabled();   // QUELLIX_MESH_PER_PAINT, default off

// Paths of diagnostic files, UTF-8; empty when the diagnostic is off.
const std::string& IpcDigestPath();     // QUELLIX_IPC_DIGEST
const std::string& PerfLogPath();       // QUELLIX_PERF_LOG_FILE
const std::string& TessValidatePath();  // QUELLIX_TESS_VALIDATE
const std::string& TessProbePath();     // QUELLIX_TESS_PROBE

// The raw configuration of the host gates; empty when unset.
const std::string& SuGatesText();  // QUELLIX_SU_GATES

}  // namespace quellix
