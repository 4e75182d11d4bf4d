# Address, leak and undefined-behaviour checks for libraries and programs. The runtime belongs to the program;
# the libraries leave its symbols undefined. The first finding aborts the program.
set(VORLEN_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
if(VORLEN_SANITIZE)
    # The checks that g++ 12 inserts prevent it from seeing what is initialised, even in <regex>. The other
    # builds keep the warning on.
    add_compile_options(${VORLEN_SANITIZE_FLAGS} -Wno-maybe-uninitialized)
    add_link_options(${VORLEN_SANITIZE_FLAGS})
endif()
