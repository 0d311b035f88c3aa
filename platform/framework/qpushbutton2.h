#pragma once

#include "platform_api.h"

#include <QPixmap>
#include <QPushButton>

// The unit's push button: one background image while up, another while held down.
// Image names may carry the unit's "qrc:/" prefix. GUI thread only.
class PLATFORM_API QPushButton2 : public QPushButton
{
    Q_OBJECT
    Q_PROPERTY(QString backgroundNormalOff READ backgroundNormalOff WRITE setBackgroundNormalOff)
    Q_PROPERTY(QString backgroundNormalOn READ backgroundNormalOn WRITE setBackgroundNormalOn)

public:
    explicit QPushButton2(QWidget *parent = nullptr);

    QString backgroundNormalOff() const;
    void setBackgroundNormalOff(const QString &image);
    QString backgroundNormalOn() const;
    void setBackgroundNormalOn(const QString &image);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString normalOff;
    QString normalOn;
    QPixmap normalOffPixmap;
    QPixmap normalOnPixmap;
};
