#include "link/SharedObjects.h"

#include <sys/stat.h>

#include <boost/interprocess/shared_memory_object.hpp>

namespace quellix {

namespace bi = boost::interprocess;

std::optional<ObjectIdentity> IdentityOfObject(const std::string& name) {
  try {
    const bi::shared_memory_object object(bi::open_only, name.c_str(), bi::read_only);
    struct stat status {};
    if (::fstat(object.get_mapping_handle().handle, &status) != 0) return std::nullopt;
    return ObjectIdentity{static_cast<std::uint64_t>(status.st_dev),
                          static_cast<std::uint64_t>(status.st_ino)};
  } catch (const bi::interprocess_exception&) {
    return std::nullopt;
  }
}

bi::permissions OwnerOnlyPermissions() {
  return bi::permissions(0600);
}

}  // namespace quellix
