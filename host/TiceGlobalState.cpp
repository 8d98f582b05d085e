#include "TiceGlobalState.h"

#include <QMenuBar>
#include <QPointer>

namespace {

QPointer<QMenuBar>& currentMenuBar()
{
    static QPointer<QMenuBar> menuBar;
    return menuBar;
}

} // namespace

QMenuBar* TiceGlobalState::currentQMenuBar()
{
    return currentMenuBar().data();
}

void TiceGlobalState::setCurrentQMenuBar(QMenuBar* menuBar)
{
    currentMenuBar() = menuBar;
}
