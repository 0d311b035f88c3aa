#include "operatorwindow.h"

#include "dialoguedock.h"
#include "faultsdock.h"
#include "flashdock.h"
#include "logdocks.h"
#include "logview.h"
#include "look.h"
#include "receiverdock.h"
#include "registersdock.h"
#include "skydock.h"
#include "unitdock.h"

#include <QApplication>
#include <QClipboard>
#include <QDockWidget>
#include <QGuiApplication>
#include <QLabel>
#include <QLayout>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>

namespace bench {

namespace {

constexpr int kLayoutVersion = 2; // another set of docks is another one
const QString kLayoutKey = QStringLiteral("window/layout");
const QString kGeometryKey = QStringLiteral("window/geometry");
constexpr int kMessageMilliseconds = 10000;
constexpr QSize kSize(1440, 900);   // of the window when nobody has moved anything, at the least
constexpr QSize kSmall(1280, 720);  // of one on a small display
constexpr QSize kLarge(1680, 1050); // and the most that one takes of a large one
constexpr QSize kLeastDock(200, 100);
constexpr int kMargin = 12; // what frames and bars take, about

// Outside of the unit's pixels, and in words: nobody takes this for a unit.
QLabel *makeSign(const QString &text)
{
    auto *sign = new QLabel(QStringLiteral("\u25CF ") + text);
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
    connect(&calls, &Calls::failed, this, &OperatorWindow::tell);
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
    auto *flash = new FlashDock(&calls, parts.pictures);
    addDock(QStringLiteral("Flash"), flash, Qt::RightDockWidgetArea);
    addDock(QStringLiteral("Sky"), new SkyDock(&calls), Qt::RightDockWidgetArea);
    dialogueView = makeDialogueView(&calls, parts.pictures);
    addDock(QStringLiteral("Dialogue"), dialogueView, Qt::BottomDockWidgetArea);
    journalView = makeJournalView(&calls, parts.pictures);
    addDock(QStringLiteral("Journal"), journalView, Qt::BottomDockWidgetArea);
    traceView = makeTraceView(&calls, parts.pictures);
    addDock(QStringLiteral("Trace"), traceView, Qt::BottomDockWidgetArea);
    addDock(QStringLiteral("Faults"), new FaultsDock(&calls), Qt::BottomDockWidgetArea);
    addDock(QStringLiteral("Registers"), new RegistersDock(&calls), Qt::BottomDockWidgetArea);
    for (const FurtherDock &further : qAsConst(parts.further))
        addDock(further.title, further.content, further.area);
    for (LogView *view : {dialogueView, journalView, traceView})
        connect(view, &LogView::told, this, &OperatorWindow::tell);
    connect(flash, &FlashDock::told, this, &OperatorWindow::tell);
    connect(dialogueView, &LogView::chosen, flash, [flash](const LogRow &row) {
        if (row.place >= 0)
            flash->showPlace(quint32(row.place));
    });
}

QDockWidget *OperatorWindow::addDock(const QString &title, QWidget *content,
                                     Qt::DockWidgetArea area)
{
    auto *dock = new QDockWidget(title);
    dock->setObjectName(QStringLiteral("dock_") + title.toLower());
    content->setMinimumSize(kLeastDock);
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
    bench->addAction(QStringLiteral("Take pictures of window and docks"), this,
                     &OperatorWindow::takeDocks, QKeySequence(Qt::SHIFT + Qt::Key_F5));
    bench->addAction(QStringLiteral("Search"), this, &OperatorWindow::search, QKeySequence::Find);
    bench->addAction(
        QStringLiteral("Next that stands out"), this, [this] { jump(true); },
        QKeySequence(Qt::Key_F3));
    bench->addAction(
        QStringLiteral("The one before"), this, [this] { jump(false); },
        QKeySequence(Qt::SHIFT + Qt::Key_F3));
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
    menuBar()->setCornerWidget(makeSign(parts.sign));
    statusBar();
}

QDockWidget *OperatorWindow::dock(const char *name) const
{
    return findChild<QDockWidget *>(QStringLiteral("dock_") + QLatin1String(name));
}

// In tabs, the first one in front.
void OperatorWindow::stack(const QVector<QDockWidget *> &together)
{
    for (int i = 1; i < together.size(); ++i)
        tabifyDockWidget(together.at(i - 1), together.at(i));
    together.first()->raise();
}

// As it is when nobody has moved anything: logs in tabs beneath the screen; beside it receiver and
// flash one above the other. On a small display everything is in tabs beside the screen, which is
// then seen whole all the same.
void OperatorWindow::arrange()
{
    const QSize room = QGuiApplication::primaryScreen()->availableSize();
    const bool small = room.width() < kSize.width() || room.height() < kSize.height();
    const QSize size = small ? kSmall : kLarge.boundedTo(room);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    QVector<QDockWidget *> bottom;
    for (QDockWidget *each : qAsConst(docks)) {
        if (dockWidgetArea(each) == Qt::BottomDockWidgetArea)
            bottom << each;
    }
    if (small) {
        stack(QVector<QDockWidget *>{dock("receiver"), dock("flash"), dock("sky"), dock("unit")}
              + bottom);
    } else {
        stack(bottom);
        splitDockWidget(dock("receiver"), dock("flash"), Qt::Vertical);
        stack({dock("receiver"), dock("unit")});
        stack({dock("flash"), dock("sky")});
    }
    layout()->activate(); // tabs need less room than what they were made of
    resize(size);
    resizeDocks({dock("receiver")}, {size.width() - parts.screen->width() - 2 * kMargin},
                Qt::Horizontal);
    if (!small)
        resizeDocks({bottom.first()}, {size.height() - parts.screen->height() - 6 * kMargin},
                    Qt::Vertical);
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

// The log with the keyboard, else the one that is in front.
LogView *OperatorWindow::frontLog() const
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
    return front;
}

void OperatorWindow::search()
{
    frontLog()->search();
}

void OperatorWindow::jump(bool forward)
{
    frontLog()->jump(forward);
}

void OperatorWindow::tell(const QString &text)
{
    statusBar()->showMessage(text, kMessageMilliseconds);
}

void OperatorWindow::takePicture()
{
    if (parts.pictures.isEmpty()) {
        const auto take = [this](const QJsonObject &answer) {
            const QByteArray png = QByteArray::fromBase64(answer["base64"].toString().toLatin1());
            QGuiApplication::clipboard()->setImage(QImage::fromData(png, "PNG"));
            tell(QStringLiteral("The picture is in the clipboard."));
        };
        calls.make(QStringLiteral("ui.screenshot"), {}, this, take);
        return;
    }
    const QString file = QStringLiteral("%1/unit-%2.png").arg(parts.pictures).arg(++pictures);
    calls.make(QStringLiteral("ui.screenshot"), {{"file", file}}, this,
               [this, file](const QJsonObject &) { tell(file); });
}

// The window as it stands, then each dock brought to the front: for documents and colleagues.
void OperatorWindow::takeDocks()
{
    if (parts.pictures.isEmpty()) {
        QGuiApplication::clipboard()->setPixmap(grab());
        tell(QStringLiteral("The window's picture is in the clipboard; --pictures DIR takes the "
                            "docks', too."));
        return;
    }
    bool whole = save(grab(), QStringLiteral("window"));
    for (QDockWidget *each : qAsConst(docks)) {
        each->show();
        each->raise();
        QCoreApplication::sendPostedEvents();
        whole = save(each->widget()->grab(), each->objectName()) && whole;
    }
    if (whole)
        tell(QStringLiteral("%1/window.png, %1/dock_*.png").arg(parts.pictures));
}

bool OperatorWindow::save(const QPixmap &picture, const QString &name)
{
    const QString file = QStringLiteral("%1/%2.png").arg(parts.pictures, name);
    if (picture.save(file, "PNG"))
        return true;
    tell(QStringLiteral("cannot write %1").arg(file));
    return false;
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
