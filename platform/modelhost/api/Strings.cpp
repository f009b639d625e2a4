#include <SketchUpAPI/initialize.h>
#include <SketchUpAPI/unicodestring.h>

#include "core/Args.h"

namespace modelhost {

SUResult putText(std::string_view text, SUStringRef* out) {
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  String* string = find(*out);
  if (string == nullptr) return SU_ERROR_INVALID_OUTPUT;
  string->text = text;
  return SU_ERROR_NONE;
}

}  // namespace modelhost

using namespace modelhost;

void SUInitialize(void) {
  MODELHOST_CALL_INFALLIBLE(SUInitialize);
}

void SUTerminate(void) {
  MODELHOST_CALL_INFALLIBLE(SUTerminate);
}

void SUGetAPIVersion(size_t* major, size_t* minor) {
  MODELHOST_CALL_INFALLIBLE(SUGetAPIVersion);
  if (major != nullptr) *major = 14;
  if (minor != nullptr) *minor = 0;
}

SUResult SUStringCreate(SUStringRef* out_string) {
  MODELHOST_CALL(SUStringCreate);
  return create(out_string);
}

SUResult SUStringCreateFromUTF8(SUStringRef* out_string, const char* text) {
  MODELHOST_CALL(SUStringCreateFromUTF8);
  if (text == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return create(out_string, text);
}

SUResult SUStringRelease(SUStringRef* string) {
  MODELHOST_CALL(SUStringRelease);
  return release(string);
}

SUResult SUStringGetUTF8Length(SUStringRef string, size_t* out_length) {
  MODELHOST_CALL(SUStringGetUTF8Length);
  return give(string, out_length, [](const String& s) { return s.text.size(); });
}

SUResult SUStringGetUTF8(SUStringRef string, size_t size, char* text, size_t* count) {
  MODELHOST_CALL(SUStringGetUTF8);
  const String* s = find(string);
  if (s == nullptr) return SU_ERROR_INVALID_INPUT;
  if (text == nullptr || count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (size == 0) return SU_ERROR_INSUFFICIENT_SIZE;
  const std::size_t n = s->text.copy(text, size - 1);
  text[n] = '\0';
  *count = n;
  return SU_ERROR_NONE;
}

SUResult SUStringSetUTF8(SUStringRef string, const char* text) {
  MODELHOST_CALL(SUStringSetUTF8);
  return changeFrom(string, text, [&](String& s, char) { s.text = text; });
}

SUResult SUStringCompare(SUStringRef a, SUStringRef b, int* result) {
  MODELHOST_CALL(SUStringCompare);
  const String* other = find(b);
  if (other == nullptr) return SU_ERROR_INVALID_INPUT;
  return give(a, result, [&](const String& s) { return s.text.compare(other->text); });
}
