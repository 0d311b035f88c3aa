#pragma once

#include "framework/appplugin.h"

#include <QObject>
#include <QPointer>

namespace testmode {

class MainWindow;

// What the framework loads: offers the test mode's window under its number. Its
// metadata and its entry points stand at the end of plugin.cpp.
class Plugin : public QObject, public AppPlugin
{
    Q_OBJECT
    Q_INTERFACES(AppPlugin)

public:
    void create() override;
    QList<int> windowInterfaceID() override;
    QList<int> sourceInterfaceID() override;
    WindowInterface *requestWindowInterface(int id) override;
    SourceInterface *requestSourceInterface(int id) override;

private:
    // Guarded: the framework may destroy the window, and may ask for it again.
    QPointer<MainWindow> window;
};

} // namespace testmode
