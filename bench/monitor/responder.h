#pragma once

#include "callerror.h"

#include <QJsonObject>

#include <functional>
#include <memory>

namespace bench {

// Receives {"result": {...}} or {"error": {...}}.
using Reply = std::function<void(const QJsonObject &)>;

// Answers one call, once: what comes after the first answer is dropped, and a
// call whose last responder goes without an answer fails with Unavailable.
class Responder
{
public:
    explicit Responder(Reply reply);

    void succeed(const QJsonObject &result = {}) const;
    void fail(const CallError &error) const;

    // Hands on an answer that is already made.
    void pass(const QJsonObject &answer) const;

private:
    class Once;
    std::shared_ptr<Once> once;
};

} // namespace bench
