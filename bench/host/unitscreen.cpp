#include "unitscreen.h"

#include "homescreen.h"
#include "statusbar.h"

#include <QLabel>
#include <QPainter>

namespace bench {

namespace {

constexpr int kPopupMilliseconds = 2500;
constexpr int kPopupBottom = 48; // distance of a pop-up from the screen's lower edge
constexpr int kPopupMaxWidth = 720;

// Buttons and fields stay light with dark text, as the pages' own style sheets
// expect; what lies bare on the background is light on dark.
QPalette screenPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x0f, 0x14, 0x1b));
    palette.setColor(QPalette::WindowText, QColor(0xe6, 0xeb, 0xf2));
    return palette;
}

} // namespace

UnitScreen::UnitScreen(QWidget *parent)
    : QWidget(parent), homeScreen(new HomeScreen(this)), statusBar(new StatusBar(this)),
      popup(new QLabel(this)), restartNotice(new QLabel(this))
{
    setObjectName(QStringLiteral("unit_screen"));
    setWindowTitle(QStringLiteral("Head unit"));
    setFixedSize(kScreenWidth, kScreenHeight);
    setPalette(screenPalette());

    homeScreen->setGeometry(rect());
    statusBar->setGeometry(0, 0, width(), StatusBar::kHeight);
    connect(homeScreen, &HomeScreen::testModeChosen, this, &UnitScreen::testModeChosen);

    popup->setObjectName(QStringLiteral("unit_popup"));
    popup->setAttribute(Qt::WA_TransparentForMouseEvents);
    popup->setAlignment(Qt::AlignCenter);
    popup->setStyleSheet(QStringLiteral("background: #26303e; color: #f2f5f9;"
                                        "border: 1px solid #4a5a70; border-radius: 22px;"
                                        "padding: 10px 28px; font-size: 20px;"));
    popup->hide();
    popupTime.setSingleShot(true);
    popupTime.setInterval(kPopupMilliseconds);
    connect(&popupTime, &QTimer::timeout, popup, &QWidget::hide);

    restartNotice->setObjectName(QStringLiteral("unit_restart"));
    restartNotice->setAlignment(Qt::AlignCenter);
    restartNotice->setGeometry(rect());
    restartNotice->setStyleSheet(
        QStringLiteral("background: #05070a; color: #9fb0c6; font-size: 26px;"));
    restartNotice->hide();
}

void UnitScreen::setContent(QWidget *widget)
{
    widget->hide();
    widget->setParent(this);
    widget->setGeometry(rect());
    raiseOverlays();
}

void UnitScreen::showContent(QWidget *widget)
{
    if (widget == nullptr)
        return;
    widget->show();
    homeScreen->hide();
    content = widget;
}

void UnitScreen::showHome()
{
    if (content)
        content->hide();
    homeScreen->show();
}

void UnitScreen::setStatusBarHidden(bool hidden)
{
    statusBar->setVisible(!hidden);
}

void UnitScreen::showPopup(const QString &text)
{
    popup->setText(text);
    popup->setWordWrap(false);
    popup->adjustSize();
    if (popup->width() > kPopupMaxWidth) {
        popup->setWordWrap(true);
        popup->resize(kPopupMaxWidth, popup->heightForWidth(kPopupMaxWidth));
    }
    popup->move((width() - popup->width()) / 2, height() - kPopupBottom - popup->height());
    popup->show();
    raiseOverlays();
    popupTime.start();
}

void UnitScreen::showRestart(const QString &why)
{
    restartNotice->setText(why + QStringLiteral(" …"));
    restartNotice->show();
    raiseOverlays();
}

void UnitScreen::hideRestart()
{
    restartNotice->hide();
    popup->hide();
}

void UnitScreen::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, QColor(0x17, 0x1f, 0x2a));
    gradient.setColorAt(1, QColor(0x0b, 0x0f, 0x15));
    painter.fillRect(rect(), gradient);
}

void UnitScreen::raiseOverlays()
{
    statusBar->raise();
    popup->raise();
    restartNotice->raise();
}

} // namespace bench
