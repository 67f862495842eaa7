# What the toolchain files of both processors share: they set `macos_processor` and include this.

set(CMAKE_SYSTEM_NAME Darwin)

set(CMAKE_C_COMPILER ${CMAKE_CURRENT_LIST_DIR}/bin/${macos_processor}-cc)
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/bin/${macos_processor}-c++)
# GNU ar cannot write the index of an archive of Mach-O objects.
set(CMAKE_AR ${CMAKE_CURRENT_LIST_DIR}/bin/ar)
set(CMAKE_RANLIB ${CMAKE_CURRENT_LIST_DIR}/bin/ranlib)
# CMake insists on this program for Darwin, though only shared libraries need it: there are none.
set(CMAKE_INSTALL_NAME_TOOL false)

# <notify.h>, which the compiler's set of system headers lacks.
set(CMAKE_C_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_CURRENT_LIST_DIR}/include)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_CURRENT_LIST_DIR}/include)

# Libraries and headers come from the prefix alone: those of this machine are for another system.
get_filename_component(CMAKE_FIND_ROOT_PATH
    ${CMAKE_CURRENT_LIST_DIR}/../../build/macos/${macos_processor}/prefix ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/rules.cmake)
