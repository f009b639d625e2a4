# Toolchain: Windows x64 with Debian's MinGW-w64, whose POSIX-thread flavour has the C++ threads.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(windows_host x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${windows_host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${windows_host}-g++-posix)
set(CMAKE_RC_COMPILER ${windows_host}-windres)

set(CMAKE_FIND_ROOT_PATH "/usr/${windows_host}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# GCC 12 takes an array of one, which the system uses for a text of any length, for its whole size:
# removing a shared-memory object would always fail.
set(CMAKE_CXX_FLAGS_INIT "-fno-aggressive-loop-optimizations")
# Nothing but the system's own libraries is to be needed beside the result.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")
