#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"

/// The script part of a host action: the command line it runs.
class ORLOHOST_EXPORT TscriptActionMixin
{
public:
    TscriptActionMixin();
    virtual ~TscriptActionMixin();

    /// Sets the command line to run, and nothing else about the action.
    void setScriptOnly(const Tstring& script);
    const Tstring& script() const;

private:
    Tstring m_script;
};
