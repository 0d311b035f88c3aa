#include "gps_test.h"

#include "framework/listviewscroller.h"
#include "framework/statusbarcontrol.h"
#include "gpsitemdelegate.h"
#include "gpsservice/gpsservice.h"
#include "krdatetime/datetimemanager.h"
#include "mem/settingscache.h"
#include "satelliteslistmodel.h"
#include "tools/debugtrace.h"
#include "ui_gps_test.h"

#include <QThread>
#include <QTime>

#include <algorithm>
#include <iterator>

using gpsservice::GpsService;

namespace testmode {

namespace {

// The list's view holds this many rows; from here on it scrolls.
constexpr int kRowsInView = 6;

// Between clearing the receiver's calibration and rebooting it.
constexpr unsigned long kCalibrationResetSeconds = 1;

// Asks the date and time service for the system's local time.
constexpr int kLocalTime = 1;

const char kRecordingKey[] = "SetupRecordKrnmData";
const char kTimeFormat[] = "HH:mm:ss";

QString sixDigits(double value)
{
    return QString::number(value, 'g', 6);
}

// Kept: ddmm.mmmm becomes dd.mmmmmm, the minutes as decimals; no conversion to degrees.
QString nmeaAngle(double value)
{
    return sixDigits(value / 100);
}

QString timeText(const QTime &time)
{
    return time.toString(QLatin1String(kTimeFormat));
}

bool isRecording()
{
    return mem::SettingsCache::instance()->getValue(QLatin1String(kRecordingKey), false);
}

} // namespace

gps_test::gps_test(QWidget *parent) : QWidget(parent), ui(new Ui_gps_test)
{
    ui->setupUi(this);

    QPalette black = palette();
    black.setBrush(QPalette::Window, QBrush(Qt::black, Qt::SolidPattern));
    setPalette(black);
    setAutoFillBackground(true);

    connectButtons();
    initlist();
    connectService();
}

gps_test::~gps_test()
{
    delete ui;
}

// By hand, not by object name: one slot has no button, which Qt would warn about.
void gps_test::connectButtons()
{
    connect(ui->resetinstall_brn, SIGNAL(clicked()), this, SLOT(on_resetinstall_brn_clicked()));
    connect(ui->btn_version, SIGNAL(clicked()), this, SLOT(on_btn_version_clicked()));
    connect(ui->coldstart_btn, SIGNAL(clicked()), this, SLOT(on_coldstart_btn_clicked()));
    connect(ui->gpslog_btn, SIGNAL(clicked()), this, SLOT(on_gpslog_btn_clicked()));
}

void gps_test::initlist()
{
    QListView *view = ui->satellitesListView;
    satellites = new SatellitesListModel(this);
    view->setModel(satellites);
    auto *delegate = new GpsItemDelegate(this, false, 0);
    view->setItemDelegate(delegate);

    // scrolling: the bar stands beside the rows and shows only when there is something to scroll
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setVerticalScrollBar(ui->satellitesScrollBar);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->verticalScrollBar()->setAttribute(Qt::WA_OpaquePaintEvent, false);

    // A touch on a button's caption reaches the button beneath.
    for (QLabel *caption :
         {ui->resetinstall_txt, ui->btn_txt_version, ui->coldstart_txt, ui->gpslog_txt})
        caption->setAttribute(Qt::WA_TransparentForMouseEvents);

    ui->txt_version->clear();
    ui->satellitesScrollBar->hide();
    scroller = new cm::ListviewScroller(view, this);
    scroller->setSelectionModel(view->selectionModel());
    delegate->setColorGroup(QStringLiteral("ColorGroup4"));
    connect(this, SIGNAL(initSatellitesList()), satellites, SLOT(onInitSatellitesListString()));
}

void gps_test::connectService()
{
    qRegisterMetaType<krnmINFO>("krnmINFO"); // for a service that emits in a thread of its own
    GpsService *service = GpsService::instance();
    connect(service, SIGNAL(krnmInfoRefresh(krnmINFO)), this, SLOT(onNmeaUpdate(krnmINFO)));
    connect(service, SIGNAL(gpsFirmwareVersion(QString)), this,
            SLOT(ongpsFirmwareVersion(QString)));
}

void gps_test::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    cm::StatusBarControl::instance()->sethide(true);
    GpsService::instance()->read_set_CMD_VERSION();
    updateSwitchKRNMUI();
}

void gps_test::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    cm::StatusBarControl::instance()->sethide(false);
}

