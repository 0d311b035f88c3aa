#pragma once

#include "calls.h"

#include <QMainWindow>
#include <QPalette>
#include <QVector>

class QDockWidget;
class QLabel;
class QScrollArea;

namespace bench {

class FlashDock;
class LogView;
class ResetPrompt;

// A dock that somebody else makes.
struct FurtherDock
{
    QString title;
    QWidget *content = nullptr; // the window's from then on
    Qt::DockWidgetArea area = Qt::BottomDockWidgetArea;
};

// What the window is made of. Whoever shows what was recorded gives a dispatcher whose calls answer
// from the record and whose events are its events, and a picture in the screen's place.
struct WindowParts
{
    Dispatcher *dispatcher = nullptr;
    QWidget *screen = nullptr;                  // the unit's; the host keeps it
    QString pictures;                           // folder of what is saved; empty: the clipboard
    QString settings;                           // file that keeps the layout; empty: it is not kept
    ResetPrompt *resetPrompt = nullptr;         // of a receiver that is reset by hand
    QString sign = QStringLiteral("SIMULATED"); // what nobody may take this for a unit by
    QVector<FurtherDock> further;               // docks beside the window's own
};

// The unit's screen, and docks round it that show the bench through the calls that scripts use.
// GUI thread; the parts outlive it.
class OperatorWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit OperatorWindow(const WindowParts &parts);
    ~OperatorWindow() override;

    // The unit's windows keep the unit's look; a press on its screen is remembered by the logs.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QDockWidget *addDock(const QString &title, QWidget *content, Qt::DockWidgetArea area);
    void addDocks();
    void addMenus();
    void arrange();
    void stack(const QVector<QDockWidget *> &together);
    QDockWidget *dock(const char *name) const;
    void restoreLayout();
    void keepLayout() const;
    LogView *frontLog() const;
    void search();
    void jump(bool forward);
    void takePicture();
    void takeDocks();
    bool save(const QPixmap &picture, const QString &name);
    void tell(const QString &text);
    bool isOfTheUnit(const QObject *object) const;

    WindowParts parts;
    Calls calls;
    QPalette unitPalette;
    QScrollArea *frame;
    QVector<QDockWidget *> docks;
    LogView *journalView = nullptr;
    LogView *traceView = nullptr;
    LogView *dialogueView = nullptr;
    QByteArray firstLayout;
    int pictures = 0; // of the unit's screen, taken so far
};

} // namespace bench
