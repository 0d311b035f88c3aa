#include "appearance.h"

#include "complaint.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QLoggingCategory>
#include <QStyle>
#include <QStyleFactory>

namespace bench {

namespace {

// Has Latin and Chinese glyphs that go well together.
const QString kFont = QStringLiteral("WenQuanYi Micro Hei");

QtMessageHandler usualHandler = nullptr;

// Without a display Qt says this of each window with a fixed size; it means nothing here.
void dropOffscreenRemark(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (text != QLatin1String("This plugin does not support propagateSizeHints()"))
        usualHandler(type, context, text);
}

bool needsNoDisplay(const QByteArray &platform)
{
    return platform.startsWith("offscreen") || platform.startsWith("minimal");
}

} // namespace

bool hasDisplay()
{
    if (needsNoDisplay(qgetenv("QT_QPA_PLATFORM")))
        return false;
    return !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void choosePlatform()
{
    usualHandler = qInstallMessageHandler(dropOffscreenRemark);
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return;
    QByteArray platforms = "offscreen";
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        platforms.prepend("xcb;");
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        platforms.prepend("wayland;");
    qputenv("QT_QPA_PLATFORM", platforms);
    // A display that cannot be opened is told in one line of our own.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.*=false"));
}

bool isOnDisplay()
{
    return !needsNoDisplay(QGuiApplication::platformName().toLatin1());
}

void applyAppearance()
{
    QLoggingCategory::setFilterRules(QString());
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(QApplication::style()->standardPalette());

    const QFontDatabase fonts;
    if (fonts.families(QFontDatabase::SimplifiedChinese).isEmpty())
        remark("no font with Chinese characters; install the package fonts-wqy-microhei");
    QFont font = QApplication::font();
    if (fonts.families().contains(kFont))
        font.setFamily(kFont);
    font.setPointSize(11);
    QApplication::setFont(font);
}

} // namespace bench
