#pragma once

namespace quellix {

// Gives memory that was freed and that the allocator keeps back to the system. The threads of an
// export come and go, and what each of them has freed stays with the allocator under a heap of the
// thread's own, which differ from export to export; over a day they add up. Costs a walk over all
// free blocks of the process: for the end of an export, not within one. Does nothing where the
// system's allocator has one heap for all threads. Any thread.
void ReturnFreeMemory();

}  // namespace quellix
