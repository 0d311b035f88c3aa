#pragma once

#include <QJsonObject>
#include <QString>
#include <QVector>

namespace bench {

// Why a call failed. The list is closed: scripts decide by these names.
enum class ErrorClass {
    Parse,
    Request,
    UnknownMethod,
    Argument,
    Limit,
    NotFound,
    Ambiguous,
    Hidden,
    Disabled,
    Covered,
    WrongKind,
    WrongState,
    Timeout,
    File,
    Unavailable,
    Internal,
};

struct ErrorKind
{
    ErrorClass errorClass;
    const char *name;
    int code; // of JSON-RPC
    const char *meaning;
};

// All of them, in the order of ErrorClass.
const QVector<ErrorKind> &errorKinds();

// A failed call; thrown by method handlers, turned into an answer by the dispatcher.
class CallError
{
public:
    CallError(ErrorClass errorClass, const QString &message) : kind(errorClass), text(message) { }

    ErrorClass errorClass() const { return kind; }
    QString message() const { return text; }

    // {"code": ..., "message": ..., "data": {"class": ...}}
    QJsonObject toJson() const;

private:
    ErrorClass kind;
    QString text;
};

} // namespace bench
