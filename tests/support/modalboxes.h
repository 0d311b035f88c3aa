#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QObject>
#include <QStringList>
#include <QVector>

#include <functional>

namespace tests {

// Answers the modal message boxes of a case with their first button and keeps what they said.
// A box that was not announced fails the case, and so does one that was announced and did not come.
// GUI thread; watches the whole application for as long as it lives.
class ModalBoxes : public QObject
{
    Q_OBJECT

public:
    struct Box
    {
        QString title;
        QString text;
        QStringList buttons;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        bool modal = false;
        QWidget *parent = nullptr; // only to compare with: it may be gone
    };

    ModalBoxes();

    // The next box that has not been announced yet will carry these texts.
    void expect(const QString &title, const QString &text);

    // For a case that answers its boxes itself, in its own order.
    void leaveAlone() { qApp->removeEventFilter(this); }

    // Does something of the case's own when the next box has been recorded, in place of a press.
    void onShown(std::function<void()> action) { instead = std::move(action); }

    // The boxes so far, in order of their showing.
    const QVector<Box> &seen() const { return boxes; }

    // Announced boxes that have not come.
    QStringList missing() const { return expected; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void answer(QMessageBox *box);

    QStringList expected; // "title: text"
    QVector<Box> boxes;
    std::function<void()> instead;
};

} // namespace tests
