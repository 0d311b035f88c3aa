// The floor of a plug-in: the menu's form in a window, and nothing behind it.

#include "framework/appplugin.h"
#include "framework/basewindow.h"
#include "ui_testentrywidget.h"

#include <QObject>
#include <QWidget>

namespace benchmark {

class EmptyWindow : public cm::BaseWindow
{
public:
    using cm::BaseWindow::BaseWindow;

    void onCreate() override
    {
        cm::BaseWindow::onCreate();
        auto *content = new QWidget;
        auto *menu = new QWidget(content);
        form.setupUi(menu);
        menu->setGeometry(100, 100, 1000, 600);
        menu->show();
        setMainWidget(content, 38);
    }

private:
    Ui_testEntryWidget form;
};

class EmptyPlugin : public QObject, public AppPlugin
{
    Q_OBJECT
    Q_INTERFACES(AppPlugin)
    Q_PLUGIN_METADATA(IID "testmode.benchmark.empty")

public:
    void create() override { }
    QList<int> windowInterfaceID() override { return {38}; }
    QList<int> sourceInterfaceID() override { return {}; }
    WindowInterface *requestWindowInterface(int) override { return new EmptyWindow(this); }
    SourceInterface *requestSourceInterface(int) override { return nullptr; }
};

} // namespace benchmark

#include "emptyplugin.moc"
