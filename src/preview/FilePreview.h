#pragma once

#include <QPixmap>
#include <QWidget>

class QLabel;
class QResizeEvent;
class TassetBrowserOptions;

// Shows one picture, scaled smoothly to fit the widget with its aspect ratio kept, or the
// no-preview text when there is none.
class FilePreview : public QWidget
{
    Q_OBJECT

public:
    // options gives the scaled minimum size; it is not owned and may be null.
    FilePreview(const TassetBrowserOptions* options, QWidget* parent);

    // The picture as it was given, before any scaling; null while the text is shown.
    QPixmap fullPicture() const { return m_picture; }

Q_SIGNALS:
    // The widget's size changed: pictures for it are best decoded at pixels (device pixels).
    void pictureSizeChanged(QSize pixels);

public Q_SLOTS:
    // Shows image scaled to the current size, or the no-preview text when image is null.
    void loadNewPreviewImage(const QPixmap& image);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void rescale();

    QLabel* m_label;
    // Every resize scales from this one, so shrinking and growing again loses no detail.
    QPixmap m_picture;
};
