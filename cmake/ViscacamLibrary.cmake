# The library: compiled once, packed as a shared and as a static library. No C++ runtime at load time: no exceptions, no RTTI, no
# guards around local statics, and the shared library is linked by the C compiler, so that libc is all it needs.
set(VISCACAM_SOURCES
    visca_que/af_debug.cpp
    visca_que/command.cpp
    visca_que/inquiry.cpp
    visca_que/log.cpp
    visca_que/packet.cpp
    visca_que/port.cpp
    visca_que/receiver.cpp
    visca_que/sender.cpp
    visca_que/thread.cpp
    visca_que/wait.cpp
    visca_sony_ctrl/image/day_night.cpp
    visca_sony_ctrl/image/defog.cpp
    visca_sony_ctrl/image/exposure.cpp
    visca_sony_ctrl/image/exposure_profile.cpp
    visca_sony_ctrl/image/exposure_values.cpp
    visca_sony_ctrl/image/picture.cpp
    visca_sony_ctrl/image/picture_profile.cpp
    visca_sony_ctrl/image/settings_cache.cpp
    visca_sony_ctrl/image/wdr.cpp
    visca_sony_ctrl/image/white_balance.cpp
    visca_sony_ctrl/kova/ability.cpp
    visca_sony_ctrl/kova/analysis.cpp
    visca_sony_ctrl/kova/dome.cpp
    visca_sony_ctrl/kova/focus_trigger.cpp
    visca_sony_ctrl/kova/image_detect.cpp
    visca_sony_ctrl/kova/log_export.cpp
    visca_sony_ctrl/kova/module_info.cpp
    visca_sony_ctrl/kova/orientation.cpp
    visca_sony_ctrl/kova/package_version.cpp
    visca_sony_ctrl/kova/power_cycle.cpp
    visca_sony_ctrl/kova/report.cpp
    visca_sony_ctrl/kova/sensor.cpp
    visca_sony_ctrl/kova/transfer.cpp
    visca_sony_ctrl/kova/upgrade.cpp
    visca_sony_ctrl/kova/version.cpp
    visca_sony_ctrl/kova/version_files.cpp
    visca_sony_ctrl/lens/focus_mode.cpp
    visca_sony_ctrl/lens/lens.cpp
    visca_sony_ctrl/lens/near_limit.cpp
    visca_sony_ctrl/system/driver_message.cpp
    visca_sony_ctrl/system/identity.cpp
    visca_sony_ctrl/system/power.cpp
    visca_sony_ctrl/system/reverse.cpp
    visca_sony_ctrl/system/startup.cpp
    visca_sony_ctrl/system/video_norm.cpp
    visca_common/dispatch.cpp)
list(TRANSFORM VISCACAM_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")

add_library(viscacam_objects OBJECT ${VISCACAM_SOURCES})
target_include_directories(viscacam_objects PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/include" "${CMAKE_CURRENT_SOURCE_DIR}")
target_compile_options(viscacam_objects PRIVATE -fno-exceptions -fno-rtti -fno-threadsafe-statics -fvisibility=hidden
    -pthread -ffunction-sections -fdata-sections)
target_link_libraries(viscacam_objects PRIVATE viscacam_warnings)
if(VISCACAM_COVERAGE)
    target_compile_options(viscacam_objects PRIVATE -O0 --coverage -fprofile-update=atomic)
endif()

add_library(viscacam_shared SHARED $<TARGET_OBJECTS:viscacam_objects>)
add_library(viscacam_static STATIC $<TARGET_OBJECTS:viscacam_objects>)
foreach(target viscacam_shared viscacam_static)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME viscacam LINKER_LANGUAGE C)
    target_include_directories(${target} PUBLIC
        "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    target_link_libraries(${target} PUBLIC -pthread)
    if(VISCACAM_COVERAGE)
        target_link_options(${target} PUBLIC --coverage)
    endif()
endforeach()
set_target_properties(viscacam_shared PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${VISCACAM_SOVERSION})
set_target_properties(viscacam_shared PROPERTIES EXPORT_NAME viscacam)
target_link_options(viscacam_shared PRIVATE -Wl,--as-needed -Wl,--gc-sections -Wl,-Bsymbolic-functions -Wl,-z,relro -Wl,-z,now)
add_library(viscacam::viscacam ALIAS viscacam_shared)
add_library(viscacam::viscacam_static ALIAS viscacam_static)
