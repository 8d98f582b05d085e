#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"

#include <QAction>

/// A host action for menus and tool bars. Besides what QAction does, it may carry a
/// script: when triggered, the script runs through the command engine (echoed, as a
/// command the user chose). Without a script it is a plain QAction.
class ORLOHOST_EXPORT Taction : public QAction
{
    Q_OBJECT

public:
    explicit Taction(QObject* parent = nullptr);
    Taction(const QString& text, QObject* parent);
    Taction(const QIcon& icon, const QString& text, QObject* parent);
    ~Taction() override;

    void setScript(const Tstring& script);
    const Tstring& script() const;

private:
    void runScript();

    Tstring m_script;
};
