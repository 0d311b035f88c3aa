// benchmark_nothing: the floor of a bench. The same process, started by the same words in the same
// root, up to where a session would begin: then it ends.

#include "bench/program/appearance.h"
#include "bench/program/complaint.h"
#include "bench/program/preparation.h"
#include "bench/root/bubblewrap.h"
#include "bench/root/exitstatus.h"

#include <QApplication>

int main(int argc, char **argv)
{
    bench::CommandLine options;
    std::string error;
    if (!bench::parseCommandLine(argc, argv, &options, &error))
        return bench::complain(error, bench::kUsage);
    bench::RootLayout layout;
    if (!bench::insidePrivateRoot() && !bench::prepareRoot(&options, &layout, &error))
        return bench::complain(error, bench::kNotThere);
    std::vector<std::string> words = bench::commandLineWords(options);
    bench::enterPrivateRoot(bench::pointers(words).data(), layout);
    bench::choosePlatform();
    const QApplication application(argc, argv);
    bench::applyAppearance();
    return 0;
}
