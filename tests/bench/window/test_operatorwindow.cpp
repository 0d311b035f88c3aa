#include "tests/support/unittest.h"

#include "bench/host/host.h"
#include "bench/monitor/monitor.h"
#include "bench/receiver/receiver.h"
#include "bench/serial/resetprompt.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"
#include "bench/unit/usbstate.h"
#include "bench/window/flashmap.h"
#include "bench/window/logview.h"
#include "bench/window/operatorwindow.h"
#include "bench/window/receiverdock.h"
#include "bench/window/skyplot.h"
#include "bench/window/unitmodel.h"
#include "gpsservice/gpsservice.h"
#include "tests/bench/monitor/calls.h"
#include "tests/bench/receiver/rawhost.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeWidget>

// Every dock is used as a person would, and compared with the model and with what scripts are told.
class TestOperatorWindow : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void screenKeepsItsPixels();
    void windowLeavesTheScreenToTheHost();
    void layoutIsKeptAndReset();
    void shortcutsShowDocks();
    void pictureGoesToTheFolder();
    void pictureWithoutFolderGoesToTheClipboard();
    void refusedCallIsToldInTheStatusBar();

    void homeLeadsToTheMenu();
    void backAndKeysShowTheAnswer();
    void choicesReachTheUnit();
    void disksArePluggedAndPulled_data();
    void disksArePluggedAndPulled();
    void folderIsDroppedOntoAPort();
    void docksFollowWhoeverChangesTheUnit();
    void everyPathCanBeEdited();

    void journalHidesDrawing();
    void journalIsSearchedFilteredAndCopied();
    void logsAreSaved();
    void pressOnTheScreenLeadsToWhatItCaused();
    void traceGrows();

    void receiverIsShownWhereItStands();
    void dialogueShowsBothDirections();
    void unusualStandsOutInTheDialogue();
    void settingsAreATable();
    void flashFillsWhilePacketsLand();
    void flashShowsWhatDiffersFromThePackage();
    void flashIsSavedErasedAndLoaded();
    void satellitesAreDraggedAndSectorsCovered();
    void antennaSpeedAndColdStartReachTheReceiver();
    void windowIsPaintedTwentyTimesASecond();
    void recordIsShownByItsOwnCalls();
    void picturesOfAllDocks();
    void realReceiverIsSaidToBeOne();
    void faultsAreArmedAndCounted();
    void faultIsMadeByTheForm();
    void registersAreWrittenAndFollowed();
    void resetByHandIsAskedFor();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *found = window->findChild<Widget *>(QLatin1String(name));
        if (found == nullptr)
            qFatal("no %s", name);
        return found;
    }
    void press(const char *name) const
    {
        auto *button = find<QPushButton>(name);
        show(button);
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // A widget of a dock that lies behind another takes no mouse.
    static void show(QWidget *widget)
    {
        for (QWidget *parent = widget; parent != nullptr; parent = parent->parentWidget()) {
            if (auto *dock = qobject_cast<QDockWidget *>(parent)) {
                dock->show();
                dock->raise();
            } else if (auto *tabs = qobject_cast<QTabWidget *>(parent)) {
                for (int tab = 0; tab < tabs->count(); ++tab) {
                    if (tabs->widget(tab)->isAncestorOf(widget) || tabs->widget(tab) == widget)
                        tabs->setCurrentIndex(tab);
                }
            }
        }
        QTRY_VERIFY(widget->isVisible());
    }
    void tick(const char *name) const
    {
        auto *box = find<QCheckBox>(name);
        show(box);
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    }
    void makeWindow(bench::WindowParts parts = {});
    QStringList shown(const char *table, int column) const
    {
        const QAbstractItemModel *model = find<QTableView>(table)->model();
        QStringList cells;
        for (int row = 0; row < model->rowCount(); ++row)
            cells << model->index(row, column).data().toString();
        return cells;
    }
    QString lastShown(const char *table, int column) const
    {
        const QStringList cells = shown(table, column);
        return cells.isEmpty() ? QString() : cells.last();
    }
    QJsonValue value(const QString &path) const
    {
        return tests::resultOf(dispatcher.get(), "unit.get",
                               QJsonDocument(QJsonObject{{"path", path}}).toJson())
            .value("value");
    }

    std::unique_ptr<bench::Host> host;
    std::unique_ptr<bench::Receiver> receiver;
    std::unique_ptr<bench::UnitDocument> document;
    std::unique_ptr<bench::Dispatcher> dispatcher;
    std::unique_ptr<bench::OperatorWindow> window;
};

void TestOperatorWindow::init()
{
    UnitTest::init();
    host = std::make_unique<bench::Host>();
    QString error;
    QVERIFY2(host->load(QStringLiteral(TESTMODE_PLUGIN), &error), qPrintable(error));
    host->home();
    receiver = std::make_unique<bench::Receiver>();
    QVERIFY2(!receiver->open(&error).isEmpty(), qPrintable(error));
    document = std::make_unique<bench::UnitDocument>(bench::pathsOf(&bench::unit()));
    bench::Bench parts;
    parts.host = host.get();
    parts.receiver = receiver.get();
    parts.trace = &trace();
    dispatcher = bench::makeDispatcher(parts, document.get());
    makeWindow();
}

