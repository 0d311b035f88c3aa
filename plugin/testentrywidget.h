#pragma once

#include <QWidget>

class Ui_testEntryWidget;

namespace testmode {

// The menu: one large button an entry, one signal a button. GUI thread only.
class testEntryWidget : public QWidget
{
    Q_OBJECT

public:
    explicit testEntryWidget(QWidget *parent);
    ~testEntryWidget() override;

signals:
    void key_tid();
    void key_ncm();
    void key_gps();
    void key_usb_test();
    void key_quit();
    void key_gps_update();
    void key_system_tools();
    void key_mic_test();

public slots:
    void on_key_usb_tid_clicked();
    void on_key_ncm_test_clicked();
    void on_key_gps_test_clicked();
    void on_key_quit_clicked();
    void on_key_usb_test_clicked();
    void on_key_gps_update_clicked();
    void on_key_tools_clicked();
    void on_key_mic_test_clicked();

    // The GNSS service has found out which module is fitted.
    void onGpsUpdateChanged(int state);

private:
    Ui_testEntryWidget *ui;
};

} // namespace testmode
