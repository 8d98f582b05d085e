#pragma once

#include "ORLOAssetBrowser.h"
#include "TassetBrowserOptions.h"

class QSplitter;
class QShowEvent;

// The concrete browser behind ORLOAssetBrowser: owns the private copy of the host's options,
// the panes and the splitters that hold them, and the per-context panel state.
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
    QString contextName() const { return m_contextName; }
    bool stateSaved() const { return m_stateSaved; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildPanes();
    void connectPanes();
    void applyVisibilityFlags();

    TassetBrowserOptions m_options;
    QSplitter* m_mainSplitter = nullptr;
    QString m_contextName;
    bool m_stateSaved = false;
};
