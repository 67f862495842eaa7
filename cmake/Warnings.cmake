# What every target of this project is compiled with.
add_library(tallowbrook_warnings INTERFACE)
target_compile_options(tallowbrook_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # A false warning on plain strings at -O3.
    target_compile_options(tallowbrook_warnings INTERFACE -Wno-restrict)
endif()

# The sanitizer presets name their sanitizers here; everything, libraries' sources included, is
# compiled with them.
set(TALLOWBROOK_SANITIZERS "" CACHE STRING "Sanitizers to build with, such as address,undefined")
if(TALLOWBROOK_SANITIZERS)
    add_compile_options(-fsanitize=${TALLOWBROOK_SANITIZERS} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TALLOWBROOK_SANITIZERS})
endif()
