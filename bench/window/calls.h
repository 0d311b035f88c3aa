#pragma once

#include "frame.h"

#include <QJsonObject>
#include <QMap>
#include <QObject>
#include <QString>

#include <functional>

namespace bench {

class Dispatcher;

// The window's end of the one table of calls: what it shows and does, scripts can see and do.
// GUI thread; the dispatcher outlives it.
class Calls : public QObject
{
    Q_OBJECT

public:
    using Then = std::function<void(const QJsonObject &result)>;

    explicit Calls(Dispatcher *dispatcher, QObject *parent = nullptr);

    // Makes a call; `then` gets its result, at once or later, unless `context` has gone by then.
    void make(const QString &method, const QJsonObject &params, QObject *context, Then then);
    void make(const QString &method, const QJsonObject &params = {});

    // The result of a call that has it at once; empty when it failed, of which nobody is told.
    QJsonObject ask(const QString &method, const QJsonObject &params = {});

    void set(const QString &path, const QJsonValue &value);
    QJsonValue value(const QString &path);

signals:
    void happened(const QString &event, const QJsonObject &params);

    // A value of the unit is another one: with a frame, however often it has changed within.
    void changed(const QString &path, const QJsonValue &value);
    void allTold();                      // what changed within that frame
    void failed(const QString &message); // a call that was made, in words for the operator

private:
    void hear(const QString &event, const QJsonObject &params);
    void tellChanges();

    Dispatcher *dispatcher;
    Frame frame;
    QMap<QString, QJsonValue> news; // by path
};

} // namespace bench
