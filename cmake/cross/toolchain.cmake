# What the toolchain files of Debian's cross compilers have in common.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${VISCACAM_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${VISCACAM_CROSS_TRIPLE}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${VISCACAM_CROSS_EMULATOR} -L /usr/${VISCACAM_CROSS_TRIPLE})

# Libraries and headers of this machine are not the board's.
set(CMAKE_FIND_ROOT_PATH /usr/${VISCACAM_CROSS_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# What tool and tests need beyond libc consists of headers, or is compiled here.
set(CLI11_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(nlohmann_json_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(GTest_DIR "${CMAKE_CURRENT_LIST_DIR}")
