#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVector>

namespace tests {

// The connections that are made while it lives, in order: those whose sender is of a class that
// this executable brings itself. For connections by function pointer, of which Qt's own dump does
// not tell the order. One at a time; belongs into the sources of the test that uses it, because it
// takes the place of QObject::connectNotify(), which does nothing on its own.
class ConnectionLog
{
public:
    ConnectionLog();
    ConnectionLog(const ConnectionLog &) = delete;
    ConnectionLog &operator=(const ConnectionLog &) = delete;
    ~ConnectionLog();

    // Signatures of one sender's signals.
    QStringList signalsOf(const QObject *sender) const;

    // The first sender of a class that is still there, or null.
    template <typename Sender>
    Sender *sender() const
    {
        for (const QPointer<QObject> &object : senders()) {
            if (auto *found = qobject_cast<Sender *>(object.data()))
                return found;
        }
        return nullptr;
    }

private:
    QVector<QPointer<QObject>> senders() const;
};

} // namespace tests
