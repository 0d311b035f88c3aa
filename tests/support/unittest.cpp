#include "unittest.h"

#include "bench/root/privateroot.h"

#include <QMetaMethod>
#include <QRegularExpression>

// Q_INIT_RESOURCE works at global scope only.
static void initialisePluginResources()
{
    Q_INIT_RESOURCE(testmode);
}

namespace tests {

namespace {

// The offscreen platform says these of windows with a size hint and of pop-ups.
const QStringList kOffscreenRemarks = {
    QStringLiteral("This plugin does not support propagateSizeHints()"),
    QStringLiteral("This plugin does not support raise()"),
    QStringLiteral("This plugin does not support grabbing the keyboard"),
};

QStringList methodsOf(const QMetaObject &type, QMetaMethod::MethodType kind)
{
    QStringList signatures;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        if (type.method(i).methodType() == kind)
            signatures << QString::fromLatin1(type.method(i).methodSignature());
    }
    return signatures;
}

} // namespace

void UnitTest::expectWarning(const QString &text)
{
    expectedWarnings << text;
}

void UnitTest::init()
{
    expectedWarnings.clear();
    bench::unit().powerOn();
    bench::journal().clear();
    log = std::make_unique<bench::TraceLog>();
    log->setQuiet(true);
    modalBoxes = std::make_unique<ModalBoxes>();
}

QStringList UnitTest::unexpectedWarnings() const
{
    QStringList warnings = log->warnings();
    for (const QString &remark : kOffscreenRemarks)
        warnings.removeAll(remark);
    for (const QString &text : expectedWarnings)
        warnings.removeOne(text);
    return warnings;
}

QStringList UnitTest::tracedFunctions(int since) const
{
    static const QRegularExpression line(QStringLiteral("^\\[DBG\\] \\d+ (.+?) \\d+ -- "));
    QStringList functions;
    const QStringList lines = log->lines(since);
    for (const QString &text : lines)
        functions << line.match(text).captured(1);
    return functions;
}

void UnitTest::cleanup()
{
    const QStringList missingBoxes = modalBoxes->missing();
    modalBoxes.reset();
    QStringList missingWarnings = expectedWarnings;
    const QStringList came = log->warnings();
    for (const QString &text : came)
        missingWarnings.removeOne(text);
    const QStringList unexpected = unexpectedWarnings();
    log.reset();
    QVERIFY2(missingWarnings.isEmpty(),
             qPrintable("warning did not come: " + missingWarnings.join("; ")));
    QVERIFY2(unexpected.isEmpty(), qPrintable("unexpected: " + unexpected.join("; ")));
    QVERIFY2(missingBoxes.isEmpty(), qPrintable("box did not come: " + missingBoxes.join("; ")));
}

QStringList signalsOf(const QMetaObject &type)
{
    return methodsOf(type, QMetaMethod::Signal);
}

QStringList slotsOf(const QMetaObject &type)
{
    return methodsOf(type, QMetaMethod::Slot);
}

void initialiseResources()
{
    initialisePluginResources();
}

void prepare(char **argv)
{
    bench::RootLayout layout;
    layout.readOnly = {{TESTMODE_SOURCE_DIR, TESTMODE_SOURCE_DIR}}; // also where the root hides it
    bench::enterPrivateRoot(argv, layout);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The suite's texts and numbers do not depend on the machine's language.
    qputenv("LC_ALL", "C.UTF-8");
}

} // namespace tests
