# The target 'coverage': runs the tests and reports which lines of the libraries they reach, as a table and as HTML.
if(NOT VORLEN_COVERAGE)
    return()
endif()

add_compile_options(--coverage -fprofile-update=atomic)
add_link_options(--coverage)

find_program(GCOVR gcovr)
if(GCOVR)
    add_custom_target(coverage
        COMMAND ${CMAKE_COMMAND} -E make_directory coverage
        COMMAND find . -name *.gcda -delete
        COMMAND ${CMAKE_CTEST_COMMAND} --output-on-failure --no-tests=error -j2 -LE ^static$
        COMMAND ${GCOVR} --root ${PROJECT_SOURCE_DIR} --filter ${PROJECT_SOURCE_DIR}/host/
            --filter ${PROJECT_SOURCE_DIR}/Vorlen/ --exclude-throw-branches --print-summary --txt
            --html-details coverage/index.html ${PROJECT_BINARY_DIR}
        WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
        USES_TERMINAL VERBATIM)
else()
    add_custom_target(coverage
        COMMAND ${CMAKE_COMMAND} -E echo "coverage: gcovr is not installed (apt-get install gcovr), configure again after installing it"
        COMMAND ${CMAKE_COMMAND} -E false
        VERBATIM)
endif()
