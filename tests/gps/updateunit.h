#pragma once

#include "bench/receiver/receiver.h"
#include "plugin/plugin.h"
#include "tests/support/clock/virtualclock.h"

#include <QByteArray>
#include <QPointer>
#include <QStringList>
#include <QWidget>

namespace tests {

// A unit with the simulated receiver at /dev/ttyS4 and the sample package, and the plug-in's window
// on its screen. Everything is pressed and read where a technician would. Receiver, worker and
// transport live on a clock of their own: an update takes the dialogue's pauses, on any machine.
// GUI thread.
class UpdateUnit : public QObject
{
    Q_OBJECT

public:
    UpdateUnit();
    ~UpdateUnit() override;

    VirtualClock clock; // outlives every thread of the unit
    bench::Receiver receiver;

    // The framework's part: onCreate puts the window on the screen, onDestroy takes it away.
    void createWindow();
    void destroyWindow();

    // Answers take the time of a line of 921600 baud; as it starts the receiver answers at once.
    void keepLineRate();
    // Takes the receiver's line away, device and all, and puts one back.
    void pullLine();
    void healLine();
    // What the application does when its event loop has ended.
    static void endProcess();

    // From the menu to a loaded package.
    void openUpdatePage();

    // A press with the mouse at the middle of a button, on whatever lies on top there.
    void press(const char *button);
    template <typename Widget>
    Widget *part(const char *name) const
    {
        return screen->findChild<Widget *>(QString::fromLatin1(name));
    }

    // What the page shows.
    bool updateRuns() const;
    QStringList lines() const; // of the log, without the times
    int progress() const;
    QColor icon() const;

    // Images of the package, by file name, as they lie in the package's folder.
    static QStringList allImages();
    static QByteArray packageFile(const QString &name);
    // What the 4 MiB of flash hold when exactly these images were written, from the files alone.
    static QByteArray flashWith(const QStringList &images);
    QByteArray flash() const;

private:
    void setLineRate(bool kept);

    testmode::Plugin plugin;
    QPointer<QWidget> screen; // the window's content
};

} // namespace tests
