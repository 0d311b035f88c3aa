#pragma once

#include "framework/basewindow.h"

namespace testmode {

class MainWidget;

// Number under which the framework knows the test mode's window.
constexpr int kWindowInterface = 38;

// The window that the framework drives; its content is the page host.
class MainWindow : public cm::BaseWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QObject *parent);
    ~MainWindow() override;

    void onCreate() override;
    void onDestroy() override;
    void onShow(const QByteArray &data) override;
    int backEvent() override;
    int keyEvent(KeyEvent *event) override;
    QString name() override;

public slots:
    // The framework has destroyed the page host; the next onCreate builds a new one.
    void onDestroyObj();

private:
    MainWidget *mainWidget = nullptr; // owned by the framework
};

} // namespace testmode
