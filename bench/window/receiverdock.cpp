#include "receiverdock.h"

#include "calls.h"
#include "logview.h"

#include "bench/serial/resetprompt.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QMap>
#include <QProgressBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace bench {

namespace {

constexpr int kPacketBytes = 4096;

QString baud(const QJsonValue &rate)
{
    return rate.toInt() == 0 ? QStringLiteral("?") : QString::number(rate.toInt());
}

QString directionOf(const QJsonObject &frame)
{
    static const QMap<QString, QString> words{{"to-receiver", "host \u2192 receiver"},
                                              {"to-host", "receiver \u2192 host"},
                                              {"event", "\u25C6 event"}};
    return words.value(frame["direction"].toString());
}

QString bytesOf(const QJsonObject &frame)
{
    constexpr int kShown = 16 * 3 - 1; // characters of sixteen bytes
    const QString bytes = frame["bytes"].toString();
    return frame["length"].toInt() > 16
        ? QStringLiteral("%1 \u2026 %2 bytes").arg(bytes.left(kShown)).arg(frame["length"].toInt())
        : bytes;
}

// `before`: milliseconds of the frame before it.
LogRow dialogueRow(const QJsonObject &frame, double before)
{
    LogRow row;
    row.number = frame["n"].toInt();
    row.kind = directionOf(frame);
    const QString step = frame["step"].toString();
    row.quiet = step == QLatin1String("packet");
    row.loud = frame["direction"] == QLatin1String("event")
        && frame["meaning"].toString().startsWith(QLatin1String("fault"));
    row.quiet = row.quiet && !row.loud;
    const double ms = frame["ms"].toDouble();
    row.cells = QStringList{QString::number(row.number),
                            QString::number(ms, 'f', 0),
                            QString::number(ms - before, 'f', 0),
                            row.kind,
                            QString::number(frame["baud"].toInt()),
                            step,
                            frame["meaning"].toString(),
                            bytesOf(frame)};
    return row;
}

} // namespace

ReceiverDock::ReceiverDock(Calls *way, ResetPrompt *prompt, QWidget *parent)
    : QWidget(parent), calls(way), frame(this, [this] { draw(); }), handReset(prompt != nullptr),
      progress(new QProgressBar), ladder(new QTableWidget(0, 3))
{
    auto *form = new QFormLayout(this);
    phase = addLabel("Phase", "panel_receiver_phase");
    line = addLabel("Line", "panel_receiver_line");
    traffic = addLabel("Traffic", "panel_receiver_traffic");
    rate = addLabel("Images", "panel_receiver_rate");
    reset = addLabel("Reset line", "panel_receiver_reset");
    progress->setObjectName(QStringLiteral("panel_receiver_progress"));
    form->addRow(QStringLiteral("Image"), progress);
    anomalies = addLabel("Unexpected", "panel_receiver_anomalies");
    anomalies->setForegroundRole(QPalette::BrightText);
    for (QLabel *label : {reset, anomalies, rate})
        label->setWordWrap(true);

    ladder->setObjectName(QStringLiteral("panel_receiver_ladder"));
    ladder->setHorizontalHeaderLabels({"Phase", "began, ms", "lasted, ms"});
    ladder->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    ladder->verticalHeader()->hide();
    ladder->setEditTriggers(QAbstractItemView::NoEditTriggers);
    form->addRow(ladder);

    connect(calls, &Calls::happened, this, &ReceiverDock::hear);
    if (handReset)
        connect(prompt, &ResetPrompt::told, reset, &QLabel::setText);
    draw();
}

QLabel *ReceiverDock::addLabel(const char *title, const char *name)
{
    auto *label = new QLabel(QStringLiteral("\u2013"));
    label->setObjectName(QString::fromLatin1(name));
    static_cast<QFormLayout *>(layout())->addRow(QString::fromLatin1(title), label);
    return label;
}

void ReceiverDock::hear(const QString &event, const QJsonObject &params)
{
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
    line->setText(QStringLiteral("%1 baud here, %2 seen of the host")
                      .arg(baud(state["baud"]), baud(state["host_baud"])));
    traffic->setText(QStringLiteral("%1 bytes in, %2 out, %3 packets")
                         .arg(state["bytes_in"].toInt())
                         .arg(state["bytes_out"].toInt())
                         .arg(state["packets"].toInt()));
    drawImages(state["images"].toArray());
    const QJsonArray unexpected = state["anomalies"].toArray();
    anomalies->setText(unexpected.isEmpty() ? QStringLiteral("nothing")
                                            : QStringLiteral("\u26A0 %1, the last: %2")
                                                  .arg(unexpected.size())
                                                  .arg(unexpected.last().toString()));

    const QJsonArray phases = state["phases"].toArray();
    ladder->setRowCount(phases.size());
    for (int row = 0; row < phases.size(); ++row) {
        const QStringList cells{phases[row]["phase"].toString(),
                                QString::number(phases[row]["began"].toDouble(), 'f', 0),
                                QString::number(phases[row]["milliseconds"].toDouble(), 'f', 0)};
        for (int column = 0; column < cells.size(); ++column)
            ladder->setItem(row, column, new QTableWidgetItem(cells.at(column)));
    }
    ladder->scrollToBottom();
}

void ReceiverDock::drawImages(const QJsonArray &images)
{
    int complete = 0;
    for (const QJsonValue &image : images)
        complete += image["complete"].toBool() ? 1 : 0;
    rate->setText(images.isEmpty()
                      ? QStringLiteral("none since the reset")
                      : QStringLiteral("%1 begun, %2 complete").arg(images.size()).arg(complete));
    progress->setEnabled(!images.isEmpty());
    const QJsonValue last = images.last();
    progress->setMaximum(qMax(1, last["length"].toInt()));
    progress->setValue(last["packets"].toInt() * kPacketBytes);
}

LogView *makeDialogueView(Calls *calls, const QString &folder, QWidget *parent)
{
    auto *view = new LogView({QStringLiteral("dialogue"),
                              {"#", "ms", "gap", "Direction", "Baud", "Step", "Meaning", "Bytes"},
                              {6, 8, 6, 16, 7, 16, 34},
                              QStringLiteral("both directions"),
                              QStringLiteral("packets")},
                             folder, parent);
    const auto last = std::make_shared<double>(0);
    const auto take = [view, last](const QJsonObject &frame) {
        view->add(dialogueRow(frame, *last));
        *last = frame["ms"].toDouble();
    };
    QJsonObject answer;
    do {
        answer = calls->ask(QStringLiteral("receiver.dialogue"),
                            {{"since", answer["next"].toInt()}, {"entries", true}});
        const QJsonArray frames = answer["entries"].toArray();
        for (const QJsonValue &frame : frames)
            take(frame.toObject());
    } while (answer["more"].toBool());
    QObject::connect(calls, &Calls::happened, view,
                     [take](const QString &event, const QJsonObject &params) {
                         if (event == QLatin1String("receiver.frame"))
                             take(params);
                     });
    return view;
}

} // namespace bench
