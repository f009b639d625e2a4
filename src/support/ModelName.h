#pragma once

#include <string>

namespace quellix {

// The name under which the renderer shows a model: the base name of its file, without directory and
// extension, or "Untitled" when the path (UTF-8) has none.
std::string ModelNameOf(const std::string& path);

}  // namespace quellix
