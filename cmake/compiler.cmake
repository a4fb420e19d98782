# Code generation for every target. Sources include each other by their path from the root: "config/settings.h".
include_directories(${CMAKE_SOURCE_DIR})
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

# velmora_small(SOURCE...): compiles sources of the current folder for size.
function(velmora_small)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-Os>)
endfunction()

if(WIN32)
    # Windows 7 and later. One self-contained file: nothing of the toolchain has to be installed beside it.
    add_compile_definitions(_WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX)
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options(-static -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
                     $<$<CONFIG:Release>:-s>)
endif()

if(VELMORA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
