#include "tests/support/recorder.h"
#include "tests/support/touch.h"
#include "tests/support/unittest.h"

#include "tools/mic_test.h"
#include "ui_mic_test.h"

using testmode::mictestwidget;

Q_DECLARE_METATYPE(QVector<float>)

// The microphone gain page: what it shows, what it sends and in which order.
class TestMicTest : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void slotsStandInOrder();
    void formCarriesItsTexts_data();
    void formCarriesItsTexts();
    void keysHaveTheUnitsImages_data();
    void keysHaveTheUnitsImages();
    void standsInTheLowerPartInWhite();
    void noTextIsCutOff();

    void showsTheGainsAtTheStart();
    void sendsNothingBeforeTheFirstStep();
    void listsTheGainsAtTheStart();
    void comesToItsStartInOrder();
    void gainsAreThoseOfTheTables();
    void eachKeyStepsOnce_data();
    void eachKeyStepsOnce();
    void stepsGoRound_data();
    void stepsGoRound();
    void tableGainsFollowTheirTable_data();
    void tableGainsFollowTheirTable();
    void traceShowsTheGainAfterOrTheIndexBefore_data();
    void traceShowsTheGainAfterOrTheIndexBefore();
    void labelAndCallComeInOrder_data();
    void labelAndCallComeInOrder();
    void oneControlKeepsTheOthers();

    void tapOnAKeysTextReachesTheKey_data();
    void tapOnAKeysTextReachesTheKey();
    void analogGainTextTakesNoTouch();
    void valuesStayWhileHidden();
    void newPageStartsAnew();
};

namespace {

const char *const kKeys[] = {"key_mic_prev", "key_mic_next", "key_op_prev",     "key_op_next",
                             "key_opg_prev", "key_opg_next", "key_uplink_prev", "key_uplink_next"};

void press(const QWidget &page, const QString &key, int times = 1)
{
    for (int i = 0; i < times; ++i)
        page.findChild<QPushButton *>(key)->click();
}

QString textOf(const QWidget &page, const QString &label)
{
    return page.findChild<QLabel *>(label)->text();
}

QString lastCall()
{
    return bench::journal().texts().value(bench::journal().texts().size() - 1);
}

} // namespace

void TestMicTest::slotsStandInOrder()
{
    QCOMPARE(tests::slotsOf(mictestwidget::staticMetaObject),
             QStringList({"on_key_mic_prev_clicked()", "on_key_mic_next_clicked()",
                          "on_key_op_prev_clicked()", "on_key_op_next_clicked()",
                          "on_key_opg_prev_clicked()", "on_key_opg_next_clicked()",
                          "on_key_uplink_prev_clicked()", "on_key_uplink_next_clicked()"}));
}

void TestMicTest::formCarriesItsTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("txt_mic") << "Mic Analog Gain:";
    QTest::newRow("txt_op") << "OP Gain:";
    QTest::newRow("txt_opg") << "PGA Gain:";
    QTest::newRow("txt_uplink") << "Up link Gain:";
    for (int i = 2; i <= 9; ++i)
        QTest::addRow("txt_mic_%d", i) << (i % 2 == 0 ? "Prev" : "Next");
}

void TestMicTest::formCarriesItsTexts()
{
    QFETCH(QString, text);
    QWidget host;
    Ui_mic_test form;
    form.setupUi(&host);
    QCOMPARE(host.objectName(), QString("mic_test"));
    QCOMPARE(host.windowTitle(), QString("Form"));
    QCOMPARE(textOf(host, QTest::currentDataTag()), text);
}

void TestMicTest::keysHaveTheUnitsImages_data()
{
    QTest::addColumn<QString>("key");
    for (const char *key : kKeys)
        QTest::newRow(key) << key;
}