void TestOperatorWindow::cleanup()
{
    window.reset();
    dispatcher.reset();
    document.reset();
    receiver.reset();
    host.reset();
    UnitTest::cleanup();
}

void TestOperatorWindow::makeWindow(bench::WindowParts parts)
{
    window.reset();
    parts.dispatcher = dispatcher.get();
    parts.screen = host->screen();
    window = std::make_unique<bench::OperatorWindow>(parts);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void TestOperatorWindow::screenKeepsItsPixels()
{
    window.reset();
    host->screen()->show();
    const QImage before = host->picture();
    host->screen()->hide();
    makeWindow();
    QCOMPARE(host->screen()->size(), QSize(1024, 600));
    QCOMPARE(host->picture(), before);
    auto *sign = find<QLabel>("simulated");
    QVERIFY(sign->text().contains("SIMULATED"));
    QVERIFY(!host->screen()->isAncestorOf(sign));

    // What the unit opens in windows of its own has the unit's look, too.
    QMessageBox box(host->mainWidget());
    box.ensurePolished();
    QCOMPARE(box.palette().color(QPalette::Window),
             host->screen()->palette().color(QPalette::Window));
    QVERIFY(window->palette().color(QPalette::Window).lightness()
            < box.palette().color(QPalette::Window).lightness());
}

void TestOperatorWindow::windowLeavesTheScreenToTheHost()
{
    const QPointer<QWidget> screen = host->screen();
    QCOMPARE(screen->window(), static_cast<QWidget *>(window.get()));
    QVERIFY(screen->isVisible());
    window.reset();
    QVERIFY(screen);
    QCOMPARE(host->screen(), screen.data());
}

void TestOperatorWindow::layoutIsKeptAndReset()
{
    const QTemporaryDir folder;
    bench::WindowParts parts;
    parts.settings = folder.filePath("window.ini");
    makeWindow(parts);
    const Qt::DockWidgetArea first = window->dockWidgetArea(find<QDockWidget>("dock_journal"));
    find<QDockWidget>("dock_trace")->hide();
    window->addDockWidget(Qt::LeftDockWidgetArea, find<QDockWidget>("dock_journal"));
    window->close();
    makeWindow(parts);
    QVERIFY(find<QDockWidget>("dock_trace")->isHidden());
    QCOMPARE(window->dockWidgetArea(find<QDockWidget>("dock_journal")), Qt::LeftDockWidgetArea);

    auto *reset = find<QAction>("reset_layout");
    reset->trigger();
    QVERIFY(!find<QDockWidget>("dock_trace")->isHidden());
    QCOMPARE(window->dockWidgetArea(find<QDockWidget>("dock_journal")), first);
}

void TestOperatorWindow::shortcutsShowDocks()
{
    auto *unitDock = find<QDockWidget>("dock_unit");
    unitDock->hide();
    window->activateWindow();
    QTest::keyClick(window.get(), Qt::Key_1, Qt::ControlModifier);
    QTRY_VERIFY(unitDock->isVisible());
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
    QTRY_VERIFY(qobject_cast<QLineEdit *>(window->focusWidget()) != nullptr);
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QVERIFY(window->isVisible());
}

void TestOperatorWindow::pictureGoesToTheFolder()
{
    const QTemporaryDir folder;
    bench::WindowParts parts;
    parts.pictures = folder.path();
    makeWindow(parts);
    QTest::keyClick(window.get(), Qt::Key_F5);
    QTRY_COMPARE(QImage(folder.filePath("unit-1.png")).size(), QSize(1024, 600));
}

void TestOperatorWindow::pictureWithoutFolderGoesToTheClipboard()
{
    QTest::keyClick(window.get(), Qt::Key_F5);
    QTRY_COMPARE(QApplication::clipboard()->image().size(), QSize(1024, 600));
}

void TestOperatorWindow::refusedCallIsToldInTheStatusBar()
{
    auto *table = find<QTableView>("unit_table");
    find<QLineEdit>("unit_search")->setText("usb.function");
    QCOMPARE(table->model()->rowCount(), 1);
    table->model()->setData(table->model()->index(0, bench::UnitModel::Value), "5");
    QTRY_COMPARE(window->statusBar()->currentMessage(),
                 QString("unit.set: usb.function: wanted is one of 6, 7"));
    QCOMPARE(table->model()->index(0, bench::UnitModel::Value).data().toString(), QString("7"));
}

void TestOperatorWindow::homeLeadsToTheMenu()
{
    auto *menu = host->screen()->findChild<QWidget *>("testEntryWidget");
    host->screen()->findChild<QPushButton *>("key_tools")->click();
    QVERIFY(!menu->isVisible());
    press("panel_home");
    QTRY_VERIFY(menu->isVisible());
}

void TestOperatorWindow::backAndKeysShowTheAnswer()
{
    const auto *result = find<QLabel>("panel_result");
    press("panel_back");
    QTRY_COMPARE(result->text(), QString("backEvent answered 1"));
    find<QSpinBox>("panel_key_code")->setValue(27);
    press("panel_send_key");
    QTRY_COMPARE(result->text(), QString("keyEvent answered -1 to key 27"));
    QCOMPARE(bench::journal().texts().filter("framework."),
             QStringList({"framework.backEvent(1)", "framework.keyEvent(27, -1)"}));
}

void TestOperatorWindow::choicesReachTheUnit()
{
    QSignalSpy found(gpsservice::GpsService::instance(),
                     &gpsservice::GpsService::modualApatationCompelete);
    auto *antenna = find<QComboBox>("panel_antenna");
    show(antenna);
    QTest::keyClick(antenna, Qt::Key_End);
    QCOMPARE(bench::unit().gnss.antenna, QString("Short"));
    find<QDoubleSpinBox>("panel_module_kind")->setValue(2);
    QCOMPARE(bench::unit().gnss.moduleKind, 2);
    QCOMPARE(found, QList<QVariantList>({{2}}));
    tick("panel_sky");
    QVERIFY(bench::unit().gnss.followsSky);
    tick("panel_sky");
    QVERIFY(!bench::unit().gnss.followsSky);
    tick("panel_watchdog");
    QVERIFY(!bench::unit().system.watchdogEnabled);
    QTest::keyClick(find<QComboBox>("panel_certification"), Qt::Key_End);
    QCOMPARE(value("usb.certification"), QJsonValue(84));
}

void TestOperatorWindow::disksArePluggedAndPulled_data()
{
    QTest::addColumn<int>("port");
    QTest::newRow("port 0") << 0;
    QTest::newRow("port 1") << 1;
}

void TestOperatorWindow::disksArePluggedAndPulled()
{
    QFETCH(int, port);
    const char *disk = port == 0 ? "panel_usb0" : "panel_usb1";
    tick(disk);
    QVERIFY(bench::unit().usb.ports[port].disk);
    QCOMPARE(bench::unit().usb.ports[port].path, QString("/media/usb%1").arg(port));
    QVERIFY(!bench::unit().usb.ports[1 - port].disk);
    tick(disk);
    QVERIFY(!bench::unit().usb.ports[port].disk);
}

void TestOperatorWindow::folderIsDroppedOntoAPort()
{
    const QTemporaryDir folder;
    auto *box = find<QCheckBox>("panel_usb1");
    QMimeData urls;
    urls.setUrls({QUrl::fromLocalFile(folder.path())});
    QDragEnterEvent enter(QPoint(3, 3), Qt::CopyAction, &urls, Qt::LeftButton, {});
    QApplication::sendEvent(box, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPoint(3, 3), Qt::CopyAction, &urls, Qt::LeftButton, {});
    QApplication::sendEvent(box, &drop);
    QVERIFY(bench::unit().usb.ports[1].disk);
    QCOMPARE(bench::unit().usb.ports[1].path, folder.path());
    QTRY_VERIFY(box->isChecked());
    QVERIFY(box->text().contains(folder.path()));
}

void TestOperatorWindow::docksFollowWhoeverChangesTheUnit()
{
    QSignalSpy announced(gpsservice::GpsService::instance(),
                         &gpsservice::GpsService::modualApatationCompelete);
    tests::resultOf(dispatcher.get(), "unit.set", "{'path': 'gnss.sky', 'value': true}");
    QTRY_VERIFY(find<QCheckBox>("panel_sky")->isChecked());
    tests::resultOf(dispatcher.get(), "unit.set",
                    "{'path': 'gnss', 'value': {'module_kind': 3, 'antenna': 'Short'}}");
    QTRY_COMPARE(find<QDoubleSpinBox>("panel_module_kind")->value(), 3.0);
    QTRY_COMPARE(find<QComboBox>("panel_antenna")->currentText(), QString("antenna short"));
    QVERIFY2(announced.isEmpty(), "a service has spoken though nobody asked");
    bench::unit().change()->usb.ports[1].disk = true;
    QTRY_VERIFY(find<QCheckBox>("panel_usb1")->isChecked());
    bench::unit().powerOn();
    QTRY_VERIFY(!find<QCheckBox>("panel_usb1")->isChecked());
    QTRY_VERIFY(!find<QCheckBox>("panel_sky")->isChecked());
}

// The table has every path that scripts have; a value is written by typing into it.
void TestOperatorWindow::everyPathCanBeEdited()
{
    auto *table = find<QTableView>("unit_table");
    show(table);
    QStringList paths;
    for (const bench::UnitDocument::Entry &entry : document->entries())
        paths << entry.path;
    QCOMPARE(shown("unit_table", bench::UnitModel::Path), paths);

    QTest::keyClicks(find<QLineEdit>("unit_search"), "settings.cache");
    const QModelIndex cell = table->model()->index(0, bench::UnitModel::Value);
    QCOMPARE(table->model()->index(0, 0).data().toString(), QString("settings.cache"));
    table->scrollTo(cell);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(cell).center());
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(cell).center());
    auto *editor = table->viewport()->findChild<QLineEdit *>();
    QVERIFY(editor != nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "{\"KEY\":7}");
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(bench::unit().settings.cache.value("KEY").value, QVariant(7));
    QTRY_COMPARE(cell.data().toString(), QString("{\"KEY\":7}"));
    QVERIFY(cell.data(Qt::FontRole).value<QFont>().underline());
    QTRY_VERIFY(!cell.data(Qt::FontRole).value<QFont>().underline());
}

