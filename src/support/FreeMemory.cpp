#include "support/FreeMemory.h"

#include <cstdlib>  // defines __GLIBC__

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace quellix {

void ReturnFreeMemory() {
#if defined(__GLIBC__)
  ::malloc_trim(0);
#endif
}

}  // namespace quellix
