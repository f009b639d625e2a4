#include "export/AttributeReaders.h"

#include <optional>

#include "cw/Handle.h"
#include "cw/String.h"
#include "cw/TypedValue.h"
#include "support/Gates.h"

namespace quellix {

namespace {

constexpr char kDictionaryName[] = "corvane_II";

// The value under `key` as `convert(su_value)` reads it, `fallback` when there is none or when
// `convert` gives none.
template <class T, class Convert>
T ReadValue(SUAttributeDictionaryRef su_dictionary, const char* key, const T& fallback,
            Convert convert) {
  const GateGuard gate = GateAcquire(Gate::AttrDict);
  CW::TypedValue value;
  if (SUAttributeDictionaryGetValue(su_dictionary, key, value.out()) != SU_ERROR_NONE) {
    return fallback;
  }
  const std::optional<T> converted = convert(value.ref());
  return converted ? *converted : fallback;
}

template <class T, class Getter>
std::optional<T> Get(SUTypedValueRef su_value, Getter get) {
  T value = {};
  if (get(su_value, &value) != SU_ERROR_NONE) return std::nullopt;
  return value;
}

}  // namespace

SUAttributeDictionaryRef FindDictionary(SUEntityRef su_entity) {
  const GateGuard gate = GateAcquire(Gate::AttrDict);
  const auto su_dictionaries = CW::fetch_list<SUAttributeDictionaryRef>(
      [&](size_t* count) { return SUEntityGetNumAttributeDictionaries(su_entity, count); },
      [&](size_t len, SUAttributeDictionaryRef* su_items, size_t* count) {
        return SUEntityGetAttributeDictionaries(su_entity, len, su_items, count);
      });
  for (const SUAttributeDictionaryRef su_dictionary : su_dictionaries) {
    CW::String name;
    if (SUAttributeDictionaryGetName(su_dictionary, name.out()) != SU_ERROR_NONE) continue;
    if (name.std_string() == kDictionaryName) return su_dictionary;
  }
  return SUAttributeDictionaryRef SU_INVALID;
}

SUAttributeDictionaryRef FindUsableDictionary(SUEntityRef su_entity) {
  const SUAttributeDictionaryRef su_dictionary = FindDictionary(su_entity);
  const GateGuard gate = GateAcquire(Gate::AttrDict);
  size_t keys = 0;
  if (SUIsInvalid(su_dictionary) ||
      SUAttributeDictionaryGetNumKeys(su_dictionary, &keys) != SU_ERROR_NONE || keys == 0) {
    return SUAttributeDictionaryRef SU_INVALID;
  }
  return su_dictionary;
}

bool ReadBool(SUAttributeDictionaryRef su_dictionary, const char* key, bool fallback) {
  return ReadValue(su_dictionary, key, fallback, [](SUTypedValueRef su_value) {
    return Get<bool>(su_value, SUTypedValueGetBool);
  });
}

double ReadDouble(SUAttributeDictionaryRef su_dictionary, const char* key, double fallback) {
  return ReadValue(su_dictionary, key, fallback, [](SUTypedValueRef su_value) {
    return Get<double>(su_value, SUTypedValueGetDouble);
  });
}

std::string ReadString(SUAttributeDictionaryRef su_dictionary, const char* key,
                       const std::string& fallback) {
  return ReadValue(su_dictionary, key, fallback,
                   [](SUTypedValueRef su_value) -> std::optional<std::string> {
                     CW::String text;
                     if (SUTypedValueGetString(su_value, text.out()) != SU_ERROR_NONE) return {};
                     return text.std_string();
                   });
}

double ReadPower(SUAttributeDictionaryRef su_dictionary, double fallback) {
  return ReadValue(su_dictionary, "light-power", fallback,
                   [](SUTypedValueRef su_value) -> std::optional<double> {
                     if (auto value = Get<double>(su_value, SUTypedValueGetDouble)) return value;
                     if (auto value = Get<float>(su_value, SUTypedValueGetFloat)) return *value;
                     return Get<std::int32_t>(su_value, SUTypedValueGetInt32);
                   });
}

std::int32_t ReadInt(SUAttributeDictionaryRef su_dictionary) {
  return ReadValue(su_dictionary, "light_power", std::int32_t{0}, [](SUTypedValueRef su_value) {
    return Get<std::int32_t>(su_value, SUTypedValueGetInt32);
  });
}

std::array<float, 4> ReadColor(SUAttributeDictionaryRef su_dictionary,
                               const std::array<float, 4>& fallback) {
  return ReadValue(su_dictionary, "light-color", fallback,
                   [](SUTypedValueRef su_value) -> std::optional<std::array<float, 4>> {
                     const auto color = Get<SUColor>(su_value, SUTypedValueGetColor);
                     if (!color) return {};
                     const auto channel = [](SUByte byte) {
                       return static_cast<float>(byte / 255.0);
                     };
                     return std::array<float, 4>{channel(color->red), channel(color->green),
                                                 channel(color->blue), channel(color->alpha)};
                   });
}

}  // namespace quellix
