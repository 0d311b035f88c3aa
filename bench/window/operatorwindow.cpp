#include "operatorwindow.h"

#include "faultsdock.h"
#include "logdocks.h"
#include "logview.h"
#include "look.h"
#include "receiverdock.h"
#include "registersdock.h"
#include "unitdock.h"

#include <QApplication>
#include <QClipboard>
#include <QDockWidget>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>

namespace bench {

namespace {

constexpr int kLayoutVersion = 1; // another set of docks is another one
const QString kLayoutKey = QStringLiteral("window/layout");
const QString kGeometryKey = QStringLiteral("window/geometry");
constexpr int kMessageMilliseconds = 10000;
constexpr QSize kSize(1440, 900); // of the window when nobody has moved anything
constexpr int kMargin = 12;       // what frames and bars take, about

// Outside of the unit's pixels, and in words: nobody takes this for a unit.
QLabel *simulatedSign()
{
    auto *sign = new QLabel(QStringLiteral("\u25CF SIMULATED"));
    sign->setObjectName(QStringLiteral("simulated"));
    sign->setForegroundRole(QPalette::BrightText);
    sign->setMargin(4);
    return sign;
}

} // namespace

OperatorWindow::OperatorWindow(const WindowParts &given)
    : parts(given), calls(given.dispatcher), unitPalette(insistent(QApplication::palette())),
      frame(new QScrollArea)
{
    setWindowTitle(QStringLiteral("testmode-bench"));
    setObjectName(QStringLiteral("operator_window"));
    setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
    parts.screen->setPalette(unitPalette);
    QApplication::setPalette(darkPalette());
    qApp->installEventFilter(this);

    frame->setFrameShape(QFrame::NoFrame);
    frame->setAlignment(Qt::AlignCenter);
    frame->setWidget(parts.screen);
    setCentralWidget(frame);
    addDocks();
    addMenus();
    connect(&calls, &Calls::failed, this, [this](const QString &message) {
        statusBar()->showMessage(message, kMessageMilliseconds);
    });
    arrange();
    firstLayout = saveState(kLayoutVersion);
    restoreLayout();
}

OperatorWindow::~OperatorWindow()
{
    keepLayout();
    qApp->removeEventFilter(this);
    frame->takeWidget();
    parts.screen->setParent(nullptr);
    QApplication::setPalette(unitPalette);
}

void OperatorWindow::addDocks()
{
    addDock(QStringLiteral("Unit"), new UnitDock(&calls), Qt::RightDockWidgetArea);
    addDock(QStringLiteral("Receiver"), new ReceiverDock(&calls, parts.resetPrompt),
            Qt::RightDockWidgetArea);
    dialogueView = makeDialogueView(&calls, parts.pictures);
    addDock(QStringLiteral("Dialogue"), dialogueView, Qt::BottomDockWidgetArea);
    journalView = makeJournalView(&calls, parts.pictures);
    addDock(QStringLiteral("Journal"), journalView, Qt::BottomDockWidgetArea);
    traceView = makeTraceView(&calls, parts.pictures);
    addDock(QStringLiteral("Trace"), traceView, Qt::BottomDockWidgetArea);
    addDock(QStringLiteral("Faults"), new FaultsDock(&calls), Qt::BottomDockWidgetArea);
    addDock(QStringLiteral("Registers"), new RegistersDock(&calls), Qt::BottomDockWidgetArea);
    for (LogView *view : {dialogueView, journalView, traceView}) {
        connect(view, &LogView::told, this, [this](const QString &text) {
            statusBar()->showMessage(text, kMessageMilliseconds);
        });
    }
}

QDockWidget *OperatorWindow::addDock(const QString &title, QWidget *content,
                                     Qt::DockWidgetArea area)
{
    auto *dock = new QDockWidget(title);
    dock->setObjectName(QStringLiteral("dock_") + title.toLower());
    dock->setWidget(content);
    addDockWidget(area, dock);
    docks.append(dock);
    return dock;
}

void OperatorWindow::addMenus()
{
    QMenu *bench = menuBar()->addMenu(QStringLiteral("&Bench"));
    bench->addAction(QStringLiteral("Take a picture"), this, &OperatorWindow::takePicture,
                     QKeySequence(Qt::Key_F5));
    bench->addAction(QStringLiteral("Search"), this, &OperatorWindow::search, QKeySequence::Find);
    bench->addAction(QStringLiteral("Quit"), this, &QWidget::close, QKeySequence::Quit);

    QMenu *view = menuBar()->addMenu(QStringLiteral("&View"));
    for (int i = 0; i < docks.size(); ++i) {
        QAction *action = view->addAction(docks.at(i)->windowTitle());
        if (i < 9)
            action->setShortcut(QKeySequence(Qt::CTRL + Qt::Key_1 + i));
        connect(action, &QAction::triggered, docks.at(i), [dock = docks.at(i)] {
            dock->show();
            dock->raise();
        });
    }
    view->addSeparator();
    QAction *reset = view->addAction(QStringLiteral("Reset layout"), this,
                                     [this] { restoreState(firstLayout, kLayoutVersion); });
    reset->setObjectName(QStringLiteral("reset_layout"));
    menuBar()->setCornerWidget(simulatedSign());
    statusBar();
}

// As it is when nobody has moved anything: logs in tabs beneath the screen, the rest beside it.
void OperatorWindow::arrange()
{
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    QDockWidget *first[2] = {}; // on the right, at the bottom
    for (QDockWidget *dock : qAsConst(docks)) {
        QDockWidget *&before = first[dockWidgetArea(dock) == Qt::RightDockWidgetArea ? 0 : 1];
        if (before != nullptr)
            tabifyDockWidget(before, dock);
        else
            before = dock;
    }
    for (QDockWidget *dock : first) {
        if (dock != nullptr)
            dock->raise();
    }
    resize(kSize);
    resizeDocks({first[0]}, {kSize.width() - parts.screen->width() - 2 * kMargin}, Qt::Horizontal);
    resizeDocks({first[1]}, {kSize.height() - parts.screen->height() - 6 * kMargin}, Qt::Vertical);
}

void OperatorWindow::restoreLayout()
{
    if (parts.settings.isEmpty())
        return;
    const QSettings kept(parts.settings, QSettings::IniFormat);
    restoreGeometry(kept.value(kGeometryKey).toByteArray());
    restoreState(kept.value(kLayoutKey).toByteArray(), kLayoutVersion);
}

void OperatorWindow::keepLayout() const
{
    if (parts.settings.isEmpty())
        return;
    QSettings kept(parts.settings, QSettings::IniFormat);
    kept.setValue(kGeometryKey, saveGeometry());
    kept.setValue(kLayoutKey, saveState(kLayoutVersion));
}

// In the dock with the keyboard, else in the log that is in front.
void OperatorWindow::search()
{
    LogView *front = journalView;
    for (LogView *view : {dialogueView, journalView, traceView}) {
        if (!view->visibleRegion().isEmpty())
            front = view;
    }
    for (LogView *view : {dialogueView, journalView, traceView}) {
        if (view->isAncestorOf(QApplication::focusWidget()))
            front = view;
    }
    front->search();
}

void OperatorWindow::takePicture()
{
    if (parts.pictures.isEmpty()) {
        const auto take = [this](const QJsonObject &answer) {
            const QByteArray png = QByteArray::fromBase64(answer["base64"].toString().toLatin1());
            QGuiApplication::clipboard()->setImage(QImage::fromData(png, "PNG"));
            statusBar()->showMessage(QStringLiteral("The picture is in the clipboard."));
        };
        calls.make(QStringLiteral("ui.screenshot"), {}, this, take);
        return;
    }
    const QString file = QStringLiteral("%1/unit-%2.png").arg(parts.pictures).arg(++pictures);
    calls.make(QStringLiteral("ui.screenshot"), {{"file", file}}, this,
               [this, file](const QJsonObject &) { statusBar()->showMessage(file); });
}

// Boxes and lists that the plug-in opens are windows of their own, without a parent at times.
bool OperatorWindow::isOfTheUnit(const QObject *object) const
{
    for (; object != nullptr; object = object->parent()) {
        if (object == parts.screen)
            return true;
        if (object == this)
            return false;
    }
    return true;
}

bool OperatorWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWidgetType())
        return false;
    auto *widget = static_cast<QWidget *>(watched);
    if (event->type() == QEvent::Polish && widget->isWindow() && isOfTheUnit(widget)) {
        widget->setPalette(unitPalette);
    } else if (event->type() == QEvent::MouseButtonPress && isOfTheUnit(widget)) {
        for (LogView *view : {journalView, traceView})
            view->markNext();
    }
    return false;
}

} // namespace bench
