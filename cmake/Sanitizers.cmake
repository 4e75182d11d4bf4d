# Address, leak and undefined-behaviour checks over libraries and programs alike. The runtime belongs to the program;
# the libraries leave its symbols undefined. The first finding ends the program.
set(VORLEN_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
if(VORLEN_SANITIZE)
    # The checks that g++ 12 inserts hide from it what is initialised, down into <regex>: the warning is left to the
    # other builds.
    add_compile_options(${VORLEN_SANITIZE_FLAGS} -Wno-maybe-uninitialized)
    add_link_options(${VORLEN_SANITIZE_FLAGS})
endif()
