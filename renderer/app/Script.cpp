#include "app/Script.h"

#include <fstream>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

#include "app/Paths.h"

namespace kvapp {

using json = nlohmann::ordered_json;
using std::chrono::milliseconds;

namespace {

milliseconds Milliseconds(const json& value) {
  return milliseconds(value.get<std::int64_t>());
}

action::Ask ParseAsk(const json& value) {
  action::Ask ask;
  if (value.is_number()) {
    ask.request.code = value.get<std::uint32_t>();
    return ask;
  }
  ask.request = ParseRequest(value);
  if (value.contains("timeout_ms")) ask.timeout = Milliseconds(value["timeout_ms"]);
  ask.wait = value.value("wait", true);
  return ask;
}

action::Hang ParseHang(const json& value) {
  if (value == "forever") return {};
  return {Milliseconds(value)};
}

action::HoldMutex ParseHold(const json& value) {
  static const std::set<std::string> events = {"commandReady", "commandDone", "segmentReplaced",
                                               "requestReady", "requestDone"};
  action::HoldMutex hold;
  hold.event = value.at("event").get<std::string>();
  if (!events.contains(hold.event)) {
    throw std::runtime_error("hold_mutex knows no event \"" + hold.event + "\"");
  }
  if (value.value("then", json("crash")) == "crash") {
    hold.then = action::Crash{};
  } else {
    hold.then = ParseHang(value["then"] == "hang" ? json("forever") : value["then"]);
  }
  return hold;
}

Action ParseAction(const std::string& name, const json& value) {
  if (name == "request") return ParseAsk(value);
  if (name == "delay_ms") return action::Delay{Milliseconds(value)};
  if (name == "exit") return action::Exit{value.get<int>()};
  if (name == "crash") return action::Crash{};
  if (name == "hang") return ParseHang(value);
  if (name == "hold_mutex") return ParseHold(value);
  if (name == "link_camera") return action::LinkCamera{value.get<bool>()};
  if (name == "quit") {
    action::Quit quit;
    if (value.is_object() && value.contains("timeout_ms")) {
      quit.timeout = Milliseconds(value["timeout_ms"]);
    }
    return quit;
  }
  throw std::runtime_error("\"" + name + "\" is neither a trigger nor an action");
}

}  // namespace

Script Script::Load(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("the script " + Utf8(file) + " cannot be read");
  try {
    return Parse(json::parse(stream));
  } catch (const std::exception& error) {
    throw std::runtime_error("the script " + Utf8(file) + " is wrong: " + error.what());
  }
}

Script Script::Parse(const json& steps) {
  Script script;
  for (const json& step : steps) script.steps_.push_back(ParseStep(step));
  return script;
}

Script::Step Script::ParseStep(const json& value) {
  Step step;
  bool triggered = false;
  for (const auto& [name, content] : value.items()) {
    if (name == "nth" || name == "phase" || name == "repeat") continue;
    if (name == "at") {
      step.trigger = Trigger::AtCommand;
      step.number = content.get<std::uint64_t>();
    } else if (name == "command") {
      step.trigger = Trigger::NthOfName;
      step.name = content.get<std::string>();
      step.number = value.value("nth", std::uint64_t{1});
    } else if (name == "export_end") {
      step.trigger = Trigger::ExportEnd;
      step.number = content.get<std::uint64_t>();
    } else if (name == "idle_ms" || name == "after_ms") {
      step.trigger = name == "idle_ms" ? Trigger::Idle : Trigger::After;
      step.span = Milliseconds(content);
    } else {
      step.actions.push_back(ParseAction(name, content));
      continue;
    }
    if (std::exchange(triggered, true)) throw std::runtime_error("a step has two triggers");
  }
  if (!triggered) throw std::runtime_error("the step " + value.dump() + " has no trigger");
  if (step.actions.empty()) throw std::runtime_error("the step " + value.dump() + " does nothing");
  const std::string phase = value.value("phase", "before");
  if (phase != "before" && phase != "after") {
    throw std::runtime_error("\"" + phase + "\" is not a phase; there are before and after");
  }
  step.phase = phase == "before" ? Phase::Before : Phase::After;
  const json repeat = value.value("repeat", json(1));
  step.repeat =
      repeat == "forever" ? std::numeric_limits<std::uint64_t>::max() : repeat.get<std::uint64_t>();
  return step;
}

std::vector<Action> Script::AtCommand(const Event& event, Phase phase) {
  std::vector<Action> due;
  for (Step& step : steps_) {
    if (step.phase != phase || step.fired >= step.repeat) continue;
    std::uint64_t number = 0;
    switch (step.trigger) {
      case Trigger::AtCommand:
        number = event.command;
        break;
      case Trigger::NthOfName:
        number = step.name == event.name ? event.nth : 0;
        break;
      case Trigger::ExportEnd:
        number = event.exportEnded;
        break;
      case Trigger::Idle:
      case Trigger::After:
        break;
    }
    if (number == 0 || number < step.number) continue;
    ++step.fired;
    due.insert(due.end(), step.actions.begin(), step.actions.end());
  }
  return due;
}

std::optional<Action> Script::AtRest(milliseconds idle, milliseconds open) {
  for (Step& step : steps_) {
    if (step.trigger != Trigger::Idle && step.trigger != Trigger::After) continue;
    if (step.fired >= step.repeat) continue;
    const milliseconds now = step.trigger == Trigger::Idle ? idle : open;
    if (step.nextAction == 0 && now < step.firedAt + step.span) continue;
    const Action& next = step.actions[step.nextAction];
    if (++step.nextAction == step.actions.size()) {
      step.nextAction = 0;
      ++step.fired;
      step.firedAt = now;
    }
    return next;
  }
  return std::nullopt;
}

bool Script::WaitsForRest() const {
  for (const Step& step : steps_) {
    if ((step.trigger == Trigger::Idle || step.trigger == Trigger::After) &&
        step.fired < step.repeat) {
      return true;
    }
  }
  return false;
}

void Script::CommandCame() {
  for (Step& step : steps_) {
    if (step.trigger == Trigger::Idle) step.firedAt = milliseconds(0);
  }
}

}  // namespace kvapp
