#pragma once

#include "OrloHostExport.h"

class QMenuBar;

/// Global state of the host's UI.
class ORLOHOST_EXPORT TiceGlobalState
{
public:
    /// The menu bar of the host's current main window; null when there is none or it
    /// has been destroyed.
    static QMenuBar* currentQMenuBar();
    /// Host side: sets it (not owned).
    static void setCurrentQMenuBar(QMenuBar* menuBar);

    TiceGlobalState() = delete;
};
