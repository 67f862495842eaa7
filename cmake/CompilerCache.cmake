# Compiles through ccache where it is installed. Paths below the project are seen as relative, so
# that another clone finds what this one has compiled.
find_program(CCACHE_PROGRAM ccache)
if(NOT CCACHE_PROGRAM)
    return()
endif()

# This file's project, also where another one, such as that of the libraries for macOS, includes it.
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH tallowbrook)

# The times of a precompiled header and of what it includes say nothing about their contents.
set(ccache ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${tallowbrook} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime)

# The compiler for macOS is a script of ours, one a processor, whose time changes with every clone:
# what it says and the version behind it are what counts.
if(CMAKE_SYSTEM_NAME STREQUAL "Darwin" AND CMAKE_CROSSCOMPILING)
    list(APPEND ccache CCACHE_COMPILERTYPE=clang)
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/macos/bin/zig version
                    OUTPUT_VARIABLE zig_version OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
endif()

foreach(language C CXX)
    set(check)
    if(zig_version)
        file(SHA256 ${CMAKE_${language}_COMPILER} script)
        set(check CCACHE_COMPILERCHECK=string:${zig_version}-${script})
    endif()
    set(CMAKE_${language}_COMPILER_LAUNCHER ${ccache} ${check} ${CCACHE_PROGRAM})
endforeach()

# A precompiled header of clang names the files it was made from by absolute paths, which no other
# clone has. Without it a first build takes a quarter longer, and later ones in any clone next to nothing.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()
