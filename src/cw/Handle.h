// What every host handle has in common: one opaque pointer.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <SketchUpAPI/sketchup.h>

namespace CW {

// Orders handles of one kind by their pointer, for ordered maps and sets.
struct HandleLess {
  template <class Ref>
  bool operator()(Ref a, Ref b) const {
    return std::less<const void*>{}(a.ptr, b.ptr);
  }
};

// Asks the host for a list: `count_of(&n)` for its length, then `list_of(n, items, &n)`. An empty
// list is not fetched; a failing call gives an empty list.
template <class Ref, class CountOf, class ListOf>
std::vector<Ref> fetch_list(CountOf count_of, ListOf list_of) {
  size_t count = 0;
  if (count_of(&count) != SU_ERROR_NONE || count == 0) return {};
  std::vector<Ref> su_items(count, Ref SU_INVALID);
  if (list_of(count, su_items.data(), &count) != SU_ERROR_NONE) return {};
  if (count < su_items.size()) su_items.resize(count);
  return su_items;
}

// The same, each handle wrapped as an object that the model owns.
template <class Wrapper, class Ref, class CountOf, class ListOf>
std::vector<Wrapper> fetch_wrapped(CountOf count_of, ListOf list_of) {
  const std::vector<Ref> su_items = fetch_list<Ref>(count_of, list_of);
  return std::vector<Wrapper>(su_items.begin(), su_items.end());
}

// Throws std::logic_error "CW::Face::outer_loop(): Face is null" when `is_null`.
inline void require_valid(bool is_null, const char* class_name, const char* operation) {
  if (is_null) {
    throw std::logic_error(std::string("CW::") + class_name + "::" + operation +
                           "(): " + class_name + " is null");
  }
}

}  // namespace CW
