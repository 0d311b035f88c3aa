#include "bench/unit/gnssstate.h"
#include "tests/support/unittest.h"

#include "gpsservice/gpsservice.h"
#include "plugin/testentrywidget.h"
#include "ui_testentrywidget.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTranslator>

using testmode::testEntryWidget;

namespace {

// Mouse buttons go where the eye goes: to the window's point, whatever lies on top there.
void clickAt(QWidget *window, const QPoint &point)
{
    QWidget *target = window->childAt(point);
    QVERIFY(target != nullptr);
    QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, target->mapFrom(window, point));
}

const QStringList kSignals = {"key_tid()",          "key_ncm()",     "key_gps()",
                              "key_usb_test()",     "key_quit()",    "key_gps_update()",
                              "key_system_tools()", "key_mic_test()"};

// Says for every text which class it was asked for.
class ContextTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        return QStringLiteral("%1/%2").arg(context, source);
    }

    bool isEmpty() const override { return false; }
};

// Counts every signal of the menu by its name.
class SignalCounts
{
public:
    explicit SignalCounts(testEntryWidget *menu)
    {
        for (const QString &name : kSignals)
            spies.push_back(std::make_unique<QSignalSpy>(menu, qPrintable("2" + name)));
    }

    QStringList emitted() const
    {
        QStringList names;
        for (size_t i = 0; i < spies.size(); ++i) {
            for (int n = 0; n < spies[i]->count(); ++n)
                names << kSignals.at(static_cast<int>(i));
        }
        return names;
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> spies;
};

void addEntries()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QPoint>("place"); // of the button; the label lies 10 right and 6 below
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("signal");
    QTest::addColumn<QString>("traced");
    QTest::newRow("USB Tid") << "key_usb_tid"
                             << "txt_usb_tid" << QPoint(260, 156) << "USB Tid"
                             << "key_tid()"
                             << "tid";
    QTest::newRow("NCM Test") << "key_ncm_test"
                              << "txt_ncm" << QPoint(260, 320) << "NCM Test"
                              << "key_ncm()"
                              << "ncm";
    QTest::newRow("GPS test") << "key_gps_test"
                              << "txt_gps" << QPoint(260, 240) << "GPS test"
                              << "key_gps()"
                              << "gps";
    QTest::newRow("QUIT") << "key_quit"
                          << "txt_quit" << QPoint(260, 410) << "QUIT"
                          << "key_quit()"
                          << "quit";
    QTest::newRow("USB Test") << "key_usb_test"
                              << "txt_usb_test" << QPoint(260, 70) << "USB Test"
                              << "key_usb_test()"
                              << "usb test";
    QTest::newRow("GPS Update") << "key_gps_update"
                                << "txt_gps_update" << QPoint(530, 240) << "GPS Update"
                                << "key_gps_update()"
                                << "key_gps_update";
    QTest::newRow("System Tools") << "key_tools"
                                  << "txt_tools" << QPoint(530, 70) << "System Tools"
                                  << "key_system_tools()"
                                  << "key_system_tools";
    QTest::newRow("Mic Test") << "key_mic_test"
                              << "txt_mic_test" << QPoint(530, 150) << "Mic Test"
                              << "key_mic_test()"
                              << "key_mic_test";
}

} // namespace

// The menu: looks, presses, and the tie to the GNSS service.
class TestTestEntryWidget : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void hasItsSignalsAndSlotsInOrder();
    void formIsAsItIsKnown();
    void membersAreCreatedInOrder();
    void membersAreInOrder();
    void textsAreTranslatedForTheMenu();
    void entryLooksLikeItself_data();
    void entryLooksLikeItself();
    void entryTextIsReadable_data();
    void entryTextIsReadable();
    void clickOnTheTextTriggersTheButton_data();
    void clickOnTheTextTriggersTheButton();
    void entryIsTracedBeforeItsSignal_data();
    void entryIsTracedBeforeItsSignal();
    void clickBesideTheTextTriggersTheButton_data();
    void clickBesideTheTextTriggersTheButton();
    void clickBesideTheButtonsTriggersNothing();
    void constructionAsksForTheModuleOnce();
    void constructionListensBeforeItAsks();
    void updateEntryIsOpenForEveryModule_data();
    void updateEntryIsOpenForEveryModule();
    void moduleFoundOutLaterReachesTheMenu();
};

void TestTestEntryWidget::hasItsSignalsAndSlotsInOrder()
{
    QCOMPARE(tests::signalsOf(testEntryWidget::staticMetaObject), kSignals);
    QCOMPARE(tests::slotsOf(testEntryWidget::staticMetaObject),
             (QStringList{"on_key_usb_tid_clicked()", "on_key_ncm_test_clicked()",
                          "on_key_gps_test_clicked()", "on_key_quit_clicked()",
                          "on_key_usb_test_clicked()", "on_key_gps_update_clicked()",
                          "on_key_tools_clicked()", "on_key_mic_test_clicked()",
                          "onGpsUpdateChanged(int)"}));
}

