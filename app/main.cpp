// orlo-browser: the reference host application. It embeds the asset browser the way a host
// application does and answers every script command the browser sends.
#include "ThostConsole.h"
#include "ThostMainWindow.h"
#include "ThostSampleLibrary.h"
#include "ThostScreenshot.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QPalette>
#include <QRegularExpression>
#include <QStandardPaths>

#include <cstdio>

namespace {
bool parseSize(const QString& text, QSize& size)
{
    const QRegularExpressionMatch m = QRegularExpression(QStringLiteral("^(\\d{2,5})[xX](\\d{2,5})$")).match(text);
    if (!m.hasMatch())
        return false;
    size = QSize(m.captured(1).toInt(), m.captured(2).toInt());
    return true;
}

// A 3D host is dark so that pictures and viewports read truly; --light tries the other case.
void applyHostLook(QApplication& app, bool light)
{
    app.setStyle(QStringLiteral("Fusion"));
    if (light)
        return;
    QPalette p;
    const QColor window(0x3a, 0x3a, 0x3d), base(0x2a, 0x2a, 0x2c), text(0xdd, 0xdd, 0xdd);
    const QColor highlight(0x4f, 0x7f, 0xb0), disabled(0x80, 0x80, 0x80);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::ToolTipBase, base);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, disabled);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x48, 0x48, 0x4c));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Link, highlight.lighter(130));
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Light, window.lighter(130));
    p.setColor(QPalette::Midlight, window.lighter(115));
    p.setColor(QPalette::Mid, window.darker(120));
    p.setColor(QPalette::Dark, window.darker(150));
    p.setColor(QPalette::Shadow, Qt::black);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, disabled);
    app.setPalette(p);
}

int fail(const QString& message)
{
    std::fprintf(stderr, "orlo-browser: %s\n", qPrintable(message));
    return 2;
}
} // namespace

int main(int argc, char** argv)
{
    // The command line is read before the application object exists, so that --help works
    // on a machine without a display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "The reference host of the ORLO Asset Browser: a main window that embeds the browser and\n"
        "answers its script commands. The console dock at the bottom shows every command the\n"
        "browser sends and what the host answered; type commands there too.\n"
        "\n"
        "Without a FOLDER it opens the sample content library built with it, and points\n"
        "VELA_LOCATION, MOTE_LOCATION and VELA_CONTENT_PATH at it unless they are set.\n"
        "\n"
        "Environment: ORLO_UI_SCALE=150 (or 1.5, 200%...) forces the interface scale."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption prefsOption(QStringLiteral("prefs"),
        QStringLiteral("Keep preferences (option variables, favorites) in DIR instead of the user's settings folder."),
        QStringLiteral("DIR"));
    const QCommandLineOption screenshotOption(QStringLiteral("screenshot"),
        QStringLiteral("Render the window once the folder has loaded, write it to FILE (PNG) and quit."),
        QStringLiteral("FILE"));
    const QCommandLineOption sizeOption(QStringLiteral("size"), QStringLiteral("Window size, e.g. 1400x900."),
        QStringLiteral("WxH"), QStringLiteral("1400x900"));
    const QCommandLineOption lightOption(QStringLiteral("light"),
        QStringLiteral("Use a light interface instead of the host's dark one."));
    parser.addOption(lightOption);
    const QCommandLineOption contextOption(QStringLiteral("context"),
        QStringLiteral("Host context NAME: the browser keeps its tab, folder, panels and thumbnail size per context\n"
                       "(default: main)."),
        QStringLiteral("NAME"), QStringLiteral("main"));
    parser.addOption(contextOption);
    parser.addOption(prefsOption);
    parser.addOption(screenshotOption);
    parser.addOption(sizeOption);
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Folder to open (default: the sample library, else your home folder)."),
                                 QStringLiteral("[FOLDER]"));
    if (!parser.parse(arguments))
        return fail(parser.errorText());
    if (parser.isSet(QStringLiteral("help"))) {
        std::printf("%s", qPrintable(parser.helpText().replace(QStringLiteral("<executable_name>"), QStringLiteral("orlo-browser"))));
        return 0;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        std::printf("orlo-browser 1.0\n");
        return 0;
    }

    QSize size;
    if (!parseSize(parser.value(sizeOption), size))
        return fail(QStringLiteral("--size expects WIDTHxHEIGHT, e.g. 1400x900"));

    // A screenshot needs no screen: render offscreen when no display is given.
    if (parser.isSet(screenshotOption) && qEnvironmentVariableIsEmpty("DISPLAY")
        && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("orlo-browser"));
    QApplication::setOrganizationName(QStringLiteral("ORLO"));
    QApplication::setApplicationVersion(QStringLiteral("1.0"));

    applyHostLook(app, parser.isSet(lightOption));

    ThostMainWindow::Settings settings;
    settings.preferenceDir = parser.isSet(prefsOption)
        ? QFileInfo(parser.value(prefsOption)).absoluteFilePath()
        : QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    if (!QDir().mkpath(settings.preferenceDir))
        return fail(QStringLiteral("cannot create the preference folder %1").arg(settings.preferenceDir));
    ThostMainWindow::keepQtSettingsIn(settings.preferenceDir);
    settings.appDir = QCoreApplication::applicationDirPath();
    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1)
        return fail(QStringLiteral("give at most one folder"));

    ThostSampleLibrary samples;
    const bool haveSamples = samples.read(ThostSampleLibrary::find(settings.appDir));
    QStringList environmentSet;
    if (haveSamples) {
        environmentSet = samples.applyEnvironment();
        settings.projectsFolder = samples.projectsFolder();
    }
    if (!positional.isEmpty()) {
        settings.startTab = QStringLiteral("system");
        settings.startFolder = QFileInfo(positional.first()).absoluteFilePath();
        settings.forceStartFolder = true;
        if (!QFileInfo(settings.startFolder).isDir())
            return fail(QStringLiteral("%1 is not a folder").arg(settings.startFolder));
    } else if (haveSamples && QFileInfo(samples.startFolder()).isDir()) {
        settings.startTab = QStringLiteral("examples");
        settings.startFolder = samples.startFolder();
    } else {
        settings.startTab = QStringLiteral("system");
        settings.startFolder = QDir::homePath();
    }

    settings.context = parser.value(contextOption);
    if (settings.context.trimmed().isEmpty())
        return fail(QStringLiteral("--context needs a name"));

    ThostMainWindow window(settings);
    window.resize(size);
    if (haveSamples)
        window.console()->appendNote(QStringLiteral("Sample library: %1").arg(QDir::toNativeSeparators(samples.root())));
    for (const QString& name : environmentSet)
        window.console()->appendNote(QStringLiteral("%1 set for this session").arg(name));

    if (parser.isSet(screenshotOption)) {
        const QString file = QFileInfo(parser.value(screenshotOption)).absoluteFilePath();
        window.show();
        // Saved once the folder is listed and its visible pictures are made, with a time limit.
        auto* shot = new ThostScreenshot(&window, file);
        QObject::connect(shot, &ThostScreenshot::finished, &window, [file](bool saved, bool timedOut) {
            if (timedOut)
                std::fprintf(stderr, "orlo-browser: the folder had not settled in time; saved as it was\n");
            if (saved)
                std::printf("%s\n", qPrintable(file));
            QCoreApplication::exit(saved ? 0 : 1);
        });
        return app.exec();
    }

    window.show();
    return app.exec();
}