void TestMicTest::keysHaveTheUnitsImages()
{
    QFETCH(QString, key);
    const mictestwidget page;
    auto *button = page.findChild<QPushButton2 *>(key);
    QVERIFY(button != nullptr);
    QCOMPARE(button->property("backgroundNormalOff").toString(),
             QString("qrc:/lumora_btphone/settings/key_microphone_n.png"));
    QCOMPARE(button->property("backgroundNormalOn").toString(),
             QString("qrc:/lumora_btphone/settings/key_microphone_p.png"));

    const QImage up = button->grab().toImage();
    button->setDown(true);
    QVERIFY(button->grab().toImage() != up);
}

void TestMicTest::standsInTheLowerPartInWhite()
{
    QWidget screen;
    screen.resize(1024, 600);
    const mictestwidget page(&screen);
    QCOMPARE(page.pos(), QPoint(0, 130));
    QCOMPARE(page.styleSheet(), QString("color: #FFF;"));
    QVERIFY(page.findChild<QWidget *>("widget")->isHidden());
    for (const char *key : kKeys) {
        const auto *button = page.findChild<QWidget *>(key);
        const QRect place(button->mapTo(&screen, QPoint()), button->size());
        QVERIFY2(screen.rect().contains(place), key);
    }
}

void TestMicTest::noTextIsCutOff()
{
    const mictestwidget page;
    press(page, "key_mic_prev", 24);
    press(page, "key_op_prev", 5); // 27.5
    press(page, "key_opg_next");
    press(page, "key_uplink_prev", 24);
    QCOMPARE(textOf(page, "txt_mic"), QString("Mic Analog Gain:-24"));
    QCOMPARE(textOf(page, "txt_op"), QString("OP Gain:27.5"));
    QCOMPARE(textOf(page, "txt_opg"), QString("PGA Gain:-24"));
    QCOMPARE(textOf(page, "txt_uplink"), QString("Uplink Gain: -24"));
    const auto labels = page.findChildren<QLabel *>();
    QCOMPARE(labels.size(), 12);
    for (const QLabel *label : labels)
        QVERIFY2(tests::showsItsWholeText(label), qPrintable(label->objectName()));
}

void TestMicTest::showsTheGainsAtTheStart()
{
    const mictestwidget page;
    QCOMPARE(textOf(page, "txt_mic"), QString("Mic Analog Gain:"));
    QCOMPARE(textOf(page, "txt_op"), QString("OP  Gain:12"));
    QCOMPARE(textOf(page, "txt_opg"), QString("Pga Gain:6"));
    QCOMPARE(textOf(page, "txt_uplink"), QString("Uplink Gain: 0"));
    QCOMPARE(gMicConfig.opGain, 12.0f);
    QCOMPARE(gMicConfig.pgaGain, 6.0f);
    QCOMPARE(gMicConfig.uplinkGain, 0.0f);
}

void TestMicTest::sendsNothingBeforeTheFirstStep()
{
    mictestwidget page;
    page.show();
    QCOMPARE(bench::journal().texts(), QStringList());
}

void TestMicTest::listsTheGainsAtTheStart()
{
    const mictestwidget page;
    QCOMPARE(
        trace().payloads(),
        QStringList({"-24 0", "-23 1", "-22 2",  "-21 3",  "-20 4",  "-19 5",  "-18 6",  "-17 7",
                     "-16 8", "-15 9", "-14 10", "-13 11", "-12 12", "-11 13", "-10 14", "-9 15",
                     "-8 16", "-7 17", "-6 18",  "-5 19",  "-4 20",  "-3 21",  "-2 22",  "-1 23",
                     "0 24",  "1 25",  "2 26",   "3 27",   "4 28",   "5 29",   "6 30"}));
}

