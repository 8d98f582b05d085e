#include "TsampleMesh.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

namespace {
const double kPi = 3.14159265358979323846;

Tvec3 sub(const Tvec3& a, const Tvec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(const Tvec3& a, const Tvec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Tvec3 normalized(const Tvec3& v)
{
    const double l = std::sqrt(dot(v, v));
    return l > 0 ? Tvec3{v.x / l, v.y / l, v.z / l} : v;
}
} // namespace

int TsampleMesh::addVertex(const Tvec3& v)
{
    m_vertices.push_back(v);
    return int(m_vertices.size()) - 1;
}

void TsampleMesh::addFace(std::vector<int> vertices, const QColor& color)
{
    m_faces.push_back(Face{std::move(vertices), color});
}

void TsampleMesh::addBox(const Tvec3& c, const Tvec3& s, const QColor& color)
{
    const double x0 = c.x - s.x / 2, x1 = c.x + s.x / 2;
    const double y0 = c.y - s.y / 2, y1 = c.y + s.y / 2;
    const double z0 = c.z - s.z / 2, z1 = c.z + s.z / 2;
    const int v[8] = {addVertex({x0, y0, z0}), addVertex({x1, y0, z0}), addVertex({x1, y1, z0}), addVertex({x0, y1, z0}),
                      addVertex({x0, y0, z1}), addVertex({x1, y0, z1}), addVertex({x1, y1, z1}), addVertex({x0, y1, z1})};
    // Counter-clockwise seen from outside.
    addFace({v[0], v[3], v[2], v[1]}, color);
    addFace({v[4], v[5], v[6], v[7]}, color);
    addFace({v[0], v[1], v[5], v[4]}, color);
    addFace({v[3], v[7], v[6], v[2]}, color);
    addFace({v[0], v[4], v[7], v[3]}, color);
    addFace({v[1], v[2], v[6], v[5]}, color);
}

void TsampleMesh::addCylinder(const Tvec3& b, double radius, double topRadius, double height, int segments,
                              const QColor& color)
{
    std::vector<int> bottom, top;
    for (int i = 0; i < segments; ++i) {
        const double a = 2 * kPi * i / segments;
        bottom.push_back(addVertex({b.x + radius * std::cos(a), b.y, b.z + radius * std::sin(a)}));
        top.push_back(addVertex({b.x + topRadius * std::cos(a), b.y + height, b.z + topRadius * std::sin(a)}));
    }
    for (int i = 0; i < segments; ++i) {
        const int j = (i + 1) % segments;
        addFace({bottom[i], top[i], top[j], bottom[j]}, color);
    }
    addFace(bottom, color);
    if (topRadius > 0)
        addFace(std::vector<int>(top.rbegin(), top.rend()), color);
}

void TsampleMesh::addSphere(const Tvec3& c, double radius, int rings, int segments, const QColor& color,
                            const QColor& stripe)
{
    std::vector<std::vector<int>> grid(rings + 1);
    for (int r = 0; r <= rings; ++r) {
        const double phi = kPi * r / rings;
        for (int s = 0; s < segments; ++s) {
            const double theta = 2 * kPi * s / segments;
            grid[r].push_back(addVertex({c.x + radius * std::sin(phi) * std::cos(theta), c.y + radius * std::cos(phi),
                                         c.z + radius * std::sin(phi) * std::sin(theta)}));
        }
    }
    for (int r = 0; r < rings; ++r) {
        for (int s = 0; s < segments; ++s) {
            const int t = (s + 1) % segments;
            const QColor& tone = ((s / 2 + r / 2) % 2) ? stripe : color;
            addFace({grid[r][s], grid[r][t], grid[r + 1][t], grid[r + 1][s]}, tone);
        }
    }
}

void TsampleMesh::addTorus(const Tvec3& c, double radius, double tube, int segments, int sides, const QColor& color)
{
    std::vector<std::vector<int>> grid(segments);
    for (int i = 0; i < segments; ++i) {
        const double u = 2 * kPi * i / segments;
        for (int j = 0; j < sides; ++j) {
            const double v = 2 * kPi * j / sides;
            const double d = radius + tube * std::cos(v);
            grid[i].push_back(addVertex({c.x + d * std::cos(u), c.y + tube * std::sin(v), c.z + d * std::sin(u)}));
        }
    }
    for (int i = 0; i < segments; ++i) {
        for (int j = 0; j < sides; ++j) {
            const int k = (i + 1) % segments, l = (j + 1) % sides;
            addFace({grid[i][j], grid[i][l], grid[k][l], grid[k][j]}, (i % 4 == 0) ? color.darker(125) : color);
        }
    }
}

void TsampleMesh::addGear(const Tvec3& c, double outerRadius, double rootRadius, double holeRadius, int teeth,
                          double thickness, const QColor& color)
{
    // The outline has four points per tooth; the hole gets as many, so the faces between
    // them are quads.
    std::vector<double> angles, radii;
    const double step = 2 * kPi / teeth;
    for (int t = 0; t < teeth; ++t) {
        const double a = t * step;
        const double points[4][2] = {{a, rootRadius}, {a + step * 0.1, outerRadius}, {a + step * 0.4, outerRadius},
                                     {a + step * 0.5, rootRadius}};
        for (const auto& p : points) {
            angles.push_back(p[0]);
            radii.push_back(p[1]);
        }
    }
    const int n = int(angles.size());
    const double y0 = c.y - thickness / 2, y1 = c.y + thickness / 2;
    std::vector<int> outerBottom, outerTop, holeBottom, holeTop;
    for (int i = 0; i < n; ++i) {
        const double ca = std::cos(angles[i]), sa = std::sin(angles[i]);
        outerBottom.push_back(addVertex({c.x + radii[i] * ca, y0, c.z + radii[i] * sa}));
        outerTop.push_back(addVertex({c.x + radii[i] * ca, y1, c.z + radii[i] * sa}));
        holeBottom.push_back(addVertex({c.x + holeRadius * ca, y0, c.z + holeRadius * sa}));
        holeTop.push_back(addVertex({c.x + holeRadius * ca, y1, c.z + holeRadius * sa}));
    }
    const QColor side = color.darker(115);
    for (int i = 0; i < n; ++i) {
        const int j = (i + 1) % n;
        addFace({outerBottom[i], outerTop[i], outerTop[j], outerBottom[j]}, side);
        addFace({holeBottom[j], holeTop[j], holeTop[i], holeBottom[i]}, side);
        addFace({outerTop[i], holeTop[i], holeTop[j], outerTop[j]}, color);
        addFace({outerBottom[j], holeBottom[j], holeBottom[i], outerBottom[i]}, color);
    }
}

QByteArray TsampleMesh::toObj(const QString& name) const
{
    QByteArray out;
    out += "# " + name.toUtf8() + ", a sample model of the ORLO reference host\n";
    out += "o " + name.toUtf8() + "\n";
    for (const Tvec3& v : m_vertices)
        out += "v " + QByteArray::number(v.x, 'f', 4) + ' ' + QByteArray::number(v.y, 'f', 4) + ' '
            + QByteArray::number(v.z, 'f', 4) + '\n';
    for (const Face& f : m_faces) {
        out += 'f';
        for (int index : f.vertices)
            out += ' ' + QByteArray::number(index + 1);
        out += '\n';
    }
    return out;
}

QImage TsampleMesh::render(const QSize& size, double angle, double lift) const
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor(0x4b, 0x52, 0x5c));
    sky.setColorAt(1, QColor(0x22, 0x25, 0x2a));
    painter.fillRect(image.rect(), sky);
    if (m_vertices.empty())
        return image;

