# One function a kind of target. Each takes the sources of the folder that calls it, so that
# a new file needs no line in any CMakeLists.txt.

# What AUTOMOC makes of every target, for a tool that reads the sources without building them.
add_custom_target(autogen)

# Settings shared by every target of ours.
function(ferrylane_set_up_target target)
    target_link_libraries(${target} PRIVATE ferrylane_warnings)
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII
        QT_NO_CAST_TO_ASCII
        QT_NO_KEYWORDS)
    add_dependencies(autogen ${target}_autogen)
endfunction()

# ferrylane_sources(<variable> [<subfolder>...]): the sources of this folder and of those named.
function(ferrylane_sources variable)
    set(patterns *.cpp *.h)
    foreach(subfolder IN LISTS ARGN)
        list(APPEND patterns ${subfolder}/*.cpp ${subfolder}/*.h)
    endforeach()
    file(GLOB sources CONFIGURE_DEPENDS ${patterns})
    set(${variable} "${sources}" PARENT_SCOPE)
endfunction()

# ferrylane_add_module(<folder> [SUBFOLDERS <folder>...] [EXCLUDE <file>...] [LINK <library>...]
#                      [PRIVATE_LINK <library>...])
#
# Makes the static library ferrylane_<folder>. LINK is what the folder's headers may show to
# those who use it. PRIVATE_LINK stays inside: its include folders reach nobody else. A folder
# with headers alone becomes an INTERFACE library.
function(ferrylane_add_module name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SUBFOLDERS;EXCLUDE;LINK;PRIVATE_LINK")
    ferrylane_sources(sources ${arg_SUBFOLDERS})
    foreach(file IN LISTS arg_EXCLUDE)
        list(REMOVE_ITEM sources "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    endforeach()

    set(library ferrylane_${name})
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR PARENT_PATH include_root)
    set(translation_units ${sources})
    list(FILTER translation_units INCLUDE REGEX "\\.cpp$")
    if(NOT translation_units)
        add_library(${library} INTERFACE)
        target_include_directories(${library} INTERFACE "${include_root}")
        target_link_libraries(${library} INTERFACE ${arg_LINK})
        return()
    endif()

    add_library(${library} STATIC ${sources})
    ferrylane_set_up_target(${library})
    target_include_directories(${library} PUBLIC "${include_root}")
    target_link_libraries(${library} PUBLIC ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK})
endfunction()

# ferrylane_add_program(<name> SOURCES <file>... LINK <library>...): skipped without its sources.
function(ferrylane_add_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
    file(GLOB found CONFIGURE_DEPENDS ${arg_SOURCES})
    if(NOT found)
        message(STATUS "No sources for ${name} yet")
        return()
    endif()
    add_executable(${name} ${found})
    ferrylane_set_up_target(${name})
    target_link_libraries(${name} PRIVATE ${arg_LINK})
endfunction()

# ferrylane_add_test_program(<module> [LABEL <label>] [EXCLUDE <file>...] [LINK <library>...]
#                            [DEFINE <definition>...] [PROPERTIES <name> <value>...])
#
# Makes ferrylane_test_<module> of this folder's sources and tells CTest of each case in it.
function(ferrylane_add_test_program module)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL" "EXCLUDE;LINK;DEFINE;PROPERTIES")
    ferrylane_sources(sources)
    foreach(file IN LISTS arg_EXCLUDE)
        list(REMOVE_ITEM sources "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    endforeach()
    set(translation_units ${sources})
    list(FILTER translation_units INCLUDE REGEX "\\.cpp$")
    if(NOT translation_units)
        return()
    endif()
    if(NOT arg_LABEL)
        set(arg_LABEL unit)
    endif()

    set(program ferrylane_test_${module})
    add_executable(${program} ${sources})
    ferrylane_set_up_target(${program})
    target_link_libraries(${program} PRIVATE ${arg_LINK} ferrylane_test_support)
    target_compile_definitions(${program} PRIVATE ${arg_DEFINE})
    gtest_discover_tests(${program}
        TEST_PREFIX ${module}.
        DISCOVERY_TIMEOUT 60
        PROPERTIES
            LABELS ${arg_LABEL}
            TIMEOUT 120
            ${arg_PROPERTIES})

    # gtest_discover_tests() takes no property whose value is a list, so CTest sets this one when
    # it reads the cases found.
    set(environment_file "${CMAKE_CURRENT_BINARY_DIR}/${program}_environment.cmake")
    file(WRITE "${environment_file}" "if(${program}_TESTS)
    set_tests_properties(\${${program}_TESTS} PROPERTIES
        ENVIRONMENT_MODIFICATION \"${FERRYLANE_TEST_ENVIRONMENT}\")
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${environment_file}")
endfunction()
