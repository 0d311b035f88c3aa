#include "gpsupdate.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/serialset.h"
#include "gnss_download/ugrade_thread.h"
#include "mcu/mcumanager.h"
#include "mem/settingsfunc.h"
#include "platformservice/platformservice.h"
#include "tools/common.h"
#include "tools/debugtrace.h"
#include "ui_gpsupdate.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QPixmap>
#include <QTextDocument>
#include <QThread>

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace testmode {

namespace {

// The one port that the receiver is wired to; the update always runs there.
const char kPort[] = "/dev/ttyS4";
const char kDownloadBaudRate[] = "921600";
const char kPersistentUpdateMode[] = "GPS_UPDATE";
constexpr int kLogPointSize = 12;

// Lines of the log that are kept, three an update: a page that stays for weeks must not grow.
constexpr int kLogLines = 600;

// The receiver's among the unit's kinds of update package.
constexpr auto kGnssPackage = static_cast<McuManager::UpdateFile>(7);

// Results of the workers since the last time that none was running; of the process, not of a page.
QStringList succeededPorts;
QStringList failedPorts;
int failureCount = 0;

QString now()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

QString colouredLine(int pixels, const char *colour, const QString &port, const char *what)
{
    return QStringLiteral("<font style = 'font-size:%1px; color:%2;'>%3: %4 %5</font>"
                          "<font color=black> </font>")
        .arg(QString::number(pixels), QLatin1String(colour), port, QLatin1String(what), now());
}

} // namespace

gpsupdate::gpsupdate(QWidget *parent)
    : QWidget(parent), ui(new Ui_Gpsupdate), settingsDialog(nullptr)
{
    ui->setupUi(this);
    for (QWidget *panel : {ui->widget, ui->widget_2, ui->widget_3}) {
        panel->show();
        panel->raise();
    }

    // Once a process: a page that is built a second time must still find a number here.
    if (br.isEmpty())
        br.append(QLatin1String(kDownloadBaudRate));
    ui->textBrowser->setFontPointSize(kLogPointSize);
    ui->textBrowser->document()->setMaximumBlockCount(kLogLines);

    qRegisterMetaType<uint8_t>("uint8_t");
    qRegisterMetaType<uint16_t>("uint16_t");
    qRegisterMetaType<uint32_t>("uint32_t");

    settingsDialog = new SerialSet(nullptr);
    settingsDialog->hide();
    // It outlives the page and goes with the application.
    connect(qApp, &QCoreApplication::aboutToQuit, settingsDialog, &QObject::deleteLater);

    ComboboxGetSerial();
}

gpsupdate::~gpsupdate()
{
    delete ui;
}

void gpsupdate::ComboboxGetSerial()
{
    ui->comboBox->clear();
    ui->comboBox->addItem(QLatin1String(kPort));
    const auto notOffered = [this](const QString &name) {
        return ui->comboBox->findText(name) < 0;
    };
    com.erase(std::remove_if(com.begin(), com.end(), notOffered), com.end());
    showPorts();
}

void gpsupdate::showPorts()
{
    QString ports;
    for (const QString &port : qAsConst(com))
        ports += port + QLatin1Char(' ');
    ui->lineEdit_2->setText(ports);
}

QString gpsupdate::OpenFiles()
{
    return QString();
}

void gpsupdate::on_comboBox_activated(const QString &name)
{
    if (com.contains(name)) {
        com.removeOne(name);
        emit signal_Close_COM(name);
    } else {
        com.append(name);
    }
    showPorts();
    DBG << com;
}

void gpsupdate::on_pushButton_clicked()
{
    com_set.baudRate = 115200;
    com_set.dataBits = 8;
    com_set.stopBits = 1.0F;
    com_set.parity = QStringLiteral("None");
    com_set.flowControl = QStringLiteral("None");

    const QString folder = McuManager::instance()->findUpdateFile(kGnssPackage);
    const QString result =
        folder.isEmpty() ? QStringLiteral("No Update file!") : QStringLiteral("OK");
    ui->lineEdit_2->setText(result);
    DBG << result;
}

void gpsupdate::on_pushButton_2_clicked()
{
    const QString path = McuManager::instance()->findUpdateFile(kGnssPackage)
        + QStringLiteral("/flash_download.cfg");
    DBG << path;
    const QPointer<gpsupdate> page = this; // the window may be destroyed under an open box
    GetBinfile(path, &downloadfile);
    if (page)
        ui->lineEdit->setText(path);
}

// There is no check that a package was loaded: the worker gets what `downloadfile` holds.
void gpsupdate::on_pushButton_3_clicked()
{
    DBG << "mian:" << QThread::currentThreadId();
    ui->label_3->clear();
    ui->progressBar->setMaximum(0); // a busy indicator

    const QStringList ports = QString::fromLatin1(kPort).trimmed().split(QLatin1Char(' '));
    for (int i = 0; i < ports.size(); ++i)
        startWorker(i, ports.at(i));
    ui->pushButton_3->setEnabled(false);
}

void gpsupdate::startWorker(int slot, const QString &port)
{
    auto *worker = new ugrade_thread(port);
    const serial_thread *transport = worker->transport();
    connect(transport, &serial_thread::signal_Messagebox, this, &gpsupdate::show_Messagebox);
    connect(transport, &serial_thread::signal_TransferData, this, &gpsupdate::show_log);
    connect(worker, &ugrade_thread::signal_TransferData, this, &gpsupdate::show_log);
    connect(worker, &ugrade_thread::signals_success, this, &gpsupdate::show_result);
    connect(worker, &ugrade_thread::signals_reset_success, this, &gpsupdate::show_reset_result);
    // For the worker whose page has gone: nobody else deletes it.
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);

    runningPorts.append(port);
    workers[slot] = worker;
    worker->start(QThread::TimeCriticalPriority);
    ui->textBrowser->append(port + QStringLiteral(": ") + QStringLiteral("started")
                            + QLatin1Char(' ') + now());
}

