# Builds for Macs with Apple processors: cmake --toolchain cmake/macos/aarch64.cmake

set(CMAKE_SYSTEM_PROCESSOR arm64)
set(macos_processor aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake)
