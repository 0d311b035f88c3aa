#pragma once

#include "linkname.h"
#include "options.h"
#include "requests.h"

#include "bench/monitor/monitorserver.h"
#include "bench/receiver/receiver.h"
#include "bench/unit/unitdocument.h"

#include <QObject>

#include <memory>

namespace bench {

// One run of the receiver: its line, the calls on it, and what is kept of it.
class ReceiverService : public QObject
{
    Q_OBJECT

public:
    explicit ReceiverService(const ReceiverOptions &options);

    // Serves until told to end; the exit status of the program.
    int run();

private:
    // Each returns nothing, or one line that names the thing and the cure.
    QString loadState();
    QString openLine();
    QString listen();

    ReceiverOptions options;
    Requests requests;
    Receiver receiver;
    LinkName link;
    UnitDocument document;
    Dispatcher dispatcher;
    std::unique_ptr<MonitorServer> monitor;
};

} // namespace bench
