#include "TsamplePictures.h"

#include "TsampleNoise.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

namespace TsamplePictures {
namespace {
const double kPi = 3.14159265358979323846;

int clamp255(double v)
{
    return std::clamp(int(std::lround(v)), 0, 255);
}

QRgb mix(const QColor& a, const QColor& b, double t)
{
    t = std::clamp(t, 0.0, 1.0);
    return qRgb(clamp255(a.red() + (b.red() - a.red()) * t), clamp255(a.green() + (b.green() - a.green()) * t),
                clamp255(a.blue() + (b.blue() - a.blue()) * t));
}

// Fills every pixel from a function of the position in [0, 1) x [0, 1).
template <typename F>
QImage perPixel(const QSize& size, F colour)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            line[x] = colour(double(x) / size.width(), double(y) / size.height());
    }
    return image;
}

QImage brick(const QSize& size, const TsampleNoise& noise)
{
    const double rows = 12, columns = 6;
    return perPixel(size, [&](double u, double v) {
        const double row = std::floor(v * rows);
        const double shifted = u * columns + (int(row) % 2 ? 0.5 : 0);
        const double fu = shifted - std::floor(shifted), fv = v * rows - row;
        const double grain = noise.fractal(u * 40, v * 40, 3);
        if (fu < 0.04 || fv < 0.08)
            return mix(QColor(0xb8, 0xb0, 0xa4), QColor(0x8a, 0x84, 0x7c), grain);
        const double tone = noise.value(std::floor(shifted) * 3.1, row * 7.7);
        return mix(QColor(0x9c, 0x3f, 0x2a), QColor(0xc2, 0x6a, 0x45), 0.5 * tone + 0.5 * grain);
    });
}

QImage wood(const QSize& size, const TsampleNoise& noise)
{
    const double planks = 5;
    return perPixel(size, [&](double u, double v) {
        const double plank = std::floor(v * planks);
        const double warp = noise.fractal(u * 3, v * 14 + plank * 5, 4);
        const double rings = 0.5 + 0.5 * std::sin((v * planks - plank) * 20 + warp * 9 + plank * 2.3);
        const double edge = (v * planks - plank) < 0.025 ? 0.45 : 1.0;
        const QRgb c = mix(QColor(0x8a, 0x5a, 0x32), QColor(0xc9, 0x95, 0x5e), rings * 0.7 + warp * 0.3);
        return qRgb(clamp255(qRed(c) * edge), clamp255(qGreen(c) * edge), clamp255(qBlue(c) * edge));
    });
}

QImage marble(const QSize& size, const TsampleNoise& noise)
{
    return perPixel(size, [&](double u, double v) {
        const double turbulence = noise.fractal(u * 5, v * 5, 5);
        const double vein = std::pow(std::abs(std::sin((u + v) * 9 + turbulence * 8)), 0.35);
        const double tiles = (std::fmod(u * 4, 1.0) < 0.01 || std::fmod(v * 4, 1.0) < 0.01) ? 0.8 : 1.0;
        const QRgb c = mix(QColor(0x6d, 0x6f, 0x78), QColor(0xee, 0xec, 0xe6), vein);
        return qRgb(clamp255(qRed(c) * tiles), clamp255(qGreen(c) * tiles), clamp255(qBlue(c) * tiles));
    });
}

QImage rust(const QSize& size, const TsampleNoise& noise)
{
    return perPixel(size, [&](double u, double v) {
        const double n = noise.fractal(u * 8, v * 8, 5);
        const double blotch = std::clamp((noise.fractal(u * 3 + 10, v * 3, 4) - 0.45) * 4, 0.0, 1.0);
        const double streak = 0.85 + 0.15 * std::sin(u * 300 + n * 4);
        const QRgb metal = mix(QColor(0x5c, 0x62, 0x6a), QColor(0x9a, 0xa1, 0xa8), n * streak);
        const QRgb rusted = mix(QColor(0x6b, 0x2e, 0x12), QColor(0xc0, 0x62, 0x24), n);
        return mix(QColor(metal), QColor(rusted), blotch);
    });
}

