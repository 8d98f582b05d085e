#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"

class QObject;

/// The host's inventory of its UI: widgets, menus and actions found by object name.
///
/// A full name is the '|'-joined object names of an element and its named ancestors,
/// from the top-level window down ("MainWindow|browserDock|helpMenu"). Unnamed
/// ancestors are left out, so layout containers without names do not matter.
///
/// The inventory sees every widget of the application, and every other object the
/// host registers (with the children of either). GUI thread only.
class ORLOHOST_EXPORT TUIInventory
{
public:
    /// The element named name. A full name is resolved one name at a time, each below
    /// the previous one (through unnamed objects only); a single name is looked up
    /// everywhere, the shallowest match first. When className is given, only elements
    /// that inherit it count (QObject::inherits). Null when nothing matches.
    static QObject* find(const Tstring& name, const char* className = nullptr);

    /// The full name of element; empty for null or for an element without a name.
    static Tstring fullName(const QObject* element);

    /// Makes an object that is not a widget, or not in the widget tree, findable. It is
    /// forgotten when destroyed. Registering twice is harmless.
    static void registerObject(QObject* object);
    static void unregisterObject(QObject* object);

    TUIInventory() = delete;
};
