# Precompiled headers. What many files include and nobody changes from day to day (the standard library, the test
# framework, the host's headers) is parsed once, by a target that does nothing else; the others take its result.
#
#   vorlen_precompile(rooms_precompiled <vector> <string>)      owns the headers: compiled with its own options
#   target_precompile_headers(vorlen_base REUSE_FROM rooms_precompiled)
#
# Both must be compiled with the same options; the compiler warns if they are not. A file must still include what it
# uses: the presets 'release' and 'coverage' build without precompiled headers (CMAKE_DISABLE_PRECOMPILE_HEADERS), and so
# may a compiler cache that is shared by several checkouts, because the result of precompiling differs in each.
#
# g++ lets a compiler cache look into what it preprocessed only with -fpch-preprocess. ccache must be told in addition
# that macros and times in a precompiled header do not matter; it caches nothing that uses one otherwise.
add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$" AND NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
        ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()

function(vorlen_precompile name)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "// Owns precompiled headers.\n")
    add_library(${name} OBJECT EXCLUDE_FROM_ALL ${source})
    target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()
