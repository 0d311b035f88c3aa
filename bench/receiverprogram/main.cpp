// The simulated receiver alone, for hosts other than the bench.

#include "options.h"
#include "service.h"

#include "bench/root/exitstatus.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>

namespace bench {

namespace {

int receiverMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("testmode-receiver"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TESTMODE_VERSION));
    ReceiverOptions options;
    const QString error = parseReceiverOptions(QCoreApplication::arguments(), &options);
    if (!error.isEmpty()) {
        std::fprintf(stderr, "testmode-receiver: %s\n", qPrintable(error));
        return kUsage;
    }
    if (options.help || options.version) {
        std::printf("%s",
                    options.help ? qPrintable(receiverHelp())
                                 : "testmode-receiver " TESTMODE_VERSION "\n");
        return kDone;
    }
    return ReceiverService(options).run();
}

} // namespace

} // namespace bench

int main(int argc, char **argv)
{
    try {
        return bench::receiverMain(argc, argv);
    } catch (const std::exception &fault) {
        std::fprintf(stderr, "testmode-receiver: fault of the program: %s\n", fault.what());
        return bench::kFault;
    }
}
