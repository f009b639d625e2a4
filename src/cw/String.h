#pragma once

#include <string>

#include <SketchUpAPI/sketchup.h>

namespace CW {

// A host string, released with the wrapper. Texts are UTF-8 on both sides.
class String {
 public:
  String();
  explicit String(const std::string& text);
  String(const String& other);
  String(String&& other) noexcept;
  String& operator=(String other) noexcept;
  ~String();

  bool is_null() const { return SUIsInvalid(su_string_); }
  SUStringRef ref() const { return su_string_; }
  // Where an API call writes the text.
  SUStringRef* out() { return &su_string_; }

  // The text up to its first zero byte; empty when the string is null.
  std::string std_string() const;

 private:
  SUStringRef su_string_ = SU_INVALID;
};

// The text that `get(&su_string)` writes, empty when the call fails.
template <class Getter>
std::string fetch_text(Getter get) {
  String text;
  return get(text.out()) == SU_ERROR_NONE ? text.std_string() : std::string();
}

}  // namespace CW
