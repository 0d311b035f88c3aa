#pragma once

#include "framework/windowinterface.h"
#include "platform_api.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace cm {

// Base of every window: does the framework's part of the life cycle.
// GUI thread only.
class PLATFORM_API BaseWindow : public QObject, public WindowInterface
{
    Q_OBJECT

public:
    explicit BaseWindow(QObject *parent = nullptr);
    ~BaseWindow() override;

    void onCreate() override;
    void onDestroy() override;
    void onShow(const QByteArray &data) override;
    int backEvent() override;
    int keyEvent(KeyEvent *event) override;
    QString name() override;

    // Puts `widget` on the unit's screen as the content of window `id` (a window
    // interface number). The framework takes the widget over and deletes it with the window.
    void setMainWidget(QWidget *widget, int id);

    // Switches one of the framework's background layers on or off for this window.
    void setBackgroundVisible(int layer, bool visible);

    // Asks the framework to destroy the window and its main widget later, from its event loop.
    void deleteDelay();

private:
    QPointer<QWidget> widget; // owned by the framework from setMainWidget on
};

} // namespace cm
