#include "testentrywidget.h"

#include "gpsservice/gpsservice.h"
#include "tools/debugtrace.h"
#include "ui_testentrywidget.h"

namespace testmode {

testEntryWidget::testEntryWidget(QWidget *parent) : QWidget(parent), ui(new Ui_testEntryWidget)
{
    ui->setupUi(this);
    setGeometry(100, 100, 1000, 600);

    // A touch on an entry's text reaches the button beneath.
    for (QLabel *text : {ui->txt_gps, ui->txt_quit, ui->txt_usb_tid, ui->txt_usb_test, ui->txt_ncm,
                         ui->txt_gps_update, ui->txt_tools, ui->txt_mic_test})
        text->setAttribute(Qt::WA_TransparentForMouseEvents);

    gpsservice::GpsService *service = gpsservice::GpsService::instance();
    connect(service, SIGNAL(modualApatationCompelete(int)), this, SLOT(onGpsUpdateChanged(int)));
    onGpsUpdateChanged(service->getModualApatation());
}

testEntryWidget::~testEntryWidget()
{
    delete ui;
}

void testEntryWidget::on_key_usb_tid_clicked()
{
    DBG << "tid";
    emit key_tid();
}

void testEntryWidget::on_key_ncm_test_clicked()
{
    DBG << "ncm";
    emit key_ncm();
}

void testEntryWidget::on_key_gps_test_clicked()
{
    DBG << "gps";
    emit key_gps();
}

void testEntryWidget::on_key_quit_clicked()
{
    DBG << "quit";
    emit key_quit();
}

void testEntryWidget::on_key_usb_test_clicked()
{
    DBG << "usb test";
    emit key_usb_test();
}

void testEntryWidget::on_key_gps_update_clicked()
{
    DBG << "key_gps_update";
    emit key_gps_update();
}

void testEntryWidget::on_key_tools_clicked()
{
    DBG << "key_system_tools";
    emit key_system_tools();
}

void testEntryWidget::on_key_mic_test_clicked()
{
    DBG << "key_mic_test";
    emit key_mic_test();
}

void testEntryWidget::onGpsUpdateChanged(int state)
{
    DBG << state;
    // Kept: the entry is open for every kind of module; the kind only decides the path behind it.
    ui->key_gps_update->setEnabled(true);
}

} // namespace testmode
