#include "dialogue.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

namespace tests {

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

QByteArray agentPart(const QString &token)
{
    static const QRegularExpression form(QStringLiteral("^@(\\w+)\\[(\\d+)\\.\\.(\\d+)\\)$"));
    const QRegularExpressionMatch match = form.match(token);
    if (!match.hasMatch())
        qFatal("not a part of an agent image: %s", qPrintable(token));
    const int from = match.captured(2).toInt();
    return agentFile(match.captured(1)).mid(from, match.captured(3).toInt() - from);
}

} // namespace

QByteArray bytesOf(const QString &text)
{
    QByteArray bytes;
    const QStringList tokens = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &token : tokens) {
        if (token.startsWith(QLatin1Char('@'))) {
            bytes += agentPart(token);
            continue;
        }
        const QStringList parts = token.split(QLatin1Char('*'));
        const QByteArray byte = QByteArray::fromHex(parts.first().toLatin1());
        if (parts.first().size() != 2 || byte.size() != 1)
            qFatal("not a byte: %s", qPrintable(token));
        bytes += byte.repeated(parts.size() == 2 ? parts.last().toInt() : 1);
    }
    return bytes;
}

QString fixture(const QString &name)
{
    return QStringLiteral(TESTMODE_FIXTURES "/") + name;
}

QByteArray agentFile(const QString &name)
{
    return contentOf(QStringLiteral(TESTMODE_AGENTS "/%1.bin").arg(name));
}

Dialogue Dialogue::read(const QString &path)
{
    Dialogue dialogue;
    const QStringList lines = QString::fromUtf8(contentOf(path)).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1Char('#')) || line.trimmed().isEmpty())
            continue;
        const QStringList columns = line.split(QLatin1Char('|'));
        if (columns.size() != 4)
            qFatal("not a line of a dialogue: %s", qPrintable(line));
        const QString who = columns.at(0).trimmed();
        const QString content = columns.at(3).trimmed();
        dialogue.step(columns.at(2).trimmed());
        if (who == QLatin1String("host"))
            dialogue.host(content);
        else if (who == QLatin1String("chip"))
            dialogue.chip(content, columns.at(1).toUInt());
        else
            dialogue.line(content);
    }
    return dialogue;
}

Dialogue &Dialogue::step(const QString &name)
{
    current = name;
    return *this;
}

Dialogue &Dialogue::host(const QString &bytes)
{
    list.append({Frame::Host, current, bytesOf(bytes), 0});
    return *this;
}

Dialogue &Dialogue::chip(const QString &bytes, quint32 polls)
{
    list.append({Frame::Chip, current, bytesOf(bytes), polls});
    return *this;
}

Dialogue &Dialogue::echoed(const QString &bytes)
{
    return host(bytes).chip(bytes);
}

Dialogue &Dialogue::line(const QString &event)
{
    list.append({Frame::Line, current, event.toUtf8(), 0});
    return *this;
}

Dialogue &Dialogue::add(const Dialogue &other)
{
    list += other.list;
    return *this;
}

QStringList Dialogue::answeredSteps() const
{
    QStringList steps;
    for (const Frame &frame : list) {
        if (frame.who == Frame::Chip && !steps.contains(frame.step))
            steps << frame.step;
    }
    return steps;
}

Dialogue Dialogue::before(const QString &step) const
{
    Dialogue beginning;
    beginning.list = list.mid(0, firstOf(step));
    return beginning;
}

Dialogue Dialogue::from(const QString &step) const
{
    Dialogue rest;
    rest.list = list.mid(firstOf(step));
    return rest;
}

int Dialogue::firstOf(const QString &step) const
{
    for (int i = 0; i < list.size(); ++i) {
        if (list.at(i).step == step)
            return i;
    }
    qFatal("no such step: %s", qPrintable(step));
    return -1;
}

} // namespace tests
