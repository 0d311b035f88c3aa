#include "recorder.h"

#include "bench/unit/journal.h"

#include <QMetaMethod>
#include <QRegularExpression>
#include <QThread>
#include <QVariant>

namespace tests {

namespace {

// Bytes are numbers too.
QString word(const QVariant &value)
{
    const int type = value.userType();
    return type == QMetaType::UChar || type == QMetaType::SChar ? QString::number(value.toUInt())
                                                                : value.toString();
}

// Hands every emission of one signal to a function as a text, at once, in the thread that emits.
class SignalTap : public QObject
{
public:
    SignalTap(const QObject *sender, QMetaMethod watched, std::function<void(QString)> told,
              QObject *parent)
        : QObject(parent), signal(std::move(watched)), tell(std::move(told))
    {
        // The number of the first method behind those of QObject: no slot that moc knows of.
        const int slot = QObject::staticMetaObject.methodCount();
        if (!QMetaObject::connect(sender, signal.methodIndex(), this, slot, Qt::DirectConnection))
            qFatal("cannot watch %s", signal.methodSignature().constData());
    }

    int qt_metacall(QMetaObject::Call call, int method, void **arguments) override
    {
        const int own = QObject::qt_metacall(call, method, arguments);
        if (own == 0 && call == QMetaObject::InvokeMetaMethod)
            tell(text(arguments));
        return own - 1;
    }

private:
    QString text(void **arguments) const
    {
        QStringList words;
        for (int i = 0; i < signal.parameterCount(); ++i)
            words << word(QVariant(signal.parameterType(i), arguments[i + 1]));
        return QStringLiteral("signal %1(%2)")
            .arg(QString::fromLatin1(signal.name()), words.join(QStringLiteral(", ")));
    }

    QMetaMethod signal;
    std::function<void(QString)> tell;
};

} // namespace

QString comparable(const QString &traceLine)
{
    static const QRegularExpression form(QStringLiteral("^\\[DBG\\] \\d+ (.+?) \\d+ -- ?"));
    const QRegularExpressionMatch match = form.match(traceLine);
    if (!match.hasMatch())
        return traceLine;
    return QStringLiteral("[DBG] ") + match.captured(1) + QStringLiteral(" -- ")
        + traceLine.mid(match.capturedLength());
}

QStringList comparable(QStringList traceLines)
{
    for (QString &line : traceLines)
        line = comparable(line);
    return traceLines;
}

Recorder::Recorder(bench::TraceLog &trace) : lastCall(bench::journal().lastNumber())
{
    connect(
        &trace, &bench::TraceLog::added, this,
        [this](const QString &line) { add(comparable(line)); }, Qt::DirectConnection);
    connect(
        &bench::journal(), &bench::Journal::added, this, [this] { add(QString()); },
        Qt::DirectConnection);
}

void Recorder::watchSignal(const QObject *sender, const char *signal)
{
    const QByteArray signature = QMetaObject::normalizedSignature(signal + 1);
    const int index = sender->metaObject()->indexOfSignal(signature);
    if (index < 0)
        qFatal("%s has no signal %s", sender->metaObject()->className(), signature.constData());
    new SignalTap(
        sender, sender->metaObject()->method(index), [this](const QString &entry) { add(entry); },
        this);
}

void Recorder::watchState(const QString &name, std::function<QString()> value)
{
    const QString first = value();
    states.append({name, std::move(value), first});
}

QStringList Recorder::entries()
{
    add(QString());
    const QMutexLocker lock(&mutex);
    return list;
}

QStringList Recorder::entries(const QRegularExpression &wanted)
{
    return entries().filter(wanted);
}

void Recorder::clear()
{
    add(QString());
    const QMutexLocker lock(&mutex);
    list.clear();
}

// Without a text: only what has happened up to now.
void Recorder::add(const QString &entry)
{
    if (QThread::currentThread() == thread())
        takeStates();
    const QMutexLocker lock(&mutex);
    takeCalls();
    if (!entry.isEmpty())
        list << entry;
}

// From the journal itself, whatever it announces and when.
void Recorder::takeCalls()
{
    const QVector<bench::JournalEntry> calls = bench::journal().entries(lastCall);
    for (const bench::JournalEntry &call : calls) {
        list << call.text();
        lastCall = call.number;
    }
}

void Recorder::takeStates()
{
    if (looking)
        return;
    looking = true;
    for (State &state : states) {
        const QString now = state.value();
        if (now == state.last)
            continue;
        state.last = now;
        const QMutexLocker lock(&mutex);
        list << state.name + QStringLiteral(": ") + now;
    }
    looking = false;
}

} // namespace tests
