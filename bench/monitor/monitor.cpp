#include "monitor.h"

#include "logmethods.h"
#include "receivermethods.h"
#include "receiverpaths.h"
#include "uimethods.h"
#include "unitmethods.h"
#include "windowmethods.h"

#include "bench/host/host.h"

#include <QCoreApplication>

namespace bench {

std::unique_ptr<Dispatcher> makeDispatcher(const Bench &bench, UnitDocument *document)
{
    if (bench.receiver != nullptr)
        addReceiverPaths(document, bench.receiver);
    auto dispatcher = std::make_unique<Dispatcher>();
    UiMethods::addTo(dispatcher.get(), bench.host->screen(),
                     [host = bench.host] { return host->picture(); });
    addWindowMethods(dispatcher.get(), bench.host);
    addUnitMethods(dispatcher.get(), document);
    addJournalMethods(dispatcher.get());
    addFileMethods(dispatcher.get());
    addMemoryMethods(dispatcher.get());
    addTraceMethods(dispatcher.get(), bench.trace);
    addReceiverMethods(dispatcher.get(), document, bench.receiver);
    return dispatcher;
}

QJsonObject greeting(const Bench &bench)
{
    return {{"bench", QCoreApplication::applicationVersion()},
            {"protocol", 1},
            {"plugin", bench.host->pluginFile()},
            {"pid", qEnvironmentVariableIntValue(kProcessVariable)}};
}

} // namespace bench
