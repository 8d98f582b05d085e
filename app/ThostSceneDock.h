#pragma once

#include <QDockWidget>

class QTreeWidget;

// The host's scene as a list: what import, reference and the other file actions brought in,
// newest last, so an integrator sees each command take effect.
class ThostSceneDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit ThostSceneDock(QWidget* parent);

    QTreeWidget* list() const { return m_list; }

private:
    void refill();

    QTreeWidget* m_list;
};
