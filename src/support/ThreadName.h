#pragma once

namespace quellix {

// Names the calling thread in debuggers and process lists, at its first call in that thread; later
// ones do nothing. At most 15 characters. Any thread.
void NameThreadOnce(const char* name);

}  // namespace quellix