void gpsupdate::show_log(QByteArray)
{
    // The bytes that a worker receives are not shown.
}

void gpsupdate::show_result(QString port, bool ok)
{
    forgetWorker(port);
    if (ok) {
        succeededPorts.append(port);
        ui->textBrowser->append(colouredLine(20, "rgb(51, 204, 51)", port, "succed"));
        DBG << port << "success.";
    } else {
        failedPorts.append(port);
        ++failureCount;
        ui->textBrowser->append(colouredLine(20, "red", port, "failed"));
        DBG << port << "fail.";
    }
    if (runningPorts.isEmpty()) {
        showOutcomeOfAll();
        DBG << "update completely.";
    }
}

// A port that is not running changes nothing.
void gpsupdate::forgetWorker(const QString &port)
{
    const int slot = runningPorts.indexOf(port);
    if (slot < 0)
        return;
    runningPorts.removeAt(slot);
    delete workers[slot].data(); // waits until its run() has returned
    workers[slot].clear();
}

void gpsupdate::showOutcomeOfAll()
{
    const bool good = failureCount == 0;
    ui->progressBar->setRange(0, 100);
    ui->progressBar->setValue(good ? 100 : 0);
    showIcon(good ? "green" : "red");
    failureCount = 0;
    succeededPorts.clear();
    failedPorts.clear();
    ui->pushButton_3->setEnabled(true);
}

// The icons lie in the framework's working directory.
void gpsupdate::showIcon(const char *name)
{
    ui->label_3->setPixmap(
        QPixmap(QStringLiteral("%1/ICO/%2.png").arg(QDir::currentPath(), QLatin1String(name))));
}

void gpsupdate::show_reset_result(QString port)
{
    ui->textBrowser->append(colouredLine(18, "rgb(51, 204, 255)", port, "reset succed"));
}

void gpsupdate::show_Messagebox(QString title, QString text)
{
    showBox(title, text, QMessageBox::Ok);
}

void gpsupdate::showPackageError(const QString &text)
{
    showBox(tr("Error"), text, QMessageBox::Close);
}

// On the heap and guarded: the window, and with it the page and the box, may be destroyed while
// the box is open.
void gpsupdate::showBox(const QString &title, const QString &text,
                        QMessageBox::StandardButton button)
{
    const QPointer<QMessageBox> box =
        new QMessageBox(QMessageBox::Information, title, text, button, this);
    box->exec();
    delete box;
}

// Kept on the page's interface; nothing connects it.
void gpsupdate::thend(QString text, QString port)
{
    const int slot = runningPorts.indexOf(port);
    runningPorts.removeOne(port);
    if (text.isEmpty()) {
        showIcon("red");
        allWell = false;
    } else if (allWell) {
        showIcon("green");
    }
    ui->textBrowser->append(port + QStringLiteral(":\r\n") + text);
    if (slot >= 0) {
        delete workers[slot].data();
        workers[slot].clear();
    }
    if (!runningPorts.isEmpty())
        return;
    ui->progressBar->setMaximum(100);
    if (allWell)
        ui->progressBar->setValue(100);
    ui->pushButton_3->setEnabled(true);
    DBG << "update completely.";
}

void gpsupdate::on_btn_reset_clicked()
{
    platform::PlatformService *board = platform::PlatformService::instance();
    board->setGPSResetGPIO(true);
    QThread::msleep(100);
    board->setGPSResetGPIO(false);
}

void gpsupdate::on_btn_reset_2_clicked()
{
    platform::PlatformService::instance()->setGPSResetGPIO(false);
}

// Hands the receiver's port over to the update mode, or back, from the next start on.
void gpsupdate::on_btn_gpsdisconnect_clicked()
{
    const QString key = QString::fromLatin1(kPersistentUpdateMode);
    mem::SettingsFunc *settings = mem::SettingsFunc::instance();
    const bool current = settings->getValue(key, false);
    settings->setValue(key, QVariant(false), QVariant(!current), true);
    platform::PlatformService::instance()->setGPSResetGPIO(false);
    QThread::msleep(10);
    std::ignore = std::system("reboot");
}

void gpsupdate::on_pushButton_4_clicked()
{
    ui->textBrowser->clear();
}

// Workers keep running.
void gpsupdate::on_btn_exit_clicked()
{
    hide();
}

} // namespace testmode
