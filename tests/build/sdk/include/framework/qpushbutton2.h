#pragma once

#include <QPushButton>

class QPushButton2 : public QPushButton
{
    Q_OBJECT
    Q_PROPERTY(QString backgroundNormalOff MEMBER normalOff)
    Q_PROPERTY(QString backgroundNormalOn MEMBER normalOn)

public:
    explicit QPushButton2(QWidget *parent = nullptr);

private:
    QString normalOff;
    QString normalOn;
};
