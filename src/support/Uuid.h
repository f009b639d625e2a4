#pragma once

#include <string>

namespace quellix {

// A fresh random UUID (version 4): five groups of 8, 4, 4, 4 and 12 lower-case hexadecimal digits,
// joined by hyphens. Any thread.
std::string MakeUuidText();

}  // namespace quellix
