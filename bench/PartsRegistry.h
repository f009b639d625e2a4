#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "Figures.h"

namespace bench {

// Nanoseconds of processor time of one round, by a benchmark's name.
using Times = std::map<std::string, double>;

// A figure that follows from benchmarks of the same program; a file registers its own beside its
// benchmarks, as a global. It is left out when a benchmark that it names was not run.
class Figure {
 public:
  Figure(std::string name, std::string unit, Figures::Better better, std::optional<double> goal,
         std::function<double(const Times&)> value);
};

}  // namespace bench
