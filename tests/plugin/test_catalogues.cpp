#include "tests/support/unittest.h"

#include "plugin/mainwidget.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTranslator>

using testmode::MainWidget;

// The pages' texts by a catalogue that the application has in place, and their own without one.
class TestCatalogues : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void textsFollow_data();
    void textsFollow();
};

using Show = void (MainWidget::*)();
Q_DECLARE_METATYPE(Show)

namespace {

QString textOf(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    return qobject_cast<const QAbstractButton *>(widget)->text();
}

} // namespace

void TestCatalogues::textsFollow_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("own");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("chinese");
    QTest::newRow("form, Chinese") << Show(&MainWidget::onShowGpsUpdateWidget) << "pushButton_3"
                                   << QStringLiteral("开始") << "Start" << QStringLiteral("开始");
    QTest::newRow("form, English") << Show(&MainWidget::onShowGpsUpdateWidget) << "pushButton"
                                   << "Check"
                                   << "Check" << QStringLiteral("检查");
    QTest::newRow("code") << Show(&MainWidget::onShowNcmModeWidget) << "title_text"
                          << "Apple Test"
                          << "Apple Test" << QStringLiteral("Apple 测试");
    QTest::newRow("code, with a value") << Show(&MainWidget::onShowMicTestWidget) << "txt_uplink"
                                        << "Uplink Gain: 0"
                                        << "Uplink Gain: 0" << QStringLiteral("上行增益：0");
}

void TestCatalogues::textsFollow()
{
    QFETCH(Show, show);
    QFETCH(QString, object);
    const QList<QPair<QString, QString>> texts = {
        {QString(), "own"}, {"en", "english"}, {"zh_CN", "chinese"}, {QString(), "own"}};
    for (const auto &[language, column] : texts) {
        QTranslator catalogue;
        if (!language.isEmpty()) {
            QVERIFY(catalogue.load(CATALOGUES "/testmode_" + language + ".qm"));
            QVERIFY(QCoreApplication::installTranslator(&catalogue));
        }
        MainWidget host(nullptr);
        (host.*show)();
        const auto *widget = host.findChild<QWidget *>(object);
        QVERIFY2(widget != nullptr, qPrintable(object));
        QCOMPARE(textOf(widget),
                 *static_cast<QString *>(QTest::qData(qPrintable(column), qMetaTypeId<QString>())));
    }
}

TESTMODE_TEST_MAIN(TestCatalogues)
#include "test_catalogues.moc"
