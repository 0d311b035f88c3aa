#include "receiverdock.h"

#include "calls.h"
#include "ratecurve.h"

#include "bench/serial/resetprompt.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QProgressBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace bench {

namespace {

constexpr int kPacketBytes = 4096;
constexpr int kToldAnomalies = 20; // in the words under the pointer

QString baud(const QJsonValue &rate)
{
    return rate.toInt() == 0 ? QStringLiteral("?") : QString::number(rate.toInt());
}

} // namespace

ReceiverDock::ReceiverDock(Calls *way, ResetPrompt *prompt, QWidget *parent)
    : QWidget(parent), calls(way), frame(this, [this] { draw(); }), handReset(prompt != nullptr),
      progress(new QProgressBar), curve(new RateCurve), ladder(new QTableWidget(0, 3))
{
    auto *form = new QFormLayout;
    phase = addLabel(form, "Phase", "panel_receiver_phase");
    line = addLabel(form, "Baud", "panel_receiver_line");
    traffic = addLabel(form, "Traffic", "panel_receiver_traffic");
    rate = addLabel(form, "Images", "panel_receiver_rate");
    reset = addLabel(form, "Reset line", "panel_receiver_reset");
    progress->setObjectName(QStringLiteral("panel_receiver_progress"));
    form->addRow(QStringLiteral("Image"), progress);
    anomalies = addLabel(form, "Unexpected", "panel_receiver_anomalies");

    ladder->setObjectName(QStringLiteral("panel_receiver_ladder"));
    ladder->setHorizontalHeaderLabels({"Phase", "at, ms", "for, ms"});
    ladder->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ladder->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    ladder->verticalHeader()->hide();
    ladder->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ladder->verticalHeader()->setDefaultSectionSize(ladder->fontMetrics().height() + 4);
    ladder->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(form);
    column->addWidget(curve);
    column->addWidget(ladder, 1);

    connect(calls, &Calls::happened, this, &ReceiverDock::hear);
    if (handReset)
        connect(prompt, &ResetPrompt::told, reset, &QLabel::setText);
    draw();
}

QLabel *ReceiverDock::addLabel(QFormLayout *form, const char *title, const char *name)
{
    auto *label = new QLabel(QStringLiteral("\u2013"));
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    form->addRow(QString::fromLatin1(title), label);
    return label;
}

void ReceiverDock::hear(const QString &event, const QJsonObject &params)
{
    if (event == QLatin1String("receiver.frame") && params["length"].toInt() == kPacketBytes
        && params["step"] == QLatin1String("packet")) {
        curve->setLineRate(params["baud"].toInt());
        curve->add(params["ms"].toDouble(), kPacketBytes);
    } else if (event == QLatin1String("receiver.phase")
               && params["phase"] == QLatin1String("boot-rom")) {
        curve->clear(); // out of a reset
    }
    if (event.startsWith(QLatin1String("receiver.")))
        frame.ask();
    else if (!handReset && event == QLatin1String("unit.journal")
             && params["call"] == QLatin1String("setGPSResetGPIO"))
        reset->setText(params["args"][0].toBool() ? QStringLiteral("asserted")
                                                  : QStringLiteral("released"));
}

void ReceiverDock::draw()
{
    const QJsonObject state = calls->ask(QStringLiteral("receiver.state"));
    if (state.isEmpty()) {
        phase->setText(QStringLiteral("a real device"));
        return;
    }
    const QString step = state["step"].toString();
    phase->setText(step.isEmpty() ? state["phase"].toString()
                                  : QStringLiteral("%1, %2").arg(state["phase"].toString(), step));
    drawLine(state);
    drawImages(state);
    drawAnomalies(state["anomalies"].toArray());
    drawLadder(state["phases"].toArray());
    curve->update();
}

// The receiver listens at the rate that the dialogue has asked it for; the host may send at
// another.
void ReceiverDock::drawLine(const QJsonObject &state)
{
    const bool apart = state["baud"].toInt() != 0 && state["host_baud"].toInt() != 0
        && state["baud"] != state["host_baud"];
    line->setText(QStringLiteral("%1 asked, %2 seen%3")
                      .arg(baud(state["baud"]), baud(state["host_baud"]),
                           apart ? QStringLiteral("  \u2260") : QString()));
    line->setForegroundRole(apart ? QPalette::BrightText : QPalette::WindowText);
    traffic->setText(QStringLiteral("%1 bytes in, %2 out, %3 packets")
                         .arg(state["bytes_in"].toInt())
                         .arg(state["bytes_out"].toInt())
                         .arg(state["packets"].toInt()));
}

void ReceiverDock::drawImages(const QJsonObject &state)
{
    const QJsonArray images = state["images"].toArray();
    int complete = 0;
    for (const QJsonValue &image : images)
        complete += image["complete"].toBool() ? 1 : 0;
    const QString speed = curve->bytesPerSecond() <= 0
        ? QString()
        : QStringLiteral(", %1 kB/s").arg(curve->bytesPerSecond() / 1000, 0, 'f', 1);
    rate->setText(images.isEmpty() ? QStringLiteral("none since the reset")
                                   : QStringLiteral("%1 begun, %2 complete%3")
                                         .arg(images.size())
                                         .arg(complete)
                                         .arg(speed));
    progress->setEnabled(!images.isEmpty());
    const QJsonValue last = images.last();
    progress->setMaximum(qMax(1, last["length"].toInt()));
    progress->setValue(last["packets"].toInt() * kPacketBytes);
}

void ReceiverDock::drawAnomalies(const QJsonArray &unexpected)
{
    const bool none = unexpected.isEmpty();
    anomalies->setForegroundRole(none ? QPalette::WindowText : QPalette::BrightText);
    anomalies->setText(none ? QStringLiteral("nothing")
                            : QStringLiteral("\u26A0 %1, the last: %2")
                                  .arg(unexpected.size())
                                  .arg(unexpected.last().toString()));
    QStringList lines;
    for (int i = qMax(0, unexpected.size() - kToldAnomalies); i < unexpected.size(); ++i)
        lines << unexpected.at(i).toString();
    anomalies->setToolTip(lines.join(QLatin1Char('\n')));
}

// A filled circle: gone through; half of one: here.
void ReceiverDock::drawLadder(const QJsonArray &phases)
{
    ladder->setRowCount(phases.size());
    for (int row = 0; row < phases.size(); ++row) {
        const QChar mark = row + 1 < phases.size() ? QChar(0x25CF) : QChar(0x25D0);
        const QStringList cells{
            QStringLiteral("%1 %2").arg(mark).arg(phases[row]["phase"].toString()),
            QString::number(phases[row]["began"].toDouble(), 'f', 0),
            QString::number(phases[row]["milliseconds"].toDouble(), 'f', 0)};
        for (int column = 0; column < cells.size(); ++column) {
            if (ladder->item(row, column) == nullptr)
                ladder->setItem(row, column, new QTableWidgetItem);
            ladder->item(row, column)->setText(cells.at(column));
            if (column > 0)
                ladder->item(row, column)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    ladder->scrollToBottom();
}

} // namespace bench
