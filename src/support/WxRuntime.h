#pragma once

namespace quellix {

// Initialises wxWidgets, once, unless the host runs it already; some of its calls fail without.
// Leaves the process's number format as it was. Host thread.
void EnsureWx();

// True on the thread that wxWidgets counts as the host's main one: the first to need it, if the
// host does not run wxWidgets itself.
bool OnWxMainThread();

}  // namespace quellix
