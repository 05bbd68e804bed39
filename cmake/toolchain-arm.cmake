# 32-bit ARM, hard float: Debian's cross compiler; what is built runs under qemu-arm.
set(VISCACAM_CROSS_TRIPLE arm-linux-gnueabihf)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VISCACAM_CROSS_EMULATOR qemu-arm)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # a remark on compilers before gcc 7, at every use of the JSON headers
include("${CMAKE_CURRENT_LIST_DIR}/cross/toolchain.cmake")