QImage grass(const QSize& size, TsampleNoise& noise)
{
    QImage image = perPixel(size, [&](double u, double v) {
        return mix(QColor(0x2d, 0x55, 0x1c), QColor(0x5e, 0x8c, 0x2e), noise.fractal(u * 12, v * 12, 4));
    });
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const int blades = size.width() * size.height() / 90;
    for (int i = 0; i < blades; ++i) {
        const QPointF root(noise.range(0, size.width()), noise.range(0, size.height()));
        const double length = noise.range(4, 12), lean = noise.range(-0.5, 0.5);
        painter.setPen(QPen(QColor::fromHsvF(noise.range(0.22, 0.3), 0.7, noise.range(0.35, 0.75)), 1.2));
        painter.drawLine(root, root + QPointF(lean * length, -length));
    }
    return image;
}

QImage checker(const QSize& size)
{
    const int cells = 8;
    // One colour per cell, worked out once: the picture may be large.
    QRgb tones[cells][cells];
    for (int cv = 0; cv < cells; ++cv) {
        for (int cu = 0; cu < cells; ++cu) {
            const double hue = double(cu + cv * cells) / (cells * cells);
            tones[cv][cu] = QColor::fromHsvF(hue, 0.55, (cu + cv) % 2 ? 0.95 : 0.65).rgb();
        }
    }
    return perPixel(size, [&](double u, double v) {
        const int cu = std::min(int(u * cells), cells - 1), cv = std::min(int(v * cells), cells - 1);
        const double fu = u * cells - cu, fv = v * cells - cv;
        if (fu < 0.02 || fv < 0.02)
            return qRgb(0x20, 0x20, 0x20);
        return tones[cv][cu];
    });
}

