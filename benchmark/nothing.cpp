// benchmark_nothing: the floor of a bench. Enters a private root, makes an application and ends.

#include "bench/root/privateroot.h"

#include <QApplication>

int main(int argc, char **argv)
{
    bench::RootLayout layout;
    layout.supervised = true;
    bench::enterPrivateRoot(argv, layout);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(argc, argv);
    return 0;
}
