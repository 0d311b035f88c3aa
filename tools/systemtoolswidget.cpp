#include "systemtoolswidget.h"

#include "logs/outputlogsusb.h"
#include "mcu/mcuservice.h"
#include "mem/settingscache.h"
#include "mem/settingsfunc.h"
#include "tools/debugtrace.h"
#include "ui_systemtoolswidget.h"

#include <cstdlib>
#include <tuple>

namespace {

const char kScreenShotKey[] = "ToolsScreenShotEnable";
const char kLogServiceKey[] = "ToolsUSBLogEnable";

constexpr int kOrdinaryReset = 1;

void storeLogService(const QVariant &enabled)
{
    mem::SettingsFunc::instance()->setValue(QString::fromLatin1(kLogServiceKey), false, enabled,
                                            true);
}

// Kept: what the command returns is not looked at; the unit restarts all the same.
void setNandFileOutput(const char *command)
{
    std::ignore = std::system(command);
}

void resetUnit()
{
    mcu::McuService::instance()->setResetSystem(kOrdinaryReset);
}

} // namespace

SystemToolsWidget::SystemToolsWidget(QWidget *parent)
    : QWidget(parent), ui(new Ui_SystemToolsWidget)
{
    ui->setupUi(this);

    connect(ui->screenShotDisBtn, SIGNAL(clicked()), this, SLOT(onScreenShotClicked()));
    connect(ui->screenShotEnBtn, SIGNAL(clicked()), this, SLOT(onScreenShotClicked()));
    connect(ui->readBtn, SIGNAL(clicked()), this, SLOT(onCopyLogClicked()));
    connect(ui->CPDumpStartBtn, SIGNAL(clicked()), this, SLOT(onCarPlayDumpStartClicked()));
    connect(ui->CPDumpEndBtn, SIGNAL(clicked()), this, SLOT(onCarPlayDumpEndClicked()));
    connect(ui->openLogBtn, SIGNAL(clicked()), this, SLOT(onOpenLogServiceClicked()));
    connect(ui->closeLogBtn, SIGNAL(clicked()), this, SLOT(onCloseLogServiceClicked()));

    // A touch on a button's text reaches the button beneath.
    for (QLabel *text :
         {ui->read_text, ui->CPDumpEndTxt, ui->CPDumpStartTxt, ui->open_log_txt, ui->close_log_txt})
        text->setAttribute(Qt::WA_TransparentForMouseEvents);
}

SystemToolsWidget::~SystemToolsWidget()
{
    delete ui;
}

void SystemToolsWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);

    const bool screenShots =
        mem::SettingsCache::instance()->getValue(QString::fromLatin1(kScreenShotKey), false);
    (screenShots ? ui->screenShotEnBtn : ui->screenShotDisBtn)->setChecked(true);

    const bool logs =
        mem::SettingsFunc::instance()->getValue(QString::fromLatin1(kLogServiceKey), false);
    DBG << "=====en log : " << logs;
    ui->readBtn->setEnabled(logs);
}

void SystemToolsWidget::onScreenShotClicked()
{
    mem::SettingsCache::instance()->setValue(QString::fromLatin1(kScreenShotKey), false,
                                             ui->screenShotEnBtn->isChecked());
}

void SystemToolsWidget::onCopyLogClicked()
{
    logs::OutputLogsUsb::instance()->updateLogToUsb(true);
}

void SystemToolsWidget::onCarPlayDumpStartClicked()
{
    logs::OutputLogsUsb::instance()->startDumpsys(true);
}

void SystemToolsWidget::onCarPlayDumpEndClicked()
{
    logs::OutputLogsUsb::instance()->endDumpsys(true);
}

// Kept: opening stores the setting last, closing stores it first.
void SystemToolsWidget::onOpenLogServiceClicked()
{
    setNandFileOutput("logset NAND_FILE_OUTPUT y\n");
    resetUnit();
    storeLogService(true);
}

void SystemToolsWidget::onCloseLogServiceClicked()
{
    storeLogService(false);
    setNandFileOutput("logset NAND_FILE_OUTPUT n\n");
    resetUnit();
}

void SystemToolsWidget::onUsbLogClicked()
{
    storeLogService(1); // kept: an integer, unlike the two slots above
}
