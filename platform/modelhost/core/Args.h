// The shapes that nearly every API function has: give a value, a text, a list; take a value;
// create; release. Each checks its arguments in the order in which the host does.
#pragma once

#include <SketchUpAPI/common.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "core/HostCall.h"
#include "core/Refs.h"
#include "model/Value.h"

namespace modelhost {

// Writes read(object) to `out`.
template <class Ref, class Out, class Read>
SUResult give(Ref ref, Out* out, Read read) {
  auto* object = find(ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *out = read(*object);
  return SU_ERROR_NONE;
}

// Writes the handle of the object that read(object) points at; none is NO_DATA.
template <class Ref, class OutRef, class Read>
SUResult giveRef(Ref ref, OutRef* out, Read read) {
  auto* object = find(ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  const auto* result = read(*object);
  if (result == nullptr) return SU_ERROR_NO_DATA;
  *out = refOf<OutRef>(result);
  return SU_ERROR_NONE;
}

// Copies `text` into a string that the caller has created.
SUResult putText(std::string_view text, SUStringRef* out);

template <class Ref, class Read>
SUResult giveText(Ref ref, SUStringRef* out, Read read) {
  auto* object = find(ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  return putText(read(*object), out);
}

// Fills a typed value that the caller has created; a null `value` is NO_DATA.
SUResult putValue(const Value* value, SUTypedValueRef* out);

// Copies the first `len` items of `list`, each turned into an Out by `turn`.
template <class List, class Out, class Turn>
SUResult copyList(const List& list, std::size_t len, Out out[], std::size_t* count, Turn turn) {
  if (out == nullptr || count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  const std::size_t n = std::min(len, list.size());
  std::transform(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(n), out, turn);
  *count = n;
  return SU_ERROR_NONE;
}

// Copies handles of the objects in read(object), a list of (smart) pointers.
template <class Ref, class OutRef, class Read>
SUResult giveList(Ref ref, std::size_t len, OutRef out[], std::size_t* count, Read read) {
  auto* object = find(ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(read(*object), len, out, count,
                  [](const auto& item) { return refOf<OutRef>(&*item); });
}

// What is not part of a model changes unseen.
template <class T>
void beforeChange(T& object) {
  if constexpr (requires { willChange(object); }) willChange(object);
}

template <class Ref, class Change>
SUResult change(Ref ref, Change apply) {
  auto* object = find(ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  beforeChange(*object);
  apply(*object);
  return SU_ERROR_NONE;
}

template <class Ref, class In, class Change>
SUResult changeFrom(Ref ref, const In* in, Change apply) {
  auto* object = find(ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (in == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  beforeChange(*object);
  apply(*object, *in);
  return SU_ERROR_NONE;
}

// NONE when an object may be created into `out`.
template <class OutRef>
SUResult mayCreate(const OutRef* out) {
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  return out->ptr != nullptr ? SU_ERROR_OVERWRITE_VALID : SU_ERROR_NONE;
}

// Creates an object that the caller owns.
template <class OutRef, class... Arguments>
SUResult create(OutRef* out, Arguments&&... arguments) {
  if (const SUResult may = mayCreate(out); may != SU_ERROR_NONE) return may;
  using Type = typename RefTraits<OutRef>::Type;
  *out = refOf<OutRef>(new Type(std::forward<Arguments>(arguments)...));
  return SU_ERROR_NONE;
}

// Destroys what the caller owns and makes the handle null; owned(object) says whether it does.
template <class Ref, class Owned>
SUResult releaseIf(Ref* ref, Owned owned) {
  if (ref == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  auto* object = find(*ref);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (!owned(*object)) return SU_ERROR_INVALID_OPERATION;
  delete object;
  ref->ptr = nullptr;
  return SU_ERROR_NONE;
}

template <class Ref>
SUResult release(Ref* ref) {
  return releaseIf(ref, [](const auto&) { return true; });
}

}  // namespace modelhost
