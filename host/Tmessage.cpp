#include "Tmessage.h"

Tmessage::Tmessage(const Tstring& name, const Tstring& detail)
    : m_name(name)
    , m_detail(detail)
{
}
