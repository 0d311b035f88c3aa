#pragma once

#include "bench/monitor/dispatcher.h"

#include <QJsonDocument>
#include <QtTest>

#include <memory>

namespace tests {

// An object written as JSON; ' stands for ".
inline QJsonObject json(QByteArray text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.replace('\'', '"'));
    Q_ASSERT(document.isObject());
    return document.object();
}

// One call in the thread of the dispatcher, and its answer once it is there.
class Pending
{
public:
    Pending(bench::Dispatcher *dispatcher, const QString &method, const QByteArray &params)
    {
        dispatcher->dispatch(method, json(params),
                             [answer = answer](const QJsonObject &message) { *answer = message; });
    }

    bool isAnswered() const { return !answer->isEmpty(); }

    // The answer; empty after ten seconds without one.
    QJsonObject wait() const
    {
        [this] { QTRY_VERIFY_WITH_TIMEOUT(isAnswered(), 10000); }();
        return *answer;
    }

private:
    std::shared_ptr<QJsonObject> answer = std::make_shared<QJsonObject>();
};

inline QJsonObject resultOf(bench::Dispatcher *dispatcher, const QString &method,
                            const QByteArray &params = "{}")
{
    const QJsonObject answer = Pending(dispatcher, method, params).wait();
    if (!answer.contains("result"))
        qWarning().noquote() << method << QJsonDocument(answer).toJson(QJsonDocument::Compact);
    return answer.value("result").toObject();
}

// "Class: message" of a call that must fail; "none" when it did not.
inline QString errorOf(bench::Dispatcher *dispatcher, const QString &method,
                       const QByteArray &params = "{}")
{
    const QJsonObject answer = Pending(dispatcher, method, params).wait();
    if (!answer.contains("error"))
        return QStringLiteral("none");
    const QJsonObject error = answer.value("error").toObject();
    return error.value("data").toObject().value("class").toString() + ": "
        + error.value("message").toString();
}

} // namespace tests
