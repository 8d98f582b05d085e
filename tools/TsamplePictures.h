#pragma once

#include <QImage>
#include <QSize>
#include <QString>

// Procedural pictures for the sample library: textures, sculpting stamps, sketch strokes,
// renders and skies. Each is drawn from a seed, so it comes out the same on every run.
namespace TsamplePictures {

enum class Texture {
    Brick,
    Wood,
    Marble,
    Rust,
    Grass,
    Checker,
    Sky,
    NormalBumps,
    Fabric,
    Water,
    Plates,
    Stars
};
QImage texture(Texture kind, const QSize& size, const QString& seedName);

enum class Stamp {
    RoundSoft,
    Crater,
    Scales,
    Cracks,
    Rivets,
    Weave,
    PencilGrain,
    Charcoal,
    InkSplatter,
    DottedLine
};
// Grey pictures: white raises, black leaves alone.
QImage stamp(Stamp kind, int edge, const QString& seedName);

// A flat depth-like gradient picture of a render pass, from a beauty picture.
QImage depthPass(const QImage& beauty);

} // namespace TsamplePictures
