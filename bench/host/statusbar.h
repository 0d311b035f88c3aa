#pragma once

#include <QTimer>
#include <QWidget>

namespace bench {

// The slim bar at the top of the unit's screen: name, antenna, time. Lets
// touches through to what lies beneath.
class StatusBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kHeight = 28;

    explicit StatusBar(QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void waitForNextMinute();

    QTimer minute;
};

} // namespace bench
