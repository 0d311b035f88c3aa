#include "callerror.h"

namespace bench {

const QVector<ErrorKind> &errorKinds()
{
    static const QVector<ErrorKind> kinds = {
        {ErrorClass::Parse, "Parse", -32700, "the line is no JSON, or no UTF-8"},
        {ErrorClass::Request, "Request", -32600, "the line is JSON, but no JSON-RPC 2.0 call"},
        {ErrorClass::UnknownMethod, "UnknownMethod", -32601, "there is no such method"},
        {ErrorClass::Argument, "Argument", -32602,
         "an argument is missing, unknown, of the wrong type or out of its range"},
        {ErrorClass::Limit, "Limit", -32000,
         "a line, an answer, the calls under way or the clients are more than the monitor takes"},
        {ErrorClass::NotFound, "NotFound", -32001,
         "no object, item, box, path or file of that name"},
        {ErrorClass::Ambiguous, "Ambiguous", -32002, "more than one object has that name"},
        {ErrorClass::Hidden, "Hidden", -32003, "the widget is not on the screen"},
        {ErrorClass::Disabled, "Disabled", -32004, "the widget or the item takes no input now"},
        {ErrorClass::Covered, "Covered", -32005, "something else lies over the widget's centre"},
        {ErrorClass::WrongKind, "WrongKind", -32006, "the widget is of a kind that cannot do that"},
        {ErrorClass::WrongState, "WrongState", -32007, "not now: something else must come first"},
        {ErrorClass::Timeout, "Timeout", -32008, "what was waited for did not come in time"},
        {ErrorClass::File, "File", -32009, "a file could not be read, written or removed"},
        {ErrorClass::Unavailable, "Unavailable", -32010,
         "this bench was started without it, or is closing"},
        {ErrorClass::Internal, "Internal", -32603, "a fault of the bench itself"},
    };
    return kinds;
}

QJsonObject CallError::toJson() const
{
    const ErrorKind &found = errorKinds().at(static_cast<int>(kind));
    return {{"code", found.code},
            {"message", text},
            {"data", QJsonObject{{"class", QString::fromLatin1(found.name)}}}};
}

} // namespace bench
