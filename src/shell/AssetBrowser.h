#pragma once

#include "ORLOAssetBrowser.h"
#include "TassetBrowserOptions.h"
#include "TbrowserHistory.h"

#include <QPointer>

class PreviewPane;
class QDialog;
class QHBoxLayout;
class QShowEvent;
class QSplitter;
class SearchToolbar;
class TcontentKeyMap;
class ThumbnailPane;
class TimportOptionsDialog;
class TreeViewPane;

// The concrete browser behind ORLOAssetBrowser: owns the private copy of the host's options,
// the navigation history, the four panes and the splitters that hold them, and applies and
// saves the panel layout and thumbnail size of each host context.
class AssetBrowser : public ORLOAssetBrowser
{
    Q_OBJECT

public:
    AssetBrowser(const TassetBrowserOptions& options, QWidget* parent);
    ~AssetBrowser() override;

    void initializeBrowser() override;
    void setBrowserContext(const Tstring& context, const Tstring& a, const Tstring& b) override;
    void saveBrowserState() override;
    void showLibraryPath(const Tstring& path) override;
    void addLibraryPath(const Tstring& path) override;
    void removeLibraryPath(const Tstring& path) override;
    void refreshLibrary() override;

    // The browser's own copy: every pane holds a pointer to it, never to the host's record.
    const TassetBrowserOptions* options() const { return &m_options; }
    const TbrowserHistory& history() const { return m_history; }
    bool stateSaved() const { return m_stateSaved; }
    TreeViewPane* sidePanel() const { return m_sidePanel; }
    ThumbnailPane* contentPane() const { return m_contentPane; }
    PreviewPane* previewPanel() const { return m_previewPanel; }
    SearchToolbar* pathBar() const { return m_pathBar; }
    QWidget* previewContainer() const { return m_previewContainer; }
    QSplitter* mainSplitter() const { return m_mainSplitter; }
    QDialog* optionsDialog() const;
    // The browser's keyboard shortcuts.
    TcontentKeyMap* keyMap() const { return m_keyMap; }

Q_SIGNALS:
    // Declared for hosts that watch the history; the browser never emits it.
    void HistoryUpdated(TbrowserHistory History);
    // After a step back or forward: the folder the panes are to show, not added to the history.
    void moveInHistory(QString path);

public Q_SLOTS:
    void addItemToHistory(QString item);
    void goBackHistory();
    void goFwdHistory();
    void toggleListIconView();
    void setFileMenuActions(QString path);
    QString getCurrentDir();
    void closeDialogOptions();
    void saveOptions();
    void onRefreshPreviewPanel(bool enable);

    // Shows the import or reference options of file (mode "Import" or "Reference", any case)
    // in a modal dialog whose body the host fills; returns when the dialog has closed.
    void openOptionsDialog(QString mode, QString file);

protected:
    // Tab and Shift+Tab move through the panes in reading order (side panel, path bar, the
    // content pane's toolbar, search field and view, preview), whatever order their widgets
    // were made or moved in; past either end the focus leaves for the host's next widget.
    bool focusNextPrevChild(bool next) override;
    void showEvent(QShowEvent* event) override;

private:
    void buildPanes();
    void connectPanes();
    void applyVisibilityFlags();
    QString panelsKey() const;
    void applyPanelsStatus();
    void applyThumbnailSize();
    void showFolder(const QString& path);
    void followSelection(const QString& path);
    void shareWidthWithContent();
    void setUpKeyboardAndDrops();

    TreeViewPane* m_sidePanel = nullptr;
    ThumbnailPane* m_contentPane = nullptr;
    PreviewPane* m_previewPanel = nullptr;
    SearchToolbar* m_pathBar = nullptr;
    TcontentKeyMap* m_keyMap = nullptr;
    TbrowserHistory m_history;
    TassetBrowserOptions m_options;
    QPointer<TimportOptionsDialog> m_optionsDialog;
    Tstring m_optionsCommand;
    QWidget* m_previewContainer = nullptr;
    QHBoxLayout* m_pathBarLayout = nullptr;
    QSplitter* m_mainSplitter = nullptr;
    QSplitter* m_innerSplitter = nullptr;
    bool m_widthShared = false;
    bool m_stateSaved = false;
};
