#include "dispatcher.h"

#include <exception>

namespace bench {

Dispatcher::Dispatcher(QObject *parent) : QObject(parent)
{
    addOwnMethods();
}

void Dispatcher::add(const Method &method)
{
    Q_ASSERT(!rows.contains(method.name));
    rows.insert(method.name, table.size());
    table.append(method);
}

void Dispatcher::addEvent(const QString &name, const QString &description)
{
    eventDescriptions.insert(name, description);
}

void Dispatcher::dispatch(const QString &method, const QJsonObject &params, Reply reply,
                          Client *client)
{
    const Responder responder(std::move(reply));
    const auto row = rows.constFind(method);
    if (row == rows.constEnd()) {
        responder.fail({ErrorClass::UnknownMethod, QStringLiteral("no method %1").arg(method)});
        return;
    }
    const Method found = table.at(row.value());
    try {
        checkArguments(found, params);
    } catch (const CallError &error) {
        responder.fail(error);
        return;
    }
    emit called(method, params);
    try {
        found.handler(Call{Arguments(params), responder, client});
    } catch (const CallError &error) {
        emit refused(method, error.message());
        responder.fail(error);
    } catch (const std::exception &fault) {
        responder.fail(
            {ErrorClass::Internal, QStringLiteral("fault of the bench: %1").arg(fault.what())});
    }
}

QJsonObject Dispatcher::schema() const
{
    QJsonArray methods;
    for (const Method &method : table)
        methods.append(describe(method));
    QJsonArray errors;
    for (const ErrorKind &kind : errorKinds())
        errors.append(
            QJsonObject{{"class", kind.name}, {"code", kind.code}, {"meaning", kind.meaning}});
    QJsonArray events;
    for (auto event = eventDescriptions.constBegin(); event != eventDescriptions.constEnd();
         ++event)
        events.append(QJsonObject{{"name", event.key()}, {"description", event.value()}});

    QJsonObject whole{
        {"protocol", 1}, {"methods", methods}, {"errors", errors}, {"events", events}};
    for (auto part = extraSchema.constBegin(); part != extraSchema.constEnd(); ++part)
        whole.insert(part.key(), part.value());
    return whole;
}

void Dispatcher::subscribe(const Call &call)
{
    if (call.client == nullptr)
        throw CallError(ErrorClass::Unavailable,
                        QStringLiteral("only a client of the socket can subscribe"));
    QStringList wanted;
    const QJsonArray names = call.arguments.list("events");
    for (const QJsonValue &name : names) {
        if (!eventDescriptions.contains(name.toString()))
            throw CallError(ErrorClass::NotFound,
                            QStringLiteral("no event %1; there are: %2")
                                .arg(name.toString(), events().join(QStringLiteral(", "))));
        wanted << name.toString();
    }
    call.client->subscribe(wanted);
    call.responder.succeed({{"events", QJsonArray::fromStringList(wanted)}});
}

void Dispatcher::addOwnMethods()
{
    add({"bench.schema",
         {},
         "All methods, errors, events and paths of the unit",
         "",
         direct([this](const Arguments &) { return schema(); })});
    add({"bench.subscribe",
         {required("events", ParameterType::List, "names of the events to send; [] ends them")},
         "Has events sent to this client as notifications from now on",
         "events='[\"unit.popup\"]'",
         [this](const Call &call) { subscribe(call); }});
    add({"bench.quit", {}, "Ends the bench with status 0", "", [this](const Call &call) {
             call.responder.succeed();
             emit quitRequested();
         }});
}

} // namespace bench
