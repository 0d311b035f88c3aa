#include "plugin.h"

#include "mainwindow.h"
#include "tools/debugtrace.h"

namespace testmode {

void Plugin::create() { }

QList<int> Plugin::windowInterfaceID()
{
    return {kWindowInterface};
}

QList<int> Plugin::sourceInterfaceID()
{
    return {};
}

WindowInterface *Plugin::requestWindowInterface(int id)
{
    if (id != kWindowInterface)
        return nullptr;
    if (!window)
        window = new MainWindow(this);
    return window;
}

SourceInterface *Plugin::requestSourceInterface(int)
{
    return nullptr;
}

} // namespace testmode

// What the framework's loader reads before it loads the plug-in, a CBOR map. Written by hand
// because moc leaves an empty "MetaData" out, and the loader asks for all entries.
// clang-format off
QT_PLUGIN_METADATA_SECTION
static constexpr unsigned char qt_pluginMetaData[] = {
    'Q', 'T', 'M', 'E', 'T', 'A', 'D', 'A', 'T', 'A', ' ', '!',
    0, QT_VERSION_MAJOR, QT_VERSION_MINOR,
    qPluginArchRequirements() & ~1, // bit 0 is "debug": false in every build, as the loader wants it
    0xbf,
    0x02, 0x78, 29, // "IID", a text of 29 bytes
    'c', 'o', 'm', '.', 'c', 'o', 'r', 'v', 'a', 'n', 'e', '.', 'Q', 't', '.',
    't', 'e', 's', 't', 'm', 'o', 'd', 'e', 'P', 'l', 'u', 'g', 'i', 'n',
    0x03, 0x66, 'P', 'l', 'u', 'g', 'i', 'n', // "className", a text of 6 bytes
    0x04, 0xa0, // "MetaData", an empty map
    0xff,
};
// clang-format on
QT_MOC_EXPORT_PLUGIN(testmode::Plugin, Plugin)
