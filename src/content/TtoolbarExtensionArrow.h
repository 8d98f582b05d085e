#pragma once

#include <QToolButton>

class TassetBrowserOptions;

// The button at the end of a toolbar strip that opens the row of buttons which no longer
// fit. It draws its own glyph: a triangle pointing right while the row is closed and
// pointing down while it is open.
class TtoolbarExtensionArrow : public QToolButton
{
    Q_OBJECT

public:
    // options: scales the glyph; may be null (100 per cent). Not owned.
    explicit TtoolbarExtensionArrow(const TassetBrowserOptions* options, QWidget* parent = nullptr);

    // True while the overflow row is shown. Default false.
    bool isOpen() const { return m_open; }
    // Changing the flag repaints the glyph.
    void setOpen(bool open);

    // The glyph's bounding box: 5 x 9 (scaled) while closed, 9 x 5 while open.
    QSize glyphSize() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const TassetBrowserOptions* m_options;
    bool m_open = false;
};
