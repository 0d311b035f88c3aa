#pragma once

#include "method.h"

#include "bench/receiver/receiver.h"

namespace bench {

// The handler of a call about the simulated receiver; it fails where a real device stands.
template <typename Answer>
Method::Handler asked(const Receiver *receiver, Answer answer)
{
    return [receiver, answer](const Call &call) {
        if (receiver == nullptr)
            throw CallError(ErrorClass::Unavailable,
                            QStringLiteral("a real device stands in the receiver's place"));
        answer(call);
    };
}

} // namespace bench
