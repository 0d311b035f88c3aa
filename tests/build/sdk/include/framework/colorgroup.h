#pragma once

#include <QFont>
#include <QString>

class ColorGroup
{
public:
    static void setFontColor(QFont &, QString, int, int);
};
