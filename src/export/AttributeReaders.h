#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <SketchUpAPI/sketchup.h>

// Reading of the parameters that the plug-in keeps on entities and materials, in their attribute
// dictionary "corvane_II". A missing dictionary or key, a value of another type and a failing host
// call all give the default. Each reader holds the attribute gate while it runs; any thread.

namespace quellix {

// The first dictionary of that name in the host's order, or null.
SUAttributeDictionaryRef FindDictionary(SUEntityRef su_entity);
// The same, but null also when it holds no key: then no parameter counts as set.
SUAttributeDictionaryRef FindUsableDictionary(SUEntityRef su_entity);

bool ReadBool(SUAttributeDictionaryRef su_dictionary, const char* key, bool fallback);
double ReadDouble(SUAttributeDictionaryRef su_dictionary, const char* key, double fallback);
std::string ReadString(SUAttributeDictionaryRef su_dictionary, const char* key,
                       const std::string& fallback);
// "light-power" of a light: a double, a float or a 32-bit integer.
double ReadPower(SUAttributeDictionaryRef su_dictionary, double fallback);
// "light_power" of a material, a 32-bit integer; 0 when it is anything else.
std::int32_t ReadInt(SUAttributeDictionaryRef su_dictionary);
// "light-color": red, green, blue and alpha, 0 to 1.
std::array<float, 4> ReadColor(SUAttributeDictionaryRef su_dictionary,
                               const std::array<float, 4>& fallback);

}  // namespace quellix
