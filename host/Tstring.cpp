#include "Tstring.h"

Tstring::Tstring(const char* utf8)
    : m_text(utf8 ? QString::fromUtf8(utf8) : QString())
{
}

Tstring::Tstring(const wchar_t* wide)
    : m_text(wide ? QString::fromWCharArray(wide) : QString())
{
}

Tstring::Tstring(const QString& text)
    : m_text(text)
{
}

Tstring::Tstring(const std::string& utf8)
    : m_text(QString::fromStdString(utf8))
{
}

Tstring::Tstring(const std::wstring& wide)
    : m_text(QString::fromStdWString(wide))
{
}

Tstring& Tstring::operator+=(const Tstring& other)
{
    m_text += other.m_text;
    return *this;
}

Tstring& Tstring::operator+=(const char* utf8)
{
    if (utf8)
        m_text += QString::fromUtf8(utf8);
    return *this;
}

bool Tstring::isEmpty() const
{
    return m_text.isEmpty();
}

int Tstring::length() const
{
    return int(m_text.length());
}

std::string Tstring::asUtf8() const
{
    return m_text.toStdString();
}

std::wstring Tstring::asWString() const
{
    return m_text.toStdWString();
}

int Tstring::compare(const Tstring& other) const
{
    return m_text.compare(other.m_text);
}

Tstring operator+(const Tstring& a, const Tstring& b)
{
    Tstring sum(a);
    sum += b;
    return sum;
}

Tstring operator+(const Tstring& a, const char* b)
{
    Tstring sum(a);
    sum += b;
    return sum;
}

Tstring operator+(const char* a, const Tstring& b)
{
    Tstring sum(a);
    sum += b;
    return sum;
}

bool operator==(const Tstring& a, const Tstring& b)
{
    return a.toQString() == b.toQString();
}

bool operator==(const Tstring& a, const char* b)
{
    // A null pointer compares like the empty string, as it converts to one.
    return a.toQString() == QString::fromUtf8(b ? b : "");
}

bool operator==(const char* a, const Tstring& b)
{
    return b == a;
}

bool operator!=(const Tstring& a, const Tstring& b)
{
    return !(a == b);
}

bool operator!=(const Tstring& a, const char* b)
{
    return !(a == b);
}

bool operator!=(const char* a, const Tstring& b)
{
    return !(b == a);
}

bool operator<(const Tstring& a, const Tstring& b)
{
    return a.compare(b) < 0;
}

size_t qHash(const Tstring& text, size_t seed) noexcept
{
    return qHash(text.toQString(), seed);
}

void Tstring_fromQString(const QString& from, Tstring& to)
{
    to = Tstring(from);
}

QString Tstring_toQString(const Tstring& from)
{
    return from.toQString();
}
