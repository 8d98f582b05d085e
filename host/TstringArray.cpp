#include "TstringArray.h"

TstringArray::TstringArray(int capacityHint)
    : Tarray<Tstring>(capacityHint)
{
}

TstringArray TstringArray::fromQStringList(const QStringList& list)
{
    TstringArray array(int(list.size()));
    for (const QString& text : list)
        array.addLast(Tstring(text));
    return array;
}

QStringList TstringArray::toQStringList() const
{
    QStringList list;
    list.reserve(length());
    for (const Tstring& text : items())
        list.append(text.toQString());
    return list;
}
