#include "tour.h"

#include "bench/flash/terminal.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace bench {

namespace {

// Ends one step; the tour goes on with the next.
struct StepFailed
{
    QString why;
};

QString compact(const QJsonValue &value)
{
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

double secondsOf(const QElapsedTimer &clock)
{
    return static_cast<double>(clock.elapsed()) / 1000.0;
}

// "McuService.setResetSystem(1)", "shell: sync".
QString journalLine(const QJsonObject &entry)
{
    const QString service = entry.value("service").toString();
    const QString operation = entry.value("call").toString();
    if (service == QLatin1String("shell"))
        return QStringLiteral("shell: ") + operation;
    QStringList words;
    const QJsonArray arguments = entry.value("args").toArray();
    for (const QJsonValue &argument : arguments)
        words << compact(argument);
    return QStringLiteral("%1.%2(%3)").arg(service, operation, words.join(QStringLiteral(", ")));
}

} // namespace

Tour::Tour(Dispatcher *dispatcher, const TourOrder &order, QObject *parent)
    : QThread(parent), caller(dispatcher), pictures(order.pictures), capsule(order.capsule),
      output(takeStandardOutput())
{
}

void Tour::print(const QString &line)
{
    std::fprintf(output, "%s\n", qUtf8Printable(line));
    std::fflush(output);
}

void Tour::run()
{
    clock.start();
    menu();
    everyEntry();
    update();
    stagedUpdate();
    gnssStatus();
    usbPhy();
    appleTest();
    usbTest();
    systemTools();
    microphone();
    quit();
    QString end = QStringLiteral("%1 steps, %2 failed, %3 s; pictures in %4")
                      .arg(steps)
                      .arg(failedSteps)
                      .arg(secondsOf(clock), 0, 'f', 1)
                      .arg(pictures);
    if (failedSteps > 0 && !capsule.isEmpty())
        end += QStringLiteral("; capsule ") + capsule;
    print(end);
}

void Tour::step(const QString &done, const std::function<QString()> &act)
{
    ++steps;
    QElapsedTimer time;
    time.start();
    QString seen;
    bool ok = true;
    try {
        seen = act();
    } catch (const StepFailed &failure) {
        ok = false;
        ++failedSteps;
        seen = failure.why;
    }
    print(QStringLiteral("%1 %2 s  %3: %4")
              .arg(ok ? QStringLiteral("ok    ") : QStringLiteral("FAILED"))
              .arg(secondsOf(time), 6, 'f', 2)
              .arg(done, seen));
}

QJsonValue Tour::call(const QString &method, const QJsonObject &parameters)
{
    const QJsonObject reply = caller.call(method, parameters);
    if (reply.contains(QStringLiteral("error"))) {
        throw StepFailed{QStringLiteral("%1 %2: %3")
                             .arg(method, compact(parameters),
                                  reply.value(QStringLiteral("error"))
                                      .toObject()
                                      .value(QStringLiteral("message"))
                                      .toString())};
    }
    return reply.value(QStringLiteral("result"));
}

void Tour::expect(bool holds, const QString &otherwise)
{
    if (!holds)
        throw StepFailed{otherwise};
}

void Tour::click(const QString &object)
{
    call(QStringLiteral("ui.click"), {{"object", object}});
}

void Tour::waitFor(const QString &object, const QString &property, const QJsonValue &value,
                   int seconds)
{
    call(QStringLiteral("ui.wait"),
         {{"object", object},
          {"property", property},
          {"value", value},
          {"timeout_ms", seconds * 1000}});
}

QString Tour::textOf(const QString &object)
{
    return call(QStringLiteral("ui.state"), {{"object", object}})
        .toObject()
        .value("text")
        .toString();
}

bool Tour::isVisible(const QString &object)
{
    return call(QStringLiteral("ui.state"), {{"object", object}})
        .toObject()
        .value("visible")
        .toBool();
}

void Tour::setUnit(const QString &path, const QJsonValue &value)
{
    call(QStringLiteral("unit.set"), {{"path", path}, {"value", value}});
}

QJsonValue Tour::unitValue(const QString &path)
{
    return call(QStringLiteral("unit.get"), {{"path", path}}).toObject().value("value");
}

quint32 Tour::memoryWord(quint32 address)
{
    const QJsonValue word =
        call(QStringLiteral("unit.memory.read"), {{"address", static_cast<double>(address)}});
    return static_cast<quint32>(word.toObject().value("value").toDouble());
}

// The Home key is the way back from every page.
void Tour::openMenu()
{
    call(QStringLiteral("window.home"));
    waitFor(QStringLiteral("testEntryWidget"), QStringLiteral("visible"), true);
}

// The unit shows its restart, then the menu in a new window.
void Tour::awaitRestart()
{
    const QString notice = QStringLiteral("unit_restart");
    waitFor(notice, QStringLiteral("visible"), true, 10);
    waitFor(notice, QStringLiteral("visible"), false, 20);
    waitFor(QStringLiteral("testEntryWidget"), QStringLiteral("visible"), true);
}

// A new window, with pages that nobody has used yet.
void Tour::freshWindow()
{
    call(QStringLiteral("window.destroy"));
    openMenu();
}

void Tour::picture(const QString &name)
{
    call(QStringLiteral("ui.screenshot"),
         {{"file", QStringLiteral("%1/%2.png").arg(pictures, name)}});
}

void Tour::markJournal()
{
    journalSinceMark();
}

QStringList Tour::journalSinceMark()
{
    QStringList lines;
    for (bool more = true; more;) {
        const QJsonObject page =
            call(QStringLiteral("unit.journal"), {{"since", journalMark}}).toObject();
        const QJsonArray entries = page.value("entries").toArray();
        for (const QJsonValue &entry : entries)
            lines << journalLine(entry.toObject());
        journalMark = page.value("next").toInt();
        more = page.value("more").toBool();
    }
    return lines;
}

// The lines expected stand in the journal in this order; others may lie between.
void Tour::expectJournal(const QStringList &expected)
{
    const QStringList lines = journalSinceMark();
    int at = 0;
    for (const QString &line : expected) {
        at = lines.indexOf(line, at);
        expect(at >= 0,
               QStringLiteral("the unit was not told %1; it was told %2")
                   .arg(line, lines.join(QStringLiteral("; "))));
        ++at;
    }
}

} // namespace bench
