#pragma once

#include <QList>
#include <QObject>
#include <QString>

// The reference host's current scene, reduced to what the browser can change in it: the
// files brought in (imported, referenced, used as textures), the active sculpting stamp and
// the scripts sourced. Script commands fill it; the scene dock shows it.
class ThostScene : public QObject
{
    Q_OBJECT

public:
    enum class How { Imported, Referenced, Texture, Stamp, Script };

    struct Entry
    {
        How how = How::Imported;
        QString path;
        // What the host made of it: the node name with its namespace, the texture mode...
        QString detail;
    };

    // The one scene of the process.
    static ThostScene* instance();

    QList<Entry> entries() const { return m_entries; }
    // Adds an entry; a stamp replaces the stamp before it, as only one is active at a time.
    void add(How how, const QString& path, const QString& detail);
    void clear();
    // A name for a node made from path that no entry uses yet ("Bouncing_Ball",
    // "Bouncing_Ball1"...), prefixed with namespace and ":" when one is given.
    QString uniqueNodeName(const QString& path, const QString& nameSpace) const;

    static QString howText(How how);

Q_SIGNALS:
    void changed();

private:
    ThostScene() = default;

    QList<Entry> m_entries;
};