void TestOperatorWindow::journalHidesDrawing()
{
    bench::journal().call("ColorGroup", "setFontColor", {"x", 20, 0});
    bench::journal().call("McuService", "setResetSystem", {1});
    QTRY_COMPARE(lastShown("journal_table", 3), QString("setResetSystem"));
    QVERIFY(!shown("journal_table", 2).contains("ColorGroup"));
    tick("journal_quiet");
    QVERIFY(shown("journal_table", 2).contains("ColorGroup"));
    QCOMPARE(shown("journal_table", 0).size(), bench::journal().entries().size());
}

void TestOperatorWindow::journalIsSearchedFilteredAndCopied()
{
    bench::journal().call("Here", "first", {1});
    bench::journal().call("There", "second");
    QTRY_COMPARE(lastShown("journal_table", 3), QString("second"));
    auto *search = find<QLineEdit>("journal_search");
    show(search);
    QTest::keyClicks(search, "FIRST");
    QCOMPARE(shown("journal_table", 2), QStringList("Here"));
    search->clear();
    find<QComboBox>("journal_kind")->setCurrentText("There");
    QCOMPARE(shown("journal_table", 3), QStringList("second"));

    auto *table = find<QTableView>("journal_table");
    table->setFocus();
    table->selectAll();
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    QTRY_VERIFY2(QApplication::clipboard()->text().endsWith("\tThere\tsecond\t\n"),
                 qPrintable(QApplication::clipboard()->text()));
}

