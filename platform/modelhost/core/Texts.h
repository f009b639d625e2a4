// Texts from outside, whose encoding nobody tells.
#pragma once

#include <boost/locale/encoding_utf.hpp>

#include <string>

namespace modelhost {

// The same in UTF-8. What is none is taken for Latin-1, in which every byte is a character.
inline std::string asUtf8(const std::string& text) {
  namespace conv = boost::locale::conv;
  try {
    return conv::utf_to_utf<char>(text, conv::stop);
  } catch (const conv::conversion_error&) {
    std::u32string characters;
    for (const char byte : text) characters.push_back(static_cast<unsigned char>(byte));
    return conv::utf_to_utf<char>(characters);
  }
}

}  // namespace modelhost
