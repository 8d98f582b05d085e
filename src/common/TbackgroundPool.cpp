#include "TbackgroundPool.h"

#include <QCoreApplication>
#include <QHash>
#include <QPointer>
#include <QString>
#include <QThreadPool>

QThreadPool* TbackgroundPool(const QString& name, int maxThreads)
{
    static QHash<QString, QPointer<QThreadPool>> pools;
    QPointer<QThreadPool>& pool = pools[name];
    if (!pool) {
        pool = new QThreadPool(QCoreApplication::instance());
        pool->setMaxThreadCount(maxThreads);
        pool->setExpiryTimeout(-1);
        pool->setObjectName(name);
    }
    return pool;
}
