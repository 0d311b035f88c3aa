#include "recorder.h"

#include "verdicts.h"

#include "bench/host/host.h"
#include "bench/monitor/dispatcher.h"
#include "bench/receiver/receiver.h"
#include "bench/unit/journal.h"
#include "bench/unit/tracelog.h"
#include "bench/unit/unitdocument.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QSysInfo>
#include <QTimer>

namespace bench {

namespace {

// The plug-in takes no larger file of a package; of a larger one the size is kept.
constexpr qint64 kLargestFile = 32LL * 1024 * 1024;

constexpr quint32 kFlashBase = 0x08000000;
constexpr int kSectorBytes = 4096;

// Calls that look and change nothing: nobody has to repeat them.
const QStringList kLooks = {
    QStringLiteral("bench.quit"),
    QStringLiteral("bench.schema"),
    QStringLiteral("bench.subscribe"),
    QStringLiteral("receiver.dialogue"),
    QStringLiteral("receiver.flash"),
    QStringLiteral("receiver.flash.map"),
    QStringLiteral("receiver.flash.save"),
    QStringLiteral("receiver.state"),
    QStringLiteral("receiver.wait"),
    QStringLiteral("trace.read"),
    QStringLiteral("ui.boxes"),
    QStringLiteral("ui.screenshot"),
    QStringLiteral("ui.state"),
    QStringLiteral("ui.tree"),
    QStringLiteral("ui.wait"),
    QStringLiteral("unit.file.read"),
    QStringLiteral("unit.get"),
    QStringLiteral("unit.journal"),
    QStringLiteral("unit.memory.read"),
    QStringLiteral("unit.registers"),
};

// Events that have a table of their own, or are heard of at their source.
const QStringList kToldElsewhere = {QStringLiteral("receiver.fault"),
                                    QStringLiteral("receiver.frame"), QStringLiteral("trace.line"),
                                    QStringLiteral("unit.journal")};

template <typename Container>
QString jsonText(const Container &value)
{
    return QString::fromUtf8(QJsonDocument(value).toJson(QJsonDocument::Compact));
}

QString jsonText(const QJsonValue &value)
{
    const QString list = jsonText(QJsonArray{value});
    return list.mid(1, list.size() - 2);
}

QString sumOf(const QString &file)
{
    QFile content(file);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!content.open(QIODevice::ReadOnly) || !hash.addData(&content))
        return QString();
    return QString::fromLatin1(hash.result().toHex());
}

bool isLook(const QString &call, const QJsonObject &arguments)
{
    return kLooks.contains(call)
        || (call == QLatin1String("receiver.faults") && arguments.isEmpty());
}

} // namespace

struct Recorder::Record
{
    Record(const QString &file, CapsuleWriter::Complaint complaint)
        : writer(file, std::move(complaint))
    {
        clock.start();
    }

    void add(CapsuleTable table, const QVariantList &values) { writer.add(table, values); }
    qint64 now() const { return clock.elapsed(); }

    QElapsedTimer clock;
    ProgressCounter progress;
    CapsuleWriter writer;
};

Recorder::Recorder(const QString &file, CapsuleWriter::Complaint complaint)
    : path(file), complain(std::move(complaint))
{
}

Recorder::~Recorder()
{
    QCoreApplication::instance()->removeEventFilter(this);
    if (record)
        record->writer.close();
    if (unwanted)
        QFile::remove(path);
}

QString Recorder::start(const Sources &sources)
{
    from = sources;
    record = std::make_shared<Record>(path, complain);
    const QString trouble = record->writer.start();
    if (!trouble.isEmpty())
        return trouble;
    writeStart(sources);
    listenToSources();
    touches = std::make_unique<TouchListener>(
        sources.parts.host->screen(),
        [this](const QString &call, const QJsonObject &arguments) { takeInput(call, arguments); });
    QCoreApplication::instance()->installEventFilter(this);
    return QString();
}

Progress Recorder::progress() const
{
    return record->progress.now();
}

