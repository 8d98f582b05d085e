// orlo-samplegen: writes the sample content library the reference host opens on first run.
//
//   orlo-samplegen --out DIR
//
// Everything in it is drawn here: scenes whose swatch frames turn their model through 24
// frames, interchange files with clip and pose markers, pictures in several formats and sizes,
// sculpting stamps, host scripts, two sample projects, example folders under a host and a
// plug-in installation folder, a texture library and a user library. The manifest
// "orlo-samples.json" is written last and names the parts; a folder holding a manifest is
// replaced whole on the next run, any other non-empty folder is left alone.
#include "TsampleMesh.h"
#include "TsampleNoise.h"
#include "TsamplePictures.h"
#include "TsamplePsd.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#ifdef ORLO_HAVE_OPENIMAGEIO
#include <OpenImageIO/imageio.h>
#endif

using TsamplePictures::Stamp;
using TsamplePictures::Texture;

namespace {
const char* const kManifest = "orlo-samples.json";
const int kFrames = 24;
const QSize kFrameSize(192, 192);

// Every file and folder the generator writes goes through here, so that modification times
// are fixed too (spread over a spring afternoon) and a failure stops the run.
class Writer
{
public:
    explicit Writer(const QString& root)
        : m_root(root)
    {
    }

    bool ok() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }
    int files() const { return m_count; }
    QString path(const QString& relative) const { return m_root.filePath(relative); }

    void folder(const QString& relative)
    {
        if (ok() && !m_root.mkpath(relative))
            m_error = QStringLiteral("cannot create %1").arg(path(relative));
    }

    void bytes(const QString& relative, const QByteArray& content)
    {
        if (!ok())
            return;
        folder(QFileInfo(relative).path());
        QFile file(path(relative));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            m_error = QStringLiteral("cannot write %1").arg(path(relative));
            return;
        }
        settle(file);
    }

    // A file written by another library, given the absolute path; false is a failure.
    void external(const QString& relative, const std::function<bool(const QString&)>& write)
    {
        if (!ok())
            return;
        folder(QFileInfo(relative).path());
        if (!write(path(relative))) {
            m_error = QStringLiteral("cannot write %1").arg(path(relative));
            return;
        }
        QFile file(path(relative));
        if (!file.open(QIODevice::ReadWrite)) {
            m_error = QStringLiteral("cannot open %1").arg(path(relative));
            return;
        }
        settle(file);
    }

    void image(const QString& relative, const QImage& picture, const char* format, int quality = -1)
    {
        if (!ok())
            return;
        folder(QFileInfo(relative).path());
        QFile file(path(relative));
        if (!file.open(QIODevice::WriteOnly)) {
            m_error = QStringLiteral("cannot write %1").arg(path(relative));
            return;
        }
        QImageWriter writer(&file, format);
        // Fast deflate for PNG: the library is rebuilt often and its size matters little.
        writer.setQuality(quality < 0 && qstrcmp(format, "png") == 0 ? 80 : quality);
        if (!writer.write(picture)) {
            m_error = QStringLiteral("cannot write %1: %2").arg(path(relative), writer.errorString());
            return;
        }
        settle(file);
    }

private:
    void settle(QFile& file)
    {
        static const QDateTime base(QDate(2024, 4, 18), QTime(13, 0), Qt::UTC);
        file.setFileTime(base.addSecs(qint64(m_count) * 97), QFileDevice::FileModificationTime);
        ++m_count;
    }

    QDir m_root;
    QString m_error;
    int m_count = 0;
};

// --- models -------------------------------------------------------------------------------

enum class Model {
    Ball, Top, Gear, Ring, Robot, Crates, Tree, Chair, Boat, Lamp, Crystal, Rover, Station, Panel,
    Fountain, Flag, Wave, ShaderBall, Figure, Arm, Crane, Module, Lights, Camera, Column
};

