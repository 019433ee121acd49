# varnel_library(NAME LAYER n [STATIC] SOURCES … [DEPENDS …] [LINK …])
#
# A subsystem of the program: an object library that may use only Varnel targets of a lower layer (DEPENDS)
# and outside libraries (LINK). A STATIC one lies above varnel_core, which it links for everything below. Both the declared dependencies and the #include lines of its files are checked;
# a violation stops the configuration.
#
# varnel_check_layers() runs the check over the #include lines once every target is known.

define_property(TARGET PROPERTY VARNEL_LAYER)
define_property(TARGET PROPERTY VARNEL_DEPENDS)
define_property(TARGET PROPERTY VARNEL_FILES)
set_property(GLOBAL PROPERTY VARNEL_TARGETS "")

function(varnel_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "STATIC" "LAYER" "SOURCES;DEPENDS;LINK")
    if(NOT DEFINED arg_LAYER)
        message(FATAL_ERROR "varnel_library(${name}): LAYER is missing")
    endif()
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "varnel_library(${name}): unknown arguments ${arg_UNPARSED_ARGUMENTS}")
    endif()
    foreach(dependency IN LISTS arg_DEPENDS)
        if(NOT TARGET ${dependency})
            message(FATAL_ERROR "varnel_library(${name}): ${dependency} is not a target yet; a dependency must be of a lower layer and come first")
        endif()
        get_target_property(layer ${dependency} VARNEL_LAYER)
        if(NOT layer LESS arg_LAYER)
            message(FATAL_ERROR "varnel_library(${name}): layer ${arg_LAYER} may not use ${dependency} of layer ${layer}")
        endif()
    endforeach()

    if(arg_STATIC)
        # Linking the object libraries would put what varnel_core holds into the archive once more.
        get_target_property(core_targets varnel_core INTERFACE_LINK_LIBRARIES)
        list(REMOVE_ITEM arg_DEPENDS ${core_targets})
        add_library(${name} STATIC ${arg_SOURCES})
        target_link_libraries(${name} PUBLIC varnel_core)
    else()
        add_library(${name} OBJECT ${arg_SOURCES})
    endif()
    target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
    target_link_libraries(${name} PUBLIC Qt6::Core ${arg_LINK} ${arg_DEPENDS})
    set(files "")
    foreach(source IN LISTS arg_SOURCES)
        list(APPEND files "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
    endforeach()
    set_target_properties(${name} PROPERTIES
        VARNEL_LAYER "${arg_LAYER}"
        VARNEL_DEPENDS "${arg_DEPENDS}"
        VARNEL_FILES "${files}")
    set_property(GLOBAL APPEND PROPERTY VARNEL_TARGETS ${name})
    varnel_precompile(${name})
endfunction()

# All targets share the precompiled header of varnel_base, so it is built once.
function(varnel_precompile target)
    if(target STREQUAL "varnel_base")
        target_precompile_headers(${target} PRIVATE "${CMAKE_SOURCE_DIR}/src/base/Precompiled.h")
    elseif(TARGET varnel_base)
        target_precompile_headers(${target} REUSE_FROM varnel_base)
    endif()
endfunction()

# Fills `owner_<path below src>` for every header and source of every target.
function(varnel_check_layers)
    get_property(targets GLOBAL PROPERTY VARNEL_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(files ${target} VARNEL_FILES)
        foreach(file IN LISTS files)
            file(RELATIVE_PATH path "${CMAKE_SOURCE_DIR}/src" "${file}")
            set("owner_${path}" ${target})
        endforeach()
    endforeach()

    set(violations "")
    foreach(target IN LISTS targets)
        get_target_property(files ${target} VARNEL_FILES)
        get_target_property(own_layer ${target} VARNEL_LAYER)
        foreach(file IN LISTS files)
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
            file(STRINGS "${file}" lines REGEX "^#include \"")
            file(RELATIVE_PATH path "${CMAKE_SOURCE_DIR}" "${file}")
            foreach(line IN LISTS lines)
                string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${line}")
                if(NOT EXISTS "${CMAKE_SOURCE_DIR}/src/${included}")
                    continue()
                endif()
                if(NOT DEFINED "owner_${included}")
                    list(APPEND violations "${path}: ${included} belongs to no target")
                    continue()
                endif()
                set(owner "${owner_${included}}")
                get_target_property(layer ${owner} VARNEL_LAYER)
                if(NOT owner STREQUAL target AND NOT layer LESS own_layer)
                    list(APPEND violations
                        "${path}: ${target} (layer ${own_layer}) includes ${included} of ${owner} (layer ${layer})")
                endif()
            endforeach()
        endforeach()
    endforeach()
    if(violations)
        list(JOIN violations "\n  " text)
        message(FATAL_ERROR "Layer check failed:\n  ${text}")
    endif()
endfunction()

# Qt 6.4's moc stops at the standard library's <concepts> once it knows the compiler's macros; it needs none of them.
set(CMAKE_AUTOMOC_COMPILER_PREDEFINES OFF)

# varnel_test(Name LABEL folder SOURCES … [LINK …] [TIMEOUT seconds])
# One QtTest program; the label is the folder, so that `ctest -L ollama` runs one subsystem.
function(varnel_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;TIMEOUT" "SOURCES;LINK;ENVIRONMENT")
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${name} PRIVATE varnel_core varnel_test_support Qt6::Test ${arg_LINK})
    varnel_precompile(${name})
    add_test(NAME ${name} COMMAND ${name})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    set(profile "${CMAKE_BINARY_DIR}/tests/profile")
    set_tests_properties(${name} PROPERTIES
        LABELS "${arg_LABEL}" TIMEOUT ${arg_TIMEOUT}
        # Never the preferences, the data or the keyring of whoever runs the tests.
        ENVIRONMENT "HOME=${profile};XDG_CONFIG_HOME=${profile}/config;XDG_DATA_HOME=${profile}/data;XDG_CACHE_HOME=${profile}/cache;XDG_STATE_HOME=${profile}/state;DBUS_SESSION_BUS_ADDRESS=disabled:;QT_QPA_PLATFORM=offscreen;VARNEL_BIN=${CMAKE_BINARY_DIR}/bin;${arg_ENVIRONMENT}")
endfunction()
