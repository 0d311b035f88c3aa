#pragma once

#include "gpsservice/krnminfo.h"

#include <QWidget>

class Ui_gps_test;

namespace cm {
class ListviewScroller;
}

namespace testmode {

class SatellitesListModel;

// Shows what the GNSS receiver reports, live, and sends it service commands.
// Keeps no history: what is on screen comes from the service's latest record. GUI thread.
class gps_test : public QWidget
{
    Q_OBJECT

public:
    explicit gps_test(QWidget *parent = nullptr);
    ~gps_test() override;

    void initlist();
    void updateSwitchKRNMUI();

    // Kept: the page host calls it before each showing; there is nothing to reset.
    void reset() { }

signals:
    // Kept: never emitted here; each status record rebuilds the list directly.
    void initSatellitesList();

public slots:
    void onNmeaUpdate(krnmINFO info);
    void ongpsFirmwareVersion(QString version);
    void ongpsLatitudeInfo(double latitude, double longitude);
    void ongpsOnlineStatellites(int count);
    void ongpsSatellitesOnView(int count);
    void ongpsSpeed(double speed);
    void ongpsSatellitesInfoPre();
    void onTimeSync();
    void on_resetinstall_brn_clicked();
    void on_btn_version_clicked();
    void on_btn_save_nmea_clicked(); // no button of the form has this name
    void on_coldstart_btn_clicked();
    void on_gpslog_btn_clicked();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void connectButtons();
    void connectService();
    void showScrollBarFor(int satellites);
    void showReceiverTime(const krnmINFO &info);
    void showAntenna();
    void showInstallStatus();

    Ui_gps_test *ui;
    cm::ListviewScroller *scroller = nullptr;  // child of the page
    SatellitesListModel *satellites = nullptr; // child of the page
};

} // namespace testmode
