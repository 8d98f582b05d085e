#pragma once

#include <QDockWidget>

// The host's 3D viewport, reduced to what an integrator needs to see: the nodes of the scene
// standing on a ground grid (referenced ones drawn as outlines), and a place to drop files
// from the browser, as artists do in a content-creation application.
class ThostViewport : public QDockWidget
{
    Q_OBJECT

public:
    explicit ThostViewport(QWidget* parent);

    // The drawing area, which takes the drops.
    QWidget* area() const { return m_area; }

private:
    QWidget* m_area;
};
