#include "calls.h"

#include "bench/monitor/dispatcher.h"

#include <QPointer>

#include <utility>

namespace bench {

Calls::Calls(Dispatcher *destination, QObject *parent)
    : QObject(parent), dispatcher(destination), frame(this, [this] { tellChanges(); })
{
    connect(dispatcher, &Dispatcher::eventHappened, this, &Calls::hear);
}

void Calls::hear(const QString &event, const QJsonObject &params)
{
    if (event == QLatin1String("unit.changed")) {
        news.insert(params["path"].toString(), params["value"]);
        frame.ask();
    }
    emit happened(event, params);
}

void Calls::tellChanges()
{
    const QMap<QString, QJsonValue> told = std::exchange(news, {});
    for (auto change = told.begin(); change != told.end(); ++change)
        emit changed(change.key(), change.value());
    emit allTold();
}

void Calls::make(const QString &method, const QJsonObject &params, QObject *context, Then then)
{
    const QPointer<QObject> asks = context;
    const QPointer<Calls> self = this;
    dispatcher->dispatch(method, params, [=](const QJsonObject &answer) {
        const QString error = answer["error"]["message"].toString();
        if (self && answer.contains("error"))
            emit self->failed(QStringLiteral("%1: %2").arg(method, error));
        else if (asks && then)
            then(answer["result"].toObject());
    });
}

void Calls::make(const QString &method, const QJsonObject &params)
{
    make(method, params, this, {});
}

QJsonObject Calls::ask(const QString &method, const QJsonObject &params)
{
    const auto result = std::make_shared<QJsonObject>();
    dispatcher->dispatch(method, params, [result](const QJsonObject &answer) {
        *result = answer["result"].toObject();
    });
    return *result;
}

void Calls::set(const QString &path, const QJsonValue &value)
{
    make(QStringLiteral("unit.set"), {{"path", path}, {"value", value}});
}

QJsonValue Calls::value(const QString &path)
{
    return ask(QStringLiteral("unit.get"), {{"path", path}}).value("value");
}

} // namespace bench
