#include "operatorwindow.h"

#include "journalview.h"
#include "operatorpanel.h"

#include "bench/host/host.h"

namespace bench {

namespace {

constexpr int kPanelWidth = 360;
constexpr int kJournalHeight = 130;

} // namespace

OperatorWindow::OperatorWindow(const Bench &bench)
    : QSplitter(Qt::Horizontal), screen(bench.host->screen())
{
    setWindowTitle(QStringLiteral("Head unit and operator"));
    setChildrenCollapsible(false);
    auto *left = new QSplitter(Qt::Vertical);
    left->setChildrenCollapsible(false);
    left->addWidget(screen);
    left->addWidget(new JournalView);
    addWidget(left);
    addWidget(new OperatorPanel(bench));
    setStretchFactor(0, 0);
    setStretchFactor(1, 1);
    resize(screen->width() + handleWidth() + kPanelWidth,
           screen->height() + handleWidth() + kJournalHeight);
}

OperatorWindow::~OperatorWindow()
{
    screen->setParent(nullptr);
}

} // namespace bench
