#include "cw/String.h"

#include <utility>

namespace CW {

String::String() {
  SUStringCreate(&su_string_);
}

String::String(const std::string& text) {
  SUStringCreateFromUTF8(&su_string_, text.c_str());
}

String::String(const String& other) : String(other.std_string()) {}

String::String(String&& other) noexcept {
  std::swap(su_string_, other.su_string_);
}

String& String::operator=(String other) noexcept {
  std::swap(su_string_, other.su_string_);
  return *this;
}

String::~String() {
  if (!is_null()) SUStringRelease(&su_string_);
}

std::string String::std_string() const {
  if (is_null()) return {};
  size_t length = 0;
  if (SUStringGetUTF8Length(su_string_, &length) != SU_ERROR_NONE) return {};
  std::string text(length + 1, '\0');
  size_t copied = 0;
  SUStringGetUTF8(su_string_, text.size(), text.data(), &copied);
  text.resize(text.find('\0') == std::string::npos ? length : text.find('\0'));
  return text;
}

}  // namespace CW
