# The top of the copy in which scripts/mutate breaks the library: the unit tests, each linked to a shared library that is
# exchanged from break to break, so that only the broken source is compiled and only that library is linked again.
cmake_minimum_required(VERSION 3.25)
project(viscacam_mutation LANGUAGES C CXX)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(GTest REQUIRED)

add_library(viscacam_warnings INTERFACE)
target_compile_options(viscacam_warnings INTERFACE -w)

# The library, seen by the tests as they see the static one: everything is visible.
file(GLOB_RECURSE VISCACAM_SOURCES visca_*/*.cpp)
add_library(viscacam_objects OBJECT ${VISCACAM_SOURCES})
target_include_directories(viscacam_objects PRIVATE "${PROJECT_SOURCE_DIR}/include" "${PROJECT_SOURCE_DIR}")
target_compile_options(viscacam_objects PRIVATE -O0 -fno-exceptions -fno-rtti -fno-threadsafe-statics -pthread)
add_library(viscacam_static INTERFACE) # each test links its own shared library in its place
target_include_directories(viscacam_static INTERFACE "${PROJECT_SOURCE_DIR}/include")

add_executable(viscacam_test_headers cmake/test_headers.cpp)
target_precompile_headers(viscacam_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
target_link_libraries(viscacam_test_headers PRIVATE GTest::gtest GTest::gmock Threads::Threads viscacam_warnings)
target_compile_options(viscacam_test_headers PRIVATE -O0 -g1)
add_library(run_cases OBJECT tests/mutation/run_cases.cpp)

# As in the tests' own build, but for the library, and for a main() that runs each case in a process of its own.
# Libraries differ in what they call through a test's wrappers: one for each set of wrapped functions. Each lies in a folder
# named after the set, beside it what the linker was told.
function(viscacam_add_test)
    cmake_parse_arguments(ARG "" "NAME;LOCK" "SOURCES;LIBS;LABELS;WRAP" ${ARGN})
    string(MD5 set "${ARG_WRAP}")
    set(wrap "")
    set(wrapLibrary "")
    foreach(function IN LISTS ARG_WRAP)
        list(APPEND wrap "-Wl,--wrap=${function}")
    endforeach()
    if(NOT TARGET "wrapped_${set}")
        add_library("wrapped_${set}" SHARED $<TARGET_OBJECTS:viscacam_objects>)
        # Without the compiler's own libraries: one of them has a __wrap_pthread_create, too.
        list(APPEND wrapLibrary ${wrap} -nodefaultlibs)
        target_link_options("wrapped_${set}" PRIVATE ${wrapLibrary})
        target_link_libraries("wrapped_${set}" PRIVATE c)
        set_target_properties("wrapped_${set}" PROPERTIES OUTPUT_NAME viscacam_wrapped
            LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/wrapped/${set}")
        list(JOIN wrapLibrary " " flags)
        file(WRITE "${CMAKE_BINARY_DIR}/wrapped/${set}/flags" "${flags}\n")
    endif()
    add_executable(${ARG_NAME} ${ARG_SOURCES} $<TARGET_OBJECTS:run_cases>)
    target_include_directories(${ARG_NAME} PRIVATE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")
    target_link_libraries(${ARG_NAME} PRIVATE "wrapped_${set}" ${ARG_LIBS} GTest::gtest GTest::gmock Threads::Threads
        viscacam_warnings)
    target_compile_options(${ARG_NAME} PRIVATE -O0 -g1)
    target_link_options(${ARG_NAME} PRIVATE ${wrap} -Wl,--enable-new-dtags)
    target_precompile_headers(${ARG_NAME} REUSE_FROM viscacam_test_headers)
    set_target_properties(${ARG_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/wrapped/${set}/tests")
endfunction()

add_subdirectory(decode)
add_subdirectory(tests/unit)
