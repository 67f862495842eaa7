# Builds for Macs with Intel processors: cmake --toolchain cmake/macos/x86_64.cmake

set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(macos_processor x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake)
