# The libraries this project stands on, found in the system's package manager.
find_package(Threads REQUIRED)

function(add_header_only name header)
    string(TOUPPER ${name} upper)
    find_path(${upper}_INCLUDE_DIRECTORY ${header} REQUIRED)
    add_library(dependency_${name} INTERFACE IMPORTED)
    target_include_directories(dependency_${name} SYSTEM INTERFACE ${${upper}_INCLUDE_DIRECTORY})
endfunction()

add_header_only(boost boost/json.hpp)
add_header_only(cli11 CLI/CLI.hpp)
add_header_only(tomlplusplus toml++/toml.h)

find_path(UTF8PROC_INCLUDE_DIRECTORY utf8proc.h REQUIRED)
# The archive first: the helper must not depend on a shared library.
find_library(UTF8PROC_LIBRARY NAMES libutf8proc.a utf8proc REQUIRED)
add_library(dependency_utf8proc INTERFACE IMPORTED)
target_include_directories(dependency_utf8proc SYSTEM INTERFACE ${UTF8PROC_INCLUDE_DIRECTORY})
target_compile_definitions(dependency_utf8proc INTERFACE UTF8PROC_STATIC)
target_link_libraries(dependency_utf8proc INTERFACE ${UTF8PROC_LIBRARY})

# For notifications on a Linux desktop. A system without it gets a host without them.
find_path(SDBUS_INCLUDE_DIRECTORY systemd/sd-bus.h)
find_library(SDBUS_LIBRARY NAMES systemd)
if(SDBUS_INCLUDE_DIRECTORY AND SDBUS_LIBRARY AND NOT APPLE)
    add_library(dependency_sdbus INTERFACE IMPORTED)
    target_include_directories(dependency_sdbus SYSTEM INTERFACE ${SDBUS_INCLUDE_DIRECTORY})
    target_link_libraries(dependency_sdbus INTERFACE ${SDBUS_LIBRARY})
endif()

# Of curses the descriptions of terminals alone, which some systems have in a library of their own.
find_path(CURSES_INCLUDE_DIRECTORY curses.h REQUIRED)
find_library(TERMINFO_LIBRARY NAMES tinfo tinfow ncursesw ncurses REQUIRED)
add_library(dependency_terminfo INTERFACE IMPORTED)
target_include_directories(dependency_terminfo SYSTEM INTERFACE ${CURSES_INCLUDE_DIRECTORY})
target_link_libraries(dependency_terminfo INTERFACE ${TERMINFO_LIBRARY})

# As a library: compiled into each source by its headers alone, it doubles the time of a build.
find_package(fmt REQUIRED)
find_package(SQLiteCpp REQUIRED)
if(TALLOWBROOK_TESTS)
    find_package(GTest REQUIRED)
    # Its sources cannot always be had for the macOS build, which then goes without those tests.
    find_package(rapidcheck QUIET)
    if(NOT rapidcheck_FOUND AND NOT CMAKE_CROSSCOMPILING)
        message(FATAL_ERROR "rapidcheck is missing: run script/bootstrap")
    endif()
endif()
