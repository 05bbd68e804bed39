include(CMakePackageConfigHelpers)

install(TARGETS viscacam_shared viscacam_static EXPORT viscacamTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/viscacam.h include/viscacam_host.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT viscacamTargets NAMESPACE viscacam:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/viscacam)
configure_package_config_file(cmake/viscacam-config.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/viscacam-config.cmake"
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/viscacam)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/viscacam-config-version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/viscacam-config.cmake" "${CMAKE_CURRENT_BINARY_DIR}/viscacam-config-version.cmake"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/viscacam)

# The pkg-config file finds its prefix from where it stands, so that "cmake --install --prefix" and DESTDIR move all of it.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
    OUTPUT_VARIABLE VISCACAM_PC_TO_PREFIX)
cmake_path(APPEND VISCACAM_PC_LIBDIR "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND VISCACAM_PC_INCLUDEDIR "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/viscacam.pc.in "${CMAKE_CURRENT_BINARY_DIR}/viscacam.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/viscacam.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
