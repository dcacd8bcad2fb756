# qrt_configure_version(<template> <output>)
#
# Writes the version record. The values come from the environment or cache where a build system sets them
# (QRT_BUILD_NUMBER, QRT_BUILD_DATE), else from git, else say that they are unknown.
set(QRT_BUILD_NUMBER "0" CACHE STRING "Number of this build, a decimal integer")
set(QRT_BUILD_DATE "" CACHE STRING "Date of this build; empty for the date of the commit, so that builds are repeatable")

function(qrt_configure_version template output)
    find_package(Git QUIET)
    foreach(fact "QRT_COMMIT rev-parse HEAD" "QRT_BRANCH rev-parse --abbrev-ref HEAD" "commit_date log -1 --format=%cs")
        separate_arguments(fact)
        list(POP_FRONT fact name)
        set(${name} "")
        if(Git_FOUND)
            execute_process(COMMAND ${GIT_EXECUTABLE} ${fact} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                OUTPUT_VARIABLE ${name} OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        endif()
        if(NOT ${name})
            set(${name} "unknown")
        endif()
    endforeach()
    if(NOT QRT_BUILD_DATE)
        set(QRT_BUILD_DATE ${commit_date})
    endif()
    configure_file(${template} ${output} @ONLY)
endfunction()
