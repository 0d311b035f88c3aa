#include "tests/support/unittest.h"

#include "paintedrow.h"

#include <QListView>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

using testmode::GpsItemDelegate;
using namespace tests;

// The size of a list row, its texts, and how it is painted as a whole.
class TestGpsItemDelegate : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void rowsStay64PixelsHigh_data();
    void rowsStay64PixelsHigh();
    void widthOfARowIsRightMinusLeft();
    void satelliteLineIsGrayInTwoColumns();
    void textIsSplitAtTheComma_data();
    void textIsSplitAtTheComma();
    void textNeedsRoom_data();
    void textNeedsRoom();
    void textStateAndPen_data();
    void textStateAndPen();
    void fontComesFromTheColourGroup();
    void textStandsBesideTheDecoration_data();
    void textStandsBesideTheDecoration();
    void currentTextHasTheWholeWidth();
    void columnsFollowTheViewNotTheRow();
    void everyStepCanBeReplaced();
    void painterIsLeftAsItWas();
    void invalidIndexIsRefused();

private:
    ImageFolder folder;
};

void TestGpsItemDelegate::rowsStay64PixelsHigh_data()
{
    QTest::addColumn<int>("asked");
    for (const int asked : {-1, 0, 1, 40, 64, 65, 1000})
        QTest::newRow(qPrintable(QString::number(asked))) << asked;
}

void TestGpsItemDelegate::rowsStay64PixelsHigh()
{
    QFETCH(int, asked);
    Row row;
    QCOMPARE(row.delegate.sizeHint(row.option, row.model.index(0, 0)).height(), 64);
    row.delegate.setHeight(asked);
    QCOMPARE(row.delegate.sizeHint(row.option, row.model.index(0, 0)).height(), 64);
}

void TestGpsItemDelegate::widthOfARowIsRightMinusLeft()
{
    Row row;
    QCOMPARE(row.delegate.sizeHint(row.option, row.model.index(0, 0)).width(), 499);
}

void TestGpsItemDelegate::satelliteLineIsGrayInTwoColumns()
{
    Row row;
    row.item->setText("ID: 12, Sig: 38dB");
    row.paint();

    const QVector<Painted> texts = row.device.texts();
    QCOMPARE(texts.size(), 2);
    QCOMPARE(texts[0].text, QString("ID: 12"));
    QCOMPARE(texts[1].text.trimmed(), QString("Sig: 38dB"));
    for (const Painted &text : texts) {
        QCOMPARE(text.pen, QColor(Qt::gray));
        QCOMPARE(text.font.pixelSize(), 26);
        // in the middle of the 38 pixels that begin 10 below the row's top
        QVERIFY(near(text.area.center().y(), 130 + 10 + 19));
    }
    // from the left edge to 25 pixels before the right one
    QVERIFY(near(texts[0].area.left(), 7));
    QVERIFY(near(texts[1].area.right(), 7 + 500 - 25));
    QVERIFY(texts[0].area.right() < texts[1].area.left());
}

void TestGpsItemDelegate::textIsSplitAtTheComma_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("drawn");
    QTest::newRow("two parts") << "a,b" << QStringList{"a", "b"};
    QTest::newRow("third part is not drawn") << "a,b,c" << QStringList{"a", "b"};
    QTest::newRow("second part only") << ",b" << QStringList{"b"};
    QTest::newRow("first part only") << "a," << QStringList{"a"};
    QTest::newRow("no comma") << "a" << QStringList{"a"};
    QTest::newRow("empty") << "" << QStringList();
}

void TestGpsItemDelegate::textIsSplitAtTheComma()
{
    QFETCH(QString, text);
    QFETCH(QStringList, drawn);

    Row row;
    row.item->setText(text);
    row.paint();
    QStringList found;
    const QVector<Painted> texts = row.device.texts();
    for (const Painted &painted : texts)
        found << painted.text;
    QCOMPARE(found, drawn);
}

void TestGpsItemDelegate::textNeedsRoom_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("texts");
    QTest::newRow("a pixel is left of the row") << 27 << 4;
    QTest::newRow("nothing is left of the row") << 26 << 0;
}

void TestGpsItemDelegate::textNeedsRoom()
{
    QFETCH(int, height);
    QFETCH(int, texts);
    Row row;
    row.item->setText("a,b");
    row.item->setData("c,d", Qt::StatusTipRole);
    row.option.rect.setHeight(height);
    row.paint();
    QCOMPARE(row.device.texts().size(), texts);
    // Neither is a font asked for.
    QCOMPARE(bench::journal().texts().size(), texts / 2);
}

