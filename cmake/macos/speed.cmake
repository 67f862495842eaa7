# For builds that are only to show that everything compiles and links. Not among the compiler's flags,
# which the linker gets too: zig would build its own libraries anew for it.
option(TALLOWBROOK_UNOPTIMISED "Optimise nothing" OFF)
if(TALLOWBROOK_UNOPTIMISED)
    add_compile_options(-O0)
endif()