TsampleMesh model(Model kind)
{
    TsampleMesh m;
    const QColor red(0xd0, 0x4a, 0x3a), blue(0x3f, 0x7f, 0xd0), amber(0xe8, 0xa8, 0x38), green(0x4f, 0xa8, 0x5a);
    const QColor grey(0xa8, 0xae, 0xb6), dark(0x55, 0x5a, 0x62), white(0xe8, 0xe6, 0xe0), teal(0x3a, 0xa0, 0xa8);
    const QColor wood(0x9a, 0x66, 0x3a), purple(0x8a, 0x63, 0xc6);
    switch (kind) {
    case Model::Ball:
        m.addSphere({0, 0, 0}, 1, 10, 16, red, white);
        break;
    case Model::Top:
        m.addCylinder({0, -1, 0}, 0.02, 1.0, 0.9, 20, teal);
        m.addCylinder({0, -0.1, 0}, 1.0, 0.5, 0.3, 20, amber);
        m.addCylinder({0, 0.2, 0}, 0.12, 0.12, 0.7, 10, dark);
        break;
    case Model::Gear:
        m.addGear({0, 0.15, 0}, 1.0, 0.82, 0.3, 12, 0.3, grey);
        m.addGear({0, -0.25, 0}, 0.6, 0.48, 0.18, 8, 0.3, amber);
        break;
    case Model::Ring:
        m.addTorus({0, 0, 0}, 0.8, 0.28, 28, 12, purple);
        break;
    case Model::Robot:
        m.addBox({0, -0.35, 0}, {0.7, 0.9, 0.45}, blue);
        m.addBox({0, 0.35, 0}, {0.45, 0.38, 0.4}, grey);
        m.addBox({0.12, 0.38, -0.21}, {0.1, 0.08, 0.02}, amber);
        m.addBox({-0.12, 0.38, -0.21}, {0.1, 0.08, 0.02}, amber);
        m.addBox({0.5, -0.3, 0}, {0.2, 0.75, 0.2}, grey);
        m.addBox({-0.5, -0.3, 0}, {0.2, 0.75, 0.2}, grey);
        m.addCylinder({0, 0.54, 0}, 0.03, 0.03, 0.3, 6, dark);
        break;
    case Model::Crates:
        m.addBox({-0.5, -0.5, 0}, {0.9, 0.9, 0.9}, wood);
        m.addBox({0.5, -0.55, 0.2}, {0.8, 0.8, 0.8}, wood.darker(110));
        m.addBox({0, 0.35, 0.05}, {0.8, 0.8, 0.8}, wood.lighter(115));
        break;
    case Model::Tree:
        m.addCylinder({0, -1, 0}, 0.14, 0.1, 0.6, 8, wood);
        m.addCylinder({0, -0.5, 0}, 0.75, 0, 0.9, 10, green);
        m.addCylinder({0, 0.0, 0}, 0.55, 0, 0.8, 10, green.lighter(115));
        m.addCylinder({0, 0.45, 0}, 0.35, 0, 0.55, 10, green.lighter(130));
        break;
    case Model::Chair:
        m.addBox({0, -0.1, 0}, {0.9, 0.12, 0.9}, wood);
        m.addBox({0, 0.45, 0.4}, {0.9, 1.0, 0.1}, wood);
        for (double x : {-0.38, 0.38})
            for (double z : {-0.38, 0.38})
                m.addBox({x, -0.6, z}, {0.1, 0.9, 0.1}, wood.darker(120));
        break;
    case Model::Boat:
        m.addBox({0, -0.3, 0}, {1.8, 0.35, 0.6}, white);
        m.addBox({0, -0.52, 0}, {1.5, 0.12, 0.45}, red);
        m.addBox({-0.2, 0.05, 0}, {0.6, 0.35, 0.45}, blue);
        m.addCylinder({0.4, -0.1, 0}, 0.03, 0.03, 1.1, 6, dark);
        break;
    case Model::Lamp:
        m.addCylinder({0, -1, 0}, 0.5, 0.45, 0.12, 18, dark);
        m.addCylinder({0, -0.88, 0}, 0.05, 0.05, 1.2, 8, grey);
        m.addCylinder({0, 0.2, 0}, 0.6, 0.3, 0.55, 18, amber);
        break;
    case Model::Crystal:
        m.addCylinder({0, -0.2, 0}, 0.5, 0, 1.2, 6, teal);
        m.addCylinder({0, -1.0, 0}, 0, 0.5, 0.8, 6, teal.darker(120));
        break;
    case Model::Rover:
        m.addBox({0, 0, 0}, {1.4, 0.35, 0.8}, amber);
        m.addBox({0.3, 0.3, 0}, {0.5, 0.3, 0.5}, grey);
        for (double z : {-0.5, 0.5})
            m.addBox({0, -0.25, z}, {1.5, 0.3, 0.22}, dark);
        break;
    case Model::Station:
        m.addCylinder({0, -0.9, 0}, 0.25, 0.25, 1.8, 14, grey);
        m.addTorus({0, 0, 0}, 1.0, 0.12, 28, 8, white);
        m.addBox({0, 0, 0}, {2.1, 0.04, 0.1}, dark);
        break;
    case Model::Panel:
        m.addBox({0, 0, 0}, {1.6, 0.05, 0.9}, blue.darker(130));
        m.addCylinder({0, -0.9, 0}, 0.05, 0.05, 0.9, 6, grey);
        break;
    case Model::Fountain:
        m.addCylinder({0, -1, 0}, 1.0, 1.0, 0.25, 24, grey);
        m.addCylinder({0, -0.75, 0}, 0.12, 0.12, 0.9, 10, grey);
        m.addCylinder({0, 0.15, 0}, 0.5, 0.55, 0.12, 20, grey);
        m.addSphere({0, 0.6, 0}, 0.18, 6, 10, teal, white);
        break;
    case Model::Flag:
        m.addCylinder({-0.7, -1, 0}, 0.04, 0.04, 2.0, 8, grey);
        m.addBox({0, 0.6, 0}, {1.4, 0.8, 0.03}, red);
        break;
    case Model::Wave:
        for (int i = 0; i < 8; ++i)
            m.addBox({-0.875 + i * 0.25, -0.4 + 0.2 * std::sin(i * 0.9), 0}, {0.24, 0.6 + 0.4 * std::sin(i * 0.9), 1.2},
                     teal.lighter(100 + i * 6));
        break;
    case Model::ShaderBall:
        m.addCylinder({0, -1, 0}, 0.7, 0.7, 0.2, 20, dark);
        m.addSphere({0, 0, 0}, 0.8, 12, 18, amber, QColor(0x6b, 0x3a, 0x18));
        break;
    case Model::Figure:
        m.addSphere({0, 0.75, 0}, 0.2, 6, 10, white, white.darker(110));
        m.addBox({0, 0.2, 0}, {0.45, 0.7, 0.25}, blue);
        m.addBox({0.35, 0.35, 0}, {0.2, 0.12, 0.12}, white);
        m.addBox({-0.35, 0.35, 0}, {0.2, 0.12, 0.12}, white);
        m.addBox({0.12, -0.55, 0}, {0.15, 0.8, 0.15}, dark);
        m.addBox({-0.12, -0.55, 0}, {0.15, 0.8, 0.15}, dark);
        break;
    case Model::Arm:
        m.addCylinder({0, -1, 0}, 0.5, 0.5, 0.2, 16, dark);
        m.addBox({0, -0.4, 0}, {0.2, 1.0, 0.2}, amber);
        m.addSphere({0, 0.12, 0}, 0.16, 6, 10, grey, dark);
        m.addBox({0.4, 0.3, 0}, {0.9, 0.16, 0.16}, amber);
        m.addBox({0.85, 0.15, 0}, {0.08, 0.3, 0.2}, grey);
        break;
    case Model::Crane:
        m.addBox({0, -0.2, 0}, {0.2, 1.6, 0.2}, amber);
        m.addBox({0.35, 0.62, 0}, {1.4, 0.12, 0.14}, amber);
        m.addBox({-0.3, 0.5, 0}, {0.3, 0.3, 0.3}, dark);
        m.addBox({0.95, 0.2, 0}, {0.04, 0.7, 0.04}, grey);
        break;
    case Model::Module:
        m.addCylinder({0, -0.8, 0}, 0.45, 0.45, 1.6, 16, white);
        m.addCylinder({0, 0.8, 0}, 0.45, 0.2, 0.25, 16, grey);
        break;
    case Model::Lights:
        m.addSphere({0, -0.3, 0}, 0.6, 10, 16, white, grey);
        for (int i = 0; i < 3; ++i) {
            const double a = i * 2.1;
            m.addBox({1.1 * std::cos(a), 0.5, 1.1 * std::sin(a)}, {0.25, 0.25, 0.25}, amber);
        }
        break;
    case Model::Camera:
        m.addBox({0, 0, 0}, {0.9, 0.6, 0.5}, dark);
        m.addCylinder({0.45, 0, 0}, 0.22, 0.3, 0.4, 14, grey);
        m.addCylinder({-0.2, 0.3, 0}, 0.22, 0.22, 0.1, 14, grey);
        m.addCylinder({0.15, 0.3, 0}, 0.22, 0.22, 0.1, 14, grey);
        break;
    case Model::Column:
        m.addBox({0, -0.95, 0}, {0.9, 0.1, 0.9}, white);
        m.addCylinder({0, -0.9, 0}, 0.3, 0.26, 1.8, 16, white.darker(105));
        m.addBox({0, 0.95, 0}, {0.9, 0.1, 0.9}, white);
        break;
    }
    return m;
}

