// A plug-in that is no test mode: one page that switches a lamp. It shows that the bench and its
// pytest helpers take whatever offers window 38.

#include "framework/appplugin.h"
#include "framework/basewindow.h"
#include "mem/settingscache.h"

#include <QLabel>
#include <QMessageBox>
#include <QObject>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

namespace lamp {

constexpr int kWindow = 38;

// The lamp, and a question before its setting is forgotten.
class Page : public QWidget
{
public:
    Page()
    {
        setObjectName("LampPage");
        state->setObjectName("state");
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(state);
        addButton(layout, "Switch", [this] { switchLamp(); });
        addButton(layout, "Forget", [this] { forget(); });
    }

private:
    template <typename Step>
    void addButton(QVBoxLayout *layout, const char *text, Step step)
    {
        auto *button = new QPushButton(text);
        button->setObjectName(QLatin1String("key_") + text);
        connect(button, &QPushButton::clicked, this, step);
        layout->addWidget(button);
    }

    void switchLamp()
    {
        isOn = !isOn;
        mem::SettingsCache::instance()->setValue("LAMP", isOn);
        state->setText(isOn ? "The lamp is on" : "The lamp is off");
    }

    void forget()
    {
        if (QMessageBox::question(this, "Lamp", "Forget it?") == QMessageBox::Yes)
            state->clear();
    }

    bool isOn = false;
    QLabel *state = new QLabel("The lamp is off");
};

class Window : public cm::BaseWindow
{
public:
    using cm::BaseWindow::BaseWindow;

    void onCreate() override
    {
        cm::BaseWindow::onCreate();
        if (!page)
            setMainWidget(page = new Page, kWindow);
    }

    void onDestroy() override { deleteDelay(); }

private:
    QPointer<Page> page; // the framework's from setMainWidget on
};

class Plugin : public QObject, public AppPlugin
{
    Q_OBJECT
    Q_INTERFACES(AppPlugin)
    Q_PLUGIN_METADATA(IID "example.lamp")

public:
    void create() override { }
    QList<int> windowInterfaceID() override { return {kWindow}; }
    QList<int> sourceInterfaceID() override { return {}; }
    WindowInterface *requestWindowInterface(int id) override
    {
        if (id == kWindow && !window)
            window = new Window(this);
        return id == kWindow ? window.data() : nullptr;
    }
    SourceInterface *requestSourceInterface(int) override { return nullptr; }

private:
    QPointer<Window> window; // the framework may destroy it
};

} // namespace lamp

#include "lampplugin.moc"
