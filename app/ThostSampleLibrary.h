#pragma once

#include <QString>
#include <QStringList>

// The sample content library generated at build time, described by the manifest
// "orlo-samples.json" at its root: where the host's and the plug-in's installation folders
// are, which folders make up the content library, where the sample projects live and
// which folder a first run opens. All paths in the manifest are relative to the root.
class ThostSampleLibrary
{
public:
    static constexpr const char* kManifest = "orlo-samples.json";

    // The library next to the program: beside it, one level up (the build tree), or in the
    // installed share folder. Empty when there is none.
    static QString find(const QString& appDir);
    // Reads the manifest of the library at root; false when it is missing or unreadable.
    bool read(const QString& root);

    // Sets VELA_LOCATION, MOTE_LOCATION and VELA_CONTENT_PATH to the library's values, each
    // only when the user has not set it already. Returns the names it set.
    QStringList applyEnvironment() const;

    QString root() const { return m_root; }
    QString velaLocation() const { return m_velaLocation; }
    QString moteLocation() const { return m_moteLocation; }
    QStringList contentPath() const { return m_contentPath; }
    QString projectsFolder() const { return m_projectsFolder; }
    QString startFolder() const { return m_startFolder; }

private:
    QString m_root;
    QString m_velaLocation;
    QString m_moteLocation;
    QStringList m_contentPath;
    QString m_projectsFolder;
    QString m_startFolder;
};
