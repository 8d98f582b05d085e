#pragma once

#include <QPoint>
#include <QWidget>

class QMenu;
class QPushButton;
class QVBoxLayout;
class TassetBrowserOptions;
class TbrowserToolbar;

// A widget with a toolbar strip on top and, when asked for, a gear button at the start of
// the strip that opens the settings menu. Subclasses put their content under the strip.
class TwidgetWithToolbar : public QWidget
{
    Q_OBJECT

public:
    // options: scaling and images; may be null (100 per cent, no images). Not owned; it must
    // outlive the widget. withGear: whether the strip starts with the gear button.
    TwidgetWithToolbar(const TassetBrowserOptions* options, QWidget* parent = nullptr, bool withGear = false);
    ~TwidgetWithToolbar() override;

    const TassetBrowserOptions* options() const { return m_options; }
    TbrowserToolbar* toolbar() const { return m_toolbar; }
    // Null unless the widget was made with the gear.
    QPushButton* gearButton() const { return m_gear; }

    // Shows or hides the whole strip (a panel whose content needs no tools). Shown by default,
    // but only while it holds a widget: an empty strip takes no room at all.
    void setToolbarVisible(bool visible);

    // Gives the gear button a drop-down menu of its own (QPushButton::setMenu); a press then
    // opens that menu instead of emitting gearIconClicked. Ignored without a gear.
    virtual void setGearMenu(QMenu* menu);
    // For a subclass whose strip offers a second drop-down menu: it puts the menu on its own
    // button. The frame has no such button and ignores the call.
    virtual void setSecondaryMenu(QMenu* menu);

Q_SIGNALS:
    // Requests to show or hide a part of the browser; the owner of the settings menu emits
    // them through the widget whose gear opened it.
    void toggleFilePathBar();
    void toggleProjectsTab();
    void toggleSystemTab();
    void toggleFavoritesTab();
    void toggleLibraryTab();
    void togglePreviewTab();
    void toggleMetadataTab();
    // The gear was clicked; globalPos is just below the gear and 20 pixels (scaled) left of
    // it, where the settings menu should open.
    void gearIconClicked(QPoint globalPos);

public Q_SLOTS:
    void onGearPressed();

protected:
    // The widget's vertical layout: the strip first, content below it.
    QVBoxLayout* verticalLayout() const { return m_layout; }

private:
    void updateToolbarVisibility();

    const TassetBrowserOptions* m_options;
    QVBoxLayout* m_layout;
    QPushButton* m_gear = nullptr;
    TbrowserToolbar* m_toolbar;
    bool m_toolbarWanted = true;
};
