# "cpack -G DEB" in a build folder makes three packages of this machine's architecture: the library, what compiles against it, and
# the command. scripts/package does it in a build of its own, with the paths of a system package.
if(CMAKE_CROSSCOMPILING OR NOT VISCACAM_GZIP OR NOT TARGET viscacam)
    return()
endif()
set(library_package libviscacam${VISCACAM_SOVERSION})
set(CPACK_PACKAGE_CONTACT "The viscacam authors <viscacam@localhost>" CACHE STRING "Maintainer of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME viscacam)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake") # the default: each package has its own
set(CPACK_PACKAGE_VENDOR viscacam)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tool)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/packages/triggers")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "control of VISCA camera blocks
Finds the camera's baud rate on a serial port, sends commands one at a time,
asks questions, and sorts out everything that the camera sends: lens,
exposure, colour, power, and the firmware of modules with a processor of
their own. The program that loads it provides queues, the serial port and
a log.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libviscacam-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS viscacam)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "control of VISCA camera blocks (development files)
Headers, static library, pkg-config file, CMake package, a manual page and
the smallest host as an example. The other documentation is in the package
viscacam.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME viscacam)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS libviscacam-dev)
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS lrzsz)
set(CPACK_COMPONENT_TOOL_DESCRIPTION "command for VISCA camera blocks
Drives a camera at a serial port, simulates cameras on pseudo-terminals, puts
what goes over the line into words and finds out why a camera does not
answer. With the documentation of command and library.")

# What every package of Debian has: who may do what with it, and what changed.
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" license)
string(REGEX REPLACE "^.*\n(Permission is hereby)" "\\1" license "${license}")
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " license " ${license}")
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(packages "${PROJECT_BINARY_DIR}/packages")
configure_file(cmake/packages/copyright.in "${packages}/copyright" @ONLY)
configure_file(cmake/packages/changelog.in "${packages}/changelog" @ONLY)
execute_process(COMMAND ${VISCACAM_GZIP} -9nkf "${packages}/changelog" COMMAND_ERROR_IS_FATAL ANY)
foreach(component library development tool)
    string(TOUPPER ${component} upper)
    install(FILES "${packages}/copyright" "${packages}/changelog.gz" COMPONENT ${component}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME} EXCLUDE_FROM_ALL)
endforeach()
include(CPack)
