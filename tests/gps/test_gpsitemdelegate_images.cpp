#include "tests/support/unittest.h"

#include "paintedrow.h"

using testmode::GpsItemDelegate;
using namespace tests;

// The images of a list row, and where they stand.
class TestGpsItemDelegateImages : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void backgroundStandsAtTheRowsTopLeft();
    void arrowIsDrawnOnlyWhenAsked();
    void focusedRowHasThePressedBar();
    void checkImageSitsAtOneEdge_data();
    void checkImageSitsAtOneEdge();
    void checkedRowHasTheMark_data();
    void checkedRowHasTheMark();
    void decorationIsCentredInItsColumn_data();
    void decorationIsCentredInItsColumn();
    void selectedRowShowsThePressedDecoration_data();
    void selectedRowShowsThePressedDecoration();
    void stepsComeInOrder();

private:
    ImageFolder folder;
};

void TestGpsItemDelegateImages::initTestCase()
{
    for (const QString &name : {kBar, kFocusBar, kCheckMark, kArrow})
        QVERIFY2(!QImage(name).isNull(), qPrintable(name));
}

void TestGpsItemDelegateImages::backgroundStandsAtTheRowsTopLeft()
{
    Row row;
    row.paint();
    QCOMPARE(row.device.painted().size(), 1);
    QCOMPARE(areasOf(row.device, kBar),
             QVector<QRectF>{QRectF(kRow.topLeft(), QImage(kBar).size())});
}

void TestGpsItemDelegateImages::arrowIsDrawnOnlyWhenAsked()
{
    Row without(false);
    without.paint();
    QCOMPARE(areasOf(without.device, kArrow).size(), 0);

    Row with(true);
    with.paint();
    QCOMPARE(areasOf(with.device, kArrow).size(), 1);
    QCOMPARE(areasOf(with.device, kArrow).at(0).topLeft(), QPointF(7 + 610, 130 + 22));
}

void TestGpsItemDelegateImages::focusedRowHasThePressedBar()
{
    Row row;
    row.option.state |= QStyle::State_HasFocus;
    row.paint();
    QCOMPARE(areasOf(row.device, kFocusBar).size(), 1);
    QCOMPARE(areasOf(row.device, kFocusBar).at(0).topLeft(), QPointF(7, 130));
}

void TestGpsItemDelegateImages::checkImageSitsAtOneEdge_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<QRectF>("mark");
    // vertically in the middle: (64 - 20) / 2 below the row's top
    QTest::newRow("right") << 0 << QRectF(7 + 500 - 30, 130 + 22, 30, 20);
    QTest::newRow("left") << 1 << QRectF(7, 130 + 22, 30, 20);
}

void TestGpsItemDelegateImages::checkImageSitsAtOneEdge()
{
    QFETCH(int, layout);
    QFETCH(QRectF, mark);

    Row row;
    row.delegate.setCheckIconLayout(static_cast<GpsItemDelegate::Layout>(layout));
    row.item->setData(folder.image("check.png", 30, 20), 357);
    row.item->setData(2, Qt::CheckStateRole);
    row.paint();
    QCOMPARE(areasOf(row.device, kCheckMark), QVector<QRectF>{mark});
}

void TestGpsItemDelegateImages::checkedRowHasTheMark_data()
{
    QTest::addColumn<QVariant>("state");
    QTest::addColumn<int>("marks");
    QTest::newRow("none") << QVariant() << 0;
    QTest::newRow("negative") << QVariant(-1) << 0;
    QTest::newRow("unchecked") << QVariant(0) << 0;
    QTest::newRow("partly counts as checked") << QVariant(1) << 1;
    QTest::newRow("checked") << QVariant(2) << 1;
    QTest::newRow("more") << QVariant(9) << 1;
}

