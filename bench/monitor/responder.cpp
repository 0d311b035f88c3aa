#include "responder.h"

#include <utility>

namespace bench {

class Responder::Once
{
public:
    explicit Once(Reply destination) : reply(std::move(destination)) { }

    ~Once()
    {
        answer({{"error",
                 CallError(ErrorClass::Unavailable, QStringLiteral("the bench is closing"))
                     .toJson()}});
    }

    Once(const Once &) = delete;
    Once &operator=(const Once &) = delete;

    void answer(const QJsonObject &message)
    {
        const Reply destination = std::exchange(reply, nullptr);
        if (destination)
            destination(message);
    }

private:
    Reply reply;
};

Responder::Responder(Reply reply) : once(std::make_shared<Once>(std::move(reply))) { }

void Responder::succeed(const QJsonObject &result) const
{
    once->answer({{"result", result}});
}

void Responder::fail(const CallError &error) const
{
    once->answer({{"error", error.toJson()}});
}

void Responder::pass(const QJsonObject &answer) const
{
    once->answer(answer);
}

} // namespace bench
