// In a build that counts lines: a process that ends by _exit() leaves its counts behind as any other does.
#include <sys/syscall.h>
#include <unistd.h>

extern "C" void __gcov_dump();

extern "C" [[noreturn]] void _exit(int status) {
    __gcov_dump();
    for (;;)
        syscall(SYS_exit_group, status);
}