// Place and looks, the list of gains, the configuration with its texts; `widget` is hidden last.
void TestMicTest::comesToItsStartInOrder()
{
    QWidget screen;
    gMicConfig = {1.0f, 2.0f, 3.0f};
    std::fill(std::begin(gPgaGainLevel), std::end(gPgaGainLevel), 99.0f);
    tests::Recorder recorder(trace());
    recorder.watchState("page", [&screen]() -> QString {
        const auto *page = screen.findChild<mictestwidget *>();
        if (page == nullptr || page->findChild<QWidget *>("widget") == nullptr)
            return QString();
        const bool hidden =
            page->findChild<QWidget *>("widget")->testAttribute(Qt::WA_WState_ExplicitShowHide);
        return QStringList{QString("%1,%2").arg(page->x()).arg(page->y()),
                           page->styleSheet(),
                           textOf(*page, "txt_uplink"),
                           textOf(*page, "txt_op"),
                           textOf(*page, "txt_opg"),
                           hidden ? "hidden" : "as in the form"}
            .join('|');
    });
    recorder.watchState("configuration", [] {
        return QString("%1 %2 %3")
            .arg(static_cast<double>(gMicConfig.opGain))
            .arg(static_cast<double>(gMicConfig.pgaGain))
            .arg(static_cast<double>(gMicConfig.uplinkGain));
    });
    recorder.watchState("gains listed", [] {
        return QString::number(std::count_if(std::begin(gPgaGainLevel), std::end(gPgaGainLevel),
                                             [](float gain) { return gain < 99.0f; }));
    });
    const mictestwidget page(&screen);

    QStringList expected{
        "page: 0,130|color: #FFF;|Up link Gain:|OP Gain:|PGA Gain:|as in the form"};
    for (int i = 0; i <= 30; ++i)
        expected << QString("gains listed: %1").arg(i + 1)
                 << QString("[DBG] void testmode::mictestwidget::initPagGainList() -- %1 %2")
                        .arg(i - 24)
                        .arg(i);
    expected << "page: 0,130|color: #FFF;|Uplink Gain: 0|OP  Gain:12|Pga Gain:6|hidden"
             << "configuration: 12 6 0";
    QCOMPARE(recorder.entries(), expected);
}

void TestMicTest::gainsAreThoseOfTheTables()
{
    const mictestwidget page;
    const QVector<float> opGains(std::begin(gOpGainLevel), std::end(gOpGainLevel));
    QCOMPARE(opGains, (QVector<float>{0.0f, 9.0f, 12.0f, 21.0f, 27.5f, 30.0f, 40.0f}));
    const QVector<float> pgaGains(std::begin(gPgaGainLevel), std::end(gPgaGainLevel));
    QCOMPARE(pgaGains, (QVector<float>{-24, -23, -22, -21, -20, -19, -18, -17, -16, -15, -14,
                                       -13, -12, -11, -10, -9,  -8,  -7,  -6,  -5,  -4,  -3,
                                       -2,  -1,  0,   1,   2,   3,   4,   5,   6}));
}

void TestMicTest::eachKeyStepsOnce_data()
{
    QTest::addColumn<QString>("trace");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("call");

    QTest::newRow("key_mic_prev") << "miccccccccc---------- -1"
                                  << "txt_mic"
                                  << "Mic Analog Gain:-1"
                                  << "AudioService.setMicAnalogGain(-1, -1)";
    QTest::newRow("key_mic_next") << "miccccccccccccc---------- 1"
                                  << "txt_mic"
                                  << "Mic Analog Gain:1"
                                  << "AudioService.setMicAnalogGain(1, 1)";
    QTest::newRow("key_op_prev") << "opoopopopopopo---------- 2"
                                 << "txt_op"
                                 << "OP Gain:9"
                                 << "AudioService.configMic(9, 6, 0)";
    QTest::newRow("key_op_next") << "opoopopopopopo+++++++++++ 2"
                                 << "txt_op"
                                 << "OP Gain:21"
                                 << "AudioService.configMic(21, 6, 0)";
    QTest::newRow("key_opg_prev") << "nowwwwww---------- 30"
                                  << "txt_opg"
                                  << "PGA Gain:5"
                                  << "AudioService.configMic(12, 5, 0)";
    QTest::newRow("key_opg_next") << "nowwwwww+++++++++++ 30"
                                  << "txt_opg"
                                  << "PGA Gain:-24"
                                  << "AudioService.configMic(12, -24, 0)";
    QTest::newRow("key_uplink_prev") << "------------- -1"
                                     << "txt_uplink"
                                     << "Uplink Gain: -1"
                                     << "AudioService.configMic(12, 6, -1)";
    QTest::newRow("key_uplink_next") << "------------- 1"
                                     << "txt_uplink"
                                     << "Uplink Gain: 1"
                                     << "AudioService.configMic(12, 6, 1)";
}

