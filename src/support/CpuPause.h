#pragma once

#if defined(__x86_64__) || defined(_M_X64)
#include <immintrin.h>
#endif

namespace quellix {

// For every turn of a loop that only looks: leaves a core's other hardware thread, on which the one
// that is waited for may run, what the loop would use up.
inline void CpuPause() {
#if defined(__x86_64__) || defined(_M_X64)
  _mm_pause();
#endif
}

}  // namespace quellix
