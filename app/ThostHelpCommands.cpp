#include "ThostHelpCommands.h"

#include "QvelaMessageBox.h"
#include "TUIInventory.h"
#include "TcommandEngine.h"
#include "ThostCommands.h"
#include "ThostDpiScaling.h"
#include "TvslCmdResult.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QVariant>

namespace {
// What a menu and the elements it serves remember, kept on the objects themselves so that it
// goes with them.
const char* const kContextsProperty = "orloHelpContexts";
const char* const kProcsProperty = "orloContextHelpProcs";
const char* const kOnceProperty = "orloPostMenuCommandOnce";
const char* const kBuiltProperty = "orloHelpItemsBuilt";

struct HelpTopic
{
    const char* id;
    const char* title;
    const char* text;
};

const HelpTopic kTopics[] = {
    {"browserOverview", "Asset Browser Overview",
     "The asset browser shows the files of one folder at a time.\n\n"
     "Pick a folder in the Projects, System, Library or Favorites tab on the left; its files appear in the "
     "middle, as thumbnails or as a detailed list. Select a file to see its picture and details in the preview "
     "panel on the right. Right-click a file to import it into the scene or to reference it."},
    {"browserSearch", "Searching a Folder",
     "Type into the search field above the files to show only the files of the current folder whose names "
     "contain the text, in upper or lower case; * and ? work as wildcards. Click the cross at the end of the "
     "field to show all files again; opening another folder also clears the search."},
    {"browserViews", "Thumbnails and the Detail List",
     "The view button on the content toolbar switches between thumbnails and the detail list. In the "
     "thumbnail view the slider sets the thumbnail size; resting the pointer on a thumbnail plays its preview "
     "frames when the host has written them. The sort menu orders the files by name, size, type or date."},
    {"browserFavorites", "Favorites and the Library",
     "Right-click a folder in the System tab and choose to add it to your favorites; the Favorites tab keeps "
     "them, grouped in folders of your own if you like. The Library tab lists the example content and every "
     "library location that has been added to the browser."},
    {"browserPanels", "Showing and Hiding Panels",
     "The gear button at the left of the content toolbar opens a menu with one check box per panel: clear a "
     "box to hide the path bar, a tab of the side panel, the preview or the metadata. When the toolbar is too "
     "narrow for all its buttons, the arrow at its right end shows the rest."},
};

const HelpTopic* topicById(const QString& id)
{
    for (const HelpTopic& topic : kTopics) {
        if (id == QLatin1String(topic.id))
            return &topic;
    }
    return nullptr;
}

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

bool fail(TvslCmdResult& result, const QString& message)
{
    result.setString(message);
    return false;
}

bool parseBool(const QString& text, bool& value)
{
    const QString t = text.toLower();
    if (t == QLatin1String("true") || t == QLatin1String("on") || t == QLatin1String("yes") || t == QLatin1String("1")) {
        value = true;
        return true;
    }
    if (t == QLatin1String("false") || t == QLatin1String("off") || t == QLatin1String("no") || t == QLatin1String("0")) {
        value = false;
        return true;
    }
    return false;
}

// The command's quoted arguments, when it has exactly count of them.
bool arguments(const QString& line, int count, QStringList& args, TvslCmdResult& result)
{
    QStringList words;
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("%1: unterminated string").arg(TcommandEngine::commandName(line)));
    if (words.size() != count + 1)
        return fail(result, QStringLiteral("%1: expected %2 arguments, got %3")
                                .arg(TcommandEngine::commandName(line))
                                .arg(count)
                                .arg(words.size() - 1));
    args = words.mid(1);
    return true;
}

QMainWindow* mainWindow()
{
    if (auto* active = qobject_cast<QMainWindow*>(QApplication::activeWindow()))
        return active;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<QMainWindow*>(widget))
            return window;
    }
    return nullptr;
}

