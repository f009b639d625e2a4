#include "export/Descent.h"

#include <algorithm>
#include <vector>

#include "export/Lists.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

// The definitions that this thread's walk is inside of, outermost first.
thread_local std::vector<const void*> path;

bool Step(SUComponentDefinitionRef su_definition) {
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
  if (taken) path.pop_back();
}

}  // namespace quellix
