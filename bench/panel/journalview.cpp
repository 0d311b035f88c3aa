#include "journalview.h"

#include "bench/unit/journal.h"

#include <QFontDatabase>

namespace bench {

namespace {

constexpr int kLines = 2000; // kept on screen; the journal itself keeps more
constexpr int kPauseMilliseconds = 150;

} // namespace

JournalView::JournalView(QWidget *parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setMaximumBlockCount(kLines);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setPlaceholderText(QStringLiteral("Calls that the plug-in makes of the unit"));
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSize(9);
    setFont(fixed);

    pause.setSingleShot(true);
    pause.setInterval(kPauseMilliseconds);
    connect(&pause, &QTimer::timeout, this, &JournalView::takeOver);
    connect(
        &journal(), &Journal::added, this,
        [this] {
            if (!pause.isActive())
                pause.start();
        },
        Qt::QueuedConnection);
    takeOver();
}

void JournalView::takeOver()
{
    const QVector<JournalEntry> entries = journal().entries(shown);
    for (const JournalEntry &entry : entries) {
        appendPlainText(QStringLiteral("%1  %2")
                            .arg(static_cast<double>(entry.elapsed) / 1000.0, 8, 'f', 3)
                            .arg(entry.text().trimmed()));
        shown = entry.number;
    }
}

} // namespace bench