QImage sky(const QSize& size, const TsampleNoise& noise)
{
    QImage image = perPixel(size, [&](double u, double v) {
        const double cloud = std::clamp((noise.fractal(u * 6, v * 10, 4) - 0.5) * 3 * (1 - v), 0.0, 1.0);
        const QRgb base = mix(QColor(0x1d, 0x4e, 0x8f), QColor(0xf2, 0xa8, 0x5c), std::pow(v, 1.6));
        return mix(QColor(base), QColor(0xfa, 0xf3, 0xea), cloud * 0.8);
    });
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF sun(size.width() * 0.7, size.height() * 0.78);
    QRadialGradient glow(sun, size.height() * 0.25);
    glow.setColorAt(0, QColor(255, 250, 220, 255));
    glow.setColorAt(0.12, QColor(255, 230, 160, 220));
    glow.setColorAt(1, QColor(255, 200, 120, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(glow);
    painter.drawEllipse(sun, size.height() * 0.25, size.height() * 0.25);
    return image;
}

QImage normalBumps(const QSize& size, const TsampleNoise& noise)
{
    auto height = [&](double u, double v) {
        const double cu = std::fmod(u * 6, 1.0) - 0.5, cv = std::fmod(v * 6, 1.0) - 0.5;
        const double dome = std::max(0.0, 0.16 - cu * cu - cv * cv);
        return dome * 6 + noise.fractal(u * 30, v * 30, 2) * 0.05;
    };
    const double e = 1.0 / std::max(size.width(), size.height());
    return perPixel(size, [&](double u, double v) {
        const double dx = (height(u + e, v) - height(u - e, v)) / (2 * e) * 0.02;
        const double dy = (height(u, v + e) - height(u, v - e)) / (2 * e) * 0.02;
        const double l = std::sqrt(dx * dx + dy * dy + 1);
        return qRgb(clamp255((-dx / l * 0.5 + 0.5) * 255), clamp255((-dy / l * 0.5 + 0.5) * 255),
                    clamp255((1 / l * 0.5 + 0.5) * 255));
    });
}

QImage fabric(const QSize& size, const TsampleNoise& noise)
{
    return perPixel(size, [&](double u, double v) {
        const double threads = 64;
        const int cu = int(u * threads), cv = int(v * threads);
        const bool over = (cu + cv) % 2;
        const double along = over ? std::sin(std::fmod(v * threads, 1.0) * kPi) : std::sin(std::fmod(u * threads, 1.0) * kPi);
        const double n = noise.value(u * 200, v * 200);
        return mix(QColor(0x3b, 0x4f, 0x7a), over ? QColor(0x7f, 0x99, 0xc8) : QColor(0x6a, 0x82, 0xb0),
                   along * 0.8 + n * 0.2);
    });
}

QImage water(const QSize& size, const TsampleNoise& noise)
{
    return perPixel(size, [&](double u, double v) {
        const double n = noise.fractal(u * 6, v * 6, 4);
        const double ripple = 0.5 + 0.5 * std::sin((u * 30 + n * 6) + std::sin(v * 20 + n * 4));
        return mix(QColor(0x0c, 0x3b, 0x5c), QColor(0x3c, 0x9c, 0xb8), ripple * 0.6 + n * 0.4);
    });
}

QImage plates(const QSize& size, const TsampleNoise& noise)
{
    return perPixel(size, [&](double u, double v) {
        const int cells = 4;
        const double fu = std::fmod(u * cells, 1.0), fv = std::fmod(v * cells, 1.0);
        const bool seam = fu < 0.015 || fv < 0.015;
        const double rivet = std::min({std::hypot(fu - 0.06, fv - 0.06), std::hypot(fu - 0.94, fv - 0.06),
                                       std::hypot(fu - 0.06, fv - 0.94), std::hypot(fu - 0.94, fv - 0.94)});
        const double n = noise.fractal(u * 20, v * 20, 3);
        if (seam)
            return qRgb(0x30, 0x33, 0x38);
        if (rivet < 0.022)
            return mix(QColor(0x9a, 0xa0, 0xa8), QColor(0xdd, 0xe2, 0xe8), 1 - rivet / 0.022);
        const double panel = noise.value(std::floor(u * cells) * 5.3, std::floor(v * cells) * 2.9);
        return mix(QColor(0x7c, 0x83, 0x8c), QColor(0xb4, 0xba, 0xc2), panel * 0.6 + n * 0.4);
    });
}

QImage stars(const QSize& size, TsampleNoise& noise)
{
    QImage image = perPixel(size, [&](double u, double v) {
        const double haze = std::pow(noise.fractal(u * 3, v * 3, 3), 3);
        return mix(QColor(0x03, 0x04, 0x0a), QColor(0x3a, 0x24, 0x5c), haze * 2);
    });
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const int count = size.width() * size.height() / 400;
    for (int i = 0; i < count; ++i) {
        const double r = std::pow(noise.next(), 6) * 2.2 + 0.4;
        painter.setBrush(QColor::fromHsvF(noise.range(0.55, 0.7), noise.range(0, 0.3), 1.0, noise.range(0.5, 1.0)));
        painter.drawEllipse(QPointF(noise.range(0, size.width()), noise.range(0, size.height())), r, r);
    }
    return image;
}
} // namespace

QImage texture(Texture kind, const QSize& size, const QString& seedName)
{
    TsampleNoise noise(TsampleNoise::seedOf(seedName));
    switch (kind) {
    case Texture::Brick: return brick(size, noise);
    case Texture::Wood: return wood(size, noise);
    case Texture::Marble: return marble(size, noise);
    case Texture::Rust: return rust(size, noise);
    case Texture::Grass: return grass(size, noise);
    case Texture::Checker: return checker(size);
    case Texture::Sky: return sky(size, noise);
    case Texture::NormalBumps: return normalBumps(size, noise);
    case Texture::Fabric: return fabric(size, noise);
    case Texture::Water: return water(size, noise);
    case Texture::Plates: return plates(size, noise);
    case Texture::Stars: return stars(size, noise);
    }
    return QImage();
}

QImage stamp(Stamp kind, int edge, const QString& seedName)
{
    TsampleNoise noise(TsampleNoise::seedOf(seedName));
    const QSize size(edge, edge);
    auto grey = [](double v) { const int g = clamp255(v * 255); return qRgb(g, g, g); };
    auto radial = [](double u, double v) { return std::hypot(u - 0.5, v - 0.5) * 2; };
    switch (kind) {
    case Stamp::RoundSoft:
        return perPixel(size, [&](double u, double v) {
            const double r = radial(u, v);
            return grey(r >= 1 ? 0 : std::pow(std::cos(r * kPi / 2), 2));
        });
    case Stamp::Crater:
        return perPixel(size, [&](double u, double v) {
            const double r = radial(u, v);
            const double rim = std::exp(-std::pow((r - 0.62) / 0.12, 2));
            const double bowl = r < 0.6 ? 0.25 * (r / 0.6) : 0;
            return grey(std::clamp(rim + bowl + (noise.fractal(u * 12, v * 12, 3) - 0.5) * 0.15, 0.0, 1.0) *
                        (r < 1 ? 1 : 0));
        });
    case Stamp::Scales:
        return perPixel(size, [&](double u, double v) {
            const double rows = 6;
            const double row = std::floor(v * rows);
            const double x = u * rows + (int(row) % 2 ? 0.5 : 0);
            const double fx = x - std::floor(x) - 0.5, fy = v * rows - row;
            const double d = std::hypot(fx, fy * 0.9);
            const double fade = 1 - std::pow(radial(u, v), 4);
            return grey(std::clamp((0.55 - d) * 2.4, 0.0, 1.0) * std::max(0.0, fade));
        });
    case Stamp::Cracks: {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        for (int crack = 0; crack < 7; ++crack) {
            QPainterPath path(QPointF(edge / 2.0, edge / 2.0));
            double angle = crack * 2 * kPi / 7 + noise.range(-0.3, 0.3);
            QPointF p(edge / 2.0, edge / 2.0);
            for (int step = 0; step < 14; ++step) {
                angle += noise.range(-0.5, 0.5);
                p += QPointF(std::cos(angle), std::sin(angle)) * edge * 0.035;
                path.lineTo(p);
            }
            painter.setPen(QPen(QColor(235, 235, 235), edge * 0.012, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.drawPath(path);
        }
        return image;
    }
    case Stamp::Rivets:
        return perPixel(size, [&](double u, double v) {
            const double cells = 4;
            const double fx = std::fmod(u * cells, 1.0) - 0.5, fy = std::fmod(v * cells, 1.0) - 0.5;
            const double d = std::hypot(fx, fy);
            return grey(d < 0.22 ? std::sqrt(1 - std::pow(d / 0.22, 2)) : 0);
        });
    case Stamp::Weave:
        return perPixel(size, [&](double u, double v) {
            const double threads = 10;
            const int cu = int(u * threads), cv = int(v * threads);
            const bool over = (cu + cv) % 2;
            const double along = over ? std::sin(std::fmod(v * threads, 1.0) * kPi) : std::sin(std::fmod(u * threads, 1.0) * kPi);
            return grey(0.2 + 0.7 * along * (over ? 1.0 : 0.8));
        });
    case Stamp::PencilGrain:
        return perPixel(size, [&](double u, double v) {
            const double grain = noise.value(u * edge * 0.5, v * edge * 0.08);
            const double fade = std::max(0.0, 1 - std::pow(radial(u, v), 3));
            return grey(std::clamp((grain - 0.35) * 1.8, 0.0, 1.0) * fade);
        });
    case Stamp::Charcoal:
        return perPixel(size, [&](double u, double v) {
            const double n = noise.fractal(u * 16, v * 4, 4);
            const double band = std::exp(-std::pow((v - 0.5) / 0.22, 2));
            return grey(std::clamp((n - 0.3) * 2.2, 0.0, 1.0) * band);
        });
    case Stamp::InkSplatter: {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::white);
        painter.drawEllipse(QPointF(edge / 2.0, edge / 2.0), edge * 0.18, edge * 0.16);
        for (int i = 0; i < 60; ++i) {
            const double angle = noise.range(0, 2 * kPi), distance = noise.range(0.15, 0.46) * edge;
            const double r = edge * 0.05 * std::pow(noise.next(), 2) + 1;
            painter.drawEllipse(QPointF(edge / 2.0 + std::cos(angle) * distance, edge / 2.0 + std::sin(angle) * distance), r, r);
        }
        return image;
    }
    case Stamp::DottedLine:
        return perPixel(size, [&](double u, double v) {
            const double dots = 8;
            const double fx = std::fmod(u * dots, 1.0) - 0.5, fy = (v - 0.5) * dots;
            return grey(std::hypot(fx, fy) < 0.28 ? 1.0 : 0.0);
        });
    }
    return QImage();
}

QImage depthPass(const QImage& beauty)
{
    QImage depth(beauty.size(), QImage::Format_RGB32);
    for (int y = 0; y < beauty.height(); ++y) {
        const QRgb* in = reinterpret_cast<const QRgb*>(beauty.constScanLine(y));
        QRgb* out = reinterpret_cast<QRgb*>(depth.scanLine(y));
        for (int x = 0; x < beauty.width(); ++x) {
            const int g = 255 - qGray(in[x]);
            out[x] = qRgb(g, g, g);
        }
    }
    return depth;
}

} // namespace TsamplePictures