// --- scenes -------------------------------------------------------------------------------

enum class Swatch { None, Still, Turn, Bounce, Sidecar };
enum class Marker { None, Clip, Pose, Both };

struct SceneSample
{
    const char* file; // relative to the library root
    Model model;
    Swatch swatch;
    Marker marker;
};

QByteArray sceneText(const QString& name, Model kind, const QFileInfo& info)
{
    QJsonObject scene;
    scene.insert(QStringLiteral("format"), QStringLiteral("vela-scene"));
    scene.insert(QStringLiteral("version"), 1);
    scene.insert(QStringLiteral("name"), name);
    scene.insert(QStringLiteral("frameRange"), QJsonArray{1, kFrames});
    scene.insert(QStringLiteral("framesPerSecond"), 24);
    QJsonObject node;
    node.insert(QStringLiteral("name"), name);
    node.insert(QStringLiteral("type"), QStringLiteral("mesh"));
    node.insert(QStringLiteral("model"), int(kind));
    node.insert(QStringLiteral("animation"), QStringLiteral("turn 360 over frames 1-24"));
    scene.insert(QStringLiteral("nodes"), QJsonArray{node});
    scene.insert(QStringLiteral("source"), info.fileName());
    return QJsonDocument(scene).toJson();
}

QByteArray binaryScene(const QString& name, const TsampleMesh& mesh)
{
    // Magic, version, then the model as OBJ text: enough for the host to show it came through.
    QByteArray out("VELB");
    out += char(0);
    out += char(1);
    out += qCompress(mesh.toObj(name), 9);
    return out;
}

QByteArray fbxText(const QString& name, Marker marker)
{
    QByteArray out;
    out += "; FBX 7.3.0 project file\n";
    out += "; A sample of the ORLO reference host\n\n";
    out += "FBXHeaderExtension:  {\n\tFBXHeaderVersion: 1003\n\tFBXVersion: 7300\n\tCreator: \"orlo-samplegen\"\n}\n";
    out += "Definitions:  {\n\tVersion: 100\n\tCount: 1\n\tObjectType: \"Model\" {\n\t\tCount: 1\n\t}\n}\n";
    out += "Objects:  {\n\tModel: 1000, \"Model::" + name.toUtf8() + "\", \"Null\" {\n\t\tVersion: 232\n\t}\n}\n";
    out += "Connections:  {\n\tC: \"OO\",1000,0\n}\n";
    if (marker == Marker::Clip || marker == Marker::Both)
        out += "Takes:  {\n\tCurrent: \"" + name.toUtf8() + "\"\n\tTake: \"" + name.toUtf8()
            + "\" {\n\t\tLocalTime: 0,46186158000\n\t}\n}\n";
    return out;
}

void writeScene(Writer& out, const SceneSample& sample)
{
    const QString relative = QLatin1String(sample.file);
    const QFileInfo info(relative);
    const QString name = info.completeBaseName();
    const QString folder = info.path();
    const QString fileName = info.fileName();
    const TsampleMesh mesh = model(sample.model);
    const QString suffix = info.suffix().toLower();

    if (suffix == QLatin1String("vela"))
        out.bytes(relative, sceneText(name, sample.model, info));
    else if (suffix == QLatin1String("velb"))
        out.bytes(relative, binaryScene(name, mesh));
    else if (suffix == QLatin1String("fbx"))
        out.bytes(relative, fbxText(name, sample.marker));
    else
        out.bytes(relative, mesh.toObj(name));

    const QString swatches = folder + QLatin1String("/.velaSwatches/");
    const QString frames = swatches + fileName + QLatin1Char('/') + fileName;
    switch (sample.swatch) {
    case Swatch::None:
        break;
    case Swatch::Still:
        out.image(frames + QLatin1String(".1.preview"), mesh.render(kFrameSize, 35, 0), "png");
        break;
    case Swatch::Turn:
    case Swatch::Bounce:
        for (int frame = 1; frame <= kFrames; ++frame) {
            const double t = double(frame - 1) / kFrames;
            const double lift = sample.swatch == Swatch::Bounce ? 0.9 * std::abs(std::sin(t * 2 * 3.14159265358979)) : 0;
            out.image(frames + QLatin1Char('.') + QString::number(frame) + QLatin1String(".preview"),
                      mesh.render(kFrameSize, 35 + 360.0 * t, lift), "png");
        }
        break;
    case Swatch::Sidecar:
        out.image(relative + QLatin1String(".icon"), mesh.render(kFrameSize, 35, 0), "png");
        break;
    }
    if (sample.marker == Marker::Clip || sample.marker == Marker::Both)
        out.bytes(swatches + fileName + QLatin1String(".anim"),
                  "{\"clips\": [{\"name\": \"" + name.toUtf8() + "\", \"start\": 1, \"end\": 24}]}\n");
    if (sample.marker == Marker::Pose || sample.marker == Marker::Both)
        out.bytes(swatches + fileName + QLatin1String(".pose"), "{\"poses\": [\"" + name.toUtf8() + "\"]}\n");
}