void TestOperatorWindow::logsAreSaved()
{
    const QTemporaryDir folder;
    bench::WindowParts parts;
    parts.pictures = folder.path();
    makeWindow(parts);
    bench::journal().call("Here", "first", {1});
    QTRY_COMPARE(lastShown("journal_table", 3), QString("first"));
    press("journal_save");
    QFile file(folder.filePath("journal-1.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().endsWith("\tHere\tfirst\t1\n"));
    QCOMPARE(window->statusBar()->currentMessage(), file.fileName());
}

void TestOperatorWindow::pressOnTheScreenLeadsToWhatItCaused()
{
    for (int i = 0; i < 200; ++i)
        bench::journal().call("Before", "call");
    QTRY_COMPARE(lastShown("journal_table", 3), QString("call"));
    auto *tools = host->screen()->findChild<QPushButton *>("key_tools");
    QTest::mouseClick(tools, Qt::LeftButton);
    auto *table = find<QTableView>("journal_table");
    QTRY_VERIFY(table->selectionModel()->hasSelection());
    const int row = table->selectionModel()->selectedRows().first().row();
    QCOMPARE(table->model()->index(row - 1, 2).data().toString(), QString("Before"));
    QVERIFY(table->model()->index(row, 2).data().toString() != "Before");
}

void TestOperatorWindow::traceGrows()
{
    qDebug().noquote() << "one more line";
    QTRY_COMPARE(lastShown("trace_table", 1), QString("one more line"));
    QCOMPARE(shown("trace_table", 1).size(), trace().lines().size());
}

void TestOperatorWindow::receiverIsShownWhereItStands()
{
    const auto *phase = find<QLabel>("panel_receiver_phase");
    QTRY_COMPARE(phase->text(), QString("application"));
    tests::RawHost line(receiver->path());
    receiver->setReset(true);
    QTRY_COMPARE(phase->text(), QString("reset"));
    receiver->setReset(false);
    QTRY_VERIFY(phase->text().startsWith("boot-rom, "));
    tests::resultOf(dispatcher.get(), "receiver.set", "{'line_rate':false}");
    QVERIFY(line.connectToAgent());
    QTRY_COMPARE(find<QLabel>("panel_receiver_line")->text(), QString("921600 asked, 921600 seen"));
    QTRY_VERIFY(phase->text().startsWith("stage-2-ready"));
    const auto *ladder = find<QTableWidget>("panel_receiver_ladder");
    QStringList phases;
    for (int row = 0; row < ladder->rowCount(); ++row)
        phases << ladder->item(row, 0)->text();
    QCOMPARE(phases.last(), QString::fromUtf8("◐ stage-2-ready"));
    QVERIFY(phases.contains(QString::fromUtf8("● stage-1")));
    bench::journal().call("PlatformService", "setGPSResetGPIO", {true});
    QTRY_COMPARE(find<QLabel>("panel_receiver_reset")->text(), QString("asserted"));
}

void TestOperatorWindow::dialogueShowsBothDirections()
{
    tests::resultOf(dispatcher.get(), "receiver.set", "{'line_rate':false}");
    tests::RawHost line(receiver->path());
    receiver->pulseReset();
    QVERIFY(line.connectToAgent());
    QVERIFY(line.writeImage(0x08003000, tests::pattern(5000, 1)));
    // Packets are folded into the frame that announces them, answers into their packet.
    QTRY_VERIFY(shown("dialogue_table", 5).contains("image-sum"));
    QVERIFY(!shown("dialogue_table", 5).contains("packet"));
    auto *table = find<QTableView>("dialogue_table");
    show(table);
    const int image = shown("dialogue_table", 5).indexOf("download");
    const auto open = [table](int row) {
        table->scrollTo(table->model()->index(row, 0));
        const QPoint at = table->visualRect(table->model()->index(row, 2)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, at);
    };
    QVERIFY(shown("dialogue_table", 6).at(image).endsWith("(2)"));
    open(image);
    QCOMPARE(shown("dialogue_table", 5).count("packet"), 2);
    const int packet = image + 3; // behind the two answers to the announcement
    QVERIFY(shown("dialogue_table", 6).at(packet).contains("packet 1 of 2 of image 1 (2)"));
    open(packet);
    QCOMPARE(shown("dialogue_table", 6).at(packet + 1), QString("packet received"));
    QCOMPARE(shown("dialogue_table", 5).count("packet"), 4);
    open(packet);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualRect(table->model()->index(packet + 1, 2)).center());
    QCOMPARE(find<bench::FlashMap>("flash_map")->shown(), 4); // 0x08004000
    open(image);
    QVERIFY(!shown("dialogue_table", 5).contains("packet"));
    find<QComboBox>("dialogue_kind")->setCurrentText(QString::fromUtf8("receiver → host"));
    QStringList directions = shown("dialogue_table", 3);
    QVERIFY(!directions.isEmpty());
    directions.removeDuplicates();
    QCOMPARE(directions.size(), 1);
    find<QComboBox>("dialogue_topic")->setCurrentText("flash-id");
    QStringList steps = shown("dialogue_table", 5);
    steps.removeDuplicates();
    QCOMPARE(steps, QStringList("flash-id"));
    find<QComboBox>("dialogue_topic")->setCurrentIndex(0);
    QTest::keyClicks(find<QLineEdit>("dialogue_search"), "PACKET WRITTEN");
    QCOMPARE(shown("dialogue_table", 6), QStringList({"packet written", "packet written"}));
}

// What was unexpected and the faults that struck are jumped between, and can be all that is shown.
void TestOperatorWindow::unusualStandsOutInTheDialogue()
{
    tests::resultOf(dispatcher.get(), "receiver.faults",
                    "{'set':[{'kind':'late','step':'sync','index':0,'value':1}]}");
    tests::RawHost line(receiver->path());
    receiver->pulseReset();
    QVERIFY(line.synchronise());
    line.put("\x42");
    auto *table = find<QTableView>("dialogue_table");
    show(table);
    QTRY_VERIFY2(shown("dialogue_table", 3).contains(QString::fromUtf8("⚠ unexpected")),
                 qPrintable(shown("dialogue_table", 6).join('\n')));
    table->setFocus();
    table->selectRow(0);
    const auto here = [table] {
        return table->model()->index(table->currentIndex().row(), 6).data().toString();
    };
    QTest::keyClick(table, Qt::Key_F3);
    QTRY_VERIFY(here().startsWith("fault: "));
    QTest::keyClick(table, Qt::Key_F3);
    QTRY_VERIFY2(here().startsWith("0x42, expected "), qPrintable(here()));
    QTest::keyClick(table, Qt::Key_F3, Qt::ShiftModifier);
    QTRY_VERIFY(here().startsWith("fault: "));
    tick("dialogue_loud");
    QCOMPARE(shown("dialogue_table", 6).size(), 2);
    QTRY_VERIFY(find<QLabel>("panel_receiver_anomalies")->text().contains("0x42, expected "));
}

void TestOperatorWindow::settingsAreATable()
{
    auto *table = find<QTableView>("stores_table");
    show(table);
    find<QComboBox>("stores_store")->setCurrentText("func");
    QTest::keyClicks(find<QLineEdit>("stores_key"), "A.KEY");
    QTest::keyClicks(find<QLineEdit>("stores_value"), "12");
    press("stores_set");
    QCOMPARE(bench::unit().settings.func.value("A.KEY").value, QVariant(12));
    tests::resultOf(dispatcher.get(), "unit.set",
                    "{'path':'settings.cache','value':{'TEST_MODE':3}}");
    QTRY_COMPARE(shown("stores_table", 1), QStringList({"TEST_MODE", "A.KEY"}));
    QCOMPARE(shown("stores_table", 2), QStringList({"3", "12"}));

    table->scrollTo(table->model()->index(1, 2));
    const QPoint at = table->visualRect(table->model()->index(1, 2)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, at);
    auto *editor = table->viewport()->findChild<QLineEdit *>();
    QVERIFY(editor != nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "words");
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(bench::unit().settings.func.value("A.KEY").value, QVariant("words"));
    QTRY_COMPARE(shown("stores_table", 2), QStringList({"3", "words"}));
    table->setFocus();
    table->setCurrentIndex(table->model()->index(0, 1));
    QTest::keyClick(table, Qt::Key_Delete);
    QVERIFY(bench::unit().settings.cache.isEmpty());
}

void TestOperatorWindow::flashFillsWhilePacketsLand()
{
    tests::resultOf(dispatcher.get(), "receiver.set", "{'line_rate':false}");
    tests::RawHost line(receiver->path());
    receiver->pulseReset();
    QVERIFY(line.connectToAgent());
    auto *map = find<bench::FlashMap>("flash_map");
    show(map);
    QVERIFY(map->sector(3).erased);
    QVERIFY(line.writeImage(0x08003000, tests::pattern(5000, 1)));
    QTRY_COMPARE(map->sector(4).image, 1);
    QVERIFY(line.writeImage(0x08004000, tests::pattern(4096, 2)));
    QTRY_COMPARE(map->sector(4).image, 2);
    QTRY_COMPARE(map->sector(4).times, 2); // an overlap
    QCOMPARE(map->sector(3).times, 1);
    QTRY_VERIFY(find<QLabel>("flash_legend")->text().contains("twice:&nbsp;1"));

    // what is under the pointer
    QMouseEvent over(QEvent::MouseMove, map->cellOf(3).center(), Qt::NoButton, Qt::NoButton, {});
    QApplication::sendEvent(map, &over);
    const QByteArray bytes = receiver->flash(0x08003000, 8);
    QTRY_VERIFY(find<QPlainTextEdit>("flash_hex")
                    ->toPlainText()
                    .startsWith("08003000  " + QString(bytes.toHex(' '))));
    QTest::mouseClick(map, Qt::LeftButton, {}, map->cellOf(4).center());
    QTRY_VERIFY(find<QLabel>("flash_place")->text().startsWith("08004000, image 2, written 2 x"));
    QTest::keyClick(map, Qt::Key_Down);
    QTRY_VERIFY(find<QLabel>("flash_place")->text().startsWith("08044000, erased"));
}

void TestOperatorWindow::flashShowsWhatDiffersFromThePackage()
{
    const QTemporaryDir folder;
    QFile table(folder.filePath("partition_table.bin"));
    QVERIFY(table.open(QIODevice::WriteOnly));
    table.write("\x01\x02");
    table.close();
    QByteArray whole(4 * 1024 * 1024, '\xFF');
    whole.replace(0, 2, "\x01\x03");
    QVERIFY(receiver->setFlash(whole));
    tests::resultOf(dispatcher.get(), "unit.set",
                    "{'path':'update.folder','value':'" + folder.path().toUtf8() + "'}");
    const auto *map = find<bench::FlashMap>("flash_map");
    QTRY_VERIFY(map->sector(0).differs);
    QVERIFY(!map->sector(1).differs);
    QTRY_VERIFY(find<QLabel>("flash_legend")->text().contains("package's:&nbsp;1"));
    show(find<bench::FlashMap>("flash_map"));
    QTest::mouseClick(find<bench::FlashMap>("flash_map"), Qt::LeftButton, {},
                      map->cellOf(0).center());
    QTRY_VERIFY(find<QPlainTextEdit>("flash_hex")
                    ->toPlainText()
                    .contains(QString::fromUtf8("≠ wanted     02")));
}

void TestOperatorWindow::flashIsSavedErasedAndLoaded()
{
    const QTemporaryDir folder;
    bench::WindowParts parts;
    parts.pictures = folder.path();
    makeWindow(parts);
    const QByteArray whole = tests::pattern(4 * 1024 * 1024, 3);
    QVERIFY(receiver->setFlash(whole));
    press("flash_save");
    QCOMPARE(window->statusBar()->currentMessage(), folder.filePath("flash-1.bin"));
    press("flash_erase");
    QCOMPARE(receiver->flash(0x08000000, 2), QByteArray("\xFF\xFF"));
    QMimeData urls;
    urls.setUrls({QUrl::fromLocalFile(folder.filePath("flash-1.bin"))});
    auto *map = find<bench::FlashMap>("flash_map");
    QDragEnterEvent enter(QPoint(3, 3), Qt::CopyAction, &urls, Qt::LeftButton, {});
    QApplication::sendEvent(map, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPoint(3, 3), Qt::CopyAction, &urls, Qt::LeftButton, {});
    QApplication::sendEvent(map, &drop);
    QCOMPARE(receiver->wholeFlash(), whole);
    QTRY_VERIFY(!map->sector(1000).erased);

    press("flash_load"); // by the dialogue
    auto *dialog = find<QFileDialog>("flash_file");
    QVERIFY(dialog->isVisible());
    dialog->reject();
}

void TestOperatorWindow::satellitesAreDraggedAndSectorsCovered()
{
    auto *plot = find<bench::SkyPlot>("sky_plot");
    show(plot);
    tests::resultOf(dispatcher.get(), "unit.set",
                    "{'path':'gnss.satellites','value':[{'number':7,'in_use':1,'elevation':30,"
                    "'azimuth':90,'signal':40}]}");
    const auto drag = [plot](const QPoint &from, const QPoint &to) {
        QTest::mousePress(plot, Qt::LeftButton, {}, from);
        QTest::mouseMove(plot, (from + to) / 2);
        QTest::mouseRelease(plot, Qt::LeftButton, {}, to);
    };
    const auto at = [plot](int elevation, int azimuth) {
        return plot->placeOf(elevation, azimuth).toPoint();
    };
    QTRY_VERIFY(find<QLabel>("sky_words")->text().contains("1 used, 1 seen"));
    drag(at(30, 90), at(60, 180));
    QTRY_VERIFY(qAbs(bench::unit().gnss.satellites.at(0).azimuth - 180) <= 2);
    QVERIFY(qAbs(bench::unit().gnss.satellites.at(0).elevation - 60) <= 2);
    QCOMPARE(bench::unit().gnss.satellites.at(0).signal, 40);

    // A sky that moves holds the satellite until it is let go.
    bench::unit().change()->gnss.followsSky = true;
    QTRY_VERIFY(find<QCheckBox>("panel_sky")->isChecked());
    drag(at(60, 180), at(20, 270));
    QTRY_COMPARE(value("gnss.sky_held").toArray().size(), 1);
    QTRY_VERIFY(qAbs(value("gnss.sky_held")[0]["azimuth"].toInt() - 270) <= 2);
    QTRY_VERIFY(plot->holds(7));
    QTest::mouseClick(plot, Qt::RightButton, {}, at(20, 270));
    QTRY_COMPARE(value("gnss.sky_held").toArray().size(), 0);

    drag(at(5, 10), at(40, 80)); // a building in the north-east, 40 degrees high
    QTRY_COMPARE(value("gnss.sky_covered").toArray().size(), 1);
    const QJsonObject sector = value("gnss.sky_covered")[0].toObject();
    QVERIFY(qAbs(sector["from"].toInt() - 10) <= 2);
    QVERIFY(qAbs(sector["to"].toInt() - 80) <= 2);
    QVERIFY(qAbs(sector["elevation"].toInt() - 40) <= 2);
    press("sky_clear");
    QCOMPARE(value("gnss.sky_covered"), QJsonValue(QJsonArray()));
}

void TestOperatorWindow::antennaSpeedAndColdStartReachTheReceiver()
{
    auto *antenna = find<QComboBox>("panel_antenna");
    show(antenna);
    QTest::keyClick(antenna, Qt::Key_End);
    QCOMPARE(value("gnss.antenna"), QJsonValue("Short"));
    auto *speed = find<QDoubleSpinBox>("sky_speed");
    speed->selectAll();
    QTest::keyClicks(speed, "130");
    QTest::keyClick(speed, Qt::Key_Return);
    QCOMPARE(value("gnss.sky_speed"), QJsonValue(130));
    QVERIFY(bench::unit().gnss.sky.hasFix());
    press("sky_cold_start");
    QVERIFY(!bench::unit().gnss.sky.hasFix());
}

// However often something changes, the window is painted twenty times a second at the most.
void TestOperatorWindow::windowIsPaintedTwentyTimesASecond()
{
    struct Counter : QObject
    {
        QMap<QObject *, int> paints;
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() == QEvent::Paint)
                ++paints[watched];
            return false;
        }
    } counter;
    QApplication::setCursorFlashTime(0); // a field's cursor blinks besides
    QTest::qWait(200);                   // what the window's coming up brings
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        if (widget != host->screen() && !host->screen()->isAncestorOf(widget))
            widget->installEventFilter(&counter);
    }
    QElapsedTimer clock;
    clock.start();
    int changes = 0;
    while (clock.elapsed() < 1500) {
        ++changes;
        bench::unit().change()->gnss.info.speed = changes;
        bench::unit().change()->usb.ports[1].disk = changes % 2 == 0;
        bench::journal().call("Here", "call", {changes});
        emit dispatcher->eventHappened("receiver.written",
                                       {{"address", 134217728.0}, {"length", 4096}, {"image", 1}});
        QCoreApplication::processEvents();
    }
    const int most = int(clock.elapsed() / 50 + 2);
    QVERIFY2(changes > 2 * most, qPrintable(QString::number(changes)));
    int painted = 0;
    for (auto widget = counter.paints.cbegin(); widget != counter.paints.cend(); ++widget) {
        painted = qMax(painted, *widget);
        QVERIFY2(*widget <= most,
                 qPrintable(QString("%1 of %2: %3")
                                .arg(widget.key()->objectName())
                                .arg(widget.key()->metaObject()->className())
                                .arg(*widget)));
    }
    QVERIFY2(painted > 5, qPrintable(QString::number(painted)));
}

