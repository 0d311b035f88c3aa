#include "tests/support/unittest.h"

#include "framework/listviewscroller.h"

#include <QListView>
#include <QScrollBar>
#include <QStringListModel>

// A list that is moved by the finger.
class TestListviewScroller : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void belongsToItsOwner();
    void rowsFollowTheFinger();
    void stopsAtTheEnds_data();
    void stopsAtTheEnds();
    void aTouchIsNoDrag();
    void aDragLeavesTheSelection();
};

namespace {

// A list of many rows on screen, scrolled by its pixels.
struct List : QListView
{
    List()
    {
        setObjectName("list");
        QStringList lines;
        for (int i = 0; i < 50; ++i)
            lines << QString::number(i);
        model.setStringList(lines);
        setModel(&model);
        setFrameShape(QFrame::NoFrame);
        setVerticalScrollMode(ScrollPerPixel);
        resize(200, 200);
        scroller = new cm::ListviewScroller(this, this);
        scroller->setSelectionModel(selectionModel());
        show();
        verticalScrollBar()->setValue(100);
    }

    // From the middle of the view; negative: upwards.
    void drag(int way)
    {
        const QPoint start(50, 100);
        QTest::mousePress(viewport(), Qt::LeftButton, Qt::NoModifier, start);
        for (int step = 1; step <= 10; ++step)
            move(start + QPoint(0, way * step / 10));
        QTest::mouseRelease(viewport(), Qt::LeftButton, Qt::NoModifier, start + QPoint(0, way));
    }

    // With the button held, which the library's own helper leaves out.
    void move(const QPoint &to)
    {
        QMouseEvent event(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(viewport(), &event);
    }

    QStringListModel model;
    cm::ListviewScroller *scroller;
};

} // namespace

void TestListviewScroller::belongsToItsOwner()
{
    const List list;
    QCOMPARE(list.scroller->parent(), &list);
    QCOMPARE(bench::journal().texts(),
             QStringList({"ListviewScroller.ListviewScroller(\"list\", \"list\")",
                          "ListviewScroller.setSelectionModel(true)"}));
}

void TestListviewScroller::rowsFollowTheFinger()
{
    List list;
    list.drag(-60);
    QCOMPARE(list.verticalScrollBar()->value(), 160);
    list.drag(30);
    QCOMPARE(list.verticalScrollBar()->value(), 130);
}

void TestListviewScroller::stopsAtTheEnds_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("way");
    QTest::addColumn<bool>("atTheTop");
    QTest::newRow("top") << 20 << 90 << true;
    QTest::newRow("bottom") << 100000 << -90 << false;
}

void TestListviewScroller::stopsAtTheEnds()
{
    QFETCH(int, from);
    QFETCH(int, way);
    QFETCH(bool, atTheTop);
    List list;
    QScrollBar *bar = list.verticalScrollBar();
    bar->setValue(from);
    list.drag(way);
    QCOMPARE(bar->value(), atTheTop ? 0 : bar->maximum());
}

void TestListviewScroller::aTouchIsNoDrag()
{
    List list;
    list.drag(-3);
    QCOMPARE(list.verticalScrollBar()->value(), 100);
    QCOMPARE(list.selectionModel()->selectedIndexes(),
             QModelIndexList{list.indexAt(QPoint(50, 100))});
}

void TestListviewScroller::aDragLeavesTheSelection()
{
    List list;
    const QModelIndex chosen = list.model.index(8, 0);
    list.selectionModel()->select(chosen, QItemSelectionModel::ClearAndSelect);
    list.drag(-60);
    QCOMPARE(list.selectionModel()->selectedIndexes(), QModelIndexList{chosen});
}

TESTMODE_TEST_MAIN(TestListviewScroller)
#include "test_listviewscroller.moc"
