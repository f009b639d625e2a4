# The set-up's links to header libraries: Boost.
if(NOT TARGET Boost::headers)
  add_library(Boost::headers INTERFACE IMPORTED)
  target_include_directories(Boost::headers SYSTEM INTERFACE "${QUELLIX_WINDOWS_DEPS}/include")
endif()
set(Boost_FOUND TRUE)
