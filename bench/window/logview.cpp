#include "logview.h"

#include "look.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
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
    table->setFont(digits());
    // Rows of one height: the table never measures a hundred thousand of them.
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(QFontMetrics(digits()).height() + 4);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft);
    return table;
}

} // namespace

LogView::LogView(const Texts &texts, const QString &saveFolder, QWidget *parent)
    : QWidget(parent), name(texts.name), folder(saveFolder), model(texts.columns, texts.foldColumn),
      frame(this, [this] { takeOver(); }), table(makeTable(&model)), text(new QLineEdit),
      kind(new QComboBox), topic(new QComboBox), quiet(new QCheckBox(texts.quiet)),
      loud(new QCheckBox(texts.onlyLoud))
{
    table->setObjectName(name + QStringLiteral("_table"));
    text->setObjectName(name + QStringLiteral("_search"));
    text->setPlaceholderText(QStringLiteral("Search"));
    text->setClearButtonEnabled(true);
    kind->setObjectName(name + QStringLiteral("_kind"));
    kind->addItem(texts.allKinds);
    topic->setObjectName(name + QStringLiteral("_topic"));
    topic->addItem(texts.allTopics);
    quiet->setObjectName(name + QStringLiteral("_quiet"));
    loud->setObjectName(name + QStringLiteral("_loud"));
    auto *saving = new QPushButton(QStringLiteral("Save"));
    saving->setObjectName(name + QStringLiteral("_save"));

    const int letter = table->fontMetrics().averageCharWidth();
    for (int column = 0; column < texts.widths.size(); ++column)
        table->setColumnWidth(column, texts.widths.at(column) * letter + 10);

    auto *tools = new QHBoxLayout;
    tools->addWidget(text, 1);
    tools->addWidget(kind);
    tools->addWidget(topic);
    tools->addWidget(quiet);
    tools->addWidget(loud);
    tools->addWidget(saving);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(tools);
    column->addWidget(table);
    kind->setVisible(!texts.allKinds.isEmpty());
    topic->setVisible(!texts.allTopics.isEmpty());
    quiet->setVisible(!texts.quiet.isEmpty());
    loud->setVisible(!texts.onlyLoud.isEmpty());

    connect(text, &QLineEdit::textChanged, this, &LogView::filter);
    for (QComboBox *words : {kind, topic})
        connect(words, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &LogView::filter);
    for (QCheckBox *only : {quiet, loud})
        connect(only, &QCheckBox::toggled, this, &LogView::filter);
    connect(table, &QTableView::activated, this, [this](const QModelIndex &index) {
        const int number = model.rowAt(index.row()).number;
        model.toggle(index.row());
        reveal(model.shownFrom(number));
    });
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &index) {
                if (index.isValid())
                    emit chosen(model.rowAt(index.row()));
            });
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
    learnWords(added);
    model.append(added);

    const int row = marked > 0 ? model.shownFrom(marked) : -1;
    if (row >= 0) {
        reveal(row);
        table->scrollTo(model.index(row, 0), QAbstractItemView::PositionAtTop);
        marked = 0;
    } else if (follows) {
        table->scrollToBottom();
    }
}

void LogView::learnWords(const QVector<LogRow> &added)
{
    for (const LogRow &row : added) {
        const std::pair<QComboBox *, QString> words[] = {{kind, row.kind}, {topic, row.topic}};
        for (const auto &[list, word] : words) {
            if (word.isEmpty() || wordsSeen.contains(word))
                continue;
            wordsSeen.insert(word);
            list->addItem(word);
        }
    }
}

void LogView::reveal(int row)
{
    if (row < 0)
        return;
    table->selectRow(row);
    table->scrollTo(model.index(row, 0));
}

void LogView::jump(bool forward)
{
    const QModelIndex here = table->currentIndex();
    const int from = here.isValid() ? here.row() : forward ? -1 : model.rowCount();
    const int row = model.nextLoud(from, forward);
    if (row >= 0)
        reveal(row);
    else
        emit told(QStringLiteral("nothing that stands out %1 there")
                      .arg(forward ? QStringLiteral("after") : QStringLiteral("before")));
}

void LogView::markNext()
{
    marked = lastNumber + 1;
}

void LogView::filter()
{
    const auto wanted = [](const QComboBox *words) {
        return words->currentIndex() <= 0 ? QString() : words->currentText();
    };
    model.setFilter(
        {text->text(), wanted(kind), quiet->isChecked(), wanted(topic), loud->isChecked()});
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
