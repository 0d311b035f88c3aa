#pragma once

#include "responder.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QVector>

#include <functional>
#include <limits>

namespace bench {

class Client;

enum class ParameterType {
    Text,
    Integer,
    Boolean,
    List,
    Address, // an integer of 32 bits, or text such as "0x9C005000"
    Any,
};

struct Parameter
{
    QString name;
    ParameterType type;
    QString description;
    bool optional = false;
    qint64 minimum = std::numeric_limits<int>::min();
    qint64 maximum = std::numeric_limits<int>::max();
};

// The arguments of one call, once they fit the method's parameters.
class Arguments
{
public:
    explicit Arguments(const QJsonObject &arguments) : values(arguments) { }

    const QJsonObject &object() const { return values; }
    bool has(const char *name) const { return values.contains(QLatin1String(name)); }
    QJsonValue value(const char *name) const { return values.value(QLatin1String(name)); }
    QString text(const char *name) const { return value(name).toString(); }
    int integer(const char *name, int otherwise = 0) const { return value(name).toInt(otherwise); }
    quint32 address(const char *name) const;
    QJsonArray list(const char *name) const { return value(name).toArray(); }

private:
    QJsonObject values;
};

// One call under way, as its handler sees it.
struct Call
{
    Arguments arguments;
    Responder responder;
    Client *client; // null for calls from inside the process
};

// One row of the table that checks, dispatches and describes the calls.
struct Method
{
    using Handler = std::function<void(const Call &)>;
    using DirectHandler = std::function<QJsonObject(const Arguments &)>;

    QString name;
    QVector<Parameter> parameters;
    QString description;
    QString example; // arguments as testmode-ctl takes them
    Handler handler;
};

// The handler of a method that has its answer at once.
Method::Handler direct(Method::DirectHandler handler);

Parameter required(const char *name, ParameterType type, const char *description);
Parameter optional(const char *name, ParameterType type, const char *description);

// Milliseconds that a call may wait for something.
Parameter timeout();

// Entries to leave out: those up to this number.
Parameter since();

// Throws CallError unless `arguments` fits the method whole.
void checkArguments(const Method &method, const QJsonObject &arguments);

// One row of the schema.
QJsonObject describe(const Method &method);

} // namespace bench
