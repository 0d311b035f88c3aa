#pragma once

#include <QGroupBox>
#include <QTimer>

class QLabel;

namespace bench {

class Receiver;
class ResetPrompt;

// Where the simulated receiver stands. Looks twice a second while bytes pass, and rests
// while the line does. GUI thread.
class ReceiverView : public QGroupBox
{
    Q_OBJECT

public:
    // `receiver` outlives the view; null while a real one stands in its place.
    // `prompt` asks for the reset of one that is reset by hand, and outlives the view too.
    explicit ReceiverView(Receiver *receiver, ResetPrompt *prompt = nullptr,
                          QWidget *parent = nullptr);

private:
    void wake();
    void look();

    Receiver *receiver;
    QTimer looks;
    int quietLooks = 0; // in a row, without a byte
    qint64 bytesSeen = 0;
    QLabel *phase;
    QLabel *line;
    QLabel *traffic;
    QLabel *counts;
    QLabel *reset;
};

} // namespace bench
