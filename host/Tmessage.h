#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"

/// What a host event source hands its clients: the name of what happened and an
/// optional detail.
///
/// A named event (Ttrigger) sends its own name. An option-variable change sends the
/// variable's key as the name and "changed" or "removed" as the detail.
class ORLOHOST_EXPORT Tmessage
{
public:
    Tmessage() = default;
    explicit Tmessage(const Tstring& name, const Tstring& detail = Tstring());

    const Tstring& name() const { return m_name; }
    const Tstring& detail() const { return m_detail; }

private:
    Tstring m_name;
    Tstring m_detail;
};
