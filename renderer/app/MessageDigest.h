#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "app/Decoder.h"

namespace kvapp {

// A fingerprint of what a command says. Texts that are new each time (texture names), offsets, pads
// and mesh ids are left out, so the same content gives the same digest in every run. For the scene
// commands it is computed as the plug-in computes its own digest, so the two can be compared.
struct MessageDigest {
  std::uint64_t value = 0;  // of a list: exclusive or of its elements' digests
  std::uint64_t count = 1;  // elements of a list, else 1
  std::string slot;         // the name under which digests of this command accumulate; may be empty
};

// `decoded` must come from Decode over the same segment, without problems.
MessageDigest DigestOf(const Decoded& decoded, std::span<const std::byte> segment);

}  // namespace kvapp
