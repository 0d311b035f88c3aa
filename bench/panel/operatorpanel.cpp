#include "operatorpanel.h"

#include "receiverview.h"

#include "bench/host/host.h"
#include "bench/root/privateroot.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/usbstate.h"
#include "gpsservice/gpsservice.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace bench {

namespace {

QPushButton *button(const char *text, const char *name)
{
    auto *made = new QPushButton(QString::fromLatin1(text));
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

} // namespace

OperatorPanel::OperatorPanel(const Bench &parts, QWidget *parent) : QWidget(parent), bench(parts)
{
    result = new QLabel;
    result->setObjectName(QStringLiteral("panel_result"));
    result->setWordWrap(true);
    auto *picture = button("Screenshot", "panel_screenshot");
    connect(picture, &QPushButton::clicked, this, &OperatorPanel::takePicture);

    auto *column = new QVBoxLayout(this);
    column->addWidget(keys());
    column->addWidget(new ReceiverView(bench.receiver, bench.resetPrompt));
    column->addWidget(gnss());
    column->addWidget(disks());
    column->addWidget(picture);
    column->addWidget(result);
    column->addStretch();
    connect(bench.document, &UnitDocument::changed, this, &OperatorPanel::follow);
}

QGroupBox *OperatorPanel::keys()
{
    auto *home = button("Home", "panel_home");
    connect(home, &QPushButton::clicked, bench.host, &Host::home);
    auto *back = button("Back", "panel_back");
    connect(back, &QPushButton::clicked, this, [this] {
        result->setText(QStringLiteral("backEvent answered %1").arg(bench.host->back()));
    });
    keyCode = new QSpinBox;
    keyCode->setObjectName(QStringLiteral("panel_key_code"));
    keyCode->setRange(0, 0xFFFF);
    auto *send = button("Send key", "panel_send_key");
    connect(send, &QPushButton::clicked, this, &OperatorPanel::sendKey);

    auto *box = new QGroupBox(QStringLiteral("Keys"));
    auto *row = new QHBoxLayout(box);
    row->addWidget(home);
    row->addWidget(back);
    row->addWidget(keyCode);
    row->addWidget(send);
    return box;
}

// The panel writes by the paths that scripts use, and shows what stands there afterwards.
void OperatorPanel::set(const char *path, const QJsonValue &value)
{
    bench.document->setValue(QString::fromLatin1(path), value);
}

// Whoever has changed the value: the boxes tell nobody of it again.
void OperatorPanel::follow(const QString &path)
{
    const QSignalBlocker quiet[] = {QSignalBlocker(antenna), QSignalBlocker(moduleKind),
                                    QSignalBlocker(sky), QSignalBlocker(diskOnPort[0]),
                                    QSignalBlocker(diskOnPort[1])};
    if (path == QLatin1String("gnss.antenna"))
        antenna->setCurrentText(unit().gnss.antenna);
    else if (path == QLatin1String("gnss.module_kind"))
        moduleKind->setValue(unit().gnss.moduleKind);
    else if (path == QLatin1String("gnss.sky"))
        sky->setChecked(unit().gnss.followsSky);
    for (int port = 0; port < 2; ++port) {
        if (path == QStringLiteral("usb.%1.disk").arg(port))
            diskOnPort[port]->setChecked(unit().usb.ports[port].disk);
    }
}

QGroupBox *OperatorPanel::gnss()
{
    antenna = new QComboBox;
    antenna->setObjectName(QStringLiteral("panel_antenna"));
    antenna->addItems({QStringLiteral("OK"), QStringLiteral("Open"), QStringLiteral("Short")});
    antenna->setCurrentText(unit().gnss.antenna);
    connect(antenna, &QComboBox::currentTextChanged, this,
            [this](const QString &text) { set("gnss.antenna", text); });

    moduleKind = new QSpinBox;
    moduleKind->setObjectName(QStringLiteral("panel_module_kind"));
    moduleKind->setToolTip(
        QStringLiteral("1: flashed from the test mode; else by the unit's updater"));
    moduleKind->setValue(unit().gnss.moduleKind);
    connect(moduleKind, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) {
        set("gnss.module_kind", value);
        emit gpsservice::GpsService::instance()->modualApatationCompelete(value);
    });

    sky = new QCheckBox(QStringLiteral("satellites move, once a second"));
    sky->setObjectName(QStringLiteral("panel_sky"));
    sky->setChecked(unit().gnss.followsSky);
    connect(sky, &QCheckBox::toggled, this, [this](bool on) { set("gnss.sky", on); });

    auto *box = new QGroupBox(QStringLiteral("GNSS"));
    auto *form = new QFormLayout(box);
    form->addRow(QStringLiteral("Antenna"), antenna);
    form->addRow(QStringLiteral("Module kind"), moduleKind);
    form->addRow(QStringLiteral("Sky"), sky);
    return box;
}

QGroupBox *OperatorPanel::disks()
{
    auto *box = new QGroupBox(QStringLiteral("USB disks"));
    auto *row = new QHBoxLayout(box);
    for (int port = 0; port < 2; ++port) {
        auto *disk = new QCheckBox(QStringLiteral("Port %1").arg(port));
        disk->setObjectName(QStringLiteral("panel_usb%1").arg(port));
        disk->setChecked(unit().usb.ports[port].disk);
        connect(disk, &QCheckBox::toggled, this, [this, port](bool there) {
            set(port == 0 ? "usb.0" : "usb.1",
                QJsonObject{{"path", QString::fromLatin1(kUsbFolders[port])}, {"disk", there}});
        });
        row->addWidget(disk);
        diskOnPort[port] = disk;
    }
    return box;
}

void OperatorPanel::sendKey()
{
    const int code = keyCode->value();
    result->setText(
        QStringLiteral("keyEvent answered %1 to key %2").arg(bench.host->key(code)).arg(code));
}

// Nothing outside the private root can be written but the folder that was named for it.
void OperatorPanel::takePicture()
{
    const QImage picture = bench.host->picture();
    if (bench.pictures.isEmpty()) {
        QGuiApplication::clipboard()->setImage(picture);
        result->setText(QStringLiteral("The picture is in the clipboard."));
        return;
    }
    const QString file = QStringLiteral("%1/unit-%2.png").arg(bench.pictures).arg(++pictures);
    result->setText(picture.save(file) ? file : QStringLiteral("Cannot write %1").arg(file));
}

} // namespace bench
