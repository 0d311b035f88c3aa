#pragma once

#include "method.h"

#include <QHash>
#include <QObject>
#include <QVector>

namespace bench {

// Who calls, as far as a method needs to know; waits end when it goes.
class Client : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Events that are sent to this client from now on.
    virtual void subscribe(const QStringList &events) = 0;
};

// The one vocabulary to drive the bench: a table of methods that checks, runs
// and describes the calls. Lives in the GUI thread.
class Dispatcher : public QObject
{
    Q_OBJECT

public:
    using Reply = bench::Reply;

    explicit Dispatcher(QObject *parent = nullptr);

    void add(const Method &method);
    const QVector<Method> &methods() const { return table; }

    // Announces an event by its name and what one of its notifications tells.
    void addEvent(const QString &name, const QString &description);
    QStringList events() const { return eventDescriptions.keys(); }

    // Checks the call whole and runs it. The reply comes once, in the GUI
    // thread, at once or later; never after the dispatcher is gone.
    void dispatch(const QString &method, const QJsonObject &params, Reply reply,
                  Client *client = nullptr);

    // Adds a part of the schema beside methods, errors and events.
    void addToSchema(const QString &name, const QJsonValue &part) { extraSchema[name] = part; }
    QJsonObject schema() const;

signals:
    // A call that fits has come, and is about to run: what somebody does to the bench, or asks of
    // it.
    void called(const QString &method, const QJsonObject &params);

    // That call was of no use at once: it could not be done.
    void refused(const QString &method, const QString &message);

    void eventHappened(const QString &name, const QJsonObject &params);
    void quitRequested();

private:
    void subscribe(const Call &call);
    void addOwnMethods();

    QVector<Method> table;
    QHash<QString, int> rows; // into table, by name
    QMap<QString, QString> eventDescriptions;
    QMap<QString, QJsonValue> extraSchema;
};

} // namespace bench
