#pragma once

#include <cstdint>
#include <map>
#include <set>

#include <boost/unordered/unordered_flat_set.hpp>

#include "export/FaceSelection.h"

namespace quellix {

inline constexpr std::uint32_t kDefaultFrontIndex = 0;
inline constexpr std::uint32_t kDefaultBackIndex = 1;
inline constexpr std::uint32_t kFirstMaterialIndex = 2;

// What the scene scan finds out before the workers start; it does not change while they run.
struct SceneIndex {
  HiddenLayerSet hiddenLayers;                        // hidden themselves or by a folder above
  MaterialIndexMap materialIndex;                     // material -> texture id -> renderer index
  std::map<std::uint32_t, std::uint32_t> imageIndex;  // image key -> renderer index
  boost::unordered_flat_set<std::uint64_t> owners;    // the instances and groups at the root
  // Collections with a face that has no paint of its own on a side; only with MeshPerPaintEnabled.
  std::set<SUEntitiesRef, CW::HandleLess> withoutPaint;
};

}  // namespace quellix