void showTopic(const QString& id, QWidget* parent)
{
    const HelpTopic* topic = topicById(id);
    const QString title = topic ? QString::fromUtf8(topic->title) : id;
    const QString text = topic ? QString::fromUtf8(topic->text)
                               : QStringLiteral("No help is installed for \"%1\".").arg(id);
    auto* box = new QvelaMessageBox(QMessageBox::Information, title, text, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void showAbout(QWidget* parent)
{
    auto* box = new QvelaMessageBox(QMessageBox::Information, QStringLiteral("About the Reference Host"),
        QStringLiteral("This window is the reference host of the ORLO Asset Browser. It embeds the browser as a "
                       "host application does and answers every script command the browser sends; the Script "
                       "Console below shows each command with the host's answer."),
        QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

// Fills menu with the help items of every element it serves, each topic once, in the order
// the elements were added and their procedures answered, then the host's own entry.
void buildHelpItems(QMenu* menu)
{
    menu->clear();
    QWidget* boxParent = menu->parentWidget();
    QStringList shown;
    const QStringList elements = menu->property(kContextsProperty).toStringList();
    for (const QString& element : elements) {
        const QObject* object = TUIInventory::find(toT(element));
        if (!object)
            continue;
        const QStringList procs = object->property(kProcsProperty).toStringList();
        for (const QString& proc : procs) {
            TvslCmdResult answer;
            if (!TcommandEngine::executeCommandWithResult(toT(proc + QStringLiteral(" \"") + element + QStringLiteral("\"")), answer))
                continue;
            for (const QString& id : answer.asQStringList()) {
                if (id.isEmpty() || shown.contains(id))
                    continue;
                shown << id;
                const HelpTopic* topic = topicById(id);
                QAction* action = menu->addAction(topic ? QString::fromUtf8(topic->title) : id);
                action->setObjectName(id);
                QObject::connect(action, &QAction::triggered, menu, [id, boxParent] { showTopic(id, boxParent); });
            }
        }
    }
    if (!shown.isEmpty())
        menu->addSeparator();
    QAction* about = menu->addAction(QStringLiteral("About the Reference Host"));
    about->setObjectName(QStringLiteral("aboutReferenceHost"));
    QObject::connect(about, &QAction::triggered, menu, [boxParent] { showAbout(boxParent); });
    menu->setProperty(kBuiltProperty, true);
}

QString uniqueMenuName(const QWidget* window, const QString& name)
{
    const auto taken = [window](const QString& candidate) {
        for (const QMenu* menu : window->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (menu->objectName() == candidate)
                return true;
        }
        return false;
    };
    QString candidate = name;
    for (int n = 1; taken(candidate); ++n)
        candidate = name + QString::number(n);
    return candidate;
}
} // namespace

bool ThostHelpCommands::menu(const QString& line, TvslCmdResult& result)
{
    QStringList words;
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("menu: unterminated string"));
    QString name;
    QString label;
    QString parentName;
    QString image;
    bool helpMenu = false;
    bool tearOff = false;
    bool once = true;
    for (int i = 1; i < words.size(); ++i) {
        const QString word = words.at(i);
        if (!word.startsWith(QLatin1Char('-'))) {
            if (!name.isEmpty())
                return fail(result, QStringLiteral("menu: more than one name (%1, %2)").arg(name, word));
            name = word;
            continue;
        }
        if (i + 1 >= words.size())
            return fail(result, QStringLiteral("menu: %1 expects a value").arg(word));
        const QString value = words.at(++i);
        bool ok = true;
        if (word == QLatin1String("-label") || word == QLatin1String("-l"))
            label = value;
        else if (word == QLatin1String("-parent") || word == QLatin1String("-p"))
            parentName = value;
        else if (word == QLatin1String("-familyImage") || word == QLatin1String("-fi"))
            image = value;
        else if (word == QLatin1String("-helpMenu") || word == QLatin1String("-hm"))
            ok = parseBool(value, helpMenu);
        else if (word == QLatin1String("-tearOff") || word == QLatin1String("-to"))
            ok = parseBool(value, tearOff);
        else if (word == QLatin1String("-postMenuCommandOnce") || word == QLatin1String("-pmo"))
            ok = parseBool(value, once);
        else
            return fail(result, QStringLiteral("menu: unknown flag %1").arg(word));
        if (!ok)
            return fail(result, QStringLiteral("menu: %1 expects true or false, not \"%2\"").arg(word, value));
    }
    if (name.isEmpty())
        name = QStringLiteral("menu");

    QWidget* window = nullptr;
    QMenuBar* bar = nullptr;
    if (parentName.isEmpty()) {
        QMainWindow* main = mainWindow();
        if (!main)
            return fail(result, QStringLiteral("menu: there is no main window to put the menu in"));
        window = main;
        bar = main->menuBar();
    } else {
        QObject* parent = TUIInventory::find(toT(parentName));
        if (auto* main = qobject_cast<QMainWindow*>(parent)) {
            window = main;
            bar = main->menuBar();
        } else if ((bar = qobject_cast<QMenuBar*>(parent))) {
            window = bar->window();
        } else {
            return fail(result, QStringLiteral("menu: no window or menu bar named %1").arg(parentName));
        }
    }

    auto* menu = new QMenu(label.isEmpty() ? (helpMenu ? QStringLiteral("&Help") : name) : label, window);
    menu->setObjectName(uniqueMenuName(window, name));
    menu->setTearOffEnabled(tearOff);
    if (!image.isEmpty())
        menu->setIcon(ThostDpiScaling().icon(image));
    menu->setProperty(kOnceProperty, once);
    bar->addMenu(menu);
    TUIInventory::registerObject(menu);
    QObject::connect(menu, &QMenu::aboutToShow, menu, [menu] {
        if (!menu->property(kOnceProperty).toBool() || !menu->property(kBuiltProperty).toBool())
            buildHelpItems(menu);
    });
    result.setString(TUIInventory::fullName(menu));
    return true;
}

bool ThostHelpCommands::addContextHelpProc(const QString& line, TvslCmdResult& result)
{
    QStringList args;
    if (!arguments(line, 2, args, result))
        return false;
    QObject* element = TUIInventory::find(toT(args.at(0)));
    if (!element)
        return fail(result, QStringLiteral("addContextHelpProc: no UI element named %1").arg(args.at(0)));
    QStringList procs = element->property(kProcsProperty).toStringList();
    if (!procs.contains(args.at(1)))
        procs << args.at(1);
    element->setProperty(kProcsProperty, procs);
    result.setInt(1);
    return true;
}

bool ThostHelpCommands::doHelpMenuItems(const QString& line, TvslCmdResult& result)
{
    QStringList args;
    if (!arguments(line, 2, args, result))
        return false;
    auto* menu = qobject_cast<QMenu*>(TUIInventory::find(toT(args.at(1)), "QMenu"));
    if (!menu)
        return fail(result, QStringLiteral("doHelpMenuItems: no menu named %1").arg(args.at(1)));
    QStringList elements = menu->property(kContextsProperty).toStringList();
    if (!elements.contains(args.at(0)))
        elements << args.at(0);
    menu->setProperty(kContextsProperty, elements);
    buildHelpItems(menu);
    result.setInt(int(menu->actions().size()));
    return true;
}

bool ThostHelpCommands::contentBrowserBuildContextHelpItems(const QString& line, TvslCmdResult& result)
{
    QStringList args;
    if (!arguments(line, 1, args, result))
        return false;
    QStringList ids;
    for (const HelpTopic& topic : kTopics)
        ids << QString::fromLatin1(topic.id);
    result.setStringArray(ids);
    return true;
}

void ThostHelpCommands::registerHelpCommands()
{
    TcommandEngine::registerHandler(QStringLiteral("menu"), &ThostHelpCommands::menu);
    TcommandEngine::registerHandler(QStringLiteral("addContextHelpProc"), &ThostHelpCommands::addContextHelpProc);
    TcommandEngine::registerHandler(QStringLiteral("doHelpMenuItems"), &ThostHelpCommands::doHelpMenuItems);
    TcommandEngine::registerHandler(QStringLiteral("contentBrowserBuildContextHelpItems"),
                                    &ThostHelpCommands::contentBrowserBuildContextHelpItems);
}

namespace {
const ThostCommands::Registrar registrar(&ThostHelpCommands::registerHelpCommands);
}
