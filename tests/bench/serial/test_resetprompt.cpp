#include "tests/support/unittest.h"

#include "bench/serial/resetprompt.h"

#include <QElapsedTimer>
#include <QSignalSpy>

using bench::ResetPrompt;

namespace {

const QString kPull = QStringLiteral("pull the receiver's reset line now, and hold it");
const QString kLetGo = QStringLiteral("let go of the receiver's reset line now");

constexpr std::chrono::milliseconds kHold(200);

QStringList textsOf(const QSignalSpy &spy)
{
    QStringList texts;
    for (const QList<QVariant> &said : spy)
        texts << said.first().toString();
    return texts;
}

} // namespace

// What a person is told who is the receiver's reset line.
class TestResetPrompt : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void pulseIsHeldLongerForAHand();
    void longAssertionIsHeldToItsEnd();
    void lettingGoAloneIsNothing();
    void secondPulseIsToldAgain();
};

void TestResetPrompt::pulseIsHeldLongerForAHand()
{
    ResetPrompt prompt(kHold);
    const QSignalSpy told(&prompt, &ResetPrompt::told);
    QElapsedTimer clock;
    clock.start();
    prompt.follow(true);
    QCOMPARE(textsOf(told), QStringList{kPull});
    prompt.follow(false);
    QCOMPARE(textsOf(told), QStringList{kPull});
    QTRY_COMPARE(textsOf(told), (QStringList{kPull, kLetGo}));
    QVERIFY2(clock.elapsed() >= 190, qPrintable(QString::number(clock.elapsed())));
}

void TestResetPrompt::longAssertionIsHeldToItsEnd()
{
    ResetPrompt prompt(std::chrono::milliseconds(1));
    const QSignalSpy told(&prompt, &ResetPrompt::told);
    prompt.follow(true);
    QTest::qWait(50); // longer than a hand needs
    QCOMPARE(textsOf(told), QStringList{kPull});
    prompt.follow(false);
    QCOMPARE(textsOf(told), (QStringList{kPull, kLetGo}));
}

void TestResetPrompt::lettingGoAloneIsNothing()
{
    ResetPrompt prompt(kHold);
    const QSignalSpy told(&prompt, &ResetPrompt::told);
    prompt.follow(false);
    QCOMPARE(textsOf(told), QStringList());
}

void TestResetPrompt::secondPulseIsToldAgain()
{
    ResetPrompt prompt(std::chrono::milliseconds(1));
    const QSignalSpy told(&prompt, &ResetPrompt::told);
    for (int pulse = 1; pulse <= 2; ++pulse) {
        prompt.follow(true);
        prompt.follow(false);
        QTRY_COMPARE(told.size(), 2 * pulse);
    }
    QCOMPARE(textsOf(told), (QStringList{kPull, kLetGo, kPull, kLetGo}));
}

TESTMODE_TEST_MAIN(TestResetPrompt)
#include "test_resetprompt.moc"
