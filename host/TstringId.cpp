#include "TstringId.h"

#include "TstringTable.h"

TstringId::TstringId(const char* key)
    : m_key(key)
{
}

TstringId::TstringId(const QString& key)
    : m_key(key.toUtf8())
{
}

QString TstringId::key() const
{
    return QString::fromUtf8(m_key);
}

Tstring TstringId::asTstring() const
{
    return Tstring(asQString());
}

QString TstringId::asQString() const
{
    return TstringTable::text(key());
}

Tstring TstringId::format(std::initializer_list<TformatArg> args) const
{
    return Tstring(TstringFormat(asQString(), args));
}
