# velmora_lint([PORTABLE] TARGET...): with VELMORA_LINT on, runs clang-tidy on each file of the targets as it is
# compiled, so a second build checks only what changed. Portable targets are built for Linux too, and checked there.
function(velmora_lint)
    cmake_parse_arguments(arg "PORTABLE" "" "" ${ARGN})
    if(NOT VELMORA_LINT OR (arg_PORTABLE AND WIN32))
        return()
    endif()
    set(command clang-tidy-14 --quiet --warnings-as-errors=*)
    # GCC's warnings are GCC's business; clang does not know them all. One that GCC does not have is asked for; it
    # stays a warning until clang-tidy has looked for NOLINT.
    list(APPEND command --extra-arg=-Wno-everything --extra-arg=-Wno-error
                        --extra-arg=-Wreserved-identifier --extra-arg=-Wreserved-macro-identifier)
    if(WIN32)
        # clang has to be told where this GCC keeps its C++ library.
        list(APPEND command --extra-arg=--target=x86_64-w64-windows-gnu)
        foreach(directory IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
            if(directory MATCHES "c\\+\\+")
                list(APPEND command --extra-arg=-isystem${directory})
            endif()
        endforeach()
        # A third of what <windows.h> brings is the processor's special instructions, which only portable files use:
        # as if their header had been read already.
        list(APPEND command --extra-arg=-D__X86INTRIN_H)
    endif()
    set_target_properties(${arg_UNPARSED_ARGUMENTS} PROPERTIES CXX_CLANG_TIDY "${command}")
endfunction()
