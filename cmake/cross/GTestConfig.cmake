# The test framework for the board, compiled from the sources that Debian's googletest package brings. Brings GTest::gtest and the
# others by itself.
if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
    message(FATAL_ERROR "/usr/src/googletest is not there: run scripts/setup small-boards")
endif()
set(INSTALL_GTEST OFF)
add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
