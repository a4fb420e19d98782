# velmora_lint(TARGET...): with VELMORA_LINT on, runs clang-tidy on each file of the targets as it is compiled, so a
# second build checks only what changed.
function(velmora_lint)
    if(NOT VELMORA_LINT)
        return()
    endif()
    set(command clang-tidy --quiet --warnings-as-errors=*)
    # clang does not know all of GCC's warnings; those are the compiler's business.
    list(APPEND command --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-error)
    if(WIN32)
        list(APPEND command --extra-arg=--target=x86_64-w64-windows-gnu)
    endif()
    set_target_properties(${ARGV} PROPERTIES CXX_CLANG_TIDY "${command}")
endfunction()
