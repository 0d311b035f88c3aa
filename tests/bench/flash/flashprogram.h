#pragma once

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// What the tests of --flash need of the built program.
namespace flashprogram {

const QString kBench = QStringLiteral(TESTMODE_BENCH);

// A run that ends well takes about a second at full speed; on a loaded machine it may need
// attempts.
constexpr int kLongestRun = 120000; // milliseconds

inline QList<QJsonObject> eventsIn(const QByteArray &output)
{
    QList<QJsonObject> events;
    const QList<QByteArray> lines = output.trimmed().split('\n');
    for (const QByteArray &line : lines)
        events << QJsonDocument::fromJson(line).object();
    return events;
}

// Those whose `key` is `value`.
inline QList<QJsonObject> with(const QString &key, const QJsonValue &value,
                               const QList<QJsonObject> &events)
{
    QList<QJsonObject> found;
    for (const QJsonObject &event : events) {
        if (event.value(key) == value)
            found << event;
    }
    return found;
}

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;

    QList<QJsonObject> events() const { return eventsIn(output); }
    // From the start of the last attempt on.
    QList<QJsonObject> lastAttempt() const
    {
        QList<QJsonObject> all = events();
        const QList<QJsonObject> starts = with("kind", "attempt", all);
        return starts.isEmpty() ? all : all.mid(all.lastIndexOf(starts.last()));
    }
    QList<QJsonObject> events(const QString &kind) const { return with("kind", kind, events()); }
};

inline void makeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QByteArray imageOf(int bytes)
{
    QByteArray image;
    while (image.size() < bytes)
        image +=
            "image of " + QByteArray::number(bytes) + " bytes, " + QByteArray::number(image.size());
    return image.left(bytes);
}

// A folder with a package of few packets, so that a run is short.
struct Workplace
{
    Workplace()
    {
        if (!folder.isValid() || !QDir(folder.path()).mkdir("package"))
            qFatal("no folder for the test");
        makeFile(path("package/flash_download.cfg"), "any");
        makeFile(path("package/bootloader.bin"), imageOf(4097));
        makeFile(path("package/partition_table.bin"), imageOf(100));
        makeFile(path("package/gnss_demo.bin"), imageOf(4096));
        makeFile(path("package/gnss_config.bin"), imageOf(1));
    }

    QString path(const QString &name) const { return folder.filePath(name); }

    // The dialogue's time-outs are the plug-in's own: where a loaded machine keeps the receiver
    // from answering for half a second, an attempt fails, and the next one begins.
    QStringList words(const QStringList &more) const
    {
        return QStringList{"--flash", "--full-speed",  "--package",  path("package"),
                           "--log",   path("run.log"), "--attempts", "5"}
        + more;
    }

    Outcome run(const QStringList &more = {}) const
    {
        QProcess process;
        process.start(kBench, words(more));
        return endOf(&process);
    }

    static Outcome endOf(QProcess *process)
    {
        Outcome outcome;
        if (process->waitForFinished(kLongestRun) && process->exitStatus() == QProcess::NormalExit)
            outcome.status = process->exitCode();
        outcome.output = process->readAllStandardOutput();
        outcome.errors = process->readAllStandardError();
        return outcome;
    }

    QTemporaryDir folder;
};

// Folders below /proc of processes with `word` in their command line, other than this one.
inline QStringList processesWith(const QByteArray &word)
{
    QStringList found;
    const QStringList numbers = QDir("/proc").entryList(QDir::Dirs);
    for (const QString &number : numbers) {
        if (number.toInt() != QCoreApplication::applicationPid()
            && contentOf("/proc/" + number + "/cmdline").contains(word))
            found << number;
    }
    return found;
}

} // namespace flashprogram
