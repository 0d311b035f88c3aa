#pragma once

#include "frame.h"

#include <QWidget>

class QFormLayout;
class QLabel;
class QProgressBar;
class QTableWidget;

namespace bench {

class Calls;
class RateCurve;
class ResetPrompt;

// Where the receiver stands: the ladder of its phases with their times, the rates on either side,
// how far the images are and how fast they come, what was unexpected. GUI thread; `calls` and
// `prompt` outlive it.
class ReceiverDock : public QWidget
{
    Q_OBJECT

public:
    // `prompt` asks for the reset of a real receiver that is reset by hand; null elsewhere.
    explicit ReceiverDock(Calls *calls, ResetPrompt *prompt = nullptr, QWidget *parent = nullptr);

private:
    void hear(const QString &event, const QJsonObject &params);
    void draw();
    void drawLine(const QJsonObject &state);
    void drawImages(const QJsonObject &state);
    void drawAnomalies(const QJsonArray &unexpected);
    void drawLadder(const QJsonArray &phases);
    QLabel *addLabel(QFormLayout *form, const char *title, const char *name);

    Calls *calls;
    Frame frame;
    bool handReset; // a person's
    QLabel *phase = nullptr;
    QLabel *line = nullptr;
    QLabel *traffic = nullptr;
    QLabel *rate = nullptr;
    QLabel *reset = nullptr;
    QLabel *anomalies = nullptr;
    QProgressBar *progress;
    RateCurve *curve;
    QTableWidget *ladder;
};

} // namespace bench
