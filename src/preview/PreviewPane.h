#pragma once

#include <QString>
#include <QWidget>

class FilePreview;
class MetaDataViewer;
class PreviewLoader;
class QSplitter;
class QTabWidget;
class TassetBrowserOptions;
class Tint32Array;

// The panel at the right of the browser: the metadata tab above the picture tab, in a
// vertical splitter. It starts no loads itself: the browser connects the content pane's
// file selection to newPreviewRequested, which fills both tabs.
class PreviewPane : public QWidget
{
    Q_OBJECT

public:
    // options: the browser's copy, for scaled sizes and the host's image loader; not owned,
    // it must outlive the pane.
    PreviewPane(const TassetBrowserOptions* options, QWidget* parent);

    // The host's scaled size for 300 x 500.
    QSize sizeHint() const override;

    // Both states as last applied; true at first.
    bool isPreviewTabShown() const { return m_previewShown; }
    bool isMetadataTabShown() const { return m_metadataShown; }

    // Adds the preview tab's state and then the metadata tab's state (1 shown, 0 hidden) at
    // the end of the browser's "PanelsStatus" array.
    void appendPanelsStatus(Tint32Array& status) const;
    // Takes the preview tab's state from value 5 and the metadata tab's from value 6
    // (non-zero is shown) and shows or hides the tabs and the panel as the toggles do. An
    // array too short to hold both values changes nothing.
    void applyPanelsStatus(const Tint32Array& status);

    MetaDataViewer* metaDataViewer() const { return m_metaDataViewer; }
    FilePreview* filePreview() const { return m_filePreview; }
    PreviewLoader* previewLoader() const { return m_loader; }
    QTabWidget* metadataTabWidget() const { return m_metadataTabs; }
    QTabWidget* previewTabWidget() const { return m_previewTabs; }

Q_SIGNALS:
    // Asks for the picture and the metadata of path; both tabs are filled before it returns.
    void newPreviewRequested(const QString& path);

public Q_SLOTS:
    // Each shows or hides its tab widget, then shows the whole panel when either tab is
    // shown and hides it when both are hidden.
    void onTogglePreviewTab(bool visible);
    void onToggleMetadataTab(bool visible);
    // Shows the no-preview text: nothing that can be previewed is selected any more.
    void clearPreview();

private:
    void updatePanelVisibility();

    MetaDataViewer* m_metaDataViewer;
    FilePreview* m_filePreview;
    PreviewLoader* m_loader = nullptr;
    QTabWidget* m_metadataTabs;
    QTabWidget* m_previewTabs;
    const TassetBrowserOptions* m_options;
    bool m_previewShown = true;
    bool m_metadataShown = true;
};