    // Frame the model by its extent, so every sample fills its picture the same way.
    double minY = m_vertices.front().y, maxY = minY, radius = 0;
    for (const Tvec3& v : m_vertices) {
        minY = std::min(minY, v.y);
        maxY = std::max(maxY, v.y);
        radius = std::max(radius, std::sqrt(v.x * v.x + v.z * v.z));
    }
    const double midY = (minY + maxY) / 2;
    const double extent = std::max({radius, (maxY - minY) / 2, 0.001});
    const double scale = 1.0 / extent;
    const double tilt = 24 * kPi / 180, turn = angle * kPi / 180;
    const double ct = std::cos(tilt), st = std::sin(tilt), cr = std::cos(turn), sr = std::sin(turn);
    const double distance = 4.2;
    const double focal = std::min(size.width(), size.height()) * 1.28;
    const QPointF center(size.width() / 2.0, size.height() * 0.52);

    auto toCamera = [&](const Tvec3& v) {
        const double x = v.x * scale, y = (v.y - midY + lift) * scale, z = v.z * scale;
        const double rx = x * cr - z * sr, rz = x * sr + z * cr;
        return Tvec3{rx, y * ct - rz * st, y * st + rz * ct + distance};
    };
    auto project = [&](const Tvec3& v) { return QPointF(center.x() + focal * v.x / v.z, center.y() - focal * v.y / v.z); };

