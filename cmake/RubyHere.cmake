# The Ruby of this machine.

# Ruby's own build configuration, asked from the interpreter that will load the extension.
function(quellix_ruby_config key out)
  execute_process(
    COMMAND "${QUELLIX_RUBY}" -rrbconfig -e "print RbConfig::CONFIG['${key}'].to_s"
    OUTPUT_VARIABLE value RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${QUELLIX_RUBY} is not a working Ruby: run `make setup`, or give one with -DQUELLIX_RUBY=")
  endif()
  set(${out} "${value}" PARENT_SCOPE)
endfunction()

quellix_ruby_config(rubyhdrdir QUELLIX_RUBY_HEADERS)
quellix_ruby_config(rubyarchhdrdir QUELLIX_RUBY_ARCH_HEADERS)
quellix_ruby_config(libdir QUELLIX_RUBY_LIBDIR)
quellix_ruby_config(LIBRUBYARG_SHARED QUELLIX_RUBY_LIBRARY)
quellix_ruby_config(MAJOR QUELLIX_RUBY_MAJOR)
quellix_ruby_config(MINOR QUELLIX_RUBY_MINOR)
if("${QUELLIX_RUBY_MAJOR}.${QUELLIX_RUBY_MINOR}" VERSION_LESS 3.1)
  message(FATAL_ERROR "${QUELLIX_RUBY} is Ruby ${QUELLIX_RUBY_MAJOR}.${QUELLIX_RUBY_MINOR}; 3.1 or newer is needed")
endif()

# Headers of the interpreter; the library itself is in the process that loads an extension.
add_library(ruby_headers INTERFACE)
target_include_directories(ruby_headers SYSTEM INTERFACE
  "${QUELLIX_RUBY_HEADERS}" "${QUELLIX_RUBY_ARCH_HEADERS}")
