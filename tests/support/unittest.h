#pragma once

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/tracelog.h"
#include "modalboxes.h"

#include <QApplication>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QtTest>

#include <memory>

namespace tests {

// Base of every test class: each case starts on a unit just switched on, with an
// empty journal and an empty trace, and fails on a warning or a message box that
// it did not expect.
class UnitTest : public QObject
{
    Q_OBJECT

protected:
    // A warning that this case provokes on purpose; the text must match whole.
    void expectWarning(const QString &text);

    // Warnings so far that the case did not announce.
    QStringList unexpectedWarnings() const;

    // The plug-in's trace since the case began.
    bench::TraceLog &trace() { return *log; }

    // Whole signatures of the functions that wrote the plug-in's lines after the first `since`.
    QStringList tracedFunctions(int since = 0) const;

    // The message boxes of the case; each one that comes must be announced here.
    ModalBoxes &boxes() { return *modalBoxes; }

protected slots:
    // Run before and after each case; a class with its own calls these in them.
    void init();
    void cleanup();

private:
    std::unique_ptr<bench::TraceLog> log;
    std::unique_ptr<ModalBoxes> modalBoxes;
    QStringList expectedWarnings;
};

// Signatures of a class's own signals and slots, in meta-object order.
QStringList signalsOf(const QMetaObject &type);
QStringList slotsOf(const QMetaObject &type);

// The plug-in's images: a static library brings them only when asked.
void initialiseResources();

// Enters the private root and makes the program fit for tests without a display.
void prepare(char **argv);

template <typename Test>
int run(int argc, char **argv)
{
    prepare(argv);
    QApplication application(argc, argv);
    initialiseResources();
    Test test;
    const int failures = QTest::qExec(&test, argc, argv);
    // Ends as the framework's application does: what waits for its end goes then.
    QTimer::singleShot(0, &application, &QCoreApplication::quit);
    QApplication::exec();
    return failures;
}

} // namespace tests

// main() of a test executable with one class.
#define TESTMODE_TEST_MAIN(Test)                                                                   \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        return tests::run<Test>(argc, argv);                                                       \
    }