void TestTestEntryWidget::formIsAsItIsKnown()
{
    const testEntryWidget menu(nullptr);
    QCOMPARE(menu.objectName(), QStringLiteral("testEntryWidget"));
    QCOMPARE(menu.windowTitle(), QStringLiteral("Form"));
    QCOMPARE(menu.geometry(), QRect(100, 100, 1000, 600));
    QCOMPARE(menu.findChildren<QPushButton *>().size(), 8);
    QCOMPARE(menu.findChildren<QLabel *>().size(), 8);

    QWidget bare;
    Ui_testEntryWidget form;
    form.setupUi(&bare);
    QCOMPARE(bare.size(), QSize(800, 480));
}

// The generated form declares its members in the order in which it creates them.
void TestTestEntryWidget::membersAreCreatedInOrder()
{
    Ui_testEntryWidget form;
    const QVector<const void *> members = {
        &form.key_usb_tid,  &form.txt_usb_tid,  &form.key_ncm_test,   &form.txt_ncm,
        &form.key_gps_test, &form.txt_gps,      &form.key_quit,       &form.txt_quit,
        &form.key_usb_test, &form.txt_usb_test, &form.txt_gps_update, &form.key_gps_update,
        &form.txt_tools,    &form.key_tools,    &form.txt_mic_test,   &form.key_mic_test,
    };
    QVERIFY(std::is_sorted(members.begin(), members.end(), std::less<const void *>()));
    QCOMPARE(members.first(), static_cast<const void *>(&form));
    QCOMPARE(sizeof form, 16 * sizeof(void *));
}

// Buttons among themselves and labels among themselves; a label lies above its button.
void TestTestEntryWidget::membersAreInOrder()
{
    const testEntryWidget menu(nullptr);
    QStringList buttons;
    QStringList labels;
    for (const QObject *child : menu.children()) {
        QStringList &names = child->inherits("QPushButton") ? buttons : labels;
        names << child->objectName();
    }
    QCOMPARE(buttons,
             (QStringList{"key_usb_tid", "key_ncm_test", "key_gps_test", "key_quit", "key_usb_test",
                          "key_gps_update", "key_tools", "key_mic_test"}));
    QCOMPARE(labels,
             (QStringList{"txt_usb_tid", "txt_ncm", "txt_gps", "txt_quit", "txt_usb_test",
                          "txt_gps_update", "txt_tools", "txt_mic_test"}));
}

void TestTestEntryWidget::textsAreTranslatedForTheMenu()
{
    ContextTranslator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    const testEntryWidget menu(nullptr);
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(menu.windowTitle(), QStringLiteral("testEntryWidget/Form"));
    QStringList texts;
    for (const QLabel *label : menu.findChildren<QLabel *>())
        texts << label->text();
    texts.sort();
    QCOMPARE(texts,
             (QStringList{"testEntryWidget/GPS Update", "testEntryWidget/GPS test",
                          "testEntryWidget/Mic Test", "testEntryWidget/NCM Test",
                          "testEntryWidget/QUIT", "testEntryWidget/System Tools",
                          "testEntryWidget/USB Test", "testEntryWidget/USB Tid"}));
}

void TestTestEntryWidget::entryLooksLikeItself_data()
{
    addEntries();
}

void TestTestEntryWidget::entryLooksLikeItself()
{
    QFETCH(QString, button);
    QFETCH(QString, label);
    QFETCH(QPoint, place);
    QFETCH(QString, text);
    const testEntryWidget menu(nullptr);
    const auto *key = menu.findChild<QPushButton *>(button);
    QVERIFY(key != nullptr);
    QCOMPARE(key->geometry(), QRect(place, QSize(191, 51)));
    QCOMPARE(key->iconSize(), QSize(211, 49));
    QCOMPARE(key->font().pointSize(), 20);
    QCOMPARE(key->text(), QString());
    QCOMPARE(key->icon().pixmap(QSize(211, 49)).toImage(),
             QIcon(":/images/02_btn_n.png").pixmap(QSize(211, 49)).toImage());
    QVERIFY(!key->icon().isNull());
    const auto *caption = menu.findChild<QLabel *>(label);
    QVERIFY(caption != nullptr);
    QCOMPARE(caption->geometry(), QRect(place + QPoint(10, 6), QSize(171, 41)));
    QCOMPARE(caption->text(), text);
    QVERIFY(caption->testAttribute(Qt::WA_TransparentForMouseEvents));
}

void TestTestEntryWidget::entryTextIsReadable_data()
{
    addEntries();
}

void TestTestEntryWidget::entryTextIsReadable()
{
    QFETCH(QString, button);
    QFETCH(QString, label);
    testEntryWidget menu(nullptr);
    menu.show(); // the style gives the font
    const QSize wanted = menu.findChild<QLabel *>(label)->sizeHint();
    QVERIFY2(wanted.width() <= 171 && wanted.height() <= 41,
             qPrintable(QStringLiteral("%1 x %2").arg(wanted.width()).arg(wanted.height())));
    const QObjectList order = menu.children(); // later lies above
    QVERIFY(order.indexOf(menu.findChild<QLabel *>(label))
            > order.indexOf(menu.findChild<QPushButton *>(button)));
}

