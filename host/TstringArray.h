#pragma once

#include "OrloHostExport.h"
#include "Tarray.h"
#include "Tstring.h"

#include <QStringList>

/// Growable array of host strings (see Tarray for the operations).
class ORLOHOST_EXPORT TstringArray : public Tarray<Tstring>
{
public:
    explicit TstringArray(int capacityHint = 8);

    static TstringArray fromQStringList(const QStringList& list);
    QStringList toQStringList() const;
};