    // A soft shadow on the floor below the model, shrinking as the model rises.
    const Tvec3 floor = toCamera({0, minY - lift, 0});
    const QPointF shadowCenter = project(floor);
    const double shadowWidth = focal * 1.1 / floor.z / (1 + lift * scale * 0.6);
    QRadialGradient shadow(shadowCenter, shadowWidth);
    shadow.setColorAt(0, QColor(0, 0, 0, 120));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    painter.save();
    painter.translate(shadowCenter);
    painter.scale(1, 0.3);
    painter.translate(-shadowCenter);
    painter.setPen(Qt::NoPen);
    painter.setBrush(shadow);
    painter.drawEllipse(shadowCenter, shadowWidth, shadowWidth);
    painter.restore();

    std::vector<Tvec3> camera;
    camera.reserve(m_vertices.size());
    for (const Tvec3& v : m_vertices)
        camera.push_back(toCamera(v));

    struct Drawn
    {
        double depth;
        QPolygonF polygon;
        QColor color;
    };
    std::vector<Drawn> drawn;
    const Tvec3 light = normalized({-0.5, 0.8, -0.6});
    for (const Face& face : m_faces) {
        // Newell's normal, robust for the slightly bent quads of the round solids.
        Tvec3 normal;
        double depth = 0;
        const size_t n = face.vertices.size();
        for (size_t i = 0; i < n; ++i) {
            const Tvec3& a = camera[face.vertices[i]];
            const Tvec3& b = camera[face.vertices[(i + 1) % n]];
            normal.x += (a.y - b.y) * (a.z + b.z);
            normal.y += (a.z - b.z) * (a.x + b.x);
            normal.z += (a.x - b.x) * (a.y + b.y);
            depth += a.z;
        }
        normal = normalized(normal);
        const Tvec3 toEye = normalized(sub(Tvec3{0, 0, 0}, camera[face.vertices[0]]));
        if (dot(normal, toEye) <= 0)
            continue;
        const double diffuse = std::max(0.0, dot(normal, light));
        const double shade = 0.32 + 0.68 * diffuse;
        QColor color = face.color;
        color.setRgbF(std::min(1.0, color.redF() * shade + 0.08 * diffuse * diffuse),
                      std::min(1.0, color.greenF() * shade + 0.08 * diffuse * diffuse),
                      std::min(1.0, color.blueF() * shade + 0.08 * diffuse * diffuse));
        QPolygonF polygon;
        for (int index : face.vertices)
            polygon << project(camera[index]);
        drawn.push_back(Drawn{depth / n, polygon, color});
    }
    std::stable_sort(drawn.begin(), drawn.end(), [](const Drawn& a, const Drawn& b) { return a.depth > b.depth; });
    for (const Drawn& d : drawn) {
        // A hairline of the face's own colour closes the seams between neighbouring faces.
        painter.setPen(QPen(d.color, 0.6));
        painter.setBrush(d.color);
        painter.drawPolygon(d.polygon);
    }
    painter.end();
    return image;
}
