#include "Figures.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <utility>

namespace bench {

using nlohmann::json;

Figures::Figures(std::filesystem::path figuresFile)
    : file(std::move(figuresFile)), content({{"figures", json::array()}}) {
  std::ifstream in(file);
  if (!in) return;
  json known = json::parse(in, nullptr, false);
  if (known.is_object() && known.contains("figures")) content = std::move(known);
}

void Figures::Set(const std::string& name, double value, const std::string& unit, Better better,
                  std::optional<double> goal) {
  json figure = {{"name", name},
                 {"value", value},
                 {"unit", unit},
                 {"better", better == Better::Lower ? "lower" : "higher"},
                 {"goal", goal ? json(*goal) : json()}};
  json& figures = content["figures"];
  const auto same = std::find_if(figures.begin(), figures.end(),
                                 [&](const json& known) { return known.at("name") == name; });
  if (same == figures.end()) {
    figures.push_back(std::move(figure));
  } else {
    *same = std::move(figure);
  }
}

void Figures::SetTable(const std::string& name, json table) {
  content[name] = std::move(table);
}

void Figures::Save() const {
  if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path());
  std::ofstream(file) << content.dump(2) << '\n';
}

void Figures::Print() const {
  std::printf("\n%-34s %12s %-12s %10s\n", "figure", "value", "unit", "goal");
  for (const json& figure : content["figures"]) {
    const double value = figure["value"];
    const bool lower = figure["better"] == "lower";
    std::string goal = "-";
    const char* verdict = "";
    if (figure["goal"].is_number()) {
      const double wanted = figure["goal"];
      char text[32];
      std::snprintf(text, sizeof text, "%s %.4g", lower ? "<=" : ">=", wanted);
      goal = text;
      verdict = (lower ? value <= wanted : value >= wanted) ? "met" : "MISSED";
    }
    std::printf("%-34s %12.4g %-12s %10s  %s\n", figure["name"].get<std::string>().c_str(), value,
                figure["unit"].get<std::string>().c_str(), goal.c_str(), verdict);
  }
}

}  // namespace bench