const SceneSample kScenes[] = {
    {"Vela/Examples/Animation/Bouncing_Ball.vela", Model::Ball, Swatch::Bounce, Marker::None},
    {"Vela/Examples/Animation/Spinning_Top.vela", Model::Top, Swatch::Turn, Marker::None},
    {"Vela/Examples/Animation/Walk_Cycle.fbx", Model::Figure, Swatch::Turn, Marker::Clip},
    {"Vela/Examples/Animation/Jump_Clip.fbx", Model::Figure, Swatch::Still, Marker::Clip},
    {"Vela/Examples/Animation/Idle_Pose.fbx", Model::Figure, Swatch::Still, Marker::Pose},
    {"Vela/Examples/Characters/Robot_Rig.vela", Model::Robot, Swatch::Turn, Marker::None},
    {"Vela/Examples/Characters/Hero_Pose_A.fbx", Model::Figure, Swatch::Still, Marker::Pose},
    {"Vela/Examples/Characters/Hero_Pose_B.fbx", Model::Figure, Swatch::None, Marker::Pose},
    {"Vela/Examples/Characters/Hero_Run_And_Pose.fbx", Model::Figure, Swatch::Still, Marker::Both},
    {"Vela/Examples/Characters/HERO_RUN.FBX", Model::Figure, Swatch::Still, Marker::Clip},
    {"Vela/Examples/Dynamics/Falling_Crates.vela", Model::Crates, Swatch::Bounce, Marker::None},
    {"Vela/Examples/Dynamics/Rigid_Bodies.velb", Model::Crates, Swatch::Sidecar, Marker::None},
    {"Vela/Examples/Lighting/Three_Point_Light.vela", Model::Lights, Swatch::Turn, Marker::None},
    {"Vela/Examples/Lighting/Light_Rig.velb", Model::Lamp, Swatch::None, Marker::None},
    {"Vela/Examples/Materials/Shader_Ball.vela", Model::ShaderBall, Swatch::Turn, Marker::None},
    {"Vela/Examples/Modeling/Gear_Assembly.vela", Model::Gear, Swatch::Turn, Marker::None},
    {"Vela/Examples/Modeling/Torus_Knot_Base.vela", Model::Ring, Swatch::Turn, Marker::None},
    {"Vela/Examples/Modeling/Low_Poly_Tree.obj", Model::Tree, Swatch::Sidecar, Marker::None},
    {"Vela/Examples/Modeling/Crystal.obj", Model::Crystal, Swatch::Still, Marker::None},
    {"Vela/Examples/Modeling/Column.obj", Model::Column, Swatch::None, Marker::None},
    {"Vela/Examples/Motion_Capture/Mocap_Run.fbx", Model::Figure, Swatch::Turn, Marker::Clip},
    {"Vela/Examples/Motion_Capture/Mocap_Dance.fbx", Model::Figure, Swatch::Bounce, Marker::Clip},
    {"Vela/Examples/Motion_Capture/Mocap_Sit.fbx", Model::Chair, Swatch::Still, Marker::Pose},
    {"Vela/Examples/Rendering/Turntable_Camera.vela", Model::Camera, Swatch::Turn, Marker::None},
    {"Vela/Examples/Rendering/Render_Layers.velb", Model::ShaderBall, Swatch::Sidecar, Marker::None},
    {"Vela/Examples/Rigging/Robot_Arm.vela", Model::Arm, Swatch::Turn, Marker::None},
    {"Vela/Examples/Rigging/Spine_Setup.velb", Model::Figure, Swatch::None, Marker::None},
    {"Vela/Examples/Vehicles/Rover.vela", Model::Rover, Swatch::Turn, Marker::None},
    {"Vela/Examples/Vehicles/Rover_Drive.fbx", Model::Rover, Swatch::Still, Marker::Clip},
    {"MOTE/MOTE Examples/Particles/Fountain.vela", Model::Fountain, Swatch::Turn, Marker::None},
    {"MOTE/MOTE Examples/Particles/Sparks.velb", Model::Crystal, Swatch::Sidecar, Marker::None},
    {"MOTE/MOTE Examples/Fluids/Wave_Tank.vela", Model::Wave, Swatch::Turn, Marker::None},
    {"MOTE/MOTE Examples/Cloth/Flag_In_Wind.vela", Model::Flag, Swatch::Turn, Marker::None},
    {"MOTE/MOTE Examples/Cloth/Curtain.fbx", Model::Flag, Swatch::Still, Marker::Clip},
    {"MOTE/MOTE Examples/Crowds/Crowd_Walk.fbx", Model::Figure, Swatch::Turn, Marker::Clip},
    {"MOTE/MOTE Examples/Crowds/Crowd_Idle.fbx", Model::Figure, Swatch::Still, Marker::Pose},
    {"User_Library/My_Assets/Chair.vela", Model::Chair, Swatch::Turn, Marker::None},
    {"User_Library/My_Assets/Desk_Lamp.obj", Model::Lamp, Swatch::Sidecar, Marker::None},
    {"Projects/Harbour_Scene/scenes/Harbour_Layout.vela", Model::Crane, Swatch::Turn, Marker::None},
    {"Projects/Harbour_Scene/scenes/Boat_Bobbing.vela", Model::Boat, Swatch::Bounce, Marker::None},
    {"Projects/Harbour_Scene/assets/Boat.fbx", Model::Boat, Swatch::Still, Marker::Clip},
    {"Projects/Harbour_Scene/assets/Crane.obj", Model::Crane, Swatch::Sidecar, Marker::None},
    {"Projects/Harbour_Scene/assets/Props/Crates.obj", Model::Crates, Swatch::None, Marker::None},
    {"Projects/Orbit_Station/scenes/Station.vela", Model::Station, Swatch::Turn, Marker::None},
    {"Projects/Orbit_Station/scenes/Docking.velb", Model::Module, Swatch::Sidecar, Marker::None},
    {"Projects/Orbit_Station/assets/Solar_Panel.fbx", Model::Panel, Swatch::Still, Marker::Pose},
    {"Projects/Orbit_Station/assets/Module.obj", Model::Module, Swatch::Turn, Marker::None},
};

