# The set-up's links to header libraries: glm.
if(NOT TARGET glm::glm)
  add_library(glm::glm INTERFACE IMPORTED)
  target_include_directories(glm::glm SYSTEM INTERFACE "${QUELLIX_WINDOWS_DEPS}/include")
endif()
set(glm_FOUND TRUE)
