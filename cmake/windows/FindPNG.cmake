# libpng as the set-up built it, with the cross compiler's zlib.
if(NOT TARGET PNG::PNG)
  find_library(QUELLIX_ZLIB z REQUIRED)
  add_library(PNG::PNG STATIC IMPORTED)
  set_target_properties(PNG::PNG PROPERTIES
    IMPORTED_LOCATION "${QUELLIX_WINDOWS_DEPS}/libpng/lib/libpng16.a"
    INTERFACE_LINK_LIBRARIES "${QUELLIX_ZLIB}")
  target_include_directories(PNG::PNG SYSTEM INTERFACE
    "${QUELLIX_WINDOWS_DEPS}/libpng/include/libpng16")
endif()
set(PNG_FOUND TRUE)
