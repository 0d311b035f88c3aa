#include "homescreen.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace bench {

HomeScreen::HomeScreen(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("unit_home"));

    auto *title = new QLabel(QStringLiteral("Head unit"), this);
    title->setStyleSheet(QStringLiteral("font-size: 34px; color: #e6ebf2;"));
    auto *remark = new QLabel(QStringLiteral("Simulated; no application is open."), this);
    remark->setStyleSheet(QStringLiteral("font-size: 18px; color: #8695aa;"));

    auto *tile = new QPushButton(QStringLiteral("Test mode"), this);
    tile->setObjectName(QStringLiteral("tile_test_mode"));
    tile->setFixedSize(220, 140);
    tile->setFocusPolicy(Qt::NoFocus);
    tile->setStyleSheet(
        QStringLiteral("QPushButton { font-size: 24px; color: #e6ebf2; background: #243143;"
                       " border: 1px solid #3b4c63; border-radius: 16px; }"
                       "QPushButton:pressed { background: #30527d; }"));
    connect(tile, &QPushButton::clicked, this, &HomeScreen::testModeChosen);

    auto *column = new QVBoxLayout(this);
    column->setSpacing(16);
    column->addStretch(2);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addWidget(remark, 0, Qt::AlignHCenter);
    column->addStretch(1);
    column->addWidget(tile, 0, Qt::AlignHCenter);
    column->addStretch(3);
}

} // namespace bench