void TestMicTest::eachKeyStepsOnce()
{
    QFETCH(QString, label);
    const mictestwidget page;
    trace().clear();
    press(page, QTest::currentDataTag());
    QTEST(trace().payloads().join('|'), "trace");
    QCOMPARE(
        tracedFunctions(),
        QStringList{
            QString("void testmode::mictestwidget::on_%1_clicked()").arg(QTest::currentDataTag())});
    QTEST(textOf(page, label), "text");
    QTEST(bench::journal().texts().join('|'), "call");
}

void TestMicTest::stepsGoRound_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("presses");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("call");

    const auto row = [](const char *key, int presses, const char *label, const char *text,
                        const char *call) {
        QTest::addRow("%s, %d times", key, presses)
            << key << presses << label << text << "AudioService." + QString(call);
    };
    row("key_mic_next", 45, "txt_mic", "Mic Analog Gain:45", "setMicAnalogGain(45, 45)");
    row("key_mic_next", 46, "txt_mic", "Mic Analog Gain:46", "setMicAnalogGain(46, 46)");
    row("key_mic_next", 47, "txt_mic", "Mic Analog Gain:-24", "setMicAnalogGain(-24, -24)");
    row("key_mic_next", 71, "txt_mic", "Mic Analog Gain:0", "setMicAnalogGain(0, 0)");
    row("key_mic_prev", 24, "txt_mic", "Mic Analog Gain:-24", "setMicAnalogGain(-24, -24)");
    row("key_mic_prev", 25, "txt_mic", "Mic Analog Gain:46", "setMicAnalogGain(46, 46)");
    row("key_op_next", 4, "txt_op", "OP Gain:40", "configMic(40, 6, 0)");
    row("key_op_next", 5, "txt_op", "OP Gain:0", "configMic(0, 6, 0)");
    row("key_op_prev", 2, "txt_op", "OP Gain:0", "configMic(0, 6, 0)");
    row("key_op_prev", 3, "txt_op", "OP Gain:40", "configMic(40, 6, 0)");
    row("key_opg_next", 1, "txt_opg", "PGA Gain:-24", "configMic(12, -24, 0)");
    row("key_opg_next", 31, "txt_opg", "PGA Gain:6", "configMic(12, 6, 0)");
    row("key_opg_prev", 30, "txt_opg", "PGA Gain:-24", "configMic(12, -24, 0)");
    row("key_opg_prev", 31, "txt_opg", "PGA Gain:6", "configMic(12, 6, 0)");
    row("key_uplink_next", 24, "txt_uplink", "Uplink Gain: 24", "configMic(12, 6, 24)");
    row("key_uplink_next", 25, "txt_uplink", "Uplink Gain: -24", "configMic(12, 6, -24)");
    row("key_uplink_prev", 24, "txt_uplink", "Uplink Gain: -24", "configMic(12, 6, -24)");
    row("key_uplink_prev", 25, "txt_uplink", "Uplink Gain: 24", "configMic(12, 6, 24)");
}

void TestMicTest::stepsGoRound()
{
    QFETCH(QString, key);
    QFETCH(int, presses);
    QFETCH(QString, label);
    const mictestwidget page;
    press(page, key, presses);
    QCOMPARE(bench::journal().texts().size(), presses);
    QTEST(textOf(page, label), "text");
    QTEST(lastCall(), "call");
}

