# Compiler cache, warnings, sanitizers, hardening: one place.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

set(NEMRA_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them: address,undefined or thread")
option(NEMRA_WERROR "Warnings are errors" OFF)

add_library(nemra_options INTERFACE)
target_include_directories(nemra_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(nemra_options INTERFACE -Wall -Wextra -fno-math-errno -fno-trapping-math)
if(NEMRA_WERROR)
    target_compile_options(nemra_options INTERFACE -Werror)
endif()

# Hardening that costs nothing worth measuring. The stack guard would show in the render loops, which read nothing from outside.
target_compile_options(nemra_options INTERFACE
    $<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:NAME>,nemraCore>>:-fstack-protector-strong>)
target_link_options(nemra_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)

if(NEMRA_SANITIZE)
    target_compile_options(nemra_options INTERFACE -fsanitize=${NEMRA_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(nemra_options INTERFACE -fsanitize=${NEMRA_SANITIZE})
else()
    target_compile_options(nemra_options INTERFACE
        $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2>)
endif()
