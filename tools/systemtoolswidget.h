#pragma once

#include <QWidget>

class Ui_SystemToolsWidget;

// The page of the unit's own tools: screenshots, logs to a USB stick, dumps of the
// phone projection, the log service. Keeps no state beyond its widgets. GUI thread only.
class SystemToolsWidget : public QWidget
{
    Q_OBJECT

public:
    explicit SystemToolsWidget(QWidget *parent = nullptr);
    ~SystemToolsWidget() override;

protected:
    // Shows what the settings say now.
    void showEvent(QShowEvent *event) override;

private slots:
    void onScreenShotClicked();
    void onCopyLogClicked();
    void onCarPlayDumpStartClicked();
    void onCarPlayDumpEndClicked();

    // Both ask the unit for a system reset.
    void onOpenLogServiceClicked();
    void onCloseLogServiceClicked();

    // Kept on the interface; no button is connected to it.
    void onUsbLogClicked();

private:
    Ui_SystemToolsWidget *ui;
};
