#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

class QLabel;

namespace bench {

class HomeScreen;
class StatusBar;

constexpr int kScreenWidth = 1024;
constexpr int kScreenHeight = 600;

// The unit's screen: the application's widget or the home screen, and over them
// the status bar, pop-ups and the notice of a restart. GUI thread only.
class UnitScreen : public QWidget
{
    Q_OBJECT

public:
    explicit UnitScreen(QWidget *parent = nullptr);

    // Takes `widget` as the application's; its owner stays who it was.
    void setContent(QWidget *widget);

    // Shows the application or the home screen.
    void showContent(QWidget *widget);
    void showHome();

    void setStatusBarHidden(bool hidden);
    void showPopup(const QString &text);
    void showRestart(const QString &why);
    void hideRestart();

signals:
    void testModeChosen(); // the home screen's tile

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void raiseOverlays();

    QPointer<QWidget> content; // the application's widget that was shown last
    HomeScreen *homeScreen;
    StatusBar *statusBar;
    QLabel *popup;
    QTimer popupTime;
    QLabel *restartNotice;
};

} // namespace bench
