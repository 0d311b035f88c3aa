// Loads a plug-in as a framework does: load PLUGIN. Ends with 0 when it is the test mode and its
// window shows a menu.

#include "framework/appplugin.h"
#include "framework/windowinterface.h"

#include <QApplication>
#include <QJsonObject>
#include <QPluginLoader>
#include <QWidget>

#include <cstdio>

namespace {

int refuse(const QString &why)
{
    std::fprintf(stderr, "load: %s\n", qPrintable(why));
    return 1;
}

int check(QPluginLoader *loader)
{
    if (loader->metaData().value("IID").toString() != "com.corvane.Qt.testmodePlugin")
        return refuse("another interface identifier");
    auto *plugin = qobject_cast<AppPlugin *>(loader->instance());
    if (plugin == nullptr)
        return refuse(loader->errorString());
    plugin->create();
    if (plugin->windowInterfaceID() != QList<int>{38} || !plugin->sourceInterfaceID().isEmpty())
        return refuse("other windows or sources are offered");
    WindowInterface *window = plugin->requestWindowInterface(38);
    if (window == nullptr || plugin->requestWindowInterface(37) != nullptr)
        return refuse("window 38 is not there, or another one is");
    window->onCreate();
    auto *object = dynamic_cast<QObject *>(window);
    auto *shown = object->property("shown").value<QWidget *>();
    if (shown == nullptr || object->property("number").toInt() != 38)
        return refuse("no widget was shown in window 38");
    if (shown->findChild<QWidget *>("key_gps_update") == nullptr)
        return refuse("the menu has no update button");
    std::printf("window %s\n", qPrintable(window->name()));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc != 2)
        return refuse("wanted is one plug-in");
    QPluginLoader loader(QString::fromLocal8Bit(argv[1]));
    return check(&loader);
}
