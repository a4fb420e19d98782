# velmora_warnings: every warning that we build with, as an error. Each of our targets links it.
add_library(velmora_warnings INTERFACE)
target_compile_options(velmora_warnings INTERFACE
    -Werror
    -Wall -Wextra -Wpedantic
    -Wconversion -Wsign-conversion -Warith-conversion -Wdouble-promotion
    -Wshadow -Wold-style-cast -Wuseless-cast -Wcast-qual -Wcast-align
    -Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wnull-dereference
    -Wundef -Wformat=2 -Wimplicit-fallthrough=5
    -Woverloaded-virtual -Wnon-virtual-dtor -Wextra-semi -Wredundant-decls -Wmissing-declarations
    # GCC 12 sees overlapping copies in std::string's own operator+ (GCC bug 105651).
    -Wno-restrict
)
