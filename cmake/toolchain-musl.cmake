# The C library musl on this machine's processor, with Debian's musl-tools. They bring no C++ headers, and the library needs none.
find_program(VISCACAM_MUSL_GCC musl-gcc)
if(NOT VISCACAM_MUSL_GCC)
    message(FATAL_ERROR "musl-gcc is not there: run scripts/setup test")
endif()
set(CMAKE_C_COMPILER "${VISCACAM_MUSL_GCC}")
set(CMAKE_CXX_COMPILER "${CMAKE_CURRENT_LIST_DIR}/musl-g++")