void gps_test::onNmeaUpdate(krnmINFO info)
{
    showScrollBarFor(info.satellitesInUse);
    ongpsSpeed(info.speed);
    ongpsLatitudeInfo(info.latitude, info.longitude);

    // Kept: counted with every record, shown nowhere.
    [[maybe_unused]] const auto received =
        std::count_if(std::begin(info.satellites), std::end(info.satellites),
                      [](const krnmSatellite &satellite) { return satellite.signal != 0; });

    ongpsSatellitesOnView(info.satellitesInView);
    ongpsOnlineStatellites(info.satellitesInUse);
    satellites->onInitSatellitesListString();
    ongpsSatellitesInfoPre();

    onTimeSync();
    showReceiverTime(info);
    showAntenna();
    showInstallStatus();

    // Asked again with every record until a version has arrived.
    if (ui->txt_version->text().isEmpty())
        GpsService::instance()->read_set_CMD_VERSION();
}

void gps_test::showScrollBarFor(int count)
{
    if (count < kRowsInView)
        ui->satellitesScrollBar->hide();
    else
        ui->satellitesScrollBar->show();
}

void gps_test::ongpsFirmwareVersion(QString version)
{
    DBG << version;
    ui->txt_version->setText(version);
}

void gps_test::ongpsLatitudeInfo(double latitude, double longitude)
{
    ui->latitude_vol->setText(nmeaAngle(latitude));
    ui->longitude_vol->setText(nmeaAngle(longitude));
}

void gps_test::ongpsOnlineStatellites(int count)
{
    ui->numInUse_vol->setText(QString::number(count));
    ui->numInUse_vol->show();
}

void gps_test::ongpsSatellitesOnView(int count)
{
    ui->numInView_vol->setText(QString::number(count));
    ui->numInView_vol->show();
}

void gps_test::ongpsSpeed(double speed)
{
    ui->speed_vol->setText(sixDigits(speed));
    ui->speed_vol->show();
}

// Kept: tests a fresher record by its count in view, after the first test by the
// count in use; this one decides what stays on screen.
void gps_test::ongpsSatellitesInfoPre()
{
    showScrollBarFor(GpsService::instance()->getNmeaInfo().satellitesInView);
}

void gps_test::onTimeSync()
{
    const krnmDuration duration = GpsService::instance()->getGNSSDataDuration();
    ui->time_duration->setText(
        tr("GPS Duration time: ")
        + timeText(QTime(duration.hours, duration.minutes, duration.seconds)));
    const QDateTime now = krdatetime::DateTimeManager::instance()->currentDateTime(kLocalTime);
    ui->time_system->setText(tr("System time: ") + timeText(now.time()));
}

void gps_test::showReceiverTime(const krnmINFO &info)
{
    ui->time_gps->setText(tr("GPS Time: %1 Y %2 M %3 D %4:%5:%6")
                              .arg(info.utcYear)
                              .arg(info.utcMonth)
                              .arg(info.utcDay)
                              .arg(info.utcHour)
                              .arg(info.utcMinute)
                              .arg(info.utcSecond));
}

void gps_test::showAntenna()
{
    ui->antenna->setText(tr("AntennaState: ") + GpsService::instance()->getAntennaInfo());
}

// The code of a good installation depends on the module that is fitted.
void gps_test::showInstallStatus()
{
    GpsService *service = GpsService::instance();
    QString status = QStringLiteral("(null)");
    switch (service->getModualApatation()) {
    case 0:
        status = tr("Install status(CC is ok): ") + service->getGpsInstallStatusStr();
        break;
    case 1:
        status = tr("Install status(3 is ok): ") + service->getGpsInstallStatusStr();
        break;
    default:
        break;
    }
    ui->install_mode->setText(status);
}

void gps_test::on_btn_version_clicked()
{
    DBG << "read_set_CMD_VERSION------------------";
    GpsService::instance()->read_set_CMD_VERSION();
}

void gps_test::on_resetinstall_brn_clicked()
{
    DBG << "reset GPS Calibration------------------";
    GpsService::instance()->read_set_CMD_RESET_CALIBRATION();
    // Kept: blocks the screen meanwhile.
    QThread::sleep(kCalibrationResetSeconds);
    GpsService::instance()->read_set_CMD_RESET_REBOOT();
    DBG << "reboot";
}

void gps_test::on_coldstart_btn_clicked()
{
    GpsService::instance()->read_set_CMD_COLD_START();
}

void gps_test::on_gpslog_btn_clicked()
{
    const bool current = isRecording();
    mem::SettingsCache::instance()->setValue(QLatin1String(kRecordingKey), QVariant(false),
                                             QVariant(!current));
    updateSwitchKRNMUI();
}

// The label names what a press would do.
void gps_test::updateSwitchKRNMUI()
{
    ui->gpslog_txt->setText(isRecording() ? tr("Close") : tr("Open"));
}

void gps_test::on_btn_save_nmea_clicked()
{
    GpsService::instance()->saveNmeaData2USB();
}

} // namespace testmode
