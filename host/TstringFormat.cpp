#include "TstringFormat.h"

TformatArg::TformatArg(const Tstring& text)
    : m_text(text.toQString())
{
}

TformatArg::TformatArg(const QString& text)
    : m_text(text)
{
}

TformatArg::TformatArg(const char* utf8)
    : m_text(QString::fromUtf8(utf8 ? utf8 : ""))
{
}

QString TformatArg::toText() const
{
    return m_isInteger ? QString::number(m_integer) : m_text;
}

QString TstringFormat(const QString& pattern, std::initializer_list<TformatArg> args)
{
    QString out;
    out.reserve(pattern.size());
    const qsizetype n = pattern.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = pattern.at(i);
        if (c != u'^') {
            out.append(c);
            continue;
        }
        if (i + 1 < n && pattern.at(i + 1) == u'^') {
            out.append(u'^');
            ++i;
            continue;
        }
        const bool isPlaceholder = i + 2 < n && pattern.at(i + 1) >= u'1' && pattern.at(i + 1) <= u'9'
                                   && (pattern.at(i + 2) == u's' || pattern.at(i + 2) == u'd');
        if (!isPlaceholder) {
            out.append(c);
            continue;
        }
        const size_t argIndex = size_t(pattern.at(i + 1).unicode() - u'1');
        if (argIndex < args.size())
            out.append((args.begin() + argIndex)->toText());
        else
            out.append(pattern.mid(i, 3));
        i += 2;
    }
    return out;
}

Tstring TstringFormat(const Tstring& pattern, std::initializer_list<TformatArg> args)
{
    return Tstring(TstringFormat(pattern.toQString(), args));
}

Tstring TstringFormat(const char* pattern, std::initializer_list<TformatArg> args)
{
    return TstringFormat(Tstring(pattern), args);
}
