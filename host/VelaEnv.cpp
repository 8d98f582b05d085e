#include "VelaEnv.h"

#include <QByteArray>
#include <QtGlobal>

Tstring VelaGetEnv(const Tstring& name)
{
    if (name.isEmpty())
        return Tstring();
    return Tstring(qEnvironmentVariable(name.toQString().toLocal8Bit().constData()));
}

bool VelaPutEnv(const Tstring& name, const Tstring& value)
{
    const QString key = name.toQString();
    if (key.isEmpty() || key.contains(u'='))
        return false;
    const QByteArray localKey = key.toLocal8Bit();
    if (value.isEmpty())
        return qunsetenv(localKey.constData());
    return qputenv(localKey.constData(), value.toQString().toLocal8Bit());
}

bool VelaPutEnv(const Tstring& assignment)
{
    const QString text = assignment.toQString();
    const qsizetype equals = text.indexOf(u'=');
    if (equals <= 0)
        return false;
    return VelaPutEnv(Tstring(text.left(equals)), Tstring(text.mid(equals + 1)));
}
