#pragma once

#include <QImage>
#include <QJsonObject>
#include <QObject>
#include <QPluginLoader>
#include <QPointer>
#include <QTimer>

#include <memory>

class AppPlugin;
class QWidget;
class WindowInterface;

namespace bench {

class UnitScreen;

// The application framework of the simulated unit: loads the plug-in, drives its
// window 38 and acts on what the unit asks for (pop-ups, status bar, resets,
// leaving the test mode). GUI thread only; owns the screen.
class Host : public QObject
{
    Q_OBJECT

public:
    explicit Host(QObject *parent = nullptr);

    // Destroys the window and the screen; the plug-in stays loaded.
    ~Host() override;

    // False, with one line that names the file and the cure, when the file is no
    // plug-in that offers window 38.
    bool load(const QString &pluginFile, QString *error);
    QJsonObject metaData() const;
    QString pluginFile() const;

    QWidget *screen() const;     // 1024 x 600, with everything that the unit shows
    QWidget *mainWidget() const; // the plug-in's; null without a window

    // The screen as a camera would see it, open message boxes included.
    QImage picture() const;

    // The life cycle: onCreate (with the window asked for if need be), onShow, onDestroy.
    // The window dies from the event loop, and not before the boxes that are open
    // are closed; a createWindow() meanwhile happens when it is gone.
    void createWindow();
    void showWindow(const QByteArray &data = QByteArray());
    void destroyWindow();
    bool hasWindow() const;

    void home();       // onCreate and onShow again: back to the menu
    int back();        // backEvent's result
    int key(int code); // keyEvent's result

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void touchEvent(int touch, int x, int y); // sent by the plug-in to the application
    void restarted(const QString &why);       // the unit has reset itself, the window is new

private:
    // What follows once the window is gone.
    enum class Then { Nothing, Create, CreateAndShow };

    void placeMainWidget(QWidget *widget, int window);
    void forgetWindow(QObject *leaving);
    void windowGone();
    void receiveTouch(const QByteArray &payload);
    void leaveTestMode();
    void restart(const QString &why, bool factory);
    void loseWindow();
    void finishRestart();

    QPluginLoader loader;
    AppPlugin *plugin = nullptr;
    WindowInterface *window = nullptr; // owned by the plug-in
    QPointer<QObject> leavingWindow;   // its deletion is under way
    QPointer<QWidget> content;
    std::unique_ptr<UnitScreen> unitScreen;
    Then then = Then::Nothing;

    QTimer restartDelay;
    QString restartReason; // empty: no restart under way
    bool restartIsFactory = false;
};

} // namespace bench