void TestTestEntryWidget::clickOnTheTextTriggersTheButton_data()
{
    addEntries();
}

void TestTestEntryWidget::clickOnTheTextTriggersTheButton()
{
    QFETCH(QString, label);
    QFETCH(QString, signal);
    QFETCH(QString, traced);
    testEntryWidget menu(nullptr);
    menu.show();
    trace().clear();
    const SignalCounts counts(&menu);
    clickAt(&menu, menu.findChild<QLabel *>(label)->geometry().center());
    QCOMPARE(counts.emitted(), QStringList{signal});
    QCOMPARE(trace().payloads(), QStringList{traced});
    clickAt(&menu, menu.findChild<QLabel *>(label)->geometry().center());
    QCOMPARE(counts.emitted(), (QStringList{signal, signal}));
}

void TestTestEntryWidget::entryIsTracedBeforeItsSignal_data()
{
    addEntries();
}

void TestTestEntryWidget::entryIsTracedBeforeItsSignal()
{
    QFETCH(QString, button);
    QFETCH(QString, signal);
    QFETCH(QString, traced);
    testEntryWidget menu(nullptr);
    trace().clear();
    QStringList tracedAtSignal;
    QTimer receiver; // any object with a slot of its own that can be heard
    receiver.setInterval(0);
    QVERIFY(connect(&menu, qPrintable("2" + signal), &receiver, SLOT(start())));
    connect(&trace(), &bench::TraceLog::added, &menu,
            [&](const QString &) { tracedAtSignal << (receiver.isActive() ? "late" : "early"); });
    menu.findChild<QPushButton *>(button)->click();
    QVERIFY(receiver.isActive());
    QCOMPARE(tracedAtSignal, QStringList{"early"});
    QCOMPARE(trace().payloads(), QStringList{traced});
    QCOMPARE(tracedFunctions(),
             QStringList{QString("void testmode::testEntryWidget::on_%1_clicked()").arg(button)});
}

void TestTestEntryWidget::clickBesideTheTextTriggersTheButton_data()
{
    addEntries();
}

void TestTestEntryWidget::clickBesideTheTextTriggersTheButton()
{
    QFETCH(QPoint, place);
    QFETCH(QString, signal);
    testEntryWidget menu(nullptr);
    menu.show();
    const SignalCounts counts(&menu);
    clickAt(&menu, place + QPoint(185, 45));
    QCOMPARE(counts.emitted(), QStringList{signal});
}

void TestTestEntryWidget::clickBesideTheButtonsTriggersNothing()
{
    testEntryWidget menu(nullptr);
    menu.show();
    trace().clear();
    const SignalCounts counts(&menu);
    QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier, QPoint(490, 95));
    QCOMPARE(counts.emitted(), QStringList());
    QCOMPARE(trace().lines(), QStringList());
}

void TestTestEntryWidget::constructionAsksForTheModuleOnce()
{
    bench::unit().change()->gnss.moduleKind = 7;
    const testEntryWidget menu(nullptr);
    QCOMPARE(bench::journal().texts(), QStringList{"GpsService.getModualApatation()"});
    QCOMPARE(trace().payloads(), QStringList{"7"});
}

void TestTestEntryWidget::constructionListensBeforeItAsks()
{
    auto *service = gpsservice::GpsService::instance();
    bool listened = false;
    QObject context;
    connect(&bench::journal(), &bench::Journal::added, &context, [&] {
        listened = disconnect(service, SIGNAL(modualApatationCompelete(int)), nullptr, nullptr);
    });
    const testEntryWidget menu(nullptr);
    QVERIFY(listened);
}

void TestTestEntryWidget::updateEntryIsOpenForEveryModule_data()
{
    QTest::addColumn<int>("state");
    for (int state : {0, 1, 2, -1})
        QTest::addRow("%d", state) << state;
}

void TestTestEntryWidget::updateEntryIsOpenForEveryModule()
{
    QFETCH(int, state);
    testEntryWidget menu(nullptr);
    auto *entry = menu.findChild<QPushButton *>("key_gps_update");
    entry->setEnabled(false);
    trace().clear();
    menu.onGpsUpdateChanged(state);
    QVERIFY(entry->isEnabled());
    QCOMPARE(trace().payloads(), QStringList{QString::number(state)});
    QCOMPARE(tracedFunctions(),
             QStringList{"void testmode::testEntryWidget::onGpsUpdateChanged(int)"});
}

void TestTestEntryWidget::moduleFoundOutLaterReachesTheMenu()
{
    testEntryWidget menu(nullptr);
    auto *entry = menu.findChild<QPushButton *>("key_gps_update");
    entry->setEnabled(false);
    trace().clear();
    emit gpsservice::GpsService::instance()->modualApatationCompelete(3);
    QVERIFY(entry->isEnabled());
    QCOMPARE(trace().payloads(), QStringList{"3"});
}

TESTMODE_TEST_MAIN(TestTestEntryWidget)
#include "test_testentrywidget.moc"
