#pragma once

#include <QString>

class QWidget;

namespace bench {

class Calls;
class LogView;

// The frames of both directions, with the gap before each. Packets are folded: an image's into the
// frame that announces it, a packet's answers into the packet. GUI thread, `calls` outlives it.
// `folder`: where "Save" writes; empty: the clipboard.
LogView *makeDialogueView(Calls *calls, const QString &folder, QWidget *parent = nullptr);

} // namespace bench
