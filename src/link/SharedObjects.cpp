#include "link/SharedObjects.h"

#include <atomic>

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>

namespace quellix {

namespace bi = boost::interprocess;

bool IsManagedSegmentReady(const std::string& name, std::uint64_t bytes) {
  // The library's mark of a finished segment, in its first word.
  constexpr std::uint32_t kInitialized = 2;
  const bi::shared_memory_object object(bi::open_only, name.c_str(), bi::read_only);
  bi::offset_t size = 0;
  if (!object.get_size(size) || size < static_cast<bi::offset_t>(bytes)) return false;
  const bi::mapped_region region(object, bi::read_only, 0, sizeof(std::uint32_t));
  auto* word = static_cast<std::uint32_t*>(region.get_address());
  return std::atomic_ref<std::uint32_t>(*word).load(std::memory_order_acquire) == kInitialized;
}

}  // namespace quellix
