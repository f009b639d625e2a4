#pragma once

#include <SketchUpAPI/sketchup.h>

namespace quellix {

// A step of a walk down into a definition, for as long as it lives. Every walk takes its steps with
// these, one inside the other on its own thread, so that none of them runs in a circle or out of
// stack: a step into a definition that the walk is inside of already, or one that would be deeper
// than kDeepest, is not to be taken, and the timing log says so.
class Descent {
 public:
  static constexpr int kDeepest = 600;

  explicit Descent(SUComponentDefinitionRef su_definition);
  ~Descent();
  Descent(const Descent&) = delete;
  Descent& operator=(const Descent&) = delete;

  // Whether the step is to be taken.
  explicit operator bool() const { return taken; }

 private:
  const bool taken;
};

}  // namespace quellix
