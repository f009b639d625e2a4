#pragma once

#include <nlohmann/json.hpp>

#include "app/Output.h"

namespace kvapp {

// What a run received, holds and found.
nlohmann::json MakeReport(const RunResult& result);

nlohmann::json ExportToJson(const ExportSummary& summary);
nlohmann::json FindingToJson(const Finding& finding);

}  // namespace kvapp
