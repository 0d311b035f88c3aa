#include "tests/support/unittest.h"

#include "paintedrow.h"

#include <QListView>

#include <functional>

using testmode::GpsItemDelegate;
using namespace tests;

namespace {

// What a step was given, and what it painted: the items of the device from `first` on.
struct Step
{
    QString name;
    QRect rect; // null where the step has none of its own
    QString text;
    int first;
    int count;
};

// Keeps the steps of a row; the silent one paints nothing.
class WatchedDelegate : public GpsItemDelegate
{
public:
    WatchedDelegate(const RecordingDevice *paintedOn, bool drawsArrow, int textIndent)
        : GpsItemDelegate(nullptr, drawsArrow, textIndent), device(paintedOn)
    {
    }

    QString silent;
    mutable QVector<Step> steps;

protected:
    void drawBackground(QPainter *painter, const QStyleOptionViewItem &option) const override
    {
        keep("background", QRect(), QString(),
             [&] { GpsItemDelegate::drawBackground(painter, option); });
    }
    void drawArrow(QPainter *painter, const QStyleOptionViewItem &option) const override
    {
        keep("arrow", QRect(), QString(), [&] { GpsItemDelegate::drawArrow(painter, option); });
    }
    void drawFocus(QPainter *painter, const QStyleOptionViewItem &option,
                   const QRect &rect) const override
    {
        keep("focus", rect, QString(), [&] { GpsItemDelegate::drawFocus(painter, option, rect); });
    }
    void drawCheck(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                   Qt::CheckState state) const override
    {
        keep("check", rect, QString(),
             [&] { GpsItemDelegate::drawCheck(painter, option, rect, state); });
    }
    void drawDecoration(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                        const QPixmap &pixmap) const override
    {
        keep("decoration", rect, QString(),
             [&] { GpsItemDelegate::drawDecoration(painter, option, rect, pixmap); });
    }
    void drawDisplay(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                     const QString &text) const override
    {
        keep("display", rect, text,
             [&] { GpsItemDelegate::drawDisplay(painter, option, rect, text); });
    }
    void drawCurrent(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                     const QString &text) const override
    {
        keep("current", rect, text,
             [&] { GpsItemDelegate::drawCurrent(painter, option, rect, text); });
    }

private:
    void keep(const char *name, const QRect &rect, const QString &text,
              const std::function<void()> &draw) const
    {
        const int before = device->painted().size();
        if (silent != QLatin1String(name))
            draw();
        steps.append({name, rect, text, before, device->painted().size() - before});
    }

    const RecordingDevice *device;
};

const QStringList kSteps = {"background", "arrow",   "focus",  "check",
                            "decoration", "display", "current"};

} // namespace

// The drawing steps of a list row: their order, what each is given, and that each stands alone.
class TestGpsItemDelegateSteps : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void stepsGetTheirRectangles_data();
    void stepsGetTheirRectangles();
    void rectanglesFollowTheViewport();
    void eachStepGetsItsText();
    void arrowIsAStepOnlyWhereItIsDrawn();
    void eachStepPaintsAlone_data();
    void eachStepPaintsAlone();

private:
    void fill(Row *row, const QSize &check, const QSize &decoration);
    static QVector<Step> paint(Row *row, WatchedDelegate *delegate);
    static QRect rectOf(const QVector<Step> &steps, const char *name);

    ImageFolder folder;
};

// Two texts, and images of those sizes where they are not empty.
void TestGpsItemDelegateSteps::fill(Row *row, const QSize &check, const QSize &decoration)
{
    row->item->setText("a,b");
    row->item->setData("c,d", Qt::StatusTipRole);
    row->item->setData(2, Qt::CheckStateRole);
    row->option.state |= QStyle::State_HasFocus;
    if (!check.isEmpty())
        row->item->setData(folder.image("check.png", check.width(), check.height()), 357);
    if (!decoration.isEmpty())
        row->item->setData(folder.image("cover.png", decoration.width(), decoration.height()),
                           Qt::DecorationRole);
}

QVector<Step> TestGpsItemDelegateSteps::paint(Row *row, WatchedDelegate *delegate)
{
    QPainter painter(&row->device);
    delegate->paint(&painter, row->option, row->model.index(0, 0));
    return delegate->steps;
}

QRect TestGpsItemDelegateSteps::rectOf(const QVector<Step> &steps, const char *name)
{
    for (const Step &step : steps) {
        if (step.name == QLatin1String(name))
            return step.rect;
    }
    return QRect();
}

void TestGpsItemDelegateSteps::stepsGetTheirRectangles_data()
{
    QTest::addColumn<bool>("checkLeft");
    QTest::addColumn<int>("indent");
    QTest::addColumn<QSize>("checkSize");
    QTest::addColumn<QSize>("decorationSize");
    QTest::addColumn<QRect>("check");
    QTest::addColumn<QRect>("decoration");
    QTest::addColumn<QRect>("display");
    const QSize none;
    const QRect noRect;
    const QRect whole(7, 140, 475, 38);
    // the row is (7, 130), 500 x 64
    QTest::newRow("texts only") << false << 0 << none << none << noRect << noRect << whole;
    QTest::newRow("indent without decoration")
        << false << 13 << none << none << noRect << noRect << whole;
    QTest::newRow("check at the right")
        << false << 0 << QSize(30, 20) << none << QRect(477, 152, 30, 20) << noRect << whole;
    QTest::newRow("check at the left")
        << true << 0 << QSize(30, 20) << none << QRect(7, 152, 30, 20) << noRect << whole;
    QTest::newRow("decoration") << false << 0 << none << QSize(81, 40) << noRect
                                << QRect(77, 142, 81, 40) << QRect(184, 140, 351, 38);
    QTest::newRow("decoration and indent") << false << 13 << none << QSize(81, 40) << noRect
                                           << QRect(77, 142, 81, 40) << QRect(197, 140, 351, 38);
    QTest::newRow("decoration beside a check at the right")
        << false << 0 << QSize(30, 20) << QSize(81, 40) << QRect(477, 152, 30, 20)
        << QRect(77, 142, 81, 40) << QRect(184, 140, 351, 38);
    QTest::newRow("decoration beside a check at the left")
        << true << 0 << QSize(30, 20) << QSize(81, 40) << QRect(7, 152, 30, 20)
        << QRect(107, 142, 81, 40) << QRect(214, 140, 351, 38);
    QTest::newRow("largest decoration") << false << 0 << none << QSize(181, 109) << noRect
                                        << QRect(27, 108, 181, 109) << QRect(234, 140, 251, 38);
    QTest::newRow("decoration of twice the size")
        << false << 0 << none << QSize(362, 218) << noRect << QRect(27, 108, 181, 109)
        << QRect(234, 140, 251, 38);
}

