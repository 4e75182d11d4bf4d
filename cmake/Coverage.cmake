# The target 'coverage': runs the tests, and lists the lines of the libraries and the command that no test
# ran.
if(NOT VORLEN_COVERAGE)
    return()
endif()

add_compile_options(--coverage -fprofile-update=atomic)
add_link_options(--coverage)

find_program(GCOVR gcovr)
if(GCOVR)
    add_custom_target(coverage
        COMMAND find ${PROJECT_BINARY_DIR} -name *.gcda -delete
        COMMAND ${CMAKE_CTEST_COMMAND} --preset coverage
        COMMAND ${PROJECT_SOURCE_DIR}/cmake/coverage.sh ${PROJECT_BINARY_DIR}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        USES_TERMINAL VERBATIM)
else()
    add_custom_target(coverage
        COMMAND ${CMAKE_COMMAND} -E echo "coverage: gcovr is not installed (apt-get install gcovr), configure again after installing it"
        COMMAND ${CMAKE_COMMAND} -E false
        VERBATIM)
endif()
