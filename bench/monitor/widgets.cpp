#include "widgets.h"

#include "callerror.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QJsonArray>

#include <algorithm>

namespace bench {

namespace {

// A class is known by its full name and by what follows its namespace.
bool isNamed(const QWidget *widget, const QString &name)
{
    const QString className = QString::fromLatin1(widget->metaObject()->className());
    return widget->objectName() == name || className == name
        || className.section(QStringLiteral("::"), -1) == name;
}

// True when each name fits an ancestor, the last one the nearest.
bool hasAncestors(const QWidget *widget, QStringList names)
{
    for (widget = widget->parentWidget(); widget != nullptr && !names.isEmpty();
         widget = widget->parentWidget()) {
        if (isNamed(widget, names.last()))
            names.removeLast();
    }
    return names.isEmpty();
}

QString pathOf(const QWidget *widget)
{
    const QWidget *parent = widget->parentWidget();
    return parent == nullptr ? widget->objectName()
                             : describe(parent) + QLatin1Char('/') + widget->objectName();
}

QVector<QWidget *> named(QWidget *screen, const QString &name)
{
    QVector<QWidget *> found;
    QVector<QWidget *> roots = windowsOver(screen);
    roots.prepend(screen);
    for (QWidget *root : qAsConst(roots)) {
        QList<QWidget *> widgets = root->findChildren<QWidget *>(name);
        if (root->objectName() == name)
            widgets.prepend(root);
        for (QWidget *widget : qAsConst(widgets)) {
            // A box may also be the child of a page, and so come twice.
            if (!found.contains(widget))
                found << widget;
        }
    }
    return found;
}

// The first of the properties that carry a widget's words.
QString textOf(const QWidget *widget)
{
    for (const char *name : {"text", "currentText", "plainText", "title", "windowTitle"}) {
        const QVariant value = widget->property(name);
        if (value.isValid())
            return value.toString();
    }
    return QString();
}

QJsonArray toJson(const QRect &rectangle)
{
    return {rectangle.x(), rectangle.y(), rectangle.width(), rectangle.height()};
}

QJsonArray rowTexts(const QAbstractItemModel *model, int column)
{
    QJsonArray rows;
    for (int row = 0; row < model->rowCount(); ++row)
        rows.append(model->index(row, column).data().toString());
    return rows;
}

} // namespace

QString describe(const QWidget *widget)
{
    return widget->objectName().isEmpty() ? QString::fromLatin1(widget->metaObject()->className())
                                          : widget->objectName();
}

QWidget *lookForWidget(QWidget *screen, const QString &path)
{
    QStringList names = path.split(QLatin1Char('/'));
    const QString name = names.takeLast();
    if (name.isEmpty())
        throw CallError(ErrorClass::Argument, QStringLiteral("'%1' ends without a name").arg(path));

    QVector<QWidget *> found;
    for (QWidget *widget : named(screen, name)) {
        if (hasAncestors(widget, names))
            found << widget;
    }
    if (found.size() > 1) {
        QStringList paths;
        for (const QWidget *widget : qAsConst(found))
            paths << pathOf(widget);
        throw CallError(ErrorClass::Ambiguous,
                        QStringLiteral("%1 may be %2").arg(path, paths.join(QStringLiteral(", "))));
    }
    return found.value(0);
}

QWidget *findWidget(QWidget *screen, const QString &path)
{
    QWidget *widget = lookForWidget(screen, path);
    if (widget == nullptr)
        throw CallError(ErrorClass::NotFound, QStringLiteral("no object %1").arg(path));
    return widget;
}

QJsonObject widgetState(const QWidget *widget)
{
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    return {{"name", widget->objectName()},
            {"class", QString::fromLatin1(widget->metaObject()->className())},
            {"text", textOf(widget)},
            {"visible", widget->isVisible()},
            {"enabled", widget->isEnabled()},
            {"checked", button != nullptr && button->isChecked()},
            {"geometry", toJson(widget->geometry())}};
}

QJsonObject widgetTree(const QWidget *widget)
{
    QJsonArray children;
    for (const QObject *child : widget->children()) {
        if (child->isWidgetType())
            children.append(widgetTree(static_cast<const QWidget *>(child)));
    }
    QJsonObject tree = widgetState(widget);
    tree.insert("children", children);
    return tree;
}

QJsonValue widgetItems(QWidget *widget)
{
    if (auto *combo = qobject_cast<QComboBox *>(widget))
        return rowTexts(combo->model(), combo->modelColumn());
    auto *view = qobject_cast<QAbstractItemView *>(widget);
    if (view == nullptr || view->model() == nullptr)
        return QJsonValue::Null;
    const QAbstractItemModel *model = view->model();
    if (model->columnCount() <= 1)
        return rowTexts(model, 0);
    QJsonArray rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        QJsonArray cells;
        for (int column = 0; column < model->columnCount(); ++column)
            cells.append(model->index(row, column).data().toString());
        rows.append(cells);
    }
    return rows;
}

QJsonValue widgetProperty(const QWidget *widget, const QString &name)
{
    const QJsonObject state = widgetState(widget);
    if (state.contains(name))
        return state.value(name);
    const QVariant value = widget->property(name.toLatin1().constData());
    if (!value.isValid())
        throw CallError(ErrorClass::NotFound,
                        QStringLiteral("%1 has no property %2").arg(describe(widget), name));
    return QJsonValue::fromVariant(value);
}

QVector<QWidget *> windowsOver(QWidget *screen)
{
    QVector<QWidget *> windows;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window != screen->window() && window->isVisible()
            && window->windowType() != Qt::ToolTip)
            windows << window;
    }
    // What takes the input stands on top: pop-ups over modal boxes over the rest.
    const auto rank = [](const QWidget *window) {
        if (window == QApplication::activePopupWidget())
            return 3;
        if (window == QApplication::activeModalWidget())
            return 2;
        return window->isModal() ? 1 : 0;
    };
    std::stable_sort(windows.begin(), windows.end(),
                     [&rank](const QWidget *a, const QWidget *b) { return rank(a) < rank(b); });
    return windows;
}

QVector<QDialog *> openBoxes(QWidget *screen)
{
    QVector<QDialog *> boxes;
    for (QWidget *window : windowsOver(screen)) {
        if (auto *dialog = qobject_cast<QDialog *>(window))
            boxes << dialog;
    }
    return boxes;
}

QString plainText(QString text)
{
    const QString mark = QStringLiteral("&");
    return text.replace(QStringLiteral("&&"), QString(QChar(0)))
        .remove(mark)
        .replace(QChar(0), mark);
}

} // namespace bench
