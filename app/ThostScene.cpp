#include "ThostScene.h"

#include <QFileInfo>

#include <algorithm>

ThostScene* ThostScene::instance()
{
    static ThostScene scene;
    return &scene;
}

void ThostScene::add(How how, const QString& path, const QString& detail)
{
    if (how == How::Stamp) {
        m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                       [](const Entry& e) { return e.how == How::Stamp; }),
                        m_entries.end());
    }
    m_entries.append(Entry{how, path, detail});
    Q_EMIT changed();
}

void ThostScene::clear()
{
    m_entries.clear();
    Q_EMIT changed();
}

QString ThostScene::uniqueNodeName(const QString& path, const QString& nameSpace) const
{
    QString base = QFileInfo(path).completeBaseName();
    if (base.isEmpty())
        base = QStringLiteral("node");
    if (!nameSpace.isEmpty())
        base = nameSpace + QLatin1Char(':') + base;
    auto taken = [this](const QString& name) {
        return std::any_of(m_entries.cbegin(), m_entries.cend(), [&name](const Entry& e) { return e.detail == name; });
    };
    QString name = base;
    for (int n = 1; taken(name); ++n)
        name = base + QString::number(n);
    return name;
}

QString ThostScene::howText(How how)
{
    switch (how) {
    case How::Imported: return tr("Imported");
    case How::Referenced: return tr("Referenced");
    case How::Texture: return tr("Texture");
    case How::Stamp: return tr("Active stamp");
    case How::Script: return tr("Sourced script");
    }
    return QString();
}
