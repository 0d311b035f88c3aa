#include "windowmethods.h"

#include "dispatcher.h"
#include "inputrun.h"

#include "bench/host/host.h"

namespace bench {

namespace {

// Runs a step of the framework; answers with the number that it returned, or
// with nothing when a box keeps it from returning.
void ask(const Call &call, std::function<int()> step)
{
    const auto result = std::make_shared<QJsonObject>();
    InputRun::start([result, step = std::move(step)] { result->insert("result", step()); },
                    [result, responder = call.responder] { responder.succeed(*result); });
}

void drive(const Call &call, const std::function<void()> &step)
{
    InputRun::start(step, [responder = call.responder] { responder.succeed(); });
}

void checkWindow(const Host *host)
{
    if (!host->hasWindow())
        throw CallError(ErrorClass::WrongState,
                        QStringLiteral("there is no window: window.create comes first"));
}

} // namespace

void addWindowMethods(Dispatcher *dispatcher, Host *host)
{
    dispatcher->add({"window.create",
                     {},
                     "onCreate, on a new window if there is none",
                     "",
                     [host](const Call &call) { drive(call, [host] { host->createWindow(); }); }});
    dispatcher->add({"window.show",
                     {optional("data", ParameterType::Text, "what onShow is given")},
                     "onShow, and the window on the screen",
                     "",
                     [host](const Call &call) {
                         checkWindow(host);
                         const QByteArray data = call.arguments.text("data").toUtf8();
                         drive(call, [host, data] { host->showWindow(data); });
                     }});
    dispatcher->add(
        {"window.home", {}, "onCreate and onShow: the Home key", "", [host](const Call &call) {
             drive(call, [host] { host->home(); });
         }});
    dispatcher->add({"window.destroy", {}, "onDestroy", "", [host](const Call &call) {
                         checkWindow(host);
                         drive(call, [host] { host->destroyWindow(); });
                     }});
    dispatcher->add({"window.back",
                     {},
                     "backEvent: the Back key; answers with what the window returned",
                     "",
                     [host](const Call &call) {
                         checkWindow(host);
                         ask(call, [host] { return host->back(); });
                     }});
    dispatcher->add({"window.key",
                     {required("code", ParameterType::Integer, "the key's code")},
                     "keyEvent; answers with what the window returned",
                     "code=12",
                     [host](const Call &call) {
                         checkWindow(host);
                         const int code = call.arguments.integer("code");
                         ask(call, [host, code] { return host->key(code); });
                     }});
}

} // namespace bench
