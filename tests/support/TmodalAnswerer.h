#pragma once

// Answers every modal message box that opens while it lives, from inside the box's own event
// loop, and notes what each one showed. A box nobody expected is answered all the same, so a
// fault fails a check instead of hanging the test.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <functional>

class TmodalAnswerer : public QObject
{
public:
    struct Seen
    {
        QString title;
        QString text;
        QString informativeText;
        QString checkBoxText;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons;
        bool modal = false;
    };

    // Clicks answer (rejects a box without that button), the box's check box set to tick.
    explicit TmodalAnswerer(QMessageBox::StandardButton answer = QMessageBox::Ok, bool tick = false)
        : m_answer(answer)
        , m_tick(tick)
    {
        connect(&m_timer, &QTimer::timeout, this, &TmodalAnswerer::poll);
        m_timer.start(0);
    }

    // Runs while the box is open, before it is answered; it may delete the box's owner.
    std::function<void(QMessageBox*)> whileOpen;
    QList<Seen> seen;

private:
    void poll()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        QCheckBox* check = box->checkBox();
        seen.append({box->windowTitle(), box->text(), box->informativeText(), check ? check->text() : QString(),
                     box->icon(), box->standardButtons(), box->isModal()});
        const QPointer<QMessageBox> guard(box);
        if (whileOpen)
            whileOpen(box);
        if (!guard)
            return;
        if (guard->checkBox())
            guard->checkBox()->setChecked(m_tick);
        if (QAbstractButton* button = guard->button(m_answer))
            button->click();
        else
            guard->reject();
    }

    QMessageBox::StandardButton m_answer;
    bool m_tick;
    QTimer m_timer;
};
