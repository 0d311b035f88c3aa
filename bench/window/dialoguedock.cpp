#include "dialoguedock.h"

#include "calls.h"
#include "logview.h"

#include <QJsonArray>
#include <QMap>
#include <QRegularExpression>

#include <memory>

namespace bench {

namespace {

constexpr int kMeaning = 6; // column
constexpr int kPacketBytes = 4096;
constexpr int kShownBytes = 16;

QString directionOf(const QJsonObject &frame)
{
    static const QMap<QString, QString> words{{"to-receiver", "host \u2192 receiver"},
                                              {"to-host", "receiver \u2192 host"},
                                              {"event", "\u25C6 event"}};
    return words.value(frame["direction"].toString());
}

QColor colourOf(const QJsonObject &frame)
{
    if (frame["direction"] == QLatin1String("to-receiver"))
        return QColor(0xA9, 0xCC, 0xFF);
    return frame["direction"] == QLatin1String("to-host") ? QColor(0xB5, 0xE6, 0xC1) : QColor();
}

QString bytesOf(const QJsonObject &frame)
{
    constexpr int kLetters = kShownBytes * 3 - 1;
    const QString bytes = frame["bytes"].toString();
    const int length = frame["length"].toInt();
    return length > kShownBytes
        ? QStringLiteral("%1 \u2026 %2 bytes").arg(bytes.left(kLetters)).arg(length)
        : bytes;
}

// Makes rows of frames in their order, and knows what belongs together.
class Rows
{
public:
    LogRow take(const QJsonObject &frame);
    LogRow unexpected(const QString &text) const; // where the dialogue stands now

private:
    void fold(const QJsonObject &frame, LogRow *row);

    int number = 0; // of the last frame
    double ms = 0;
    int image = 0;           // number of the frame that announced it
    int packet = 0;          // of the last packet of that image
    qint64 imageAddress = 0; // where it goes
};

LogRow Rows::take(const QJsonObject &frame)
{
    LogRow row;
    row.number = frame["n"].toInt();
    row.kind = directionOf(frame);
    row.colour = colourOf(frame);
    row.topic = frame["step"].toString();
    const QString meaning = frame["meaning"].toString();
    row.loud =
        frame["direction"] == QLatin1String("event") && meaning.startsWith(QLatin1String("fault"));
    row.loud = row.loud || row.topic == QLatin1String("packet-repeat");
    const double now = frame["ms"].toDouble();
    row.cells = QStringList{QString::number(row.number),
                            QString::number(now, 'f', 0),
                            QString::number(now - ms, 'f', 0),
                            row.kind,
                            QString::number(frame["baud"].toInt()),
                            row.topic,
                            meaning,
                            bytesOf(frame)};
    if (!row.loud)
        fold(frame, &row);
    number = row.number;
    ms = now;
    return row;
}

void Rows::fold(const QJsonObject &frame, LogRow *row)
{
    static const QRegularExpression numbered(QStringLiteral("^packet (\\d+) of "));
    const bool fromHost = frame["direction"] == QLatin1String("to-receiver");
    if (row->topic == QLatin1String("download")) {
        if (!fromHost)
            return;
        image = row->number;
        packet = 0;
        // command, then the address, the highest byte first
        const QByteArray bytes = QByteArray::fromHex(frame["bytes"].toString().toLatin1());
        imageAddress = bytes.mid(1, 4).toHex().toLongLong(nullptr, 16);
        row->place = imageAddress;
    } else if (row->topic == QLatin1String("packet") && image != 0) {
        const QRegularExpressionMatch match = numbered.match(frame["meaning"].toString());
        if (fromHost && match.hasMatch()) {
            row->under = image;
            row->place = imageAddress + (match.captured(1).toInt() - 1) * kPacketBytes;
            packet = row->number;
        } else {
            row->under = packet;
        }
    } else {
        image = 0;
    }
}

LogRow Rows::unexpected(const QString &text) const
{
    LogRow row;
    row.number = number;
    row.kind = QStringLiteral("\u26A0 unexpected");
    row.topic = text.section(QLatin1Char(':'), 0, 0);
    row.loud = true;
    row.cells = QStringList{QString::number(number),
                            QString::number(ms, 'f', 0),
                            QString(),
                            row.kind,
                            QString(),
                            row.topic,
                            text.section(QLatin1Char(':'), 1).trimmed(),
                            QString()};
    return row;
}

} // namespace

LogView *makeDialogueView(Calls *calls, const QString &folder, QWidget *parent)
{
    LogView::Texts texts{QStringLiteral("dialogue"),
                         {"#", "ms", "gap", "Direction", "Baud", "Step", "Meaning", "Bytes"},
                         {6, 8, 6, 16, 7, 16, 44},
                         QStringLiteral("both directions"),
                         QString(),
                         QStringLiteral("all steps"),
                         QStringLiteral("only unusual"),
                         kMeaning};
    auto *view = new LogView(texts, folder, parent);
    const auto rows = std::make_shared<Rows>();
    QJsonObject answer;
    do {
        answer = calls->ask(QStringLiteral("receiver.dialogue"),
                            {{"since", answer["next"].toInt()}, {"entries", true}});
        const QJsonArray frames = answer["entries"].toArray();
        for (const QJsonValue &frame : frames)
            view->add(rows->take(frame.toObject()));
    } while (answer["more"].toBool());
    QObject::connect(calls, &Calls::happened, view,
                     [view, rows](const QString &event, const QJsonObject &params) {
                         if (event == QLatin1String("receiver.frame"))
                             view->add(rows->take(params));
                         else if (event == QLatin1String("receiver.anomaly"))
                             view->add(rows->unexpected(params["text"].toString()));
                     });
    return view;
}

} // namespace bench
