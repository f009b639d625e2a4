#pragma once

#include <cstdio>
#include <string>

namespace quellix {

// Opens a text file for appending, shared with other readers and writers; null when it cannot be
// opened. `path` is UTF-8. The caller closes it. Any thread.
std::FILE* OpenSharedForAppend(const std::string& path);

// As OpenSharedForAppend, but tries up to five times, one millisecond apart: another program may
// hold the file for a moment.
std::FILE* OpenSharedForAppendPatiently(const std::string& path);

}  // namespace quellix
