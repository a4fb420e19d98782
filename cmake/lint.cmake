# velmora_lint([PORTABLE] TARGET...): with VELMORA_LINT on, runs clang-tidy on each file of the targets as it is
# compiled, so a second build checks only what changed. Portable targets are built for Linux too, and checked there.
function(velmora_lint)
    cmake_parse_arguments(arg "PORTABLE" "" "" ${ARGN})
    if(NOT VELMORA_LINT OR (arg_PORTABLE AND WIN32))
        return()
    endif()
    set(command clang-tidy-14 --quiet --warnings-as-errors=*)
    # GCC's warnings are GCC's business; clang does not know them all.
    list(APPEND command --extra-arg=-Wno-everything)
    if(WIN32)
        # clang has to be told where this GCC keeps its C++ library.
        list(APPEND command --extra-arg=--target=x86_64-w64-windows-gnu)
        foreach(directory IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
            if(directory MATCHES "c\\+\\+")
                list(APPEND command --extra-arg=-isystem${directory})
            endif()
        endforeach()
    endif()
    set_target_properties(${arg_UNPARSED_ARGUMENTS} PROPERTIES CXX_CLANG_TIDY "${command}")
endfunction()
