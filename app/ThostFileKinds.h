#pragma once

#include <QString>
#include <QStringList>

// What the reference host makes of a file, by its name: the kind decides which actions the
// host offers for it, whether it can draw a picture of it, and which file type its import
// and reference options start from.
namespace ThostFileKinds {

enum class Kind {
    Other,
    Scene,       // the host's own scene files: ".vela" (text) and ".velb" (binary)
    Interchange, // scenes from other programs the host imports: ".fbx", ".obj"
    Image,       // every picture Qt can read
    Stamp,       // a picture inside a stamp folder ("Stroke_Sketch", "Sculpting_Stamps")
    Script       // the host's own scripts: ".vsl"
};

Kind kindOf(const QString& path);

// The kind for a group of selected files: the common kind, with scene and interchange files
// counting as one (both can be imported and referenced); Other when they differ.
Kind commonKind(const QStringList& paths);

// The file types of the import and reference options, and the one a file calls for
// (empty when the file is none of them).
QStringList fileTypes();
QString fileTypeOf(const QString& path);

// Where the host keeps the picture of a scene: the first swatch frame the host wrote into
// the folder's ".velaSwatches", or a sidecar picture NAME.icon beside it.
QString swatchFramePath(const QString& path, int frame);
QString sidecarPicturePath(const QString& path);

} // namespace ThostFileKinds