void TestMicTest::tableGainsFollowTheirTable_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("argument");
    QTest::addColumn<QVector<float>>("gains");
    QTest::newRow("OP gains up") << "key_op_next" << 0
                                 << QVector<float>{21.0f, 27.5f, 30.0f, 40.0f, 0.0f, 9.0f, 12.0f};
    QTest::newRow("OP gains down")
        << "key_op_prev" << 0 << QVector<float>{9.0f, 0.0f, 40.0f, 30.0f, 27.5f, 21.0f, 12.0f};
    QTest::newRow("PGA gains down")
        << "key_opg_prev" << 1
        << QVector<float>{5,   4,   3,   2,   1,   0,   -1,  -2,  -3,  -4,  -5,
                          -6,  -7,  -8,  -9,  -10, -11, -12, -13, -14, -15, -16,
                          -17, -18, -19, -20, -21, -22, -23, -24, 6};
    QTest::newRow("PGA gains up") << "key_opg_next" << 1
                                  << QVector<float>{-24, -23, -22, -21, -20, -19, -18, -17,
                                                    -16, -15, -14, -13, -12, -11, -10, -9,
                                                    -8,  -7,  -6,  -5,  -4,  -3,  -2,  -1,
                                                    0,   1,   2,   3,   4,   5,   6};
}

void TestMicTest::tableGainsFollowTheirTable()
{
    QFETCH(QString, key);
    QFETCH(int, argument);
    QFETCH(QVector<float>, gains);
    const mictestwidget page;
    press(page, key, gains.size());
    QVector<float> sent;
    for (const bench::JournalEntry &entry : bench::journal().entries())
        sent << static_cast<float>(entry.arguments.at(argument).toDouble());
    QCOMPARE(sent, gains);
}

void TestMicTest::traceShowsTheGainAfterOrTheIndexBefore_data()
{
    QTest::addColumn<QStringList>("traces");
    QTest::newRow("key_mic_next") << QStringList{"miccccccccccccc---------- 1",
                                                 "miccccccccccccc---------- 2"};
    QTest::newRow("key_mic_prev") << QStringList{"miccccccccc---------- -1",
                                                 "miccccccccc---------- -2"};
    QTest::newRow("key_op_next") << QStringList{"opoopopopopopo+++++++++++ 2",
                                                "opoopopopopopo+++++++++++ 3"};
    QTest::newRow("key_op_prev") << QStringList{"opoopopopopopo---------- 2",
                                                "opoopopopopopo---------- 1"};
    QTest::newRow("key_opg_next") << QStringList{"nowwwwww+++++++++++ 30", "nowwwwww+++++++++++ 0"};
    QTest::newRow("key_opg_prev") << QStringList{"nowwwwww---------- 30", "nowwwwww---------- 29"};
    QTest::newRow("key_uplink_next") << QStringList{"------------- 1", "------------- 2"};
    QTest::newRow("key_uplink_prev") << QStringList{"------------- -1", "------------- -2"};
}

void TestMicTest::traceShowsTheGainAfterOrTheIndexBefore()
{
    const mictestwidget page;
    trace().clear();
    press(page, QTest::currentDataTag(), 2);
    QTEST(trace().payloads(), "traces");
}

void TestMicTest::labelAndCallComeInOrder_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("duringTheCall");
    QTest::newRow("key_mic_prev") << "txt_mic"
                                  << "Mic Analog Gain:-1";
    QTest::newRow("key_mic_next") << "txt_mic"
                                  << "Mic Analog Gain:1";
    QTest::newRow("key_op_prev") << "txt_op"
                                 << "OP Gain:9";
    QTest::newRow("key_op_next") << "txt_op"
                                 << "OP Gain:21";
    QTest::newRow("key_opg_prev") << "txt_opg"
                                  << "PGA Gain:5";
    QTest::newRow("key_opg_next") << "txt_opg"
                                  << "PGA Gain:-24";
    QTest::newRow("key_uplink_prev") << "txt_uplink"
                                     << "Uplink Gain: 0";
    QTest::newRow("key_uplink_next") << "txt_uplink"
                                     << "Uplink Gain: 0";
}

