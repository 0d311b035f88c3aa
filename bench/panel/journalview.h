#pragma once

#include <QPlainTextEdit>
#include <QTimer>

namespace bench {

// The journal as it grows. Entries come from any thread; the view takes them over
// a few times a second, and rests while there are none. GUI thread.
class JournalView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit JournalView(QWidget *parent = nullptr);

private:
    void takeOver();

    QTimer pause;
    int shown = 0; // number of the last entry taken over
};

} // namespace bench
