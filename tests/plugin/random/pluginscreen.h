#pragma once

#include <QPointer>
#include <QWidget>

namespace testmode {
class MainWindow;
}

namespace tests {

// A unit's screen with the plug-in's window on it, and the framework's part in it: the life
// cycle, keys, and a window built anew when the unit resets itself. Everything that destroys
// happens from the event loop, as the framework's own does. GUI thread only.
class PluginScreen : public QWidget
{
    Q_OBJECT

public:
    PluginScreen();
    ~PluginScreen() override;

    void home(); // onCreate and onShow
    void back();
    void key(int code);

    // Destroys the window and builds it anew. A message box that is open is closed
    // first, unless it is to go with its window.
    void renew(bool closesBoxFirst = true);

    // Destroys the main widget alone, as the framework may; the next Home builds a new one.
    void loseMainWidget();

    // Null while there is none.
    QWidget *mainWidget() const;
    QWidget *menu() const;

    int renewals() const { return renewed; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void create();
    void place(QWidget *widget);
    void destroyWindow(bool closesBoxFirst);

    QPointer<testmode::MainWindow> window; // deletes itself
    QPointer<QWidget> content;
    bool leaving = false; // the window's deletion is under way
    int renewed = 0;
};

} // namespace tests
