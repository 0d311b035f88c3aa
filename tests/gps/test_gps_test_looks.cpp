#include "bench/unit/gnssstate.h"
#include "tests/support/unittest.h"

#include "paintedrow.h"
#include "shownpage.h"

#include <QPushButton>
#include <QWindow>

using gpsservice::GpsService;
using namespace tests;

// The look and the touch of the GNSS receiver's page.
class TestGpsTestLooks : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void backgroundIsBlack();
    void longTextsAreNotClipped();
    void nothingOverlaps();
    void captionsLieOnTheirButtons_data();
    void captionsLieOnTheirButtons();
    void heldButtonLooksHeld();
    void sixRowsFitTheView();
    void rowsAreDrawnGrayByTheListStyle();
    void rowsHaveNoArrow();
    void rowsTakeNoTouch();
    void dragScrollsTheList();
};

void TestGpsTestLooks::backgroundIsBlack()
{
    ShownPage page;
    QVERIFY(page.autoFillBackground());
    QCOMPARE(page.palette().brush(QPalette::Window), QBrush(Qt::black, Qt::SolidPattern));
    const QImage picture = page.grab().toImage();
    QCOMPARE(picture.size(), QSize(1024, 600));
    QCOMPARE(picture.pixelColor(1, 1), QColor(Qt::black));
    QCOMPARE(picture.pixelColor(700, 200), QColor(Qt::black)); // behind the empty list
}

void TestGpsTestLooks::longTextsAreNotClipped()
{
    const ShownPage page;
    bench::UnitChange change = bench::unit().change();
    bench::GnssState &gnss = change->gnss;
    gnss.moduleKind = 0;
    gnss.installStatus = "CALIBRATING 12/40";
    gnss.antenna = "SHORTED TO GROUND, NO SIGNAL";
    gnss.duration = {{0, 0, 0}, 23, 59, 59};
    krnmINFO info = {};
    info.utcYear = 2024;
    info.utcMonth = info.utcDay = info.utcHour = 12;
    info.utcMinute = info.utcSecond = 59;
    info.latitude = -8959.9999e-9;
    info.longitude = -17959.9999e-9;
    info.speed = -1.23457e-05;
    info.satellitesInView = info.satellitesInUse = -2147483647;
    report(info);
    emit GpsService::instance()->gpsFirmwareVersion(QString(40, 'W'));
    const QList<QLabel *> labels = page.findChildren<QLabel *>();
    QCOMPARE(labels.size(), 22);
    for (const QLabel *label : labels)
        QVERIFY2(tests::showsItsWholeText(label), qPrintable(label->objectName()));
}

void TestGpsTestLooks::nothingOverlaps()
{
    const ShownPage page;
    const QHash<QString, QString> captionOf{{"resetinstall_txt", "resetinstall_brn"},
                                            {"btn_txt_version", "btn_version"},
                                            {"coldstart_txt", "coldstart_btn"},
                                            {"gpslog_txt", "gpslog_btn"}};
    const QList<QWidget *> widgets =
        page.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(widgets.size(), 22 + 4 + 1);
    for (const QWidget *one : widgets) {
        QVERIFY2(page.rect().contains(one->geometry()), qPrintable(one->objectName()));
        for (const QWidget *other : widgets) {
            if (one == other || captionOf.value(one->objectName()) == other->objectName()
                || captionOf.value(other->objectName()) == one->objectName())
                continue;
            QVERIFY2(!one->geometry().intersects(other->geometry()),
                     qPrintable(one->objectName() + " on " + other->objectName()));
        }
    }
}

void TestGpsTestLooks::captionsLieOnTheirButtons_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("button");
    QTest::newRow("reset install") << "resetinstall_txt"
                                   << "resetinstall_brn";
    QTest::newRow("version") << "btn_txt_version"
                             << "btn_version";
    QTest::newRow("cold start") << "coldstart_txt"
                                << "coldstart_btn";
    QTest::newRow("recording") << "gpslog_txt"
                               << "gpslog_btn";
}

void TestGpsTestLooks::captionsLieOnTheirButtons()
{
    QFETCH(QString, caption);
    QFETCH(QString, button);
    const ShownPage page;
    const QLabel *label = page.child(qPrintable(caption));
    QPushButton *key = page.child<QPushButton>(qPrintable(button));
    QVERIFY(label->testAttribute(Qt::WA_TransparentForMouseEvents));
    QVERIFY(key->geometry().contains(label->geometry()));
    QCOMPARE(page.childAt(label->geometry().center()), key);
    const QObjectList &children = page.children();
    QVERIFY(children.indexOf(const_cast<QLabel *>(label)) > children.indexOf(key));
}

