# Writes the source of the build identity. It depends on the sources alone, so that two builds of one commit are equal.

# qv_configure_build_identity(<template> <output> <source directory>)
# Uses QVBASE_BUILD_DIRECTORY_TEXT.
function(qv_configure_build_identity template output sourceDir)
    set(time 0)
    set(changes 0)
    find_program(QVBASE_GIT git)
    if(QVBASE_GIT)
        # Only a repository of this project counts, not one that its sources happen to lie in.
        execute_process(COMMAND ${QVBASE_GIT} -C ${sourceDir} rev-parse --show-prefix
            RESULT_VARIABLE failed OUTPUT_VARIABLE prefix ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT failed AND prefix STREQUAL "")
            execute_process(COMMAND ${QVBASE_GIT} -C ${sourceDir} log -1 --format=%ct HEAD
                OUTPUT_VARIABLE time ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
            execute_process(COMMAND ${QVBASE_GIT} -C ${sourceDir} rev-list --count HEAD
                OUTPUT_VARIABLE changes ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
        endif()
    endif()
    set(latest 253402300799) # the last second of a year of four digits
    if(NOT "$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
        set(time "$ENV{SOURCE_DATE_EPOCH}")
        if(NOT time MATCHES "^[0-9]+$" OR time GREATER latest)
            message(FATAL_ERROR "SOURCE_DATE_EPOCH is no number of seconds up to ${latest}: ${time}")
        endif()
    endif()
    # A repository without a commit gives no numbers.
    if(NOT time MATCHES "^[0-9]+$" OR time GREATER latest)
        set(time 0)
    endif()
    if(NOT changes MATCHES "^[0-9]+$")
        set(changes 0)
    endif()

    # Leading zeros would make an octal number of it in the source.
    math(EXPR QVBASE_BUILD_TIME "${time}")
    math(EXPR changes "1000000 + ${changes} % 1000000")
    string(SUBSTRING ${changes} 1 6 QVBASE_BUILD_CHANGE_SET)
    configure_file(${template} ${output} @ONLY)
endfunction()
