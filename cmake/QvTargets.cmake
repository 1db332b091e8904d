# What every target of the project shares, and the functions by which a folder adds its classes, tests and programs.

include_guard(GLOBAL)

# Flags of the project's own code. -fshort-wchar is no part of it: it comes to clients and to us with the library.
add_library(qvbase_flags INTERFACE)
# A product and a sum are never fused, so that geometry has the same bits on every machine.
target_compile_options(qvbase_flags INTERFACE
    -ffp-contract=off
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-qual -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wno-format-nonliteral -Wundef
    $<$<BOOL:${QVBASE_WARNINGS_AS_ERRORS}>:-Werror>)
if(QVBASE_SANITIZE)
    target_compile_options(qvbase_flags INTERFACE
        -fsanitize=${QVBASE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(qvbase_flags INTERFACE -fsanitize=${QVBASE_SANITIZE})
endif()

# qv_subsystem(<Name>
#     CLASSES  <file>...   a public header and a source of that name, in the subsystem's folder
#     HEADERS  <file>...   a public header without a source
#     INTERNAL <file>...   files that clients never see, named with their endings)
# Called from the subsystem's own CMakeLists.txt.
function(qv_subsystem name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "CLASSES;HEADERS;INTERNAL")
    set(sources "")
    set(headers "")
    foreach(class IN LISTS arg_CLASSES)
        list(APPEND sources ${CMAKE_CURRENT_SOURCE_DIR}/${class}.cpp)
        list(APPEND headers ${class}.h)
    endforeach()
    foreach(header IN LISTS arg_HEADERS)
        list(APPEND headers ${header}.h)
    endforeach()
    foreach(file IN LISTS arg_INTERNAL)
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
        list(APPEND sources ${file})
    endforeach()
    target_sources(qvbase_objects PRIVATE ${sources})
    foreach(header IN LISTS headers)
        set_property(GLOBAL APPEND PROPERTY QVBASE_PUBLIC_HEADERS Base/${name}/${header})
    endforeach()
    list(TRANSFORM headers PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qvbase/Base/${name})
endfunction()

# qv_test(<Name> SOURCES <file>... [INTERNAL])
# One test program. With INTERNAL it is linked from the library's objects, so that it reaches what is not exported.
function(qv_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" "" "SOURCES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE qvbase_flags qvbase_test_support GTest::gmock GTest::gtest_main)
    if(arg_INTERNAL)
        target_link_libraries(${name} PRIVATE qvbase_objects)
    else()
        target_link_libraries(${name} PRIVATE qvbase)
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
endfunction()

# qv_program(<name> <file>...)  a tool or an example, linked against the shared library
function(qv_program name)
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE qvbase_flags qvbase)
endfunction()
