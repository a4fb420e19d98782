# velmora_warnings: every warning that we build with, as an error. Each of our targets links it.
#
# A compiler newer than GCC 12, with which we develop, may warn of more; there a warning stays one.
add_library(velmora_warnings INTERFACE)
if(VELMORA_FUZZ)
    return()  # clang does not know them all, and GCC compiles the same files in the other presets
endif()
target_compile_options(velmora_warnings INTERFACE
    $<$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>:-Werror>
    -Wall -Wextra -Wpedantic
    -Wconversion -Wsign-conversion -Warith-conversion -Wdouble-promotion
    -Wshadow -Wold-style-cast -Wuseless-cast -Wcast-qual -Wcast-align
    -Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wnull-dereference
    -Wundef -Wformat=2 -Wimplicit-fallthrough=5
    -Woverloaded-virtual -Wnon-virtual-dtor -Wextra-semi -Wredundant-decls -Wmissing-declarations
    # GCC 12 sees overlapping copies in std::string's own operator+ (GCC bug 105651).
    -Wno-restrict
)
