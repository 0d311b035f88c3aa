#pragma once

#include <QList>
#include <QtPlugin>

class SourceInterface;
class WindowInterface;

// What the application framework asks of every plug-in that it loads.
// GUI thread only. The order of the virtual functions is the framework's ABI.
class AppPlugin
{
public:
    // Called once after loading, before anything else.
    virtual void create() = 0;

    // Numbers of the windows and of the sources that requestWindowInterface and
    // requestSourceInterface will answer for.
    virtual QList<int> windowInterfaceID() = 0;
    virtual QList<int> sourceInterfaceID() = 0;

    // The plug-in keeps ownership; null for a number that it does not offer.
    virtual WindowInterface *requestWindowInterface(int id) = 0;
    virtual SourceInterface *requestSourceInterface(int id) = 0;

    virtual ~AppPlugin() = default;
};

Q_DECLARE_INTERFACE(AppPlugin, "com.corvane.Plugin.AppPlugin/1.0")
