#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>

#include "app/Platform.h"

namespace kvapp {

// One of the two channel segments, mapped whole and read-write.
class SharedSegment {
 public:
  // Makes the segment, zero-filled, in place of any leftover of that name. Throws Boost's
  // interprocess_exception.
  static SharedSegment Create(const std::string& name, std::size_t bytes);
  // Empty while there is none, or one that has no size yet.
  static std::optional<SharedSegment> Open(const std::string& name);

  std::span<std::byte> Bytes() const;
  // Removes the name if it still stands for this segment.
  void RemoveName() const;

 private:
  SharedSegment(std::string name, boost::interprocess::shared_memory_object object,
                boost::interprocess::mapped_region region);

  std::string name_;
  boost::interprocess::shared_memory_object object_;
  boost::interprocess::mapped_region region_;
  ObjectIdentity identity_;
};

}  // namespace kvapp