// --- pictures -----------------------------------------------------------------------------

struct PictureSample
{
    const char* file;
    Texture texture;
    int width, height;
    int quality;
};

const PictureSample kPictures[] = {
    {"Vela/Examples/Textures/Brick_Wall.png", Texture::Brick, 1024, 1024, -1},
    {"Vela/Examples/Textures/Oak_Planks.jpg", Texture::Wood, 1024, 512, 88},
    {"Vela/Examples/Textures/Marble_Tiles.bmp", Texture::Marble, 512, 512, -1},
    {"Vela/Examples/Textures/Rusty_Metal.tif", Texture::Rust, 512, 512, -1},
    {"Vela/Examples/Textures/Meadow_Grass.webp", Texture::Grass, 512, 512, 85},
    {"Vela/Examples/Textures/UV_Checker.png", Texture::Checker, 2048, 2048, -1},
    {"Vela/Examples/Textures/Bump_Normals.png", Texture::NormalBumps, 256, 256, -1},
    {"Vela/Examples/Textures/Tiny_Swatch.png", Texture::Checker, 40, 20, -1},
    {"Vela/Examples/Textures/Strip_Banner.ppm", Texture::Fabric, 300, 48, -1},
    {"Vela/Examples/Textures/Fabric_Denim.tga", Texture::Fabric, 256, 256, -1},
    {"Vela/Examples/Lighting/Sunset_Sky.jpg", Texture::Sky, 1600, 800, 90},
    {"Vela/Examples/Materials/Brushed_Plates.png", Texture::Plates, 512, 512, -1},
    {"Vela/Examples/Materials/Water_Surface.jpg", Texture::Water, 768, 768, 85},
    {"Texture_Library/Wood/Walnut.jpg", Texture::Wood, 512, 512, 85},
    {"Texture_Library/Wood/Pine_Boards.png", Texture::Wood, 256, 512, -1},
    {"Texture_Library/Stone/Old_Bricks.jpg", Texture::Brick, 512, 512, 85},
    {"Texture_Library/Stone/White_Marble.png", Texture::Marble, 512, 512, -1},
    {"Texture_Library/Metal/Hull_Plates.png", Texture::Plates, 512, 512, -1},
    {"Texture_Library/Metal/Corroded_Steel.jpg", Texture::Rust, 512, 512, 85},
    {"Texture_Library/Fabric/Blue_Weave.png", Texture::Fabric, 256, 256, -1},
    {"Texture_Library/Nature/Lawn.png", Texture::Grass, 256, 256, -1},
    {"Texture_Library/Nature/Night_Sky.jpg", Texture::Stars, 1024, 512, 88},
    {"User_Library/My_Textures/Wallpaper_Stripes.png", Texture::Checker, 128, 128, -1},
    {"Projects/Harbour_Scene/sourceimages/Harbour_Water.jpg", Texture::Water, 512, 512, 85},
    {"Projects/Harbour_Scene/sourceimages/Dock_Wood.png", Texture::Wood, 512, 256, -1},
    {"Projects/Orbit_Station/textures/Hull_Plates.png", Texture::Plates, 512, 512, -1},
    {"Projects/Orbit_Station/textures/Star_Field.jpg", Texture::Stars, 1024, 512, 88},
};

struct StampSample
{
    const char* file;
    Stamp stamp;
    int edge;
};

const StampSample kStamps[] = {
    {"Vela/Examples/Sculpting_Stamps/Round_Soft.png", Stamp::RoundSoft, 256},
    {"Vela/Examples/Sculpting_Stamps/Crater.png", Stamp::Crater, 256},
    {"Vela/Examples/Sculpting_Stamps/Dragon_Scales.png", Stamp::Scales, 256},
    {"Vela/Examples/Sculpting_Stamps/Dry_Cracks.png", Stamp::Cracks, 256},
    {"Vela/Examples/Sculpting_Stamps/Rivet_Grid.png", Stamp::Rivets, 128},
    {"Vela/Examples/Sculpting_Stamps/Weave.png", Stamp::Weave, 128},
    {"Vela/Examples/Stroke_Sketch/Pencil_Grain.png", Stamp::PencilGrain, 256},
    {"Vela/Examples/Stroke_Sketch/Charcoal.png", Stamp::Charcoal, 256},
    {"Vela/Examples/Stroke_Sketch/Ink_Splatter.png", Stamp::InkSplatter, 256},
    {"Vela/Examples/Stroke_Sketch/Dotted_Line.png", Stamp::DottedLine, 128},
};

// A small Radiance picture, written byte by byte: the one the library has even without an image library.
QByteArray radianceSky()
{
    const int width = 64, height = 32;
    QByteArray out = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + QByteArray::number(height) + " +X "
        + QByteArray::number(width) + '\n';
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double t = double(y) / height;
            out += char(int(60 + 120 * t));
            out += char(int(90 + 80 * t));
            out += char(int(200 - 80 * t));
            out += char(129);
        }
    }
    return out;
}

// --- render and texture formats ---------------------------------------------------------

const char* const kTextures = "Vela/Examples/Textures/";

#ifdef ORLO_HAVE_OPENIMAGEIO
double toLinear(double v)
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