void TestGpsItemDelegate::textStateAndPen_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<int>("state");
    QTest::addColumn<QColor>("pen");

    const QColor unchanged(1, 2, 3);
    const QColor amber(255, 177, 25);
    const int selectable = Qt::ItemIsSelectable;
    const int editable = Qt::ItemIsEditable;
    const int neither = Qt::ItemIsEnabled | Qt::ItemIsUserCheckable;
    QTest::newRow("selectable") << selectable << false << false << 0 << QColor(Qt::white);
    QTest::newRow("editable") << editable << false << false << 0 << QColor(Qt::white);
    QTest::newRow("selected") << selectable << true << false << 1 << unchanged;
    QTest::newRow("selected and checked") << selectable << true << true << 1 << unchanged;
    QTest::newRow("checked") << editable << false << true << 3 << amber;
    QTest::newRow("neither") << neither << false << false << 2 << QColor(Qt::gray);
    QTest::newRow("neither, selected") << neither << true << false << 2 << QColor(Qt::gray);
    QTest::newRow("neither, checked") << neither << false << true << 2 << QColor(Qt::gray);
}

void TestGpsItemDelegate::textStateAndPen()
{
    QFETCH(int, flags);
    QFETCH(bool, selected);
    QFETCH(bool, checked);
    QFETCH(int, state);
    QFETCH(QColor, pen);

    Row row;
    row.item->setText("a,b");
    row.item->setFlags(static_cast<Qt::ItemFlags>(flags));
    row.item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    if (selected)
        row.option.state |= QStyle::State_Selected;
    QPainter painter(&row.device);
    painter.setPen(QColor(1, 2, 3));
    row.delegate.paint(&painter, row.option, row.model.index(0, 0));
    painter.end();

    QCOMPARE(row.device.texts().size(), 2);
    QCOMPARE(row.device.texts().at(0).pen, pen);
    QCOMPARE(row.device.texts().at(1).pen, pen);
    QCOMPARE(bench::journal().texts(),
             QStringList{QString("ColorGroup.setFontColor(\"ColorGroup1\", 26, %1)").arg(state)});
}

void TestGpsItemDelegate::fontComesFromTheColourGroup()
{
    Row row;
    row.item->setText("a,b");
    row.delegate.setColorGroup("ColorGroup4");
    row.paint();
    QCOMPARE(bench::journal().texts(),
             QStringList{"ColorGroup.setFontColor(\"ColorGroup4\", 26, 2)"});
}

void TestGpsItemDelegate::textStandsBesideTheDecoration_data()
{
    QTest::addColumn<int>("indent");
    QTest::newRow("no indent") << 0;
    QTest::newRow("indent") << 13;
}

void TestGpsItemDelegate::textStandsBesideTheDecoration()
{
    QFETCH(int, indent);

    Row row(false, indent);
    row.item->setText("a,b");
    row.item->setData(folder.image("cover.png", 81, 40), Qt::DecorationRole);
    row.paint();
    const QVector<Painted> texts = row.device.texts();
    QCOMPARE(texts.size(), 2);
    const int left = 7 + 20 + 50 + 81 + 26 + indent;
    QVERIFY(near(texts[0].area.left(), left));
    QVERIFY(near(texts[1].area.right(), left + 500 - 81 - 68));
    QVERIFY(near(texts[0].area.center().y(), 130 + 10 + 19));

    // Without a decoration the indent has no effect.
    Row bare(false, indent);
    bare.item->setText("a,b");
    bare.paint();
    QVERIFY(near(bare.device.texts().at(0).area.left(), 7));
}

void TestGpsItemDelegate::currentTextHasTheWholeWidth()
{
    Row row(false, 13);
    row.item->setText("a,b");
    row.item->setData("c,d", Qt::StatusTipRole);
    row.item->setData(folder.image("cover.png", 81, 40), Qt::DecorationRole);
    row.paint();
    const QVector<Painted> texts = row.device.texts();
    QCOMPARE(texts.size(), 4);
    QCOMPARE(texts[2].text, QString("c"));
    QCOMPARE(texts[3].text, QString("d"));
    QVERIFY(near(texts[2].area.left(), 7));
    QVERIFY(near(texts[3].area.right(), 7 + 500 - 25));
    QCOMPARE(texts[3].pen, QColor(Qt::gray));
    QCOMPARE(texts[3].font.pixelSize(), 26);
}

