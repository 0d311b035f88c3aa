#pragma once

#include <QString>

namespace ctl {

// What a call does, what it takes and an example, in the words of the bench's own table
// (calls.json, which script/render-docs writes). Empty for a call that there is not.
QString helpOfCall(const QString &method);

// The names of all calls, a line each.
QString listOfCalls();

} // namespace ctl
