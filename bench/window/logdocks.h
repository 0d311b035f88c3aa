#pragma once

#include <QString>

class QWidget;

namespace bench {

class Calls;
class LogView;

// The views of what the plug-in did and said. Each begins with what is kept and goes on with the
// events; GUI thread, `calls` outlives them. `folder`: where "Save" writes; empty: the clipboard.
LogView *makeJournalView(Calls *calls, const QString &folder, QWidget *parent = nullptr);
LogView *makeTraceView(Calls *calls, const QString &folder, QWidget *parent = nullptr);

} // namespace bench
