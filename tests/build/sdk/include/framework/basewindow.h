#pragma once

#include "framework/windowinterface.h"

#include <QObject>
#include <QWidget>

namespace cm {

class BaseWindow : public QObject, public WindowInterface
{
    Q_OBJECT

public:
    explicit BaseWindow(QObject *parent = nullptr);
    ~BaseWindow() override;

    void onCreate() override;
    void onDestroy() override;
    void onShow(const QByteArray &) override;
    int backEvent() override;
    int keyEvent(KeyEvent *) override;
    QString name() override;

    void setMainWidget(QWidget *, int);
    void setBackgroundVisible(int, bool);
    void deleteDelay();
};

} // namespace cm