void Recorder::writeStart(const Sources &sources)
{
    const QJsonObject unit = sources.document->value(QString())->toObject();
    const QString plugin = sources.parts.host->pluginFile();
    const QVector<QPair<QString, QString>> facts = {
        {QStringLiteral("bench"), QCoreApplication::applicationVersion()},
        {QStringLiteral("plugin"), plugin},
        {QStringLiteral("plugin_sha256"), sumOf(plugin)},
        {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
        {QStringLiteral("machine"),
         QSysInfo::prettyProductName() + QStringLiteral(", ") + QSysInfo::kernelVersion()
             + QStringLiteral(", ") + QSysInfo::currentCpuArchitecture()},
        {QStringLiteral("arguments"), jsonText(QJsonArray::fromStringList(sources.arguments))},
        {QStringLiteral("seed"),
         QString::number(unit[QStringLiteral("receiver")].toObject()["seed"].toDouble(), 'f', 0)},
        {QStringLiteral("receiver"),
         sources.parts.receiver != nullptr ? QStringLiteral("simulated") : QStringLiteral("real")},
        {QStringLiteral("started"), QDateTime::currentDateTime().toString(Qt::ISODateWithMs)}};
    for (const auto &[key, value] : facts)
        record->add(CapsuleTable::Meta, {key, value});
    record->add(CapsuleTable::Unit, {record->now(), QStringLiteral(""), jsonText(unit)});
    takeFaults();
    if (!sources.package.isEmpty())
        writePackage(sources.package);
}

void Recorder::writePackage(const QString &folder)
{
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &info : files) {
        QFile file(info.filePath());
        const bool whole = info.size() <= kLargestFile && file.open(QIODevice::ReadOnly);
        record->add(CapsuleTable::Package,
                    {info.fileName(), info.size(),
                     whole ? QVariant(file.readAll()) : QVariant(QVariant::ByteArray)});
    }
}

// Direct: in the thread of whoever tells, so that a GUI thread that hangs hides nothing.
void Recorder::listenToSources()
{
    const auto share = record;
    connect(
        &journal(), &Journal::added, this,
        [share](int number) {
            const QVector<JournalEntry> entries = journal().entries(number - 1);
            if (entries.isEmpty())
                return;
            const JournalEntry &entry = entries.first();
            share->progress.countJournal(entry.service);
            share->add(
                CapsuleTable::Journal,
                {entry.number, share->now(), entry.service, entry.call, jsonText(entry.arguments)});
        },
        Qt::DirectConnection);
    connect(
        &journal(), &Journal::completed, this,
        [share](int number) {
            const QVector<JournalEntry> entries = journal().entries(number - 1);
            if (!entries.isEmpty())
                share->add(CapsuleTable::JournalEnd,
                           {jsonText(entries.first().arguments), entries.first().number});
        },
        Qt::DirectConnection);
    connect(
        from.parts.trace, &TraceLog::added, this,
        [share](const QString &line, int number) {
            share->add(CapsuleTable::Trace, {number, share->now(), line});
            share->progress.countTrace(line);
        },
        Qt::DirectConnection);

    if (const Receiver *receiver = from.parts.receiver) {
        connect(
            receiver, &Receiver::lineAdded, this,
            [share](const DialogueLine &line, const QByteArray &frame) {
                static const char *const kDirections[] = {"to-receiver", "to-host", "event"};
                const QString direction = QString::fromLatin1(kDirections[line.direction]);
                share->add(CapsuleTable::Frame,
                           {line.number, share->now(), direction, line.baud, line.step,
                            line.meaning, frame});
                share->progress.countFrame(direction, line.step);
            },
            Qt::DirectConnection);
        connect(
            receiver, &Receiver::faultStruck, this,
            [share](int number, const FaultReport &report) {
                share->add(
                    CapsuleTable::Fault,
                    {share->now(), number, jsonText(report.fault.toJson()), report.deeds.value(0)});
            },
            Qt::DirectConnection);
    }
    connect(from.dispatcher, &Dispatcher::called, this, &Recorder::takeCall);
    connect(from.dispatcher, &Dispatcher::refused, this, &Recorder::takeRefusal);
    connect(from.dispatcher, &Dispatcher::eventHappened, this, &Recorder::takeEvent);
}

