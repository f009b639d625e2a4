// Finds the vertex at a place.
#pragma once

#include <SketchUpAPI/geometry.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace modelhost {

class Vertex;

// A grid of cubes of which each holds one vertex at most. Two places in one cube, or in
// neighbouring ones within the distance kReach, are the same place.
class WeldGrid {
 public:
  static constexpr double kCell = 1e-5;
  static constexpr double kReach = 1e-6;

  Vertex* find(const SUPoint3D& p) const {
    const Key own = keyOf(p);
    if (Vertex* v = at(own)) return v;
    // Neighbours matter only near a wall of the cube.
    std::array<std::int64_t, 3> side{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double place = coordinate(p, axis) / kCell - static_cast<double>(own[axis]);
      side[axis] = place < kReach / kCell ? -1 : place > 1 - kReach / kCell ? 1 : 0;
    }
    for (unsigned mask = 1; mask < 8; ++mask) {
      Key key = own;
      bool differs = true;
      for (std::size_t axis = 0; axis < 3; ++axis) {
        if ((mask >> axis & 1) == 0) continue;
        differs = differs && side[axis] != 0;
        key[axis] += side[axis];
      }
      if (!differs) continue;
      if (Vertex* v = at(key)) return v;
    }
    return nullptr;
  }

  // Keeps the vertex that is there already.
  void insert(const SUPoint3D& p, Vertex& vertex) { cells_.emplace(keyOf(p), &vertex); }
  void erase(const SUPoint3D& p, const Vertex& vertex) {
    const auto found = cells_.find(keyOf(p));
    if (found != cells_.end() && found->second == &vertex) cells_.erase(found);
  }
  void clear() { cells_.clear(); }

 private:
  using Key = std::array<std::int64_t, 3>;
  struct Hash {
    using is_avalanching = void;
    std::size_t operator()(const Key& key) const {
      std::uint64_t h = 0;
      for (const std::int64_t part : key) {
        h = (h ^ static_cast<std::uint64_t>(part)) * 0x9e3779b97f4a7c15u;
        h ^= h >> 32;
      }
      return h;
    }
  };

  static double coordinate(const SUPoint3D& p, std::size_t axis) {
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
  }
  static Key keyOf(const SUPoint3D& p) {
    Key key{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      // Coordinates beyond what an integer holds share the outermost cube.
      const double cell = std::floor(coordinate(p, axis) / kCell);
      key[axis] = static_cast<std::int64_t>(std::fmin(std::fmax(cell, -9e18), 9e18));
    }
    return key;
  }
  Vertex* at(const Key& key) const {
    const auto found = cells_.find(key);
    return found == cells_.end() ? nullptr : found->second;
  }

  boost::unordered_flat_map<Key, Vertex*, Hash> cells_;
};

}  // namespace modelhost
