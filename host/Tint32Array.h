#pragma once

#include "OrloHostExport.h"
#include "Tarray.h"

#include <QtGlobal>

/// Growable array of 32-bit signed integers (see Tarray for the operations).
class ORLOHOST_EXPORT Tint32Array : public Tarray<qint32>
{
public:
    explicit Tint32Array(int capacityHint = 8);
};