// Floats of picture (rows from the top), channels each: linear light when linear is set,
// else the stored 0-1 values.
std::vector<float> floatsOf(const QImage& source, int channels, bool linear)
{
    const QImage picture = source.convertToFormat(QImage::Format_RGBA8888);
    std::vector<float> out;
    out.reserve(size_t(picture.width()) * size_t(picture.height()) * size_t(channels));
    for (int y = 0; y < picture.height(); ++y) {
        const uchar* line = picture.constScanLine(y);
        for (int x = 0; x < picture.width(); ++x) {
            for (int c = 0; c < channels; ++c) {
                const double v = line[x * 4 + c] / 255.0;
                out.push_back(float(linear && c < 3 ? toLinear(v) : v));
            }
        }
    }
    return out;
}

bool writeWithImageIo(const QString& path, OIIO::ImageSpec spec, const std::vector<float>& pixels)
{
    const std::string name = QFile::encodeName(path).toStdString();
    auto out = OIIO::ImageOutput::create(name);
    if (!out)
        return false;
    const bool ok = out->open(name, spec) && out->write_image(OIIO::TypeFloat, pixels.data()) && out->close();
    out->geterror();
    return ok;
}

// A glowing emissive texture: linear half floats well above 1.0 in its cracks, with a round
// soft-edged alpha, premultiplied as renderers write it.
bool writeLavaExr(const QString& path)
{
    const int edge = 256;
    const QImage marble = TsamplePictures::texture(Texture::Marble, QSize(edge, edge), path);
    std::vector<float> pixels;
    pixels.reserve(size_t(edge) * edge * 4);
    for (int y = 0; y < edge; ++y) {
        for (int x = 0; x < edge; ++x) {
            const double veins = 1.0 - qGray(marble.pixel(x, y)) / 255.0;
            const double heat = std::pow(veins, 3.0) * 6.0 + 0.02;
            const double r = std::hypot(x - edge / 2.0 + 0.5, y - edge / 2.0 + 0.5) / (edge / 2.0);
            const double alpha = std::clamp((1.0 - r) / 0.12, 0.0, 1.0);
            pixels.push_back(float(heat * 1.0 * alpha));
            pixels.push_back(float(heat * 0.28 * alpha));
            pixels.push_back(float(heat * 0.04 * alpha));
            pixels.push_back(float(alpha));
        }
    }
    OIIO::ImageSpec spec(edge, edge, 4, OIIO::TypeHalf);
    spec.alpha_channel = 3;
    spec.attribute("compression", "zip");
    return writeWithImageIo(path, spec, pixels);
}

// A sky with a sun far brighter than white, as Radiance stores it.
bool writeSkyHdr(const QString& path)
{
    const QSize size(512, 256);
    std::vector<float> pixels = floatsOf(TsamplePictures::texture(Texture::Sky, size, path), 3, true);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double d = std::hypot(x - 360.0, y - 90.0);
            const float sun = float(40.0 * std::exp(-d * d / 60.0));
            for (int c = 0; c < 3; ++c)
                pixels[(size_t(y) * size.width() + x) * 3 + c] += sun;
        }
    }
    return writeWithImageIo(path, OIIO::ImageSpec(size.width(), size.height(), 3, OIIO::TypeFloat), pixels);
}

// A tiled texture with every mip level, each filtered from the one above.
bool writeMipMappedTx(const QString& path)
{
    const std::string name = QFile::encodeName(path).toStdString();
    auto out = OIIO::ImageOutput::create("tiff");
    if (!out)
        return false;
    QImage level = TsamplePictures::texture(Texture::Water, QSize(512, 512), path);
    bool ok = true;
    for (int index = 0; ok && !level.isNull(); ++index) {
        OIIO::ImageSpec spec(level.width(), level.height(), 3, OIIO::TypeUInt8);
        spec.tile_width = 64;
        spec.tile_height = 64;
        spec.attribute("compression", "zip");
        spec.attribute("textureformat", "Plain Texture");
        // TIFF keeps its mip levels as further pages marked as reduced pictures.
        if (index > 0)
            spec.attribute("tiff:subfiletype", 1);
        ok = out->open(name, spec, index == 0 ? OIIO::ImageOutput::Create : OIIO::ImageOutput::AppendSubimage)
            && out->write_image(OIIO::TypeFloat, floatsOf(level, 3, false).data());
        if (level.width() == 1 && level.height() == 1)
            break;
        level = level.scaled(std::max(1, level.width() / 2), std::max(1, level.height() / 2), Qt::IgnoreAspectRatio,
                             Qt::SmoothTransformation);
    }
    ok = out->close() && ok;
    out->geterror();
    return ok;
}

// Terrain heights in 16 bits: smooth hills that 8 bits would band.
bool writeHeightTiff(const QString& path)
{
    const int edge = 256;
    std::vector<float> pixels;
    pixels.reserve(size_t(edge) * edge);
    for (int y = 0; y < edge; ++y) {
        for (int x = 0; x < edge; ++x) {
            const double u = x / double(edge), v = y / double(edge);
            const double h = 0.5 + 0.22 * std::sin(u * 6.3 + 1.0) * std::cos(v * 4.1) + 0.12 * std::sin((u + v) * 13.0)
                + 0.05 * std::cos(u * 29.0 - v * 17.0);
            pixels.push_back(float(std::clamp(h, 0.0, 1.0)));
        }
    }
    OIIO::ImageSpec spec(edge, edge, 1, OIIO::TypeUInt16);
    spec.attribute("compression", "zip");
    return writeWithImageIo(path, spec, pixels);
}

// A film scan: a render stored in 10 bits per channel.
bool writeScanDpx(const QString& path, const QImage& render)
{
    OIIO::ImageSpec spec(render.width(), render.height(), 3, OIIO::TypeUInt16);
    spec.attribute("oiio:BitsPerSample", 10);
    return writeWithImageIo(path, spec, floatsOf(render, 3, false));
}