// A record has calls and events of its own, a picture for a screen, and a dock that the window has
// not.
void TestOperatorWindow::recordIsShownByItsOwnCalls()
{
    window.reset();
    bench::Dispatcher record;
    QLabel picture;
    auto *axis = new QLabel("the time axis");
    bench::WindowParts parts;
    parts.dispatcher = &record;
    parts.screen = &picture;
    parts.sign = "RECORDED";
    parts.further = {{"Time", axis, Qt::BottomDockWidgetArea}};
    window = std::make_unique<bench::OperatorWindow>(parts);
    window->show();
    QVERIFY(find<QLabel>("simulated")->text().contains("RECORDED"));
    show(axis);
    emit record.eventHappened("trace.line", {{"n", 1}, {"line", "of then"}});
    QTRY_COMPARE(shown("trace_table", 1), QStringList("of then"));
    window.reset();
}

void TestOperatorWindow::picturesOfAllDocks()
{
    const QTemporaryDir folder;
    bench::WindowParts parts;
    parts.pictures = folder.path();
    makeWindow(parts);
    QTest::keyClick(window.get(), Qt::Key_F5, Qt::ShiftModifier);
    QTRY_COMPARE(QDir(folder.path()).entryList({"*.png"}),
                 QStringList({"dock_dialogue.png", "dock_faults.png", "dock_flash.png",
                              "dock_journal.png", "dock_receiver.png", "dock_registers.png",
                              "dock_sky.png", "dock_trace.png", "dock_unit.png", "window.png"}));
    QCOMPARE(QImage(folder.filePath("window.png")).size(), window->size());
}

