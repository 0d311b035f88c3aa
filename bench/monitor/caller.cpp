#include "caller.h"

#include <QSemaphore>
#include <QThread>

namespace bench {

namespace {

// Where the answer is left for the waiting thread.
struct Answer
{
    QSemaphore arrived;
    QJsonObject message;
};

} // namespace

QJsonObject Caller::call(const QString &method, const QJsonObject &params)
{
    Q_ASSERT(QThread::currentThread() != dispatcher->thread());
    const auto answer = std::make_shared<Answer>();
    const auto leave = [answer](const QJsonObject &message) {
        answer->message = message;
        answer->arrived.release();
    };
    // The event owns a responder: if it is dropped with the dispatcher, that answers.
    QMetaObject::invokeMethod(
        dispatcher,
        [destination = dispatcher, method, params, responder = Responder(leave)] {
            destination->dispatch(method, params, [responder](const QJsonObject &message) {
                responder.pass(message);
            });
        },
        Qt::QueuedConnection);
    answer->arrived.acquire();
    return answer->message;
}

} // namespace bench
