#include "TUIInventory.h"

#include <QApplication>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <algorithm>

namespace {

QList<QPointer<QObject>>& registered()
{
    static QList<QPointer<QObject>> objects;
    return objects;
}

const QObject* topmost(const QObject* object)
{
    while (object->parent())
        object = object->parent();
    return object;
}

// The roots of the searchable tree: parentless widgets, and the topmost ancestors of
// registered objects. Deduplicated, registered roots after widgets.
QObjectList roots()
{
    QObjectList result;
    if (qobject_cast<QApplication*>(QCoreApplication::instance())) {
        for (QWidget* widget : QApplication::allWidgets()) {
            if (!widget->parent())
                result.append(widget);
        }
    }
    for (const QPointer<QObject>& object : registered()) {
        if (!object)
            continue;
        QObject* root = const_cast<QObject*>(topmost(object.data()));
        if (!result.contains(root))
            result.append(root);
    }
    return result;
}

bool matches(const QObject* object, const QString& name, const char* className)
{
    return object->objectName() == name && (!className || object->inherits(className));
}

// Breadth first, so the shallowest match wins. With throughUnnamedOnly false every
// object is entered; otherwise only unnamed ones, which full names leave out.
QObject* search(const QObjectList& start, const QString& name, const char* className, bool throughUnnamedOnly)
{
    QObjectList level = start;
    while (!level.isEmpty()) {
        QObjectList next;
        for (QObject* object : level) {
            if (matches(object, name, className))
                return object;
            if (!throughUnnamedOnly || object->objectName().isEmpty())
                next += object->children();
        }
        level = next;
    }
    return nullptr;
}

} // namespace

QObject* TUIInventory::find(const Tstring& name, const char* className)
{
    const QStringList parts = name.toQString().split(u'|');
    if (std::any_of(parts.begin(), parts.end(), [](const QString& part) { return part.isEmpty(); }))
        return nullptr;
    if (parts.size() == 1)
        return search(roots(), parts.first(), className, false);

    QObjectList candidates = roots();
    QObject* found = nullptr;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const bool last = i == parts.size() - 1;
        found = search(candidates, parts.at(i), last ? className : nullptr, true);
        if (!found)
            return nullptr;
        candidates = found->children();
    }
    return found;
}

Tstring TUIInventory::fullName(const QObject* element)
{
    if (!element || element->objectName().isEmpty())
        return Tstring();
    QStringList names;
    for (const QObject* object = element; object; object = object->parent()) {
        if (!object->objectName().isEmpty())
            names.prepend(object->objectName());
    }
    return Tstring(names.join(u'|'));
}

void TUIInventory::registerObject(QObject* object)
{
    if (!object || registered().contains(object))
        return;
    registered().append(object);
    QObject::connect(object, &QObject::destroyed, [object] { TUIInventory::unregisterObject(object); });
}

void TUIInventory::unregisterObject(QObject* object)
{
    registered().removeIf([object](const QPointer<QObject>& entry) { return !entry || entry == object; });
}
