#pragma once

#include "calls.h"

#include <QMainWindow>
#include <QPalette>
#include <QVector>

class QDockWidget;
class QLabel;
class QScrollArea;

namespace bench {

class LogView;
class ResetPrompt;

// What the window is made of.
struct WindowParts
{
    Dispatcher *dispatcher = nullptr;
    QWidget *screen = nullptr;          // the unit's; the host keeps it
    QString pictures;                   // folder of what is saved; empty: the clipboard
    QString settings;                   // file that keeps the layout; empty: it is not kept
    ResetPrompt *resetPrompt = nullptr; // of a receiver that is reset by hand
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
    void restoreLayout();
    void keepLayout() const;
    void search();
    void takePicture();
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
    int pictures = 0; // taken so far
};

} // namespace bench
