include("${CMAKE_CURRENT_LIST_DIR}/header_only.cmake")
viscacam_header_only(nlohmann_json::nlohmann_json nlohmann)
