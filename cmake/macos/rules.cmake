# CMake reads this after its own rules for Darwin. To look at a compiler's defaults these ask the
# linker to be verbose too (-Wl,-v), which zig refuses.

set(CMAKE_C_VERBOSE_FLAG -v)
set(CMAKE_CXX_VERBOSE_FLAG -v)