void TestMicTest::labelAndCallComeInOrder()
{
    QFETCH(QString, label);
    const mictestwidget page;
    QStringList shown;
    int traced = 0;
    trace().clear();
    QObject context;
    connect(&bench::journal(), &bench::Journal::added, &context, [&] {
        shown << textOf(page, label);
        traced = trace().lines().size();
    });
    press(page, QTest::currentDataTag());
    QCOMPARE(shown.size(), 1);
    QCOMPARE(traced, 1); // before the call
    QTEST(shown.first(), "duringTheCall");
}

void TestMicTest::oneControlKeepsTheOthers()
{
    const mictestwidget page;
    press(page, "key_op_next");
    press(page, "key_uplink_prev");
    press(page, "key_opg_prev", 2);
    press(page, "key_mic_next");
    press(page, "key_uplink_next", 3);
    QCOMPARE(lastCall(), QString("AudioService.configMic(21, 4, 2)"));
    QCOMPARE(gMicConfig.opGain, 21.0f);
    QCOMPARE(gMicConfig.pgaGain, 4.0f);
    QCOMPARE(gMicConfig.uplinkGain, 2.0f);
    QCOMPARE(textOf(page, "txt_mic"), QString("Mic Analog Gain:1"));
}

void TestMicTest::tapOnAKeysTextReachesTheKey_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("txt_mic_2") << "setMicAnalogGain(-1, -1)";
    QTest::newRow("txt_mic_3") << "setMicAnalogGain(1, 1)";
    QTest::newRow("txt_mic_4") << "configMic(9, 6, 0)";
    QTest::newRow("txt_mic_5") << "configMic(21, 6, 0)";
    QTest::newRow("txt_mic_6") << "configMic(12, 5, 0)";
    QTest::newRow("txt_mic_7") << "configMic(12, -24, 0)";
    QTest::newRow("txt_mic_8") << "configMic(12, 6, -1)";
    QTest::newRow("txt_mic_9") << "configMic(12, 6, 1)";
}

void TestMicTest::tapOnAKeysTextReachesTheKey()
{
    QFETCH(QString, call);
    mictestwidget page;
    page.show();
    tests::tap(page.findChild<QLabel *>(QTest::currentDataTag()));
    QCOMPARE(bench::journal().texts(), QStringList("AudioService." + call));
}

void TestMicTest::analogGainTextTakesNoTouch()
{
    const mictestwidget page;
    const auto *text = page.findChild<QLabel *>("txt_mic");
    QVERIFY(text->testAttribute(Qt::WA_TransparentForMouseEvents));
}

void TestMicTest::valuesStayWhileHidden()
{
    mictestwidget page;
    page.show();
    press(page, "key_mic_next", 3);
    press(page, "key_op_next");
    page.hide();
    page.show();
    QCOMPARE(textOf(page, "txt_mic"), QString("Mic Analog Gain:3"));
    QCOMPARE(textOf(page, "txt_op"), QString("OP Gain:21"));
    press(page, "key_mic_next");
    press(page, "key_op_next");
    QCOMPARE(
        bench::journal().texts().mid(4),
        QStringList({"AudioService.setMicAnalogGain(4, 4)", "AudioService.configMic(27.5, 6, 0)"}));
}

void TestMicTest::newPageStartsAnew()
{
    {
        const mictestwidget page;
        press(page, "key_op_next");
        press(page, "key_opg_prev");
    }
    gPgaGainLevel[30] = 99.0f;
    const mictestwidget page;
    QCOMPARE(gPgaGainLevel[30], 6.0f);
    QCOMPARE(textOf(page, "txt_op"), QString("OP  Gain:12"));
    press(page, "key_uplink_next");
    QCOMPARE(lastCall(), QString("AudioService.configMic(12, 6, 1)"));
}

TESTMODE_TEST_MAIN(TestMicTest)
#include "test_mic_test.moc"
