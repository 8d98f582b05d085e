#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

#include <vector>

struct Tvec3
{
    double x = 0, y = 0, z = 0;
};

// A small polygon model for the sample scenes: built from a few solids, written as a
// Wavefront OBJ, and drawn as a flat-shaded turntable picture for the swatch frames.
class TsampleMesh
{
public:
    void addBox(const Tvec3& center, const Tvec3& size, const QColor& color);
    // A cylinder standing on the y axis; a top radius of 0 makes a cone.
    void addCylinder(const Tvec3& base, double radius, double topRadius, double height, int segments,
                     const QColor& color);
    // A sphere with its rings coloured alternately, so that turning shows.
    void addSphere(const Tvec3& center, double radius, int rings, int segments, const QColor& color,
                   const QColor& stripe);
    // A ring lying flat around the y axis.
    void addTorus(const Tvec3& center, double radius, double tube, int segments, int sides, const QColor& color);
    // A toothed wheel lying flat (axis y), with a round hole.
    void addGear(const Tvec3& center, double outerRadius, double rootRadius, double holeRadius, int teeth,
                 double thickness, const QColor& color);

    bool isEmpty() const { return m_faces.empty(); }
    QByteArray toObj(const QString& name) const;

    // The model turned by angle degrees about the vertical axis and lifted by lift (in model
    // units), seen from a little above, on a dark studio background with a floor shadow.
    QImage render(const QSize& size, double angle, double lift) const;

private:
    struct Face
    {
        std::vector<int> vertices;
        QColor color;
    };
    int addVertex(const Tvec3& v);
    void addFace(std::vector<int> vertices, const QColor& color);

    std::vector<Tvec3> m_vertices;
    std::vector<Face> m_faces;
};
