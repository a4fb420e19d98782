# Code generation for every target. Sources include each other by their path from the root: "config/settings.h".
include_directories(${CMAKE_SOURCE_DIR})
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

# A buffer on the stack that is written beyond its end ends the process instead of choosing where a function returns to.
add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>)

# The same source gives the same bytes, wherever and whenever it is built: scripts/check-reproducible.
add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>)

# velmora_small(SOURCE...): compiles sources of the current folder for size.
function(velmora_small)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-Os>)
endfunction()

if(WIN32)
    # Windows 7 and later. One self-contained file: nothing of the toolchain has to be installed beside it.
    add_compile_definitions(_WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX)
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options(-static -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
                     -Wl,--no-insert-timestamp $<$<CONFIG:Release>:-s>)
    # Of the two kinds of control-flow protection that Windows has, this toolchain has neither. Control Flow Guard needs
    # tables that GNU ld cannot write. The shadow stack needs no code, but a mark in the file that it cannot set either;
    # what -fcf-protection adds to the code, Windows does not look at.
endif()

if(VELMORA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

if(VELMORA_THREADS)
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

if(VELMORA_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()

# Everything that a fuzz target runs tells libFuzzer which way it took. Nothing tells what numbers it compared: that
# takes up to half of the time, and what counts here are texts, which libFuzzer learns from memcmp.
if(VELMORA_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-coverage=trace-cmp
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
