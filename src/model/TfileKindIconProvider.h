#pragma once

#include <QFileIconProvider>

// The icon provider every file listing of the browser starts from. Qt's own provider names a
// file's type by reading its first bytes, and a listing asks for every entry: on a system
// folder such as /proc that read can block for ever (/proc/kmsg) and freeze the browser, and
// on a network share it reads every file. The type is named from the file name alone here.
class TfileKindIconProvider : public QFileIconProvider
{
public:
    TfileKindIconProvider();
    ~TfileKindIconProvider() override;

    QString type(const QFileInfo& info) const override;
    // The desktop's icon for the file's kind, again judged by its name only.
    QIcon systemIcon(const QFileInfo& info) const;

    // A provider for models that have no provider of their own; lives as long as the process.
    static TfileKindIconProvider* fallback();
};
