#include "updateunit.h"

#include "bench/unit/headunit.h"
#include "bench/unit/systemstate.h"
#include "framework/windowinterface.h"
#include "gps/firmwarepackage.h"
#include "tools/common.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QtTest>

namespace tests {

namespace {

const char kDevice[] = "/dev/ttyS4";
constexpr quint32 kFlash = 0x08000000;
constexpr int kFlashBytes = 4 * 1024 * 1024;
constexpr int kPacketBytes = 4096;

struct Place
{
    const char *image;
    quint32 address;
};

constexpr Place kPlaces[] = {
    {"bootloader.bin", 0x08030000},
    {"partition_table.bin", 0x08000000},
    {"gnss_demo.bin", 0x08013000},
    {"gnss_config.bin", 0x083FF000},
};

void makeIcon(const QString &name)
{
    QPixmap icon(60, 60);
    icon.fill(QColor(name));
    QVERIFY(QDir().mkpath("ICO"));
    QVERIFY(icon.save("ICO/" + name + ".png"));
}

} // namespace

UpdateUnit::UpdateUnit()
{
    setLineRate(false);
    healLine();
    // In the caller's thread: the worker goes on when the receiver has seen the change.
    connect(&bench::unit(), &bench::HeadUnit::gnssResetChanged, &receiver,
            &bench::Receiver::setReset, Qt::DirectConnection);
    connect(&bench::unit(), &bench::HeadUnit::mainWidgetChanged, this,
            [this](QWidget *widget) { screen = widget; });
    bench::unit().change()->system.updateFolder = PACKAGE_FOLDER;
    makeIcon("red");
    makeIcon("green");
    downloadfile = file();
    com_set = config();
    br.clear();
    createWindow();
}

UpdateUnit::~UpdateUnit()
{
    if (screen) {
        // The update of a test that has failed would go on into the next one.
        if (part<QPushButton>("pushButton_3") != nullptr && updateRuns())
            endProcess();
        destroyWindow();
    }
    QFile::remove(kDevice);
}

void UpdateUnit::keepLineRate()
{
    setLineRate(true);
}

void UpdateUnit::setLineRate(bool kept)
{
    bench::ReceiverSettings settings = receiver.settings();
    settings.keepLineRate = kept;
    receiver.setSettings(settings);
}

void UpdateUnit::pullLine()
{
    QVERIFY(QFile::remove(kDevice));
    receiver.close();
}

void UpdateUnit::healLine()
{
    QString error;
    const QString line = receiver.open(&error);
    QVERIFY2(!line.isEmpty(), qPrintable(error));
    QVERIFY(QFile::link(line, kDevice));
}

void UpdateUnit::endProcess()
{
    QMetaObject::invokeMethod(qApp, "aboutToQuit");
}

void UpdateUnit::createWindow()
{
    WindowInterface *window = plugin.requestWindowInterface(38);
    window->onCreate();
    screen->resize(1024, 600);
    screen->show();
    window->onShow(QByteArray());
}

void UpdateUnit::destroyWindow()
{
    plugin.requestWindowInterface(38)->onDestroy();
    QTRY_VERIFY(screen.isNull());
    QTRY_VERIFY(plugin.children().isEmpty());
}

void UpdateUnit::openUpdatePage()
{
    press("key_gps_update");
    press("pushButton"); // "Check": opens at the boot ROM's rate
    press("pushButton_2");
}

void UpdateUnit::press(const char *name)
{
    const auto *button = part<QPushButton>(name);
    QVERIFY2(button != nullptr, name);
    const QPoint place = button->mapTo(screen, button->rect().center());
    QWidget *target = screen->childAt(place);
    QCOMPARE(target, static_cast<const QWidget *>(button));
    QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, target->mapFrom(screen, place));
}

bool UpdateUnit::updateRuns() const
{
    return !part<QPushButton>("pushButton_3")->isEnabled();
}

QStringList UpdateUnit::lines() const
{
    QString text = part<QTextBrowser>("textBrowser")->toPlainText();
    text.remove(QRegularExpression(" \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} ?"));
    return text.split('\n');
}

int UpdateUnit::progress() const
{
    return part<QProgressBar>("progressBar")->value();
}

QColor UpdateUnit::icon() const
{
    return part<QLabel>("label_3")->pixmap(Qt::ReturnByValue).toImage().pixelColor(30, 30);
}

QStringList UpdateUnit::allImages()
{
    QStringList names;
    for (const Place &place : kPlaces)
        names << QLatin1String(place.image);
    return names;
}

QByteArray UpdateUnit::packageFile(const QString &name)
{
    QFile image(QStringLiteral(PACKAGE_FOLDER "/") + name);
    return image.open(QIODevice::ReadOnly) ? image.readAll() : QByteArray();
}

QByteArray UpdateUnit::flashWith(const QStringList &images)
{
    QByteArray content(kFlashBytes, '\xff');
    for (const Place &place : kPlaces) {
        if (!images.contains(QLatin1String(place.image)))
            continue;
        const QByteArray bytes = packageFile(place.image);
        content.replace(static_cast<int>(place.address - kFlash), bytes.size(), bytes);
    }
    return content;
}

QByteArray UpdateUnit::flash() const
{
    return receiver.flash(kFlash, kFlashBytes);
}

} // namespace tests
