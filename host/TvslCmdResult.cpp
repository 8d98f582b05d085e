#include "TvslCmdResult.h"

namespace {

int readInt(const QString& text, bool* ok)
{
    bool parsed = false;
    const int value = text.trimmed().toInt(&parsed, 10);
    if (ok)
        *ok = parsed;
    return parsed ? value : 0;
}

} // namespace

void TvslCmdResult::setInt(int value)
{
    m_type = Type::Int;
    m_int = value;
    m_strings.clear();
}

void TvslCmdResult::setString(const Tstring& value)
{
    setString(value.toQString());
}

void TvslCmdResult::setString(const QString& value)
{
    m_type = Type::String;
    m_int = 0;
    m_strings = QStringList{value};
}

void TvslCmdResult::setStringArray(const TstringArray& value)
{
    setStringArray(value.toQStringList());
}

void TvslCmdResult::setStringArray(const QStringList& value)
{
    m_type = Type::StringArray;
    m_int = 0;
    m_strings = value;
}

void TvslCmdResult::clear()
{
    m_type = Type::Empty;
    m_int = 0;
    m_strings.clear();
}

Tstring TvslCmdResult::asString() const
{
    return Tstring(asQString());
}

QString TvslCmdResult::asQString() const
{
    switch (m_type) {
    case Type::Empty:
        return QString();
    case Type::Int:
        return QString::number(m_int);
    case Type::String:
    case Type::StringArray:
        return m_strings.join(u' ');
    }
    return QString();
}

TstringArray TvslCmdResult::asStringArray() const
{
    return TstringArray::fromQStringList(asQStringList());
}

QStringList TvslCmdResult::asQStringList() const
{
    if (m_type == Type::Int)
        return QStringList{QString::number(m_int)};
    return m_strings;
}

int TvslCmdResult::asInt(bool* ok) const
{
    switch (m_type) {
    case Type::Int:
        if (ok)
            *ok = true;
        return m_int;
    case Type::String:
    case Type::StringArray:
        if (!m_strings.isEmpty())
            return readInt(m_strings.first(), ok);
        break;
    case Type::Empty:
        break;
    }
    if (ok)
        *ok = false;
    return 0;
}
