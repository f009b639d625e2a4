#pragma once

namespace quellix {

// Initialises wxWidgets, once, unless the host runs it already; some of its calls fail without.
// Leaves the process's number format as it was. Host thread.
void EnsureWx();

}  // namespace quellix