void TestOperatorWindow::realReceiverIsSaidToBeOne()
{
    bench::Dispatcher none;
    bench::Calls calls(&none);
    const bench::ReceiverDock dock(&calls);
    QCOMPARE(dock.findChild<QLabel *>("panel_receiver_phase")->text(), QString("a real device"));
}

void TestOperatorWindow::faultsAreArmedAndCounted()
{
    auto *preset = find<QComboBox>("faults_preset");
    show(preset);
    preset->setFocus();
    QTest::keyClick(preset, Qt::Key_Down); // the first one
    QCOMPARE(value("receiver.faults"),
             QJsonValue(QJsonArray{tests::json("{'kind':'drop','step':'packet','packet':3,"
                                               "'index':2,'direction':'to-receiver','times':1}")}));
    tests::resultOf(dispatcher.get(), "receiver.faults",
                    "{'set':[{'kind':'late','step':'sync','index':0,'value':1}]}");
    const auto *table = find<QTableWidget>("faults_table");
    QTRY_VERIFY(table->rowCount() == 1 && table->item(0, 0)->text().contains("late"));
    QCOMPARE(table->item(0, 1)->text(), QString("0"));
    tests::RawHost line(receiver->path());
    receiver->pulseReset();
    QVERIFY(line.synchronise());
    QTRY_COMPARE(table->item(0, 1)->text(), QString("1"));
    QVERIFY(!table->item(0, 2)->text().isEmpty());
    QVERIFY(table->item(0, 3)->text().startsWith("sync"));

    // switched off: known to the list alone
    const QRect box = table->visualItemRect(table->item(0, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      box.topLeft() + QPoint(10, box.height() / 2));
    QTRY_COMPARE(table->item(0, 1)->text(), QString("off"));
    QCOMPARE(value("receiver.faults"), QJsonValue(QJsonArray()));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      box.topLeft() + QPoint(10, box.height() / 2));
    QTRY_COMPARE(table->item(0, 1)->text(), QString("0"));
    QCOMPARE(value("receiver.faults").toArray().size(), 1);
    press("faults_clear");
    QTRY_COMPARE(table->rowCount(), 0);
    QCOMPARE(value("receiver.faults"), QJsonValue(QJsonArray()));
}

