#pragma once

#include "registers.h"

#include <QElapsedTimer>
#include <QObject>

namespace bench {

// What a register held, and who wrote it last.
struct RegisterState
{
    quint32 value = 0;
    quint32 before = 0;
    QString writer;      // "plug-in", or who was named to write(); empty: nobody so far
    qint64 elapsed = -1; // milliseconds since the watch began
};

// Sees the named registers change in the simulated memory. The plug-in maps that memory and writes
// without a call, but on the GUI thread: the watch looks whenever that thread has nothing more to
// do, so of several values within one touch it sees the last. GUI thread. It watches nothing where
// the memory is the machine's own: a read of a real register may do something.
class RegisterWatch : public QObject
{
    Q_OBJECT

public:
    explicit RegisterWatch(const QString &memory, QObject *parent = nullptr);
    ~RegisterWatch() override;

    bool isWatching() const { return !states.isEmpty(); }

    // In the order of registers(); empty where nothing is watched.
    const QVector<RegisterState> &look();

    const RegisterState &state(int row) const { return states.at(row); }

    // For whoever writes to the memory by a call of the bench: what changes until the next look is
    // his.
    void nameWriter(const QString &writer);

signals:
    void changed(int row); // of registers()

private:
    bool map(const QString &memory);
    const volatile quint32 *word(quint32 address) const;

    void *pages = nullptr;
    quint32 firstAddress = 0;
    size_t length = 0;
    QString nextWriter;
    QVector<RegisterState> states;
    QElapsedTimer clock;
};

} // namespace bench
