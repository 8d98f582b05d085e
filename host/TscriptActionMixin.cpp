#include "TscriptActionMixin.h"

TscriptActionMixin::TscriptActionMixin() = default;

TscriptActionMixin::~TscriptActionMixin() = default;

void TscriptActionMixin::setScriptOnly(const Tstring& script)
{
    m_script = script;
}

const Tstring& TscriptActionMixin::script() const
{
    return m_script;
}