// "Refuse packet 3 of image 4 with 3065", by hand.
void TestOperatorWindow::faultIsMadeByTheForm()
{
    auto *kind = find<QComboBox>("faults_kind");
    show(kind);
    kind->setCurrentText("nack");
    find<QSpinBox>("faults_image")->setValue(4);
    find<QSpinBox>("faults_packet")->setValue(3);
    QTest::keyClicks(find<QLineEdit>("faults_value"), "3065");
    find<QSpinBox>("faults_seed")->setValue(9);
    QCOMPARE(find<QLabel>("faults_sentence")->text(),
             QString("nack of packet 3 of image 4 with 3065 once"));
    press("faults_arm");
    QCOMPARE(value("receiver.faults"),
             QJsonValue(QJsonArray{
                 tests::json("{'kind':'nack','image':4,'packet':3,'value':3065,'times':1}")}));
    QCOMPARE(value("receiver.seed"), QJsonValue(9));

    kind->setCurrentText("late"); // a delay without an end is refused whole
    find<QLineEdit>("faults_value")->setText("-1");
    press("faults_arm");
    QVERIFY(window->statusBar()->currentMessage().startsWith("receiver.faults: "));
    QCOMPARE(value("receiver.faults").toArray().size(), 1);

    const auto *table = find<QTableWidget>("faults_table");
    QTRY_COMPARE(table->rowCount(), 1);
    find<QTableWidget>("faults_table")->selectRow(0);
    press("faults_remove");
    QCOMPARE(value("receiver.faults"), QJsonValue(QJsonArray()));
}

