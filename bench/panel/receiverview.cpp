#include "receiverview.h"

#include "bench/receiver/receiver.h"
#include "bench/serial/resetprompt.h"
#include "bench/unit/headunit.h"

#include <QFormLayout>
#include <QLabel>

namespace bench {

namespace {

constexpr int kLookMilliseconds = 500;
constexpr int kQuietLooks = 4; // then the line rests

QLabel *row(QFormLayout *form, const char *title, const char *name)
{
    auto *label = new QLabel(QStringLiteral("–"));
    label->setObjectName(QString::fromLatin1(name));
    form->addRow(QString::fromLatin1(title), label);
    return label;
}

} // namespace

ReceiverView::ReceiverView(Receiver *simulated, ResetPrompt *prompt, QWidget *parent)
    : QGroupBox(QStringLiteral("Receiver"), parent), receiver(simulated)
{
    auto *form = new QFormLayout(this);
    phase = row(form, "Phase", "panel_receiver_phase");
    line = row(form, "Line", "panel_receiver_line");
    traffic = row(form, "Traffic", "panel_receiver_traffic");
    counts = row(form, "Counts", "panel_receiver_counts");
    reset = row(form, "Reset line", "panel_receiver_reset");
    if (prompt != nullptr) {
        reset->setWordWrap(true);
        connect(prompt, &ResetPrompt::told, reset, &QLabel::setText);
    } else {
        connect(&unit(), &HeadUnit::gnssResetChanged, this, [this](bool asserted) {
            reset->setText(asserted ? QStringLiteral("asserted") : QStringLiteral("released"));
        });
    }
    if (receiver == nullptr) {
        phase->setText(QStringLiteral("a real device"));
        return;
    }
    looks.setInterval(kLookMilliseconds);
    connect(&looks, &QTimer::timeout, this, &ReceiverView::look);
    connect(receiver, &Receiver::phaseChanged, this, &ReceiverView::wake);
    wake();
}

void ReceiverView::wake()
{
    quietLooks = 0;
    look();
    looks.start();
}

void ReceiverView::look()
{
    const ReceiverState state = receiver->state();
    phase->setText(state.step.isEmpty() ? state.phase
                                        : QStringLiteral("%1, %2").arg(state.phase, state.step));
    line->setText(state.baud == 0 ? QStringLiteral("not measured")
                                  : QStringLiteral("%1 baud").arg(state.baud));
    traffic->setText(QStringLiteral("%1 bytes in, %2 out").arg(state.bytesIn).arg(state.bytesOut));
    counts->setText(
        QStringLiteral("%1 packets, %2 anomalies").arg(state.packets).arg(state.anomalies.size()));

    const qint64 bytes = state.bytesIn + state.bytesOut;
    quietLooks = bytes == bytesSeen ? quietLooks + 1 : 0;
    bytesSeen = bytes;
    if (quietLooks >= kQuietLooks)
        looks.stop();
}

} // namespace bench
