// benchmark_pages: what the plug-in's pages cost the GUI thread, or as a floor bare forms of the
// same shape. Prints one JSON object. script/benchmark runs it, in the root of benchmark_root.

#include "painting.h"
#include "resident.h"

#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "framework/appplugin.h"
#include "framework/windowinterface.h"
#include "gpsservice/gpsservice.h"

#include "ui_apple_dev_test.h"
#include "ui_gps_test.h"
#include "ui_gpsupdate.h"
#include "ui_mic_test.h"
#include "ui_setupusbform.h"
#include "ui_systemtoolswidget.h"
#include "ui_testentrywidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPluginLoader>
#include <QPushButton>
#include <QStringListModel>

#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>

#include <unistd.h>

namespace benchmark {

namespace {

struct Page
{
    const char *key;    // of the menu
    const char *class_; // of the widget that it shows
    std::function<void(QWidget *)> fill;
};

template <typename Form>
void setUp(QWidget *page)
{
    static QList<std::shared_ptr<Form>> forms; // a form must outlive nothing; kept for its pointers
    forms << std::make_shared<Form>();
    forms.last()->setupUi(page);
}

const Page kPages[] = {
    {"key_ncm_test", "testmode::AppleDevTest", setUp<Ui_apple_dev_test>},
    {"key_usb_tid", "testmode::SetupUsbTest", setUp<Ui_SetupUsbForm>},
    {"key_gps_test", "testmode::gps_test", setUp<Ui_gps_test>},
    {"key_gps_update", "testmode::gpsupdate", setUp<Ui_Gpsupdate>},
    {"key_tools", "SystemToolsWidget", setUp<Ui_SystemToolsWidget>},
    {"key_mic_test", "testmode::mictestwidget", setUp<Ui_mic_test>},
};

// A plug-in's window on a screen of the unit's size.
class Shown : public QObject
{
public:
    explicit Shown(const QString &module) : loader(module)
    {
        connect(&bench::unit(), &bench::HeadUnit::mainWidgetChanged, this,
                [this](QWidget *widget) { content = widget; });
    }

    // From the loader to the painted menu.
    double open()
    {
        return Painting::microseconds([this] {
            auto *plugin = qobject_cast<AppPlugin *>(loader.instance());
            if (plugin == nullptr)
                qFatal("%s", qPrintable(loader.errorString()));
            plugin->create();
            window = plugin->requestWindowInterface(38);
            window->onCreate();
            content->resize(1024, 600);
            content->show();
            window->onShow(QByteArray());
            return content;
        });
    }

    double openPage(const Page &page)
    {
        auto *key = content->findChild<QPushButton *>(QLatin1String(page.key));
        return Painting::microseconds([this, key, &page] {
            key->click();
            return shownPage(page);
        });
    }

    void home()
    {
        window->onCreate();
        QCoreApplication::processEvents();
    }

    QWidget *content = nullptr;

private:
    QWidget *shownPage(const Page &page) const
    {
        const auto widgets = content->findChildren<QWidget *>();
        for (QWidget *widget : widgets) {
            if (widget->isVisible() && qstrcmp(widget->metaObject()->className(), page.class_) == 0)
                return widget;
        }
        qFatal("%s did not show a %s", page.key, page.class_);
    }

    QPluginLoader loader;
    WindowInterface *window = nullptr;
};

// The same forms, shown by nobody but this program.
class Bare
{
public:
    Bare()
    {
        content.resize(1024, 600);
        setUp<Ui_testEntryWidget>(&menu);
        content.show();
        QCoreApplication::processEvents();
    }

    double openPage(const Page &page)
    {
        return Painting::microseconds([this, &page] {
            QWidget *&widget = pages[page.key];
            if (widget == nullptr) {
                widget = new QWidget(&content);
                page.fill(widget);
            }
            widget->show();
            menu.hide();
            return widget;
        });
    }