void TestGpsItemDelegate::columnsFollowTheViewNotTheRow()
{
    QListView view;
    view.setFrameShape(QFrame::NoFrame);
    view.resize(300, 200);
    view.show();
    Row row;
    row.option.widget = &view;
    row.item->setText("a,b");
    row.item->setData(folder.image("check.png", 30, 20), 357);
    row.item->setData(2, Qt::CheckStateRole);
    row.paint();
    QCOMPARE(view.viewport()->width(), 300);
    QVERIFY(near(row.device.texts().at(0).area.left(), 0));
    QVERIFY(near(row.device.texts().at(1).area.right(), 300 - 25));
    QCOMPARE(areasOf(row.device, kCheckMark), QVector<QRectF>{QRectF(270, 130 + 22, 30, 20)});
    QCOMPARE(areasOf(row.device, kBar).at(0).topLeft(), QPointF(7, 130));
}

void TestGpsItemDelegate::everyStepCanBeReplaced()
{
    struct Silent : GpsItemDelegate
    {
        Silent() : GpsItemDelegate(nullptr, true, 0) { }
        void drawBackground(QPainter *, const QStyleOptionViewItem &) const override { }
        void drawArrow(QPainter *, const QStyleOptionViewItem &) const override { }
        void drawFocus(QPainter *, const QStyleOptionViewItem &, const QRect &) const override { }
        void drawCheck(QPainter *, const QStyleOptionViewItem &, const QRect &,
                       Qt::CheckState) const override
        {
        }
        void drawDecoration(QPainter *, const QStyleOptionViewItem &, const QRect &,
                            const QPixmap &) const override
        {
        }
        void drawDisplay(QPainter *, const QStyleOptionViewItem &, const QRect &,
                         const QString &) const override
        {
        }
        void drawCurrent(QPainter *, const QStyleOptionViewItem &, const QRect &,
                         const QString &) const override
        {
        }
    } silent;

    Row row;
    row.item->setText("a,b");
    row.item->setData("c,d", Qt::StatusTipRole);
    row.item->setData(folder.image("cover.png", 40, 40), Qt::DecorationRole);
    row.item->setData(folder.image("check.png", 30, 20), 357);
    row.item->setData(2, Qt::CheckStateRole);
    row.option.state |= QStyle::State_HasFocus;
    QPainter painter(&row.device);
    silent.paint(&painter, row.option, row.model.index(0, 0));
    QVERIFY(row.device.painted().isEmpty());
}

void TestGpsItemDelegate::painterIsLeftAsItWas()
{
    Row row;
    row.item->setText("a,b");
    QPainter painter(&row.device);
    painter.setPen(Qt::red);
    const QFont font = painter.font();
    row.delegate.paint(&painter, row.option, row.model.index(0, 0));
    QCOMPARE(painter.pen().color(), QColor(Qt::red));
    QCOMPARE(painter.font(), font);
}

// In a process of its own, for the assertion ends it.
void TestGpsItemDelegate::invalidIndexIsRefused()
{
#if defined(QT_NO_DEBUG) && !defined(QT_FORCE_ASSERTS)
    const QByteArray expected; // a release has no assertions
#else
    const QByteArray expected = "ASSERT: \"index.isValid()\"";
#endif
    int ends[2];
    QCOMPARE(::pipe(ends), 0);
    const pid_t child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        ::signal(SIGABRT, SIG_DFL);
        ::dup2(ends[1], STDERR_FILENO);
        qInstallMessageHandler(nullptr);
        QImage canvas(100, 100, QImage::Format_RGB32);
        QPainter painter(&canvas);
        GpsItemDelegate(nullptr, false, 0).paint(&painter, QStyleOptionViewItem(), QModelIndex());
        ::_exit(0);
    }
    ::close(ends[1]);
    QByteArray said;
    char buffer[256];
    for (ssize_t got = 0; (got = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        said.append(buffer, int(got));
    ::close(ends[0]);
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QCOMPARE(WIFSIGNALED(status), !expected.isEmpty());
    QVERIFY2(said.contains(expected), said.constData());
}

TESTMODE_TEST_MAIN(TestGpsItemDelegate)
#include "test_gpsitemdelegate.moc"
