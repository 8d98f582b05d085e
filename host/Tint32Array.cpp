#include "Tint32Array.h"

Tint32Array::Tint32Array(int capacityHint)
    : Tarray<qint32>(capacityHint)
{
}