// A decal with a cut-out outline in its alpha channel.
bool writeDecalTga(const QString& path)
{
    const int edge = 256;
    const QImage splat = TsamplePictures::stamp(TsamplePictures::Stamp::InkSplatter, edge, path);
    const QImage fabric = TsamplePictures::texture(Texture::Fabric, QSize(edge, edge), path);
    std::vector<float> pixels;
    pixels.reserve(size_t(edge) * edge * 4);
    for (int y = 0; y < edge; ++y) {
        for (int x = 0; x < edge; ++x) {
            const QColor colour = fabric.pixelColor(x, y);
            const float alpha = float(qGray(splat.pixel(x, y)) / 255.0);
            pixels.push_back(float(colour.redF()) * alpha);
            pixels.push_back(float(colour.greenF()) * alpha);
            pixels.push_back(float(colour.blueF()) * alpha);
            pixels.push_back(alpha);
        }
    }
    OIIO::ImageSpec spec(edge, edge, 4, OIIO::TypeUInt8);
    spec.alpha_channel = 3;
    spec.attribute("compression", "rle");
    return writeWithImageIo(path, spec, pixels);
}
#endif

void writeRenderFormats(Writer& out, const QImage& render)
{
    const QString folder = QLatin1String(kTextures);
    // The layered-image file is written here: no image library at hand writes one.
    out.bytes(folder + QLatin1String("Poster_Layout.psd"),
              TsamplePsd::encode(TsamplePictures::texture(Texture::Plates, QSize(256, 256), QStringLiteral("poster")),
                                 false));
#ifdef ORLO_HAVE_OPENIMAGEIO
    out.external(folder + QLatin1String("Lava_Glow.exr"), writeLavaExr);
    out.external(folder + QLatin1String("Sky_Dome.hdr"), writeSkyHdr);
    out.external(folder + QLatin1String("Water_Ripples.tx"), writeMipMappedTx);
    out.external(folder + QLatin1String("Terrain_Height.tif"), writeHeightTiff);
    out.external(folder + QLatin1String("Film_Scan.dpx"),
                 [&render](const QString& path) { return writeScanDpx(path, render); });
    out.external(folder + QLatin1String("Decal_Stencil.tga"), writeDecalTga);
#else
    Q_UNUSED(render);
#endif
}

// --- scripts and other files --------------------------------------------------------------

struct TextSample
{
    const char* file;
    const char* text;
};

const TextSample kTexts[] = {
    {"Vela/Examples/Scripts/Hello_Host.vsl",
     "// Right-click a host script and choose to source it: the host runs each line.\n"
     "print \"Hello from the sample library.\"\n"
     "print \"The console shows every command a script runs, and the host's answer.\"\n"},
    {"Vela/Examples/Scripts/Hide_Backup_Files.vsl",
     "// Hides host icon files and backups from every listing of the browser.\n"
     "optionVar -sv contentBrowserFilterExtensions \"icon|bak\"\n"
     "print \"Files ending in .icon or .bak are hidden now.\"\n"},
    {"Vela/Examples/Scripts/Show_Icon_Files.vsl",
     "// Lists everything again, the host's sidecar pictures included.\n"
     "optionVar -sv contentBrowserFilterExtensions \"\"\n"
     "print \"No extension is hidden any more (takes effect at the next listing).\"\n"},
    {"Vela/Examples/Scripts/Thumbnail_Sizes.vsl",
     "// The sizes the thumbnail slider steps through.\n"
     "optionVar -remove contentBrowserThumbnailSizes\n"
     "optionVar -iva contentBrowserThumbnailSizes 48\n"
     "optionVar -iva contentBrowserThumbnailSizes 96\n"
     "optionVar -iva contentBrowserThumbnailSizes 192\n"
     "optionVar -iva contentBrowserThumbnailSizes 384\n"
     "print \"Thumbnail sizes set to 48, 96, 192 and 384.\"\n"},
    {"Vela/Examples/Scripts/Scene_Report.vsl",
     "// A script that does not work: the console shows the failing line.\n"
     "print \"Counting nodes...\"\n"
     "countSceneNodes -all\n"},
    {"Vela/Examples/Scripts/scene_tools.py",
     "\"\"\"Helpers for tidying scenes; a script of another language, which the host does not source.\"\"\"\n\n\n"
     "def tidy_names(names):\n"
     "    return [name.strip().replace(' ', '_') for name in names]\n"},
    {"Vela/Examples/Scripts/ui_res.py", "# Generated resources of a tool's interface; the browser never lists it.\nRESOURCES = {}\n"},
    {"Vela/Examples/Scripts/__init__.py", "# Makes the folder a package; the browser never lists it.\n"},
    {"Vela/Examples/Scripts/__pycache__/scene_tools.cpython-311.pyc", "compiled"},
    {"Vela/Examples/Scripts/_drafts/Unfinished.vsl", "// A folder with one leading underscore is listed.\nprint \"draft\"\n"},
    {"Vela/Examples/Animation/Keyframe_Notes.txt",
     "Bouncing_Ball: squash on contact, stretch on the way up.\nSpinning_Top: one turn per second at 24 frames per second.\n"},
    {"Vela/Examples/Modeling/Gear_Assembly.vela.bak", "{\"format\": \"vela-scene\", \"version\": 1, \"name\": \"Gear_Assembly\"}\n"},
    {"Vela/Examples/Modeling/.cache/last_session.txt", "A dot folder: never listed.\n"},
    {"Projects/Harbour_Scene/scripts/Harbour_Setup.vsl",
     "print \"Setting up the harbour: quay, crane and boat.\"\n"
     "newScene\n"},
    {"Projects/Harbour_Scene/workspace.vproj",
     "{\n  \"name\": \"Harbour Scene\",\n"
     "  \"fileRules\": [\"scenes\", \"assets\", \"sourceimages\", \"images\", \"scripts\", \"cache/particles\"]\n}\n"},
    {"Projects/Orbit_Station/workspace.vproj",
     "{\n  \"name\": \"Orbit Station\",\n  \"fileRules\": [\"scenes\", \"assets\", \"textures\", \"renders\"]\n}\n"},
};

