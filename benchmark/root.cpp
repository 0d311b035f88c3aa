// benchmark_root PROGRAM [WORD...]: becomes the program in a private root, so that a tool which
// watches it (valgrind) needs not follow it through the root's making.

#include "bench/root/failure.h"
#include "bench/root/privateroot.h"

#include <cstdio>

#include <unistd.h>

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("benchmark_root: name a program to run\n", stderr);
        return 2;
    }
    bench::enterPrivateRoot(argv, bench::RootLayout());
    ::execvp(argv[1], argv + 1);
    bench::fail("start", argv[1]);
}
