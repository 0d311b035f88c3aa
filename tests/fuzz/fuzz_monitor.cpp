// Lines of a monitor's client: from its socket through the table of calls to unit, journal, trace
// and receiver, and back. Input: what the client says.

#include "expect.h"

#include "bench/monitor/connection.h"
#include "bench/monitor/logmethods.h"
#include "bench/monitor/receivermethods.h"
#include "bench/monitor/receiverpaths.h"
#include "bench/monitor/unitmethods.h"
#include "bench/monitor/unitvalues.h"
#include "bench/receiver/receiver.h"
#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/tracelog.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QPointer>

#include <sys/socket.h>
#include <unistd.h>

namespace {

// What a client may do without a window, a file and a device.
struct Desk
{
    Desk()
    {
        bench::addReceiverPaths(&document, &receiver);
        bench::addUnitMethods(&dispatcher, &document);
        bench::addJournalMethods(&dispatcher);
        bench::addTraceMethods(&dispatcher, &trace);
        bench::addReceiverMethods(&dispatcher, &document, &receiver);
        dispatcher.addToSchema("paths", bench::describePaths(document));
        trace.setQuiet(true);
    }

    bench::UnitDocument document{bench::pathsOf(&bench::unit())};
    bench::Receiver receiver; // without a line
    bench::TraceLog trace;
    bench::Dispatcher dispatcher;
};

// Reads what has come; adds it to what came before.
void listen(int socket, QByteArray *heard)
{
    char buffer[65536];
    ssize_t count = 0;
    while ((count = ::recv(socket, buffer, sizeof buffer, MSG_DONTWAIT)) > 0)
        heard->append(buffer, static_cast<int>(count));
}

// Each line is an object of JSON-RPC.
void check(const QByteArray &heard)
{
    EXPECT(heard.endsWith('\n'));
    const QList<QByteArray> lines = heard.left(heard.size() - 1).split('\n');
    for (const QByteArray &line : lines) {
        const QJsonDocument document = QJsonDocument::fromJson(line);
        EXPECT(document.isObject());
        EXPECT(document.object().value("jsonrpc") == QJsonValue("2.0"));
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static int none = 0;
    static QCoreApplication application(none, nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Desk desk;
    bench::unit().powerOn();
    desk.receiver.clearFaults();

    int ends[2] = {};
    EXPECT(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    const QPointer<bench::Connection> connection =
        new bench::Connection(ends[0], {{"protocol", 1}}, &desk.dispatcher, nullptr);
    EXPECT(::send(ends[1], data, size, MSG_DONTWAIT) == static_cast<ssize_t>(size));
    ::shutdown(ends[1], SHUT_WR);

    QByteArray heard;
    // A call that waits goes with its client: nobody waits for it here.
    for (int quiet = 0; quiet < 3;) {
        const int before = heard.size();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        listen(ends[1], &heard);
        quiet = heard.size() == before ? quiet + 1 : 0;
    }
    delete connection;
    ::close(ends[1]);
    check(heard);
    bench::journal().clear();
    return 0;
}
