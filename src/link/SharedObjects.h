#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quellix {

// Which object a machine-wide name stands for, so that a name that another process has removed and
// made anew is told from our own.
struct ObjectIdentity {
  std::uint64_t device = 0;
  std::uint64_t index = 0;
  bool operator==(const ObjectIdentity&) const = default;
};

// Empty when there is no shared-memory object of that name, and on systems that do not tell objects
// apart.
std::optional<ObjectIdentity> IdentityOfObject(const std::string& name);

// True when the segment of that name was made and set up as far as a managed segment can be opened
// without waiting for its creator, who may have died on the way.
bool IsManagedSegmentReady(const std::string& name, std::uint64_t bytes);

}  // namespace quellix
