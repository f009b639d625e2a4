# Ruby for Windows: its headers, and an import library of the few functions that are used. Only the
# name of the interpreter's library goes into what is built, so it can be that of another Ruby of the
# same version, as the one inside a host.

set(QUELLIX_RUBY_DLL "x64-msvcrt-ruby340.dll" CACHE STRING
    "The file name of the Ruby library in the process that loads the extension")
set(QUELLIX_WINDOWS_RUBY "${QUELLIX_WINDOWS_DEPS}/ruby" CACHE PATH
    "A Ruby for Windows, whose headers are used")

file(GLOB ruby_headers_folder "${QUELLIX_WINDOWS_RUBY}/include/ruby-3.*")
file(GLOB ruby_config "${ruby_headers_folder}/*/ruby/config.h")
if(NOT ruby_config)
  message(FATAL_ERROR "${QUELLIX_WINDOWS_RUBY} holds no headers of a Ruby for Windows: run `make windows`")
endif()
cmake_path(GET ruby_config PARENT_PATH ruby_config)
cmake_path(GET ruby_config PARENT_PATH ruby_config)
string(REGEX REPLACE ".*/ruby-([0-9]+\\.[0-9]+).*" "\\1" QUELLIX_RUBY_SERIES "${ruby_headers_folder}")

find_program(QUELLIX_DLLTOOL ${windows_host}-dlltool REQUIRED)
set(ruby_functions "${CMAKE_SOURCE_DIR}/cmake/windows/ruby-functions.def")
set(ruby_import "${CMAKE_BINARY_DIR}/libruby-functions.a")
add_custom_command(OUTPUT "${ruby_import}"
  COMMAND "${QUELLIX_DLLTOOL}" --input-def "${ruby_functions}" --dllname "${QUELLIX_RUBY_DLL}"
          --output-lib "${ruby_import}"
  DEPENDS "${ruby_functions}" VERBATIM)
add_custom_target(ruby_import_library DEPENDS "${ruby_import}")

add_library(ruby_headers INTERFACE)
target_include_directories(ruby_headers SYSTEM INTERFACE "${ruby_headers_folder}" "${ruby_config}")
target_link_libraries(ruby_headers INTERFACE "${ruby_import}")
# Ruby declares this function of the compiler's headers itself, with another type.
target_compile_definitions(ruby_headers INTERFACE _GETTIMEOFDAY_DEFINED)
