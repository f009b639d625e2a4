#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/Output.h"

namespace kvapp {

// What a run received, holds and found. `troubles` are outputs that could not be written.
nlohmann::json MakeReport(const RunResult& result, const std::vector<std::string>& troubles);

}  // namespace kvapp
