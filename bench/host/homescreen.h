#pragma once

#include <QWidget>

namespace bench {

// What the unit shows outside the test mode: the time and one tile that leads back.
class HomeScreen : public QWidget
{
    Q_OBJECT

public:
    explicit HomeScreen(QWidget *parent);

signals:
    void testModeChosen();
};

} // namespace bench
