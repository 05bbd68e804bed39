# viscacam_add_test(NAME name SOURCES files... LIBS libraries... [LABELS ...] [LOCK resource] [WRAP functions...])
# One executable, one ctest entry per test case, each in a process of its own: the library's state is process-wide.
# WRAP names libc calls that the test defines itself as __wrap_NAME. LOCK serialises tests that share a machine-wide resource.
find_package(GTest REQUIRED)
include(GoogleTest)

# The test framework's headers are parsed once for all tests.
add_executable(viscacam_test_headers "${PROJECT_SOURCE_DIR}/cmake/test_headers.cpp")
target_precompile_headers(viscacam_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
target_link_libraries(viscacam_test_headers PRIVATE GTest::gtest GTest::gmock Threads::Threads viscacam_warnings)
target_compile_options(viscacam_test_headers PRIVATE -O0 -g1)

function(viscacam_add_test)
    cmake_parse_arguments(ARG "" "NAME;LOCK" "SOURCES;LIBS;LABELS;WRAP" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_include_directories(${ARG_NAME} PRIVATE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock GTest::gtest_main Threads::Threads viscacam_warnings)
    # Tests are compiled for a quick build: not optimised, with line numbers only. What they test keeps its flags.
    target_compile_options(${ARG_NAME} PRIVATE -O0 -g1)
    target_precompile_headers(${ARG_NAME} REUSE_FROM viscacam_test_headers)
    foreach(function IN LISTS ARG_WRAP)
        target_link_options(${ARG_NAME} PRIVATE -Wl,--wrap=${function})
    endforeach()
    set(properties TIMEOUT 120)
    if(ARG_LABELS)
        list(APPEND properties LABELS "${ARG_LABELS}")
    endif()
    if(ARG_LOCK)
        # They run one after the other, so the first of them had better begin at once.
        list(APPEND properties RESOURCE_LOCK "${ARG_LOCK}" COST 1000)
    endif()
    gtest_discover_tests(${ARG_NAME} TEST_PREFIX ${ARG_NAME}. DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
