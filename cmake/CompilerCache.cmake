# Compiles through ccache where it is installed. Paths below the project are seen as relative, so
# that another clone finds what this one has compiled.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    foreach(language C CXX)
        # The times of a precompiled header and of what it includes say nothing about their contents.
        set(CMAKE_${language}_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
            CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
            CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
            ${CCACHE_PROGRAM})
    endforeach()
endif()