void Recorder::takeCall(const QString &call, const QJsonObject &arguments)
{
    lastIsInput = !isLook(call, arguments);
    if (lastIsInput)
        takeInput(call, arguments);
}

// Of the call before: handlers make no calls of their own.
void Recorder::takeRefusal()
{
    if (lastIsInput)
        record->add(CapsuleTable::InputRefused, {1, inputs});
}

void Recorder::takeInput(const QString &call, const QJsonObject &arguments)
{
    const Progress now = record->progress.now();
    record->add(CapsuleTable::Input,
                {++inputs, record->now(), now.journal, now.frames, call, jsonText(arguments)});
}

void Recorder::takeEvent(const QString &name, const QJsonObject &parameters)
{
    if (name == QLatin1String("unit.changed")) {
        const QString changed = parameters["path"].toString();
        record->add(CapsuleTable::Unit, {record->now(), changed, jsonText(parameters["value"])});
        if (changed == QLatin1String("receiver.faults"))
            takeFaults();
    } else if (name == QLatin1String("unit.register")) {
        record->add(CapsuleTable::Register,
                    {record->now(), parameters["name"].toString(), parameters["hex"].toString(),
                     parameters["before"].toString(), parameters["writer"].toString()});
    } else if (!kToldElsewhere.contains(name)) {
        record->add(CapsuleTable::Event, {record->now(), name, jsonText(parameters)});
    }
}

void Recorder::takeFaults()
{
    if (from.parts.receiver == nullptr)
        return;
    const QVector<FaultReport> armed = from.parts.receiver->faultReports();
    for (int number = 0; number < armed.size(); ++number)
        record->add(CapsuleTable::Fault,
                    {record->now(), number, jsonText(armed.at(number).fault.toJson()),
                     QVariant(QVariant::String)});
}

void Recorder::takePicture(const QString &why)
{
    record->add(CapsuleTable::Picture, {record->now(), why, from.parts.host->picture()});
}

bool Recorder::eventFilter(QObject *watched, QEvent *event)
{
    if (ending)
        return false;
    touches->look(watched, event);
    // A box is whole on the screen when the events that show it are through.
    if (event->type() == QEvent::Show && qobject_cast<QDialog *>(watched) != nullptr
        && touches->isOfTheUnit(watched))
        QTimer::singleShot(0, watched, [this] {
            if (!ending)
                takePicture(QStringLiteral("box"));
        });
    return false;
}

void Recorder::beginEnd()
{
    takePicture(QStringLiteral("end"));
    record->add(CapsuleTable::Meta, {QStringLiteral("end"), jsonText(progress().toJson())});
    ending = true;
}

bool Recorder::finish(int status)
{
    writeFlash();
    writeUpdates();
    record->add(CapsuleTable::Verdict, {QStringLiteral("exit status"), QString::number(status)});
    return record->writer.flush();
}

// Of a trace so long that its beginning is gone the reader makes them from the capsule itself.
void Recorder::writeUpdates()
{
    int gone = 0;
    const QStringList lines = from.parts.trace->lines(0, &gone);
    const Verdicts updates = gone == 0 ? updateVerdicts(lines) : Verdicts();
    for (auto each = updates.constBegin(); each != updates.constEnd(); ++each)
        record->add(CapsuleTable::Verdict, {each.key(), each.value()});
}

// Sectors that hold something.
void Recorder::writeFlash()
{
    if (from.parts.receiver == nullptr)
        return;
    const QByteArray flash = from.parts.receiver->wholeFlash();
    const QByteArray erased(kSectorBytes, '\xFF');
    for (int at = 0; at < flash.size(); at += kSectorBytes) {
        const QByteArray sector = flash.mid(at, kSectorBytes);
        if (sector != erased)
            record->add(CapsuleTable::Flash, {kFlashBase + quint32(at), sector});
    }
    record->add(CapsuleTable::Verdict, {kFlashSubject, flashSum(flash)});
}

} // namespace bench
