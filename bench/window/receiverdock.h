#pragma once

#include "frame.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QTableWidget;

namespace bench {

class Calls;
class LogView;
class ResetPrompt;

// Where the receiver stands: the ladder of its phases with their times, the rates on either side,
// how far the images are, what was unexpected. GUI thread; `calls` and `prompt` outlive it.
class ReceiverDock : public QWidget
{
    Q_OBJECT

public:
    // `prompt` asks for the reset of a real receiver that is reset by hand; null elsewhere.
    explicit ReceiverDock(Calls *calls, ResetPrompt *prompt = nullptr, QWidget *parent = nullptr);

private:
    void hear(const QString &event, const QJsonObject &params);
    void draw();
    void drawImages(const QJsonArray &images);
    QLabel *addLabel(const char *title, const char *name);

    Calls *calls;
    Frame frame;
    bool handReset; // a person's
    QLabel *phase = nullptr;
    QLabel *line = nullptr;
    QLabel *traffic = nullptr;
    QLabel *rate = nullptr;
    QLabel *reset = nullptr;
    QLabel *anomalies = nullptr;
    QProgressBar *progress = nullptr;
    QTableWidget *ladder = nullptr;
};

// The frames of both directions, with the gap before each; packets are hidden unless asked for.
LogView *makeDialogueView(Calls *calls, const QString &folder, QWidget *parent = nullptr);

} // namespace bench