// To the pixel, as whole numbers: what is painted into them depends on the font.
void TestGpsItemDelegateSteps::stepsGetTheirRectangles()
{
    QFETCH(bool, checkLeft);
    QFETCH(int, indent);
    QFETCH(QSize, checkSize);
    QFETCH(QSize, decorationSize);
    QFETCH(QRect, check);
    QFETCH(QRect, decoration);
    Row row;
    WatchedDelegate delegate(&row.device, true, indent);
    if (checkLeft)
        delegate.setCheckIconLayout(GpsItemDelegate::CheckLeft);
    fill(&row, checkSize, decorationSize);
    const QVector<Step> steps = paint(&row, &delegate);
    QTEST(rectOf(steps, "display"), "display");
    QCOMPARE(rectOf(steps, "current"), QRect(7, 140, 475, 38));
    QCOMPARE(rectOf(steps, "focus"), QRect(7, 130, 500, 64));
    if (!checkSize.isEmpty())
        QCOMPARE(rectOf(steps, "check"), check);
    if (!decorationSize.isEmpty())
        QCOMPARE(rectOf(steps, "decoration"), decoration);
}

// Which is narrower than the view by its frame and scroll bar, and not the row's width.
void TestGpsItemDelegateSteps::rectanglesFollowTheViewport()
{
    QListView view;
    view.setFrameStyle(QFrame::Box);
    view.setLineWidth(5);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    view.resize(300, 200);
    view.show();
    const int width = view.viewport()->width();
    QVERIFY(width <= 300 - 10);

    Row row;
    row.option.widget = &view;
    WatchedDelegate delegate(&row.device, false, 0);
    fill(&row, QSize(30, 20), QSize(81, 40));
    const QVector<Step> steps = paint(&row, &delegate);
    QCOMPARE(rectOf(steps, "check"), QRect(width - 30, 152, 30, 20));
    QCOMPARE(rectOf(steps, "display"), QRect(184, 140, width - 81 - 68, 38));
    QCOMPARE(rectOf(steps, "current"), QRect(0, 140, width - 25, 38));
}

void TestGpsItemDelegateSteps::eachStepGetsItsText()
{
    Row row;
    WatchedDelegate delegate(&row.device, true, 0);
    fill(&row, QSize(30, 20), QSize(81, 40));
    QStringList names;
    QStringList texts;
    const QVector<Step> steps = paint(&row, &delegate);
    for (const Step &step : steps) {
        names << step.name;
        texts << step.text;
    }
    QCOMPARE(names, kSteps);
    QCOMPARE(texts, (QStringList{"", "", "", "", "", "a,b", "c,d"}));
}

void TestGpsItemDelegateSteps::arrowIsAStepOnlyWhereItIsDrawn()
{
    Row row;
    WatchedDelegate delegate(&row.device, false, 0);
    fill(&row, QSize(30, 20), QSize(81, 40));
    QStringList names;
    const QVector<Step> steps = paint(&row, &delegate);
    for (const Step &step : steps)
        names << step.name;
    QStringList wanted = kSteps;
    wanted.removeOne("arrow");
    QCOMPARE(names, wanted);
}

void TestGpsItemDelegateSteps::eachStepPaintsAlone_data()
{
    QTest::addColumn<int>("painted");
    for (const QString &step : kSteps)
        QTest::newRow(qPrintable(step)) << (step == "display" || step == "current" ? 2 : 1);
}

// A derived delegate that leaves one step out loses that step's paint and no other's.
void TestGpsItemDelegateSteps::eachStepPaintsAlone()
{
    const QString silent = QTest::currentDataTag();
    Row whole;
    WatchedDelegate every(&whole.device, true, 0);
    fill(&whole, QSize(30, 20), QSize(81, 40));
    const Step left = paint(&whole, &every).at(kSteps.indexOf(silent));
    QTEST(left.count, "painted");
    QVector<Painted> wanted = whole.device.painted();
    wanted.remove(left.first, left.count);

    Row row;
    WatchedDelegate delegate(&row.device, true, 0);
    delegate.silent = silent;
    fill(&row, QSize(30, 20), QSize(81, 40));
    paint(&row, &delegate);
    const QVector<Painted> found = row.device.painted();
    QCOMPARE(found.size(), wanted.size());
    for (int i = 0; i < found.size(); ++i) {
        QCOMPARE(found.at(i).area, wanted.at(i).area);
        QCOMPARE(found.at(i).text, wanted.at(i).text);
        QCOMPARE(found.at(i).image, wanted.at(i).image);
    }
}

TESTMODE_TEST_MAIN(TestGpsItemDelegateSteps)
#include "test_gpsitemdelegate_steps.moc"
