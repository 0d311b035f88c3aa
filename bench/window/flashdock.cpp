#include "flashdock.h"

#include "calls.h"
#include "controls.h"
#include "look.h"

#include <QDropEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHash>
#include <QJsonObject>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace bench {

namespace {

constexpr quint32 kBase = 0x08000000;
constexpr int kSectorBytes = 4096;
constexpr int kBytesInRow = 8;

quint32 addressOf(int sector)
{
    return kBase + quint32(sector) * kSectorBytes;
}

QString hexAddress(quint32 address)
{
    return QStringLiteral("%1").arg(address, 8, 16, QLatin1Char('0'));
}

QString printable(const QByteArray &bytes)
{
    QString text;
    for (const char byte : bytes)
        text += byte >= 0x20 && byte < 0x7F ? QLatin1Char(byte) : QLatin1Char('.');
    return text;
}

// Rows of bytes; below a row that differs from the package, the package's bytes in their places.
QString hexText(quint32 address, const QByteArray &bytes, const QHash<quint32, int> &wanted)
{
    QStringList lines;
    for (int row = 0; row < bytes.size(); row += kBytesInRow) {
        const QByteArray part = bytes.mid(row, kBytesInRow);
        lines << QStringLiteral("%1  %2  %3")
                     .arg(hexAddress(address + quint32(row)), QString::fromLatin1(part.toHex(' ')),
                          printable(part));
        QStringList other;
        bool differs = false;
        for (int i = 0; i < part.size(); ++i) {
            const int byte = wanted.value(address + quint32(row + i), -1);
            differs = differs || byte >= 0;
            other << (byte < 0 ? QStringLiteral("  ")
                               : QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')));
        }
        if (differs)
            lines << QStringLiteral("\u2260 wanted  %1").arg(other.join(QLatin1Char(' ')));
    }
    return lines.join(QLatin1Char('\n'));
}

QString square(const QColor &colour, const QString &text)
{
    return QStringLiteral("<span style='color:%1'>\u25A0</span>&nbsp;%2").arg(colour.name(), text);
}

} // namespace

FlashDock::FlashDock(Calls *way, const QString &saveFolder, QWidget *parent)
    : QWidget(parent), calls(way), folder(saveFolder), map(new FlashMap), legend(new QLabel),
      place(new QLabel), hex(new QPlainTextEdit), frame(this, [this] { draw(); })
{
    legend->setObjectName(QStringLiteral("flash_legend"));
    legend->setWordWrap(true);
    place->setObjectName(QStringLiteral("flash_place"));
    hex->setObjectName(QStringLiteral("flash_hex"));
    hex->setReadOnly(true);
    hex->setLineWrapMode(QPlainTextEdit::NoWrap);
    hex->setFont(digits());
    hex->setMinimumHeight(60);
    map->setAcceptDrops(true);
    map->installEventFilter(this);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(map, 3);
    column->addWidget(legend);
    column->addWidget(place);
    column->addWidget(hex, 2);
    column->addWidget(buttons());

    connect(map, &FlashMap::pointed, this, [this] {
        restated = true;
        frame.ask();
    });
    connect(calls, &Calls::happened, this, &FlashDock::hear);
    followBranch(calls, QStringLiteral("update."), this, [this] {
        stale = true;
        draw();
    });
    draw();
}

QWidget *FlashDock::buttons()
{
    auto *whole = new QWidget;
    auto *row = new QHBoxLayout(whole);
    row->setContentsMargins(0, 0, 0, 0);
    const auto add = [row, this](const char *text, const char *name, auto deed) {
        auto *button = new QPushButton(QString::fromUtf8(text));
        button->setObjectName(QString::fromLatin1(name));
        connect(button, &QPushButton::clicked, this, deed);
        row->addWidget(button);
    };
    add("Save image", "flash_save", [this] { save(); });
    add("Load image\u2026", "flash_load", [this] { askForFile(); });
    add("Erase", "flash_erase", [this] { calls->make(QStringLiteral("receiver.flash.erase")); });
    return whole;
}

// A packet that lands is one cell; everything else may be another map.
void FlashDock::hear(const QString &event, const QJsonObject &params)
{
    if (event == QLatin1String("receiver.written") && params["image"].toInt() > 0) {
        const auto address = quint32(params["address"].toDouble());
        map->countWrite(int((address - kBase) / kSectorBytes), params["image"].toInt());
        restated = true;
    } else if (event == QLatin1String("receiver.image") && params["image"].toInt() > 0) {
        const int number = params["image"].toInt();
        written.resize(qMax(number, written.size()));
        written[number - 1] = quint32(params["address"].toDouble());
        stale = true;
    } else if (event == QLatin1String("receiver.written")
               || event == QLatin1String("receiver.phase")) {
        stale = true;
    } else {
        return;
    }
    frame.ask();
}

void FlashDock::draw()
{
    if (stale)
        readMap();
    showLegend();
    if (stale || restated)
        showSector();
    map->update();
    stale = false;
    restated = false;
}

void FlashDock::readMap()
{
    const QString from = calls->value(QStringLiteral("update.folder")).toString();
    QJsonObject params;
    if (!from.isEmpty())
        params.insert("package", from);
    const QJsonObject answer = calls->ask(QStringLiteral("receiver.flash.map"), params);
    package = answer["images"].toArray();
    QVector<FlashMap::Sector> sectors(FlashMap::kSectors);
    const QJsonArray told = answer["sectors"].toArray();
    for (const QJsonValue &sector : told) {
        const auto address = quint32(sector["address"].toDouble());
        sectors[int((address - kBase) / kSectorBytes)] = {
            sector["image"].toInt(), sector["times"].toInt(), sector["erased"].toBool(),
            sector["differs"].toBool()};
    }
    map->setSectors(sectors);
    const QJsonArray images =
        calls->ask(QStringLiteral("receiver.state")).value("images").toArray();
    written.clear();
    for (const QJsonValue &image : images)
        written << quint32(image["address"].toDouble());
}

// The package's name for what the dialogue numbers.
QString FlashDock::nameOf(int image) const
{
    for (const QJsonValue &known : package) {
        if (image >= 1 && image <= written.size()
            && quint32(known["address"].toDouble()) == written.at(image - 1))
            return known["file"].toString();
    }
    return QStringLiteral("image %1").arg(image);
}

void FlashDock::showLegend()
{
    QMap<int, int> sizes; // sectors, by image
    int differ = 0;
    int twice = 0;
    for (int number = 0; number < FlashMap::kSectors; ++number) {
        const FlashMap::Sector &sector = map->sector(number);
        if (!sector.erased)
            ++sizes[sector.image];
        differ += sector.differs && !sector.erased ? 1 : 0;
        twice += sector.times > 1 ? 1 : 0;
    }
    QStringList words;
    for (auto size = sizes.begin(); size != sizes.end(); ++size) {
        const QString name = size.key() == 0 ? QStringLiteral("before") : nameOf(size.key());
        words << square(FlashMap::colourOf(size.key()),
                        QStringLiteral("%1&nbsp;%2&nbsp;KiB").arg(name).arg(size.value() * 4));
    }
    if (words.isEmpty())
        words << QStringLiteral("erased");
    if (twice > 0)
        words << QStringLiteral("\u2580&nbsp;written&nbsp;twice:&nbsp;%1").arg(twice);
    if (differ > 0)
        words << QStringLiteral("<span style='color:#ff8a80'>\u25E2&nbsp;not&nbsp;the&nbsp;"
                                "package's:&nbsp;%1</span>")
                     .arg(differ);
    legend->setText(words.join(QStringLiteral(" &nbsp; ")));
}

void FlashDock::showSector()
{
    const int number = map->shown();
    if (number < 0) {
        place->setText(QStringLiteral("64 x 16 sectors of 4 KiB; point at one, press to keep it"));
        hex->clear();
        return;
    }
    const FlashMap::Sector &sector = map->sector(number);
    const quint32 address = addressOf(number);
    QJsonObject params{{"address", double(address)}, {"length", kSectorBytes}};
    const QString from = calls->value(QStringLiteral("update.folder")).toString();
    if (!from.isEmpty())
        params.insert("package", from);
    const QJsonObject answer = calls->ask(QStringLiteral("receiver.flash"), params);
    QHash<quint32, int> wanted;
    const QJsonArray differences = answer["differences"].toArray();
    for (const QJsonValue &byte : differences)
        wanted.insert(quint32(byte["address"].toDouble()), byte["package"].toInt());
    QStringList words{hexAddress(address)};
    words << (sector.erased           ? QStringLiteral("erased")
                  : sector.image == 0 ? QStringLiteral("from before the reset")
                                      : nameOf(sector.image));
    if (sector.times > 0)
        words << QStringLiteral("written %1 x").arg(sector.times);
    if (!differences.isEmpty())
        words << QStringLiteral("%1 bytes not the package's").arg(differences.size());
    place->setText(words.join(QStringLiteral(", ")));
    const QByteArray bytes = QByteArray::fromBase64(answer["base64"].toString().toLatin1());
    const QString text = hexText(address, bytes, wanted);
    if (text != hex->toPlainText())
        hex->setPlainText(text);
}

void FlashDock::showPlace(quint32 address)
{
    if (address >= kBase && address - kBase < FlashMap::kSectors * quint32(kSectorBytes))
        map->choose(int((address - kBase) / kSectorBytes));
}

bool FlashDock::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return QWidget::eventFilter(watched, event);
    auto *drop = static_cast<QDropEvent *>(event); // an enter event is one, too
    const QList<QUrl> urls = drop->mimeData()->urls();
    const QString file = urls.size() == 1 ? urls.first().toLocalFile() : QString();
    if (file.isEmpty())
        return true;
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop)
        load(file);
    return true;
}

void FlashDock::askForFile()
{
    auto *dialog = new QFileDialog(this, QStringLiteral("Load an image of the flash"), folder);
    dialog->setObjectName(QStringLiteral("flash_file"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, &FlashDock::load);
    dialog->open();
}

void FlashDock::load(const QString &file)
{
    calls->make(QStringLiteral("receiver.flash.load"), {{"file", file}}, this,
                [this, file](const QJsonObject &) {
                    emit told(QStringLiteral("the flash holds %1").arg(file));
                });
}

// Nothing outside the private root can be written but the named folder.
void FlashDock::save()
{
    if (folder.isEmpty()) {
        emit told(QStringLiteral("no folder to save in: start the bench with --pictures DIR"));
        return;
    }
    const QString file = QStringLiteral("%1/flash-%2.bin").arg(folder).arg(++saved);
    calls->make(QStringLiteral("receiver.flash.save"), {{"file", file}}, this,
                [this, file](const QJsonObject &) { emit told(file); });
}

} // namespace bench
