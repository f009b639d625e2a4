#include "host/Arguments.h"

namespace quellix {

namespace {

constexpr long kVectorLength = 3;
constexpr long kSettingsLength = 10;

void ReadVector3(VALUE array, const char* what, float target[3]) {
  RequireArray(array, kVectorLength, what);
  for (long i = 0; i < kVectorLength; ++i) target[i] = FloatAt(array, i);
}

}  // namespace

std::uint64_t UnsignedValue(VALUE value) {
  if (FIXNUM_P(value)) return static_cast<std::uint64_t>(FIX2LONG(value));
  return rb_num2ull(value);
}

// The conversions by `long` would refuse more on systems where that has 32 bits.
std::uint32_t Unsigned32Value(VALUE value) {
  if (FIXNUM_P(value)) return static_cast<std::uint32_t>(FIX2LONG(value));
  return static_cast<std::uint32_t>(rb_num2ull(value));
}

std::int32_t Int32Value(VALUE value) {
  if (FIXNUM_P(value)) return static_cast<std::int32_t>(FIX2LONG(value));
  return static_cast<std::int32_t>(rb_num2ll(value));
}

VALUE Utf8Text(VALUE value) {
  StringValue(value);
  rb_encoding* const utf8 = rb_utf8_encoding();
  rb_encoding* const given = rb_enc_get(value);
  // A text that cannot be converted comes back as it is.
  VALUE text = given == rb_ascii8bit_encoding() ? rb_enc_associate(rb_str_dup(value), utf8)
                                                : rb_str_conv_enc(value, given, utf8);
  const bool isUtf8 = rb_enc_get(text) == utf8 || rb_enc_str_asciionly_p(text) != 0;
  if (!isUtf8 || rb_enc_str_coderange(text) == ENC_CODERANGE_BROKEN) {
    rb_raise(rb_eArgError, "a text in %s cannot be converted to UTF-8", rb_enc_name(given));
  }
  return text;
}

VALUE PathText(VALUE value) {
  StringValue(value);
  rb_encoding* const given = rb_enc_get(value);
  const bool plain = given == rb_utf8_encoding() || given == rb_ascii8bit_encoding() ||
                     given == rb_usascii_encoding();
  return plain ? value : Utf8Text(value);
}

float FloatValue(VALUE value) {
  return static_cast<float>(rb_num2dbl(value));
}

float FloatAt(VALUE array, long i) {
  return FloatValue(rb_ary_entry(array, i));
}

std::int32_t Int32At(VALUE array, long i) {
  return Int32Value(rb_ary_entry(array, i));
}

void RequireArray(VALUE value, long length, const char* what) {
  Check_Type(value, T_ARRAY);
  if (RARRAY_LEN(value) < length) {
    rb_raise(rb_eArgError, "%s has %ld elements, %ld are needed", what, RARRAY_LEN(value), length);
  }
}

CameraValues ReadCamera(VALUE vector1, VALUE vector2, VALUE vector3, VALUE scalar, VALUE vector4) {
  CameraValues camera;
  ReadVector3(vector1, "the first vector", camera.vector1);
  ReadVector3(vector2, "the second vector", camera.vector2);
  ReadVector3(vector3, "the third vector", camera.vector3);
  camera.cameraScalar = FloatValue(scalar);
  ReadVector3(vector4, "the last vector", camera.vector4);
  return camera;
}

BackgroundValues ReadBackground(VALUE settings) {
  RequireArray(settings, kSettingsLength, "the settings array");
  BackgroundValues background;
  long at = 0;
  for (float& value : background.floats) value = FloatAt(settings, at++);
  for (std::int32_t& value : background.integers) value = Int32At(settings, at++);
  background.last = FloatAt(settings, at);
  return background;
}

}  // namespace quellix
