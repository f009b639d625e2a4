#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <boost/interprocess/permissions.hpp>

namespace quellix {

// Which object a machine-wide name stands for, so that a name that another process has removed and
// made anew is told from our own.
struct ObjectIdentity {
  std::uint64_t device = 0;
  std::uint64_t index = 0;
  bool operator==(const ObjectIdentity&) const = default;
};

// Empty when there is no shared-memory object of that name.
std::optional<ObjectIdentity> IdentityOfObject(const std::string& name);

// Lets nobody but the user who runs this process open an object. Throws std::system_error when the
// system does not say who that is. Any thread.
boost::interprocess::permissions OwnerOnlyPermissions();

// True when the segment of that name was made and set up as far as a managed segment can be opened
// without waiting for its creator, who may have died on the way.
bool IsManagedSegmentReady(const std::string& name, std::uint64_t bytes);

}  // namespace quellix
