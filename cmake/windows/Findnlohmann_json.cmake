# The set-up's links to header libraries: nlohmann_json.
if(NOT TARGET nlohmann_json::nlohmann_json)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE
    "${QUELLIX_WINDOWS_DEPS}/include")
endif()
set(nlohmann_json_FOUND TRUE)
