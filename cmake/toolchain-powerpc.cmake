# 32-bit PowerPC: the other byte order. Debian's cross compiler; what is built runs under qemu-ppc.
set(VISCACAM_CROSS_TRIPLE powerpc-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR ppc)
set(VISCACAM_CROSS_EMULATOR qemu-ppc)
include("${CMAKE_CURRENT_LIST_DIR}/cross/toolchain.cmake")
