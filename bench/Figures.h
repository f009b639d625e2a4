#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace bench {

// The figures of `make bench` in their file:
//   {"figures": [{"name", "value", "unit", "better": "lower" or "higher", "goal"}], ...}
// with tables of their own beside. What a program does not measure stays as it is, so that
// programs, and runs of different size, add to one file.
class Figures {
 public:
  enum class Better { Lower, Higher };

  explicit Figures(std::filesystem::path figuresFile);

  void Set(const std::string& name, double value, const std::string& unit, Better better,
           std::optional<double> goal = {});
  void SetTable(const std::string& name, nlohmann::json table);
  void Save() const;

  // One line a figure: name, value, goal and whether it is met.
  void Print() const;

 private:
  std::filesystem::path file;
  nlohmann::json content;
};

}  // namespace bench