void TestOperatorWindow::registersAreWrittenAndFollowed()
{
    auto *tree = find<QTreeWidget>("registers_tree");
    show(tree);
    const auto item = [tree](const char *name) {
        return tree->findItems(QLatin1String(name), Qt::MatchExactly).value(0);
    };
    tests::resultOf(dispatcher.get(), "unit.register.write", "{'name':'swing','value':'0x7F'}");
    QTRY_COMPARE(item("swing")->text(1), QString("0x0000007f"));
    QCOMPARE(item("swing")->child(0)->text(2), QString("-31"));
    QVERIFY(item("swing")->text(4).startsWith("bench, "));

    QTreeWidgetItem *field = item("swing")->child(1);
    tree->scrollToItem(field);
    const QPoint at =
        tree->visualItemRect(field).topLeft() + QPoint(tree->header()->sectionPosition(1) + 4, 4);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at);
    auto *editor = tree->viewport()->findChild<QLineEdit *>();
    QVERIFY(editor != nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "0x45");
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(item("swing")->text(1), QString("0x0000457f"));
    QCOMPARE(item("swing")->text(3), QString("0x0000007f"));
    QCOMPARE(tests::resultOf(dispatcher.get(), "unit.memory.read", "{'address':'0x9C000190'}")
                 .value("hex"),
             QJsonValue("0x0000457f"));
    tests::resultOf(dispatcher.get(), "unit.register.write", "{'name':'swing','value':0}");
}

void TestOperatorWindow::resetByHandIsAskedFor()
{
    bench::ResetPrompt prompt;
    bench::WindowParts parts;
    parts.resetPrompt = &prompt;
    makeWindow(parts);
    const auto *reset = find<QLabel>("panel_receiver_reset");
    emit prompt.told("pull it");
    QCOMPARE(reset->text(), QString("pull it"));
    bench::journal().call("PlatformService", "setGPSResetGPIO", {true});
    QCoreApplication::processEvents();
    QCOMPARE(reset->text(), QString("pull it")); // what the unit does is not what the hand does
}

TESTMODE_TEST_MAIN(TestOperatorWindow)
#include "test_operatorwindow.moc"
