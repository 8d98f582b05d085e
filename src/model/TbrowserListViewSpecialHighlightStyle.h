#pragma once

#include <QProxyStyle>

class TassetBrowserOptions;

// The thumbnail grid's style: a selected thumbnail looks exactly like a hovered one, a thin
// blue-grey frame drawn over the picture's square and no fill, so pictures keep their own
// colours; pictures sit at the bottom centre of their square. The current item of a grid
// that has the keyboard focus gets a dotted line of the same colour around that frame.
// Everything else is the application's style.
class TbrowserListViewSpecialHighlightStyle : public QProxyStyle
{
    Q_OBJECT

public:
    // options: scales the frame width (2 pixels at 100 per cent); may be null. Not kept.
    explicit TbrowserListViewSpecialHighlightStyle(const TassetBrowserOptions* options);
    ~TbrowserListViewSpecialHighlightStyle() override;

    int borderWidth() const { return m_borderWidth; }
    static QColor borderColor();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;

private:
    int m_borderWidth;
};
