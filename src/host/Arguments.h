#pragma once

#include <cstdint>

#include "host/RubyHeaders.h"
#include "link/SceneRecords.h"

// Conversion of Ruby values to plain ones. Each function may raise Ruby's error for a value that
// does not fit, so it is called while no C++ object with a destructor is alive.

namespace quellix {

// A small integer as it is; anything else through Ruby's unsigned 64-bit conversion.
std::uint64_t UnsignedValue(VALUE value);

// The low 32 bits of an integer.
std::uint32_t Unsigned32Value(VALUE value);
std::int32_t Int32Value(VALUE value);

float FloatValue(VALUE value);

// A String, or what converts itself to one, in UTF-8; bytes without an encoding count as UTF-8.
// ArgumentError for what no UTF-8 can be made of.
VALUE Utf8Text(VALUE value);

// The same for a path, whose bytes stay as they are where nothing says how they are encoded.
VALUE PathText(VALUE value);

// Element i of an array; nil, and so a conversion error, behind its end.
float FloatAt(VALUE array, long i);
std::int32_t Int32At(VALUE array, long i);

// TypeError for what is no Array, ArgumentError for one that is shorter than needed; `what` names
// it in the message.
void RequireArray(VALUE value, long length, const char* what);

// The arguments of the camera methods and of the background settings.
CameraValues ReadCamera(VALUE vector1, VALUE vector2, VALUE vector3, VALUE scalar, VALUE vector4);
BackgroundValues ReadBackground(VALUE settings);

}  // namespace quellix
