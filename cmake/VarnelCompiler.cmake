# Compiler, warnings, sanitizers, the precompiled header and the compiler cache.

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    message(FATAL_ERROR
        "g++ ${CMAKE_CXX_COMPILER_VERSION} miscompiles coroutines; Varnel needs g++ 13 or clang 19. "
        "Configure with a preset: cmake --preset release")
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Programs and libraries share one precompiled header, so both are compiled the same way.
set(CMAKE_CXX_COMPILE_OPTIONS_PIE "-fPIC")

add_compile_options(-Wall -Wextra -Werror)
add_compile_definitions(
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

find_program(VARNEL_LLD NAMES ld.lld-19 lld-19)
if(VARNEL_LLD AND NOT APPLE)
    add_link_options(-fuse-ld=lld-19)
endif()
if(NOT APPLE)
    add_link_options(-Wl,--as-needed -Wl,-O1)
endif()

if(VARNEL_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(NOT APPLE)
    add_link_options(-Wl,-z,defs)
endif()

# Precompiled headers carry a time stamp that would defeat the cache; the flag leaves it out.
find_program(VARNEL_CCACHE ccache)
if(VARNEL_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${VARNEL_CCACHE})
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
    endif()
endif()
