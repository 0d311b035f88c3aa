#include "serialset.h"

#include "tools/common.h"
#include "tools/debugtrace.h"
#include "ui_serialset.h"

#include <QShowEvent>

namespace {

// The rate that the boot ROM is spoken to with once the user has chosen settings.
constexpr int kOpeningBaudRate = 115200;

// A value that is not offered leaves the box at its first item.
void fill(QComboBox *box, const QStringList &items, const QString &selected)
{
    box->clear();
    box->addItems(items);
    box->setCurrentText(selected);
}

} // namespace

SerialSet::SerialSet(QWidget *parent) : QDialog(parent), ui(new Ui_SerialSet)
{
    ui->setupUi(this);
    SetBaudValue();
}

SerialSet::~SerialSet()
{
    delete ui;
}

void SerialSet::SetBaudValue()
{
    fill(ui->comboBaudRate, {"57600", "115200", "230400", "460800", "921600", "2000000"},
         QString::number(com_set.baudRate));
    fill(ui->comboDataBits, {"5", "6", "7", "8"}, QString::number(com_set.dataBits));
    fill(ui->comboStopBits, {"1", "1.5", "2"}, QString::number(com_set.stopBits, 'g', 6));
    fill(ui->comboParity, {"None", "Even", "Odd", "Mark", "Space"}, com_set.parity);
    fill(ui->comboFlowControl, {"None", "Hardware", "Software", "Custom"}, com_set.flowControl);
}

void SerialSet::SynComPortValue()
{
    SetBaudValue();
}

void SerialSet::showEvent(QShowEvent *event)
{
    // The page keeps one dialog: each time it opens, it shows what is in force. A show of the
    // window system's (spontaneous) opens nothing.
    if (!event->spontaneous())
        SynComPortValue();
    QDialog::showEvent(event);
}

void SerialSet::on_buttonBox_accepted()
{
    DBG << ui->comboBaudRate->currentText();
    // Kept: the port opens at this rate, the chosen one is for the download.
    com_set.baudRate = kOpeningBaudRate;
    br = ui->comboBaudRate->currentText();
    com_set.dataBits = ui->comboDataBits->currentText().toInt();
    com_set.stopBits = ui->comboStopBits->currentText().toFloat();
    com_set.parity = ui->comboParity->currentText();
    com_set.flowControl = ui->comboFlowControl->currentText();
    hide();
}

void SerialSet::ChangeBuad()
{
    com_set.baudRate = ui->comboBaudRate->currentText().toInt();
}
