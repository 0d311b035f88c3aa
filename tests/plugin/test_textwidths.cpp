#include "tests/support/unittest.h"

#include "gnss_download/serialset.h"
#include "plugin/mainwidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QTranslator>

using testmode::MainWidget;

namespace {

// Fonts of the same name differ from machine to machine, and where one is missing its substitute
// is wider: every text has an eighth to spare.
constexpr int kSpareParts = 8;

// The pages' own texts, and the catalogues.
constexpr const char *kLanguages[] = {"", "en", "zh_CN"};

// Its texts are what the pages say as long as it lives; empty: their own.
class Language
{
public:
    explicit Language(const QString &name)
    {
        if (name.isEmpty())
            return;
        if (!catalogue.load(CATALOGUES "/testmode_" + name + ".qm"))
            qFatal("no catalogue %s", qPrintable(name));
        QCoreApplication::installTranslator(&catalogue);
    }

private:
    QTranslator catalogue; // takes itself away
};

// Its place and its size are given; it has to fit, with less to spare.
const QString kGiven = QStringLiteral("txt_tools");

int textWidth(const QWidget *widget, const QString &text)
{
    int widest = 0;
    for (const QString &line : text.split('\n'))
        widest = qMax(widest, widget->fontMetrics().horizontalAdvance(line));
    return widget->objectName() == kGiven ? widest : widest + widest / kSpareParts;
}

int buttonRoom(const QAbstractButton *button)
{
    QStyleOptionButton option;
    option.initFrom(button);
    option.text = button->text();
    option.iconSize = button->iconSize();
    auto element = QStyle::SE_PushButtonContents;
    if (qobject_cast<const QRadioButton *>(button) != nullptr)
        element = QStyle::SE_RadioButtonContents;
    else if (qobject_cast<const QCheckBox *>(button) != nullptr)
        element = QStyle::SE_CheckBoxContents;
    return button->style()->subElementRect(element, &option, button).width();
}

int fieldRoom(const QComboBox *box)
{
    QStyleOptionComboBox option;
    option.initFrom(box);
    return box->style()
        ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box)
        .width();
}

// "name: text" of what is wider than its place, below `root`.
QStringList cutTexts(const QWidget &root)
{
    QStringList cut;
    const auto check = [&cut](const QWidget *widget, const QString &text, int room) {
        if (textWidth(widget, text) > room)
            cut << QStringLiteral("%1: \"%2\" wants %3 of %4")
                       .arg(widget->objectName(), text)
                       .arg(textWidth(widget, text))
                       .arg(room);
    };
    const QList<QWidget *> all = root.findChildren<QWidget *>();
    for (QWidget *widget : all) {
        widget->ensurePolished();
        if (const auto *label = qobject_cast<QLabel *>(widget))
            check(label, label->text(), label->contentsRect().width() - 2 * label->margin());
        else if (const auto *button = qobject_cast<QAbstractButton *>(widget))
            check(button, button->text(), buttonRoom(button));
        else if (const auto *group = qobject_cast<QGroupBox *>(widget))
            check(group, group->title(), group->contentsRect().width());
        else if (const auto *box = qobject_cast<QComboBox *>(widget)) {
            for (int i = 0; i < box->count(); ++i)
                check(box, box->itemText(i), fieldRoom(box));
        }
    }
    return cut;
}

} // namespace

// Every caption fits its place, on this machine and on one with wider fonts.
class TestTextWidths : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void pagesFit_data();
    void pagesFit();
    void settingsDialogFits_data();
    void settingsDialogFits();
    void cutTextIsFound();
};

using Show = void (MainWidget::*)();
Q_DECLARE_METATYPE(Show)

void TestTextWidths::pagesFit_data()
{
    const QList<QPair<QByteArray, Show>> pages = {
        {"menu", &MainWidget::onShowTidModeWidget}, // shows nothing
        {"Apple page", &MainWidget::onShowNcmModeWidget},
        {"USB test", &MainWidget::onShowUsbTestWidget},
        {"PHY page", &MainWidget::onShowUSBEyesTestWidget},
        {"GNSS page", &MainWidget::onShowGpstestWidget},
        {"update page", &MainWidget::onShowGpsUpdateWidget},
        {"system tools", &MainWidget::onShowSystemToolsWidget},
        {"microphone", &MainWidget::onShowMicTestWidget},
    };
    QTest::addColumn<Show>("show");
    QTest::addColumn<QString>("language");
    for (const auto &[name, show] : pages) {
        for (const char *language : kLanguages)
            QTest::newRow(name + ' ' + language) << show << QString(language);
    }
}

void TestTextWidths::pagesFit()
{
    QFETCH(Show, show);
    QFETCH(QString, language);
    const Language spoken(language);
    MainWidget host(nullptr);
    host.resize(1024, 600);
    host.show();
    (host.*show)();
    const QStringList cut = cutTexts(host);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join('\n')));
}

void TestTextWidths::settingsDialogFits_data()
{
    QTest::addColumn<QString>("language");
    for (const char *language : kLanguages)
        QTest::newRow(*language == '\0' ? "own" : language) << QString(language);
}

void TestTextWidths::settingsDialogFits()
{
    QFETCH(QString, language);
    const Language spoken(language);
    SerialSet dialog(nullptr);
    dialog.show();
    const QStringList cut = cutTexts(dialog);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join('\n')));
}

void TestTextWidths::cutTextIsFound()
{
    QWidget page;
    auto *button = new QRadioButton("Eye Diagram", &page);
    button->setObjectName("pattern");
    button->resize(60, 48);
    QCOMPARE(cutTexts(page).size(), 1);
    QVERIFY(cutTexts(page).first().startsWith("pattern: \"Eye Diagram\" wants "));
    button->resize(400, 48);
    QCOMPARE(cutTexts(page), QStringList());
}

TESTMODE_TEST_MAIN(TestTextWidths)
#include "test_textwidths.moc"
