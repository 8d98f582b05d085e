#pragma once

#include <QDialog>

class QLabel;
class QTreeWidget;

// The host's project window: the current project's name, root and file rules, each rule with
// the folder it names and whether that folder exists. Follows project changes while open.
class ThostProjectWindow : public QDialog
{
    Q_OBJECT

public:
    explicit ThostProjectWindow(QWidget* parent);

    // Opens the one project window (making it if needed) and brings it to the front.
    static ThostProjectWindow* showWindow(QWidget* parent);

    QTreeWidget* rules() const { return m_rules; }

private:
    void refill();

    QLabel* m_name;
    QLabel* m_root;
    QTreeWidget* m_rules;
};
