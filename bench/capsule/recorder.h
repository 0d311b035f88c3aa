#pragma once

#include "progress.h"
#include "touches.h"
#include "writer.h"

#include "bench/host/bench.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>

#include <memory>

namespace bench {

class Dispatcher;
class UnitDocument;

// Writes a run of the bench into a capsule as it happens. It hears of everything where it happens,
// in the thread of whoever does it, and hands it to the writer. GUI thread. It outlives the host,
// whose end is part of the run; the receiver and the trace outlive it.
class Recorder : public QObject
{
    Q_OBJECT

public:
    struct Sources
    {
        Bench parts;
        Dispatcher *dispatcher = nullptr;
        UnitDocument *document = nullptr;
        QStringList arguments; // of the program
        QString package;       // folder, as the unit shows it; empty: none
    };

    // `complaint` is told, in any thread, once the disk takes no more.
    Recorder(const QString &file, CapsuleWriter::Complaint complaint);
    ~Recorder() override;

    // Begins with what the unit is now. Empty, or one line that names what is wrong and the cure.
    QString start(const Sources &sources);

    // The run is told to end: what the unit shows. What it does to end is recorded too.
    void beginEnd();

    // It has ended: what the receiver's flash holds, and the status that the program ends with.
    // False: the capsule is not whole.
    bool finish(int status);

    // Nobody needs the capsule: its file goes with the recorder.
    void forget() { unwanted = true; }

    Progress progress() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Record; // shared with the threads that tell of something

    void writeStart(const Sources &sources);
    void writePackage(const QString &folder);
    void listenToSources();
    void takeCall(const QString &call, const QJsonObject &arguments);
    void takeRefusal();
    void takeEvent(const QString &name, const QJsonObject &parameters);
    void takeInput(const QString &call, const QJsonObject &arguments);
    void takeFaults();
    void takePicture(const QString &why);
    void writeUpdates();
    void writeFlash();

    const QString path;
    const CapsuleWriter::Complaint complain;
    std::shared_ptr<Record> record;
    Sources from;
    std::unique_ptr<TouchListener> touches;
    int inputs = 0;
    bool lastIsInput = false; // of the calls
    bool ending = false;
    bool unwanted = false;
};

} // namespace bench
