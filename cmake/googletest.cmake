# GoogleTest from the source that Debian and Ubuntu ship in their package "googletest", so that one copy serves the
# native and the cross-compiled build.
set(VELMORA_GOOGLETEST_SOURCE /usr/src/googletest/googletest CACHE PATH "Source of GoogleTest")
if(NOT EXISTS ${VELMORA_GOOGLETEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "No GoogleTest source in ${VELMORA_GOOGLETEST_SOURCE}: install the package 'googletest'.")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(GTEST_HAS_ABSL OFF CACHE BOOL "" FORCE)
add_subdirectory(${VELMORA_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
# Not our code: its warnings are its authors' business.
target_compile_options(gtest PRIVATE -w -O0)
target_compile_options(gtest_main PRIVATE -w -O0)

# Before GCC 13 the win32 thread model has no std::mutex, which GoogleTest wants for one class: it gets ours, by the header
# that GoogleTest leaves to its users.
if(WIN32 AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    foreach(library gtest gtest_main)
        target_compile_definitions(${library} PUBLIC GTEST_HAS_NOTIFICATION_=1)
        target_include_directories(${library} BEFORE PUBLIC ${CMAKE_SOURCE_DIR}/tests/support/googletest)
    endforeach()
endif()
include(GoogleTest)
