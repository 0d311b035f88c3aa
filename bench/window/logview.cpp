#include "logview.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTableView>
#include <QVBoxLayout>

#include <utility>

namespace bench {

namespace {

QTableView *makeTable(LogModel *model)
{
    auto *table = new QTableView;
    table->setModel(model);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setWordWrap(false);
    table->setShowGrid(false);
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSize(9);
    table->setFont(digits);
    // Rows of one height: the table never measures a hundred thousand of them.
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(QFontMetrics(digits).height() + 4);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft);
    return table;
}

} // namespace

LogView::LogView(const Texts &texts, const QString &saveFolder, QWidget *parent)
    : QWidget(parent), name(texts.name), folder(saveFolder), model(texts.columns),
      frame(this, [this] { takeOver(); }), table(makeTable(&model)), text(new QLineEdit),
      kind(new QComboBox), quiet(new QCheckBox(texts.quiet))
{
    table->setObjectName(name + QStringLiteral("_table"));
    text->setObjectName(name + QStringLiteral("_search"));
    text->setPlaceholderText(QStringLiteral("Search"));
    text->setClearButtonEnabled(true);
    kind->setObjectName(name + QStringLiteral("_kind"));
    kind->addItem(texts.allKinds);
    quiet->setObjectName(name + QStringLiteral("_quiet"));
    auto *saving = new QPushButton(QStringLiteral("Save"));
    saving->setObjectName(name + QStringLiteral("_save"));

    const int letter = table->fontMetrics().averageCharWidth();
    for (int column = 0; column < texts.widths.size(); ++column)
        table->setColumnWidth(column, texts.widths.at(column) * letter + 10);

    auto *tools = new QHBoxLayout;
    tools->addWidget(text, 1);
    tools->addWidget(kind);
    tools->addWidget(quiet);
    tools->addWidget(saving);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(tools);
    column->addWidget(table);
    if (texts.allKinds.isEmpty())
        kind->hide();
    if (texts.quiet.isEmpty())
        quiet->hide();

    connect(text, &QLineEdit::textChanged, this, &LogView::filter);
    connect(kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &LogView::filter);
    connect(quiet, &QCheckBox::toggled, this, &LogView::filter);
    connect(saving, &QPushButton::clicked, this, &LogView::save);
    auto *copying = new QShortcut(QKeySequence::Copy, table);
    copying->setContext(Qt::WidgetShortcut);
    connect(copying, &QShortcut::activated, this, &LogView::copy);
}

void LogView::add(const LogRow &row)
{
    waiting.append(row);
    lastNumber = qMax(lastNumber, row.number);
    frame.ask();
}

void LogView::takeOver()
{
    const QScrollBar *bar = table->verticalScrollBar();
    const bool follows = bar->value() == bar->maximum();
    const QVector<LogRow> added = std::exchange(waiting, {});
    for (const LogRow &row : added) {
        if (row.kind.isEmpty() || kindsSeen.contains(row.kind))
            continue;
        kindsSeen.insert(row.kind);
        kind->addItem(row.kind);
    }
    model.append(added);

    const int row = marked > 0 ? model.shownFrom(marked) : -1;
    if (row >= 0) {
        table->selectRow(row);
        table->scrollTo(model.index(row, 0), QAbstractItemView::PositionAtTop);
        marked = 0;
    } else if (follows) {
        table->scrollToBottom();
    }
}

void LogView::markNext()
{
    marked = lastNumber + 1;
}

void LogView::filter()
{
    const bool all = kind->currentIndex() <= 0;
    model.setFilter({text->text(), all ? QString() : kind->currentText(), quiet->isChecked()});
    table->scrollToBottom();
}

void LogView::search()
{
    text->setFocus();
    text->selectAll();
}

void LogView::copy() const
{
    QVector<int> rows;
    const QModelIndexList chosen = table->selectionModel()->selectedRows();
    for (const QModelIndex &index : chosen)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QGuiApplication::clipboard()->setText(model.text(rows));
}

// What the filter shows. Nothing outside the private root can be written but the named folder.
void LogView::save()
{
    if (folder.isEmpty()) {
        QGuiApplication::clipboard()->setText(model.text());
        emit told(QStringLiteral("%1 rows are in the clipboard").arg(model.rowCount()));
        return;
    }
    const QString path = QStringLiteral("%1/%2-%3.txt").arg(folder, name).arg(++saved);
    const QByteArray bytes = model.text().toUtf8();
    QFile file(path);
    const bool written =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
    emit told(written ? path : QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

} // namespace bench
