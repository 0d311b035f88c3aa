#include "uimethods.h"

#include "inputrun.h"
#include "keyboard.h"
#include "waiting.h"
#include "widgets.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QDialog>
#include <QImage>
#include <QImageWriter>
#include <QMessageBox>

namespace bench {

namespace {

const char *const kObject =
    "an objectName, or ancestor/objectName with the ancestor's name or class";

Parameter object()
{
    return required("object", ParameterType::Text, kObject);
}

QVector<QAbstractButton *> buttonsOf(const QDialog *box)
{
    QVector<QAbstractButton *> buttons;
    for (QAbstractButton *button : box->findChildren<QAbstractButton *>()) {
        if (button->isVisible())
            buttons << button;
    }
    return buttons;
}

QStringList buttonTexts(const QDialog *box)
{
    QStringList texts;
    for (const QAbstractButton *button : buttonsOf(box))
        texts << plainText(button->text());
    return texts;
}

QJsonObject describeBox(const QDialog *box)
{
    const auto *message = qobject_cast<const QMessageBox *>(box);
    return {{"name", box->objectName()},
            {"class", QString::fromLatin1(box->metaObject()->className())},
            {"title", box->windowTitle()},
            {"text", message != nullptr ? message->text() : QString()},
            {"buttons", QJsonArray::fromStringList(buttonTexts(box))}};
}

QJsonObject propertiesOf(const QWidget *widget, const QJsonArray &names)
{
    QJsonObject properties;
    for (const QJsonValue &name : names) {
        if (!name.isString())
            throw CallError(ErrorClass::Argument,
                            QStringLiteral("properties: each is a text, the property's name"));
        properties.insert(name.toString(), widgetProperty(widget, name.toString()));
    }
    return properties;
}

QByteArray pngOf(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

void UiMethods::addTo(Dispatcher *dispatcher, QWidget *screen, Camera camera)
{
    auto *methods = new UiMethods(dispatcher, screen, std::move(camera));
    methods->addLooks(dispatcher);
    methods->addTouches(dispatcher);
    methods->addBoxes(dispatcher);
}

UiMethods::UiMethods(Dispatcher *dispatcher, QWidget *unitScreen, Camera unitCamera)
    : QObject(dispatcher), screen(unitScreen), camera(std::move(unitCamera))
{
}

void UiMethods::addLooks(Dispatcher *dispatcher)
{
    dispatcher->add({"ui.tree",
                     {optional("root", ParameterType::Text, kObject)},
                     "The widgets on the unit's screen, or below one of them, with their children",
                     "root=testEntryWidget",
                     direct([this](const Arguments &arguments) { return tree(arguments); })});
    dispatcher->add({"ui.state",
                     {object(),
                      optional("properties", ParameterType::List,
                               "names of further properties of the widget to tell")},
                     "One widget; a combo box or list comes with the texts of its items",
                     "object=key_gps_update",
                     direct([this](const Arguments &arguments) { return state(arguments); })});
    dispatcher->add({"ui.screenshot",
                     {optional("file", ParameterType::Text,
                               "PNG file to write; without it the answer holds the picture"),
                      optional("object", ParameterType::Text, kObject)},
                     "A picture of the unit's screen with its boxes and pop-ups, or of one widget",
                     "file=menu.png",
                     direct([this](const Arguments &arguments) { return screenshot(arguments); })});
    dispatcher->add(
        {"ui.wait",
         {object(),
          required("property", ParameterType::Text,
                   "text, visible, enabled, checked or another property of the widget"),
          required("value", ParameterType::Any, "what it must become"), timeout()},
         "Answers when the property has the value; a widget that is not there yet is waited for",
         "object=testEntryWidget property=visible value=true timeout_ms=2000",
         [this](const Call &call) { wait(call); }});
}

void UiMethods::addTouches(Dispatcher *dispatcher)
{
    dispatcher->add({"ui.click",
                     {object()},
                     "Presses and releases the centre of a widget",
                     "object=key_gps_update",
                     [this](const Call &call) { touch(find(call.arguments), call.responder); }});
    dispatcher->add({"ui.press",
                     {object()},
                     "Presses the centre of a widget and holds it",
                     "object=Gpsupdate/pushButton",
                     [this](const Call &call) { press(call); }});
    dispatcher->add({"ui.release",
                     {object()},
                     "Lifts the finger at the centre of a widget",
                     "object=Gpsupdate/pushButton",
                     [this](const Call &call) { release(call); }});
    dispatcher->add({"ui.choose",
                     {object(), required("text", ParameterType::Text, "text of the item")},
                     "Opens a combo box and takes an item",
                     "object=comboBox text=/dev/ttyS4",
                     [this](const Call &call) { choose(call); }});
    dispatcher->add(
        {"ui.type",
         {object(), required("text", ParameterType::Text, "text that replaces what stands there")},
         "Types a text into a field; the answer says what the field then holds",
         "object=lineEdit text=/media/usb0",
         [this](const Call &call) { type(call); }});
}

void UiMethods::addBoxes(Dispatcher *dispatcher)
{
    Parameter wait = timeout();
    wait.optional = true;
    wait.description =
        QStringLiteral("how long to wait for a box when none is open, in milliseconds");
    dispatcher->add({"ui.boxes",
                     {wait},
                     "The open message boxes and dialogs, the topmost last",
                     "timeout_ms=2000",
                     [this](const Call &call) { waitForBoxes(call); }});
    dispatcher->add({"ui.answer",
                     {required("button", ParameterType::Text, "text of the button")},
                     "Presses a button of the topmost box",
                     "button=Close",
                     [this](const Call &call) { answer(call); }});
}

QWidget *UiMethods::find(const Arguments &arguments) const
{
    return findWidget(screen, arguments.text("object"));
}

void UiMethods::checkFinger(bool down) const
{
    if (finger.isDown() != down)
        throw CallError(ErrorClass::WrongState,
                        down ? QStringLiteral("nothing is pressed: ui.press comes first")
                             : QStringLiteral("something is pressed: ui.release comes first"));
}

QJsonObject UiMethods::tree(const Arguments &arguments) const
{
    return widgetTree(arguments.has("root") ? findWidget(screen, arguments.text("root"))
                                            : screen.data());
}

QJsonObject UiMethods::state(const Arguments &arguments) const
{
    QWidget *widget = find(arguments);
    QJsonObject state = widgetState(widget);
    const QJsonValue items = widgetItems(widget);
    if (items.isArray())
        state.insert("items", items);
    if (arguments.has("properties"))
        state.insert("properties", propertiesOf(widget, arguments.list("properties")));
    return state;
}

QJsonObject UiMethods::screenshot(const Arguments &arguments) const
{
    const QImage image = arguments.has("object") ? find(arguments)->grab().toImage() : camera();
    QJsonObject result{{"width", image.width()}, {"height", image.height()}};
    if (!arguments.has("file")) {
        result.insert("base64", QString::fromLatin1(pngOf(image).toBase64()));
        return result;
    }
    const QString file = arguments.text("file");
    QImageWriter writer(file, "PNG");
    if (!writer.write(image))
        throw CallError(ErrorClass::File,
                        QStringLiteral("cannot write %1: %2").arg(file, writer.errorString()));
    result.insert("file", file);
    return result;
}

void UiMethods::wait(const Call &call)
{
    const QString path = call.arguments.text("object");
    const QString property = call.arguments.text("property");
    const QJsonValue wanted = call.arguments.value("value");
    const auto probe = [this, path, property, wanted]() -> std::optional<QJsonObject> {
        // The widget may come later; a property that its class lacks never will.
        const QWidget *widget = lookForWidget(screen, path);
        if (widget != nullptr && widgetProperty(widget, property) == wanted)
            return QJsonObject{{"value", wanted}};
        return std::nullopt;
    };
    const auto complaint = [this, path, property]() -> QString {
        try {
            const QJsonValue value = widgetProperty(findWidget(screen, path), property);
            return QStringLiteral("%1 of %2 is still %3")
                .arg(property, path, value.toVariant().toString());
        } catch (const CallError &error) {
            return error.message();
        }
    };
    Waiting::start(call, probe, complaint);
}

void UiMethods::touch(QWidget *target, const Responder &responder)
{
    checkFinger(false);
    const QString receiver = describe(Finger::receiverAt(target));
    InputRun::start(
        [this, target = QPointer<QWidget>(target)] {
            if (target.isNull())
                return;
            finger.press(target);
            finger.release();
        },
        [responder, receiver] {
            responder.succeed({{"delivered_to", receiver}});
        });
}

void UiMethods::press(const Call &call)
{
    checkFinger(false);
    QWidget *target = find(call.arguments);
    const QString receiver = describe(Finger::receiverAt(target));
    InputRun::start(
        [this, target = QPointer<QWidget>(target)] {
            if (!target.isNull())
                finger.press(target);
        },
        [responder = call.responder, receiver] {
            responder.succeed({{"delivered_to", receiver}});
        });
}

void UiMethods::release(const Call &call)
{
    checkFinger(true);
    InputRun::start(
        [this, target = QPointer<QWidget>(find(call.arguments))] {
            if (!target.isNull())
                finger.release(target);
        },
        [responder = call.responder] { responder.succeed(); });
}

void UiMethods::choose(const Call &call)
{
    checkFinger(false);
    auto *combo = qobject_cast<QComboBox *>(find(call.arguments));
    if (combo == nullptr)
        throw CallError(ErrorClass::WrongKind,
                        QStringLiteral("%1 is no combo box").arg(call.arguments.text("object")));
    Finger::receiverAt(combo);
    const int row = rowOfItem(combo, call.arguments.text("text"));
    InputRun::start(
        [this, row, target = QPointer<QComboBox>(combo)] {
            if (target.isNull())
                return;
            finger.press(target);
            finger.release();
            if (!target.isNull())
                takeItem(target, row);
        },
        [responder = call.responder] { responder.succeed(); });
}

void UiMethods::type(const Call &call)
{
    checkFinger(false);
    QWidget *target = find(call.arguments);
    Finger::receiverAt(target);
    QWidget *field = textFieldOf(target);
    const QString text = call.arguments.text("text");
    const auto typed = std::make_shared<QString>();
    InputRun::start(
        [this, target = QPointer<QWidget>(target), field = QPointer<QWidget>(field), text, typed] {
            if (target.isNull() || field.isNull())
                return;
            finger.press(target);
            finger.release();
            if (!field.isNull())
                *typed = typeText(field, text);
        },
        [responder = call.responder, typed] {
            responder.succeed({{"text", *typed}});
        });
}

QJsonArray UiMethods::boxes() const
{
    QJsonArray list;
    for (const QDialog *box : openBoxes(screen))
        list.append(describeBox(box));
    return list;
}

void UiMethods::waitForBoxes(const Call &call)
{
    if (!call.arguments.has("timeout_ms")) {
        call.responder.succeed({{"boxes", boxes()}});
        return;
    }
    const auto probe = [this]() -> std::optional<QJsonObject> {
        const QJsonArray open = boxes();
        return open.isEmpty() ? std::nullopt : std::make_optional(QJsonObject{{"boxes", open}});
    };
    Waiting::start(call, probe, [] { return QStringLiteral("no box is open"); });
}

void UiMethods::answer(const Call &call)
{
    const QVector<QDialog *> open = openBoxes(screen);
    if (open.isEmpty())
        throw CallError(ErrorClass::NotFound, QStringLiteral("no box is open"));
    const QString text = call.arguments.text("button");
    for (QAbstractButton *button : buttonsOf(open.last())) {
        if (plainText(button->text()) == text) {
            touch(button, call.responder);
            return;
        }
    }
    throw CallError(ErrorClass::NotFound,
                    QStringLiteral("the box has no button %1; there are: %2")
                        .arg(text, buttonTexts(open.last()).join(QStringLiteral(", "))));
}

} // namespace bench