void TestGpsTestLooks::heldButtonLooksHeld()
{
    ShownPage page;
    auto *key = page.child<QPushButton>("btn_version");
    const QImage up = page.grab(key->geometry()).toImage();
    key->setDown(true);
    const QImage held = page.grab(key->geometry()).toImage();
    QVERIFY(up != held);
    // brighter, so that it is seen beside the finger
    QVERIFY(held.pixelColor(20, 25).lightness() > up.pixelColor(20, 25).lightness() + 20);
}

void TestGpsTestLooks::sixRowsFitTheView()
{
    const ShownPage page;
    setSatellites(7);
    report(bench::unit().gnss.info);
    const QListView *view = page.list();
    const QRect visible = view->viewport()->rect();
    QCOMPARE(view->visualRect(view->model()->index(0, 0)).height(), 64);
    QVERIFY(visible.contains(view->visualRect(view->model()->index(5, 0))));
    QVERIFY(!visible.intersects(view->visualRect(view->model()->index(6, 0))));
    QCOMPARE(QImage(":/Resource/common/Icn_list_item_bar_n.png").width(), visible.width());
    QCOMPARE(page.bar()->maximum(), 64);
    QCOMPARE(page.bar()->mapTo(&page, QPoint(0, 0)).x(), view->x() + visible.width());
}

void TestGpsTestLooks::rowsAreDrawnGrayByTheListStyle()
{
    ShownPage page;
    setSatellites(1);
    report(bench::unit().gnss.info);
    QTRY_COMPARE(page.list()->visualRect(page.list()->model()->index(0, 0)).height(), 64);
    bench::journal().clear();
    const QImage picture = page.list()->viewport()->grab().toImage();
    const QStringList asked = bench::journal().texts();
    QVERIFY(asked.contains("ColorGroup.setFontColor(\"ColorGroup4\", 26, 2)"));
    QVERIFY(!asked.contains("ColorGroup.setFontColor(\"ColorGroup1\", 26, 2)"));

    // text at both ends of the row, nothing in its middle and on the next row
    const auto brightest = [&picture](const QRect &area) {
        int found = 0;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x)
                found = qMax(found, qGray(picture.pixel(x, y)));
        }
        return found;
    };
    const int gray = qGray(QColor(Qt::gray).rgb());
    QVERIFY(qAbs(brightest({0, 10, 100, 38}) - gray) < 10);
    QVERIFY(qAbs(brightest({331, 10, 100, 38}) - gray) < 10);
    QVERIFY(brightest({150, 10, 100, 38}) < 60);
    QVERIFY(brightest({0, 64, 456, 64}) < 60);
}

// On a device as wide as it takes: the arrow's place lies outside this view.
void TestGpsTestLooks::rowsHaveNoArrow()
{
    const ShownPage page;
    setSatellites(1);
    report(bench::unit().gnss.info);
    RecordingDevice device;
    QPainter painter(&device);
    QStyleOptionViewItem option;
    option.rect = kRow;
    page.list()->itemDelegate()->paint(&painter, option, page.list()->model()->index(0, 0));
    painter.end();
    QCOMPARE(areasOf(device, kBar).size(), 1);
    QCOMPARE(areasOf(device, kArrow).size(), 0);
    QCOMPARE(device.texts().size(), 2);
}

void TestGpsTestLooks::rowsTakeNoTouch()
{
    ShownPage page;
    setSatellites(3);
    report(bench::unit().gnss.info);
    QListView *view = page.list();
    const QPoint row = view->visualRect(view->model()->index(1, 0)).center();
    QTest::mouseClick(page.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      view->viewport()->mapTo(&page, row));
    QVERIFY(!view->selectionModel()->hasSelection());
    QVERIFY(!view->currentIndex().isValid());
    QVERIFY(!view->hasFocus());
}

void TestGpsTestLooks::dragScrollsTheList()
{
    ShownPage page;
    setSatellites(20);
    report(bench::unit().gnss.info);
    QTRY_COMPARE(page.bar()->maximum(), (20 - 6) * 64);
    const QPoint start = page.list()->geometry().center();
    QWindow *screen = page.windowHandle();
    QTest::mousePress(screen, Qt::LeftButton, Qt::NoModifier, start);
    for (int way = 10; way <= 150; way += 10)
        QTest::mouseMove(screen, start - QPoint(0, way));
    QCOMPARE(page.bar()->value(), 150); // while the finger is still down
    QTest::mouseRelease(screen, Qt::LeftButton, Qt::NoModifier, start - QPoint(0, 150));
}

TESTMODE_TEST_MAIN(TestGpsTestLooks)
#include "test_gps_test_looks.moc"
