#include "controls.h"

#include "calls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSignalBlocker>

#include <memory>
#include <utility>

namespace bench {

void follow(Calls *calls, const QString &path, QObject *context,
            const std::function<void(const QJsonValue &)> &show)
{
    show(calls->value(path));
    QObject::connect(calls, &Calls::changed, context,
                     [path, show](const QString &changed, const QJsonValue &value) {
                         if (changed == path)
                             show(value);
                     });
}

void followBranch(Calls *calls, const QString &branch, QObject *context,
                  const std::function<void()> &draw)
{
    const auto stale = std::make_shared<bool>(false);
    QObject::connect(calls, &Calls::changed, context, [branch, stale](const QString &path) {
        *stale = *stale || path.startsWith(branch);
    });
    QObject::connect(calls, &Calls::allTold, context, [stale, draw] {
        if (std::exchange(*stale, false))
            draw();
    });
}

QCheckBox *box(Calls *calls, const QString &text, const QString &name, const QString &path)
{
    auto *made = new QCheckBox(text);
    made->setObjectName(name);
    QObject::connect(made, &QCheckBox::toggled, calls,
                     [calls, path](bool on) { calls->set(path, on); });
    follow(calls, path, made, [made](const QJsonValue &value) {
        const QSignalBlocker quiet(made);
        made->setChecked(value.toBool());
    });
    return made;
}

QComboBox *choice(Calls *calls, const QString &name, const QString &path,
                  const QVector<QPair<QString, QJsonValue>> &values)
{
    auto *made = new QComboBox;
    made->setObjectName(name);
    for (const auto &value : values)
        made->addItem(value.first, value.second.toVariant());
    QObject::connect(made, QOverload<int>::of(&QComboBox::activated), calls,
                     [calls, made, path](int row) {
                         calls->set(path, QJsonValue::fromVariant(made->itemData(row)));
                     });
    follow(calls, path, made, [made](const QJsonValue &value) {
        made->setCurrentIndex(made->findData(value.toVariant()));
        if (made->currentIndex() < 0) // another word than those of the list
            made->setPlaceholderText(value.toVariant().toString());
    });
    return made;
}

QDoubleSpinBox *number(Calls *calls, const QString &name, const QString &path, double least,
                       double most, int decimals)
{
    auto *made = new QDoubleSpinBox;
    made->setObjectName(name);
    made->setDecimals(decimals);
    made->setRange(least, most);
    made->setKeyboardTracking(false); // half a number is none
    QObject::connect(made, QOverload<double>::of(&QDoubleSpinBox::valueChanged), calls,
                     [calls, path](double value) { calls->set(path, value); });
    follow(calls, path, made, [made](const QJsonValue &value) {
        const QSignalBlocker quiet(made);
        made->setValue(value.toDouble());
    });
    return made;
}

} // namespace bench
