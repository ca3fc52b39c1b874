# Compiler cache, warnings, sanitizers: one place.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

set(NEMRA_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them: address,undefined or thread")

add_library(nemra_options INTERFACE)
target_include_directories(nemra_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(nemra_options INTERFACE -Wall -Wextra -fno-math-errno -fno-trapping-math)
if(NEMRA_SANITIZE)
    target_compile_options(nemra_options INTERFACE -fsanitize=${NEMRA_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(nemra_options INTERFACE -fsanitize=${NEMRA_SANITIZE})
endif()