void TestGpsItemDelegateImages::checkedRowHasTheMark()
{
    QFETCH(QVariant, state);
    QFETCH(int, marks);

    Row row;
    row.item->setData(folder.image("check.png", 30, 20), 357);
    row.item->setData(state, Qt::CheckStateRole);
    row.paint();
    QCOMPARE(areasOf(row.device, kCheckMark).size(), marks);

    // Without a check image there is no place for the mark.
    Row bare;
    bare.item->setData(state, Qt::CheckStateRole);
    bare.paint();
    QCOMPARE(areasOf(bare.device, kCheckMark).size(), 0);
}

void TestGpsItemDelegateImages::decorationIsCentredInItsColumn_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("layout");
    QTest::addColumn<QRectF>("area");
    // The column begins 20 pixels right of the row's left edge, or of the check image.
    QTest::newRow("small") << QSize(81, 40) << 0 << QRectF(7 + 20 + 50, 130 + 12, 81, 40);
    QTest::newRow("right of the check image")
        << QSize(81, 40) << 1 << QRectF(7 + 30 + 20 + 50, 130 + 12, 81, 40);
    QTest::newRow("as large as can be")
        << QSize(181, 109) << 0 << QRectF(7 + 20, 130 - 22, 181, 109);
    QTest::newRow("too wide") << QSize(362, 100) << 0 << QRectF(7 + 20, 130 + 7, 181, 50);
    QTest::newRow("too high") << QSize(100, 218) << 0 << QRectF(7 + 20 + 65, 130 - 22, 50, 109);
}

void TestGpsItemDelegateImages::decorationIsCentredInItsColumn()
{
    QFETCH(QSize, size);
    QFETCH(int, layout);
    QFETCH(QRectF, area);

    Row row;
    row.delegate.setCheckIconLayout(static_cast<GpsItemDelegate::Layout>(layout));
    row.item->setData(folder.image("check.png", 30, 20), 357);
    const QString name = folder.image("cover.png", size.width(), size.height());
    row.item->setData(name, Qt::DecorationRole);
    row.paint();
    QCOMPARE(areasOf(row.device, name), QVector<QRectF>{area});
}

void TestGpsItemDelegateImages::selectedRowShowsThePressedDecoration_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<QString>("shown");
    QTest::newRow("not selected") << "cover_n.png" << false << "cover_n.png";
    QTest::newRow("selected") << "cover_n.png" << true << "cover_p.png";
    QTest::newRow("no pressed variant") << "lonely_n.png" << true << "lonely_n.png";
    QTest::newRow("five characters are replaced, whatever they are")
        << "cover_x.png" << true << "cover_p.png";
}

void TestGpsItemDelegateImages::selectedRowShowsThePressedDecoration()
{
    QFETCH(QString, name);
    QFETCH(bool, selected);
    QFETCH(QString, shown);

    for (const char *file : {"cover_n.png", "cover_p.png", "cover_x.png", "lonely_n.png"})
        folder.image(file, 40, 40);
    Row row;
    row.item->setData(folder.filePath(name), Qt::DecorationRole);
    if (selected)
        row.option.state |= QStyle::State_Selected;
    row.paint();
    QCOMPARE(row.device.images().size(), 2);
    QVERIFY(isImage(row.device.images().at(1), folder.filePath(shown)));
}

void TestGpsItemDelegateImages::stepsComeInOrder()
{
    Row row(true);
    const QString cover = folder.image("cover.png", 40, 40);
    row.item->setText("a,b");
    row.item->setData("c,d", Qt::StatusTipRole);
    row.item->setData(cover, Qt::DecorationRole);
    row.item->setData(folder.image("check.png", 30, 20), 357);
    row.item->setData(2, Qt::CheckStateRole);
    row.option.state |= QStyle::State_HasFocus;
    row.paint();

    const QVector<Painted> &painted = row.device.painted();
    QCOMPARE(painted.size(), 9);
    int i = 0;
    for (const QString &name : {kBar, kArrow, kFocusBar, kCheckMark, cover})
        QVERIFY2(isImage(painted.at(i++), name), qPrintable(name));
    for (const char *text : {"a", "b", "c", "d"})
        QCOMPARE(painted.at(i++).text, QString(text));
}

TESTMODE_TEST_MAIN(TestGpsItemDelegateImages)
#include "test_gpsitemdelegate_images.moc"