// The example folders, one per kind of example content, and the two examples folders: the
// names a library must not let the user take for a folder of its own.
const char* const kExampleFolders[] = {
    "Examples", "MOTE Examples", "Animation", "Characters", "Dynamics", "Lighting", "Materials", "Modeling",
    "Motion_Capture", "Rendering", "Rigging", "Scripts", "Sculpting_Stamps", "Stroke_Sketch", "Textures",
    "Vehicles", "Particles", "Fluids", "Cloth", "Crowds",
};

void writeRenders(Writer& out, const QString& folder, Model kind, const QString& stem, int count)
{
    const TsampleMesh mesh = model(kind);
    for (int i = 1; i <= count; ++i) {
        const QImage beauty = mesh.render(QSize(640, 360), 20.0 + 40 * i, 0);
        out.image(QStringLiteral("%1/%2_%3.png").arg(folder, stem).arg(i, 4, 10, QLatin1Char('0')), beauty, "png");
    }
}

bool writeLibrary(Writer& out)
{
    out.folder(QStringLiteral("Vela/Examples"));
    out.folder(QStringLiteral("MOTE/MOTE Examples"));
    for (const SceneSample& scene : kScenes)
        writeScene(out, scene);
    for (const PictureSample& picture : kPictures) {
        const QString file = QLatin1String(picture.file);
        const QByteArray format = QFileInfo(file).suffix().toLatin1();
        // A Qt built without one of the optional writers still gets the rest.
        if (!QImageWriter::supportedImageFormats().contains(format))
            continue;
        out.image(file, TsamplePictures::texture(picture.texture, QSize(picture.width, picture.height), file),
                  format.constData(), picture.quality);
    }
    for (const StampSample& stamp : kStamps)
        out.image(QLatin1String(stamp.file), TsamplePictures::stamp(stamp.stamp, stamp.edge, QLatin1String(stamp.file)),
                  "png");
    for (const TextSample& text : kTexts)
        out.bytes(QLatin1String(text.file), QByteArray(text.text));
    out.bytes(QStringLiteral("Vela/Examples/Lighting/Studio_Sky.hdr"), radianceSky());

    writeRenders(out, QStringLiteral("Vela/Examples/Rendering"), Model::ShaderBall, QStringLiteral("Beauty_Pass"), 1);
    const QImage beauty = model(Model::ShaderBall).render(QSize(640, 360), 60, 0);
    out.image(QStringLiteral("Vela/Examples/Rendering/Depth_Pass.tif"), TsamplePictures::depthPass(beauty), "tif");
    writeRenderFormats(out, model(Model::ShaderBall).render(QSize(320, 180), 200, 0));
    writeRenders(out, QStringLiteral("Projects/Harbour_Scene/images"), Model::Boat, QStringLiteral("Harbour_Render"), 3);
    writeRenders(out, QStringLiteral("Projects/Orbit_Station/renders"), Model::Station, QStringLiteral("Station_Render"), 2);
    // Project folders that exist but hold nothing yet.
    out.folder(QStringLiteral("Projects/Orbit_Station/assets/Unsorted"));
    out.folder(QStringLiteral("User_Library/My_Rigs"));
    return out.ok();
}

QByteArray manifest()
{
    QJsonObject object;
    object.insert(QStringLiteral("generator"), QStringLiteral("orlo-samplegen"));
    object.insert(QStringLiteral("velaLocation"), QStringLiteral("Vela"));
    object.insert(QStringLiteral("moteLocation"), QStringLiteral("MOTE"));
    object.insert(QStringLiteral("contentPath"),
                  QJsonArray{QStringLiteral("Vela/Examples"), QStringLiteral("MOTE/MOTE Examples"),
                             QStringLiteral("Texture_Library"), QStringLiteral("User_Library")});
    object.insert(QStringLiteral("projects"), QStringLiteral("Projects"));
    object.insert(QStringLiteral("startFolder"), QStringLiteral("Vela/Examples/Animation"));
    QJsonArray examples;
    for (const char* name : kExampleFolders)
        examples.append(QLatin1String(name));
    object.insert(QStringLiteral("exampleFolders"), examples);
    return QJsonDocument(object).toJson();
}

int fail(const QString& message)
{
    std::fprintf(stderr, "orlo-samplegen: %s\n", qPrintable(message));
    return 1;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption outOption(QStringLiteral("out"), QStringLiteral("Folder to write the library to."),
                                       QStringLiteral("DIR"));
    parser.addOption(outOption);
    parser.process(app);
    const QString target = parser.value(outOption);
    if (target.isEmpty())
        return fail(QStringLiteral("--out is required"));

    QElapsedTimer timer;
    timer.start();
    QDir dir(target);
    if (dir.exists()) {
        const bool ours = QFileInfo::exists(dir.filePath(QLatin1String(kManifest)));
        const bool empty = dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty();
        if (!ours && !empty)
            return fail(QStringLiteral("%1 holds other files; give an empty or new folder").arg(target));
        if (ours && !dir.removeRecursively())
            return fail(QStringLiteral("cannot clear the earlier library in %1").arg(target));
    }
    if (!QDir().mkpath(target))
        return fail(QStringLiteral("cannot create %1").arg(target));

    Writer out(QFileInfo(target).absoluteFilePath());
    if (!writeLibrary(out)) {
        // The folder was empty or ours: a half-written library would be refused next time.
        QDir(target).removeRecursively();
        return fail(out.error());
    }
    QSaveFile file(QDir(target).filePath(QLatin1String(kManifest)));
    if (!file.open(QIODevice::WriteOnly) || file.write(manifest()) < 0 || !file.commit())
        return fail(QStringLiteral("cannot write the manifest"));
    std::printf("orlo-samplegen: %d files in %s (%lld ms)\n", out.files() + 1, qPrintable(QDir::toNativeSeparators(target)),
                timer.elapsed());
    return 0;
}
