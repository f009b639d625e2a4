#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/Request.h"

namespace kvapp {

namespace action {

struct Ask {
  Request request;
  std::chrono::milliseconds timeout{5000};
  bool wait = true;  // before the command is finished
};
struct Delay {
  std::chrono::milliseconds span{0};
};
// Announces that the renderer quits and ends it once that was acknowledged.
struct Quit {
  std::chrono::milliseconds timeout{5000};
};
// Ends the process at once.
struct Exit {
  int status = 0;
};
struct Crash {};
// For ever when no span is given.
struct Hang {
  std::optional<std::chrono::milliseconds> span;
};
// Takes the mutex of an event, then crashes or hangs; the mutex is given back after a hang.
struct HoldMutex {
  std::string event;
  std::variant<Crash, Hang> then;
};
// What GetLinkCamera is answered from now on.
struct LinkCamera {
  bool linked = false;
};

}  // namespace action

using Action = std::variant<action::Ask, action::Delay, action::Quit, action::Exit, action::Crash,
                            action::Hang, action::HoldMutex, action::LinkCamera>;

// What the renderer does on its own for a test: actions, each at a point of the command stream or
// at rest.
class Script {
 public:
  enum class Phase { Before, After };

  struct Event {
    std::uint64_t command = 0;  // its number, from 1
    const char* name = "";
    std::uint64_t nth = 0;          // of that name, from 1
    std::uint64_t exportEnded = 0;  // number of the export that it completed, or 0
  };

  Script() = default;
  // Throws std::runtime_error with one sentence.
  static Script Load(const std::filesystem::path& file);
  static Script Parse(const nlohmann::ordered_json& steps);

  // Actions due in one phase of a command, in the order of the steps.
  std::vector<Action> AtCommand(const Event& event, Phase phase);
  // The next action due at rest: `idle` is the time since the last command ended, `open` that since
  // the channel opened. Empty when there is none.
  std::optional<Action> AtRest(std::chrono::milliseconds idle, std::chrono::milliseconds open);
  // Whether an action may yet fall due at rest.
  bool WaitsForRest() const;
  // A command came: idle times start anew.
  void CommandCame();

 private:
  enum class Trigger { AtCommand, NthOfName, ExportEnd, Idle, After };

  struct Step {
    Trigger trigger = Trigger::AtCommand;
    std::uint64_t number = 0;
    std::string name;
    std::chrono::milliseconds span{0};
    Phase phase = Phase::Before;
    std::uint64_t repeat = 1;
    std::vector<Action> actions;

    std::uint64_t fired = 0;
    std::size_t nextAction = 0;            // at rest, actions come one by one
    std::chrono::milliseconds firedAt{0};  // at rest: in idle or open time
  };

  static Step ParseStep(const nlohmann::ordered_json& step);

  std::vector<Step> steps_;
};

}  // namespace kvapp