    void home()
    {
        for (QWidget *page : qAsConst(pages))
            page->hide();
        menu.show();
        QCoreApplication::processEvents();
    }

private:
    QWidget content;
    QWidget menu{&content};
    QHash<QString, QWidget *> pages;
};

template <typename Screen>
QJsonObject openings(Screen *screen, int times)
{
    QJsonObject measured;
    for (const Page &page : kPages) {
        QJsonArray each;
        for (int i = 0; i < times; ++i) {
            each << screen->openPage(page);
            screen->home();
        }
        measured[QLatin1String(page.key)] = each;
    }
    return measured;
}

QJsonArray memoryOf(Shown *shown, int times)
{
    QJsonArray kibibytes;
    for (int i = 0; i < times; ++i) {
        for (const Page &page : kPages) {
            shown->openPage(page);
            shown->home();
        }
        kibibytes << residentKibibytes();
    }
    return kibibytes;
}

krnmINFO statusRecord(int number)
{
    krnmINFO info = {};
    info.utcYear = 2026;
    info.utcSecond = number % 60;
    info.latitude = 5230 + number % 7;
    info.longitude = 1324 + number % 5;
    info.speed = number % 100;
    info.satellitesInUse = 12;
    info.satellitesInView = 30;
    for (int i = 0; i < 30; ++i)
        info.satellites[i] = {i + 1, i < 12, (i * 3 + number) % 90, (i * 12 + number) % 360,
                              20 + i};
    return info;
}

QVector<krnmSatellite> satellitesOf(const krnmINFO &info)
{
    return QVector<krnmSatellite>(std::begin(info.satellites), std::end(info.satellites));
}

QJsonArray statusByPlugin(Shown *shown, int times)
{
    shown->openPage(kPages[2]);
    auto *list = shown->content->findChild<QListView *>();
    QJsonArray each;
    for (int i = 0; i < times; ++i) {
        const krnmINFO info = statusRecord(i);
        each << Painting::microseconds([&info, list] {
            bench::UnitChange change = bench::unit().change();
            change->gnss.info = info;
            change->gnss.satellites = satellitesOf(info);
            emit gpsservice::GpsService::instance()->krnmInfoRefresh(info);
            return list->viewport();
        });
    }
    return each;
}

// As many texts of the same lengths, on labels and in a list that nobody has dressed.
QJsonArray statusOnBareWidgets(int times)
{
    QWidget page;
    Ui_gps_test form;
    form.setupUi(&page);
    QStringListModel model;
    form.satellitesListView->setModel(&model);
    page.resize(1024, 600);
    page.show();
    QCoreApplication::processEvents();
    const QList<QLabel *> labels = {form.latitude_vol,  form.longitude_vol, form.numInUse_vol,
                                    form.numInView_vol, form.speed_vol,     form.time_duration,
                                    form.time_system,   form.time_gps,      form.antenna,
                                    form.install_mode};
    QJsonArray each;
    for (int i = 0; i < times; ++i) {
        each << Painting::microseconds([&] {
            const krnmINFO info = statusRecord(i);
            for (QLabel *label : labels)
                label->setText(QStringLiteral("GPS Time: %1 Y %2").arg(info.utcYear).arg(i));
            QStringList rows;
            for (const krnmSatellite &satellite : info.satellites) {
                rows << QStringLiteral("%1 %2 %3 %4 %5")
                            .arg(satellite.number)
                            .arg(satellite.inUse)
                            .arg(satellite.elevation)
                            .arg(satellite.azimuth)
                            .arg(satellite.signal);
            }
            model.setStringList(rows);
            return form.satellitesListView->viewport();
        });
    }
    return each;
}

int pagesMain(int argc, char **argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(argc, argv);
    QCommandLineParser words;
    words.addOption({"what", "menu, pages, memory or status", "what", "pages"});
    words.addOption({"times", "how often", "number", "10"});
    words.addOption({"module", "the plug-in; none: bare forms", "file"});
    words.process(application);
    const QString what = words.value("what");
    const int times = words.value("times").toInt();
    bench::unit().powerOn();

    QJsonObject answer;
    if (words.isSet("module")) {
        Shown shown(words.value("module"));
        answer["menu"] = shown.open();
        if (what == QLatin1String("pages"))
            answer["pages"] = openings(&shown, times);
        if (what == QLatin1String("memory"))
            answer["memory"] = memoryOf(&shown, times);
        if (what == QLatin1String("status"))
            answer["status"] = statusByPlugin(&shown, times);
    } else if (what == QLatin1String("status")) {
        answer["status"] = statusOnBareWidgets(times);
    } else {
        Bare bare;
        answer["pages"] = openings(&bare, times);
    }
    std::printf("%s\n", QJsonDocument(answer).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
    ::_exit(0); // the window is the framework's to take down, and there is none
}

} // namespace

} // namespace benchmark

int main(int argc, char **argv)
{
    return benchmark::pagesMain(argc, argv);
}
