#pragma once

#include <QList>
#include <QtPlugin>

class SourceInterface;
class WindowInterface;

class AppPlugin
{
public:
    virtual void create() = 0;
    virtual QList<int> windowInterfaceID() = 0;
    virtual QList<int> sourceInterfaceID() = 0;
    virtual WindowInterface *requestWindowInterface(int) = 0;
    virtual SourceInterface *requestSourceInterface(int) = 0;
    virtual ~AppPlugin() = default;
};
Q_DECLARE_INTERFACE(AppPlugin, "com.corvane.Plugin.AppPlugin/1.0")
