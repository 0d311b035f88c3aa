#pragma once

#include <QObject>

class QAbstractItemView;
class QItemSelectionModel;
class QWidget;

namespace cm {

class ListviewScroller : public QObject
{
    Q_OBJECT

public:
    ListviewScroller(QAbstractItemView *, QWidget *);
    void setSelectionModel(QItemSelectionModel *);
};

} // namespace cm
