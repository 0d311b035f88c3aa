// The simulated head unit: reads the command line, enters the private root, and
// inside runs a session.

#include "appearance.h"
#include "complaint.h"
#include "doctor.h"
#include "flashseveral.h"
#include "preparation.h"
#include "session.h"

#include "bench/monitor/monitor.h"
#include "bench/root/bubblewrap.h"
#include "bench/root/exitstatus.h"

#include <QApplication>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>

#include <unistd.h>

namespace bench {

namespace {

// Outside: everything that can be refused is refused before anything is made.
int prepare(CommandLine *options, RootLayout *layout)
{
    if (!options->isDriven() && !hasDisplay())
        return complain("there is no display; use --flash, --tour DIR or --monitor SOCKET", kUsage);
    std::string error;
    return prepareRoot(options, layout, &error) ? kDone : complain(error, kNotThere);
}

int runInside(const CommandLine &options)
{
    if (options.flash || !options.replay.empty())
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1); // nothing is to be seen
    choosePlatform();
    char name[] = "testmode-bench";
    char *words[] = {name, nullptr}; // Qt takes none of the user's
    int count = 1;
    QApplication application(count, words);
    QApplication::setApplicationName(QStringLiteral("testmode-bench"));
    QApplication::setApplicationVersion(QStringLiteral(TESTMODE_VERSION));
    applyAppearance();
    if (hasDisplay() && !isOnDisplay()) {
        const std::string line = "the display cannot be opened; see to DISPLAY";
        if (!options.isDriven())
            return complain(line + ", or use --flash, --tour DIR or --monitor SOCKET", kUsage);
        remark(line + "; going on without");
    }
    return Session(options).run();
}

// A worker of the plug-in may still be at its update; it is not waited for.
bool otherThreadsRun()
{
    std::error_code ignored;
    const std::filesystem::directory_iterator threads("/proc/self/task", ignored);
    return std::distance(begin(threads), end(threads)) > 1;
}

int benchMain(int argc, char **argv)
{
    CommandLine options;
    std::string error;
    if (!parseCommandLine(argc, argv, &options, &error))
        return complain(error, kUsage);
    if (options.help || options.version) {
        std::printf("%s",
                    options.help ? helpText().c_str() : "testmode-bench " TESTMODE_VERSION "\n");
        return kDone;
    }
    if (options.doctor)
        return examineMachine();

    RootLayout layout;
    if (!insidePrivateRoot()) {
        if (options.uarts.size() > 1)
            return flashSeveral(options);
        const int status = prepare(&options, &layout);
        if (status != kDone)
            return status;
        ::setenv(kProcessVariable, std::to_string(::getpid()).c_str(), 1);
    }
    std::vector<std::string> words = commandLineWords(options);
    enterPrivateRoot(pointers(words).data(), layout);

    const int status = runInside(options);
    std::fflush(nullptr);
    if (otherThreadsRun())
        ::_exit(status);
    return status;
}

} // namespace

} // namespace bench

int main(int argc, char **argv)
{
    try {
        return bench::benchMain(argc, argv);
    } catch (const std::exception &fault) {
        return bench::complain(std::string("fault of the bench: ") + fault.what(), bench::kFault);
    }
}
