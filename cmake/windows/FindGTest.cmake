# GoogleTest, built with the tests: the system's archives are for the system's own programs.
if(NOT TARGET GTest::gtest_main)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
endif()
set(GTest_FOUND TRUE)
