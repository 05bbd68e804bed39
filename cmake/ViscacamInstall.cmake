# What "cmake --install" puts where, and into which package. What names no component belongs to the command.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME tool)

install(TARGETS viscacam_shared viscacam_static EXPORT viscacamTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES include/viscacam.h include/viscacam_host.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

set(VISCACAM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/viscacam)
install(EXPORT viscacamTargets NAMESPACE viscacam:: DESTINATION ${VISCACAM_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/viscacam-config.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/viscacam-config.cmake"
    INSTALL_DESTINATION ${VISCACAM_CMAKE_DIR})
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/viscacam-config-version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/viscacam-config.cmake" "${CMAKE_CURRENT_BINARY_DIR}/viscacam-config-version.cmake"
    DESTINATION ${VISCACAM_CMAKE_DIR} COMPONENT development)

# The pkg-config file finds its prefix from where it stands, so that "cmake --install --prefix" and DESTDIR move all of it.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
    OUTPUT_VARIABLE VISCACAM_PC_TO_PREFIX)
cmake_path(APPEND VISCACAM_PC_LIBDIR "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND VISCACAM_PC_INCLUDEDIR "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/viscacam.pc.in "${CMAKE_CURRENT_BINARY_DIR}/viscacam.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/viscacam.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The library's manual page: the families of functions are the header's groups.
set(header "${CMAKE_CURRENT_SOURCE_DIR}/include/viscacam.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
file(STRINGS "${header}" lines REGEX "@name|^(extern )?VISCACAM_API ")
set(VISCACAM_FAMILIES "")
foreach(line IN LISTS lines)
    if(line MATCHES "@name (.*)")
        set(family ".It ${CMAKE_MATCH_1}\n")
    elseif(line MATCHES "VISCACAM_API [^(]*[ *]([A-Za-z0-9_]+)\\(")
        string(APPEND VISCACAM_FAMILIES "${family}.Fn ${CMAKE_MATCH_1}\n")
        set(family "")
    elseif(line MATCHES "VISCACAM_API .*[ *]([A-Za-z0-9_]+);")
        string(APPEND VISCACAM_FAMILIES "${family}.Va ${CMAKE_MATCH_1}\n")
        set(family "")
    endif()
endforeach()
string(TIMESTAMP VISCACAM_PAGE_DATE "%B %d, %Y" UTC)
string(REPLACE " 0" " " VISCACAM_PAGE_DATE "${VISCACAM_PAGE_DATE}")
set(VISCACAM_LIBRARY_PAGE "${CMAKE_CURRENT_BINARY_DIR}/libviscacam.3")
configure_file(docs/libviscacam.3.in "${VISCACAM_LIBRARY_PAGE}" @ONLY)

# Manual pages are installed compressed, where there is a gzip.
find_program(VISCACAM_GZIP gzip)
mark_as_advanced(VISCACAM_GZIP)
if(VISCACAM_GZIP)
    execute_process(COMMAND ${VISCACAM_GZIP} -9nkf "${VISCACAM_LIBRARY_PAGE}" COMMAND_ERROR_IS_FATAL ANY)
    string(APPEND VISCACAM_LIBRARY_PAGE .gz)
endif()
install(FILES "${VISCACAM_LIBRARY_PAGE}" DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(FILES examples/CMakeLists.txt examples/minimal_host.c DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libviscacam-dev/examples
    COMPONENT development)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/viscacam)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/viscacam/docs FILES_MATCHING PATTERN "*.md")
