#include "tests/support/unittest.h"

#include "framework/qpushbutton2.h"

#include <QPainter>

// The unit's push button paints one image while up and another while held down.
class TestQPushButton2 : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void paintsTheImageOfItsState();
    void stretchesTheImageToItsSize();
    void imageNamesMayCarryTheUnitsPrefix_data();
    void imageNamesMayCarryTheUnitsPrefix();
    void withoutAnImageNothingIsPainted();
};

namespace {

const QColor kBehind(0x10, 0x14, 0x18);
const char kUp[] = ":/lumora_btphone/settings/key_microphone_n.png";
const char kDown[] = ":/lumora_btphone/settings/key_microphone_p.png";

QImage painted(QPushButton2 *button)
{
    QImage image(button->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(kBehind);
    button->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

QImage picture(const char *name, const QSize &size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(kBehind);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(image.rect(), QPixmap(QString::fromLatin1(name)));
    return image;
}

} // namespace

void TestQPushButton2::paintsTheImageOfItsState()
{
    QVERIFY(!QPixmap(kUp).isNull());
    QVERIFY(!QPixmap(kDown).isNull());
    QPushButton2 button;
    button.resize(180, 64);
    QVERIFY(button.setProperty("backgroundNormalOff", "qrc" + QString(kUp)));
    QVERIFY(button.setProperty("backgroundNormalOn", "qrc" + QString(kDown)));
    QCOMPARE(painted(&button), picture(kUp, button.size()));
    button.setDown(true);
    QCOMPARE(painted(&button), picture(kDown, button.size()));
    button.setDown(false);
    QCOMPARE(painted(&button), picture(kUp, button.size()));
    QVERIFY(picture(kUp, button.size()) != picture(kDown, button.size()));
}

void TestQPushButton2::stretchesTheImageToItsSize()
{
    QPushButton2 button;
    button.setBackgroundNormalOff(kUp);
    button.resize(360, 100);
    QCOMPARE(painted(&button), picture(kUp, QSize(360, 100)));
}

void TestQPushButton2::imageNamesMayCarryTheUnitsPrefix_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("with") << "qrc" + QString(kUp);
    QTest::newRow("without") << QString(kUp);
}

void TestQPushButton2::imageNamesMayCarryTheUnitsPrefix()
{
    QFETCH(QString, name);
    QPushButton2 button;
    button.resize(180, 64);
    button.setBackgroundNormalOff(name);
    QCOMPARE(button.backgroundNormalOff(), name);
    QCOMPARE(painted(&button), picture(kUp, button.size()));
}

void TestQPushButton2::withoutAnImageNothingIsPainted()
{
    QPushButton2 button;
    button.resize(20, 20);
    button.setBackgroundNormalOff("qrc:/no/such/image.png");
    QImage bare(button.size(), QImage::Format_ARGB32_Premultiplied);
    bare.fill(kBehind);
    QCOMPARE(painted(&button), bare);
}

TESTMODE_TEST_MAIN(TestQPushButton2)
#include "test_qpushbutton2.moc"
