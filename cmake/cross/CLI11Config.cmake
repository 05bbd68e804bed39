include("${CMAKE_CURRENT_LIST_DIR}/header_only.cmake")
viscacam_header_only(CLI11::CLI11 CLI)
