#include "export/Descent.h"

#include <algorithm>
#include <vector>

#include "export/Lists.h"
#include "support/PerThread.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

// The definitions that this thread's walk is inside of, outermost first.
std::vector<const void*>& Path() {
  static PerThread<std::vector<const void*>> path;
  return path.Get();
}

bool Step(SUComponentDefinitionRef su_definition) {
  std::vector<const void*>& path = Path();
  const bool circle = std::find(path.begin(), path.end(), su_definition.ptr) != path.end();
  if (circle || path.size() >= static_cast<std::size_t>(Descent::kDeepest)) {
    LogLine("left out: the content of definition %llu, which is %s",
            static_cast<unsigned long long>(IdOf(su_definition)),
            circle ? "placed inside itself" : "nested too deep");
    return false;
  }
  path.push_back(su_definition.ptr);
  return true;
}

}  // namespace

Descent::Descent(SUComponentDefinitionRef su_definition) : taken(Step(su_definition)) {}

Descent::~Descent() {
  if (taken) Path().pop_back();
}

}  // namespace quellix
