# What every target of our own is compiled with, and Ruby.

add_library(quellix_options INTERFACE)
target_compile_features(quellix_options INTERFACE cxx_std_20)
target_compile_options(quellix_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  # Positions and digests must come out bit for bit the same on every build of the extension.
  -ffp-contract=off)

if(QUELLIX_SANITIZE)
  add_compile_options(-fsanitize=${QUELLIX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUELLIX_SANITIZE})
endif()

if(WIN32)
  include(RubyForWindows)
else()
  include(RubyHere)
endif()
if(QUELLIX_SANITIZE MATCHES "address")
  # A Ruby error leaves a method's frame without telling the sanitizer, which would take the next use
  # of that stack for a fault.
  target_compile_options(ruby_headers INTERFACE --param=asan-stack=0)
endif()
