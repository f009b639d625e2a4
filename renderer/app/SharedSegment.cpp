#include "app/SharedSegment.h"

#include <cstring>
#include <utility>

namespace kvapp {

namespace bip = boost::interprocess;

SharedSegment::SharedSegment(std::string name, bip::shared_memory_object object,
                             bip::mapped_region region)
    : name_(std::move(name)),
      object_(std::move(object)),
      region_(std::move(region)),
      identity_(IdentityOfSharedObject(name_).value_or(ObjectIdentity{})) {}

SharedSegment SharedSegment::Create(const std::string& name, std::size_t bytes) {
  bip::shared_memory_object::remove(name.c_str());
  bip::shared_memory_object object(bip::create_only, name.c_str(), bip::read_write);
  object.truncate(static_cast<bip::offset_t>(bytes));
  bip::mapped_region region(object, bip::read_write);
  std::memset(region.get_address(), 0, region.get_size());
  return SharedSegment(name, std::move(object), std::move(region));
}

std::optional<SharedSegment> SharedSegment::Open(const std::string& name) {
  try {
    bip::shared_memory_object object(bip::open_only, name.c_str(), bip::read_write);
    bip::mapped_region region(object, bip::read_write);
    return SharedSegment(name, std::move(object), std::move(region));
  } catch (const bip::interprocess_exception&) {
    return std::nullopt;
  }
}

std::span<std::byte> SharedSegment::Bytes() const {
  return {static_cast<std::byte*>(region_.get_address()), region_.get_size()};
}

void SharedSegment::RemoveName() const {
  if (IdentityOfSharedObject(name_) == identity_) bip::shared_memory_object::remove(name_.c_str());
}

}  // namespace kvapp
