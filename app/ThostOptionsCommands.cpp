// The host side of the browser's import and reference options dialog: the browser builds an
// empty frame with a layout of a known name and these commands fill and read it.
#include "ThostCommands.h"
#include "ThostFileOptionsPanel.h"

#include "TcommandEngine.h"
#include "TUIInventory.h"
#include "TvslCmdResult.h"

#include <QFileInfo>
#include <QLayout>
#include <QPointer>
#include <QVBoxLayout>

using Mode = ThostFileOptionsPanel::Mode;

namespace {
bool fail(TvslCmdResult& result, const QString& message)
{
    result.setString(message);
    return false;
}

QString modeWord(Mode mode)
{
    return mode == Mode::Import ? QStringLiteral("Import") : QStringLiteral("Reference");
}

// The panel last set up for each mode: the one "fileOptionsCallback", which names no
// layout, saves.
QPointer<ThostFileOptionsPanel>& lastPanel(Mode mode)
{
    static QPointer<ThostFileOptionsPanel> panels[2];
    return panels[mode == Mode::Import ? 0 : 1];
}

// Reads "COMMAND MODE [LAYOUT] ..." and checks the mode word.
bool modeAndWords(const QString& line, int minWords, Mode& mode, QStringList& words, TvslCmdResult& result)
{
    const QString name = TcommandEngine::commandName(line);
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("%1: unterminated string").arg(name));
    if (words.size() < minWords)
        return fail(result, QStringLiteral("%1: expected %2 arguments").arg(name).arg(minWords - 1));
    if (!ThostFileOptionsPanel::parseMode(words.at(1), mode))
        return fail(result, QStringLiteral("%1: the mode must be Import or Reference, not \"%2\"").arg(name, words.at(1)));
    return true;
}

// The layout the browser named, as a layout: a widget of that name lends its own.
QLayout* findLayout(const QString& name)
{
    Tstring tname;
    Tstring_fromQString(name, tname);
    QObject* found = TUIInventory::find(tname);
    if (auto* layout = qobject_cast<QLayout*>(found))
        return layout;
    if (auto* widget = qobject_cast<QWidget*>(found))
        return widget->layout() ? widget->layout() : new QVBoxLayout(widget);
    return nullptr;
}

ThostFileOptionsPanel* panelIn(QLayout* layout)
{
    for (int i = 0; i < layout->count(); ++i) {
        if (auto* panel = qobject_cast<ThostFileOptionsPanel*>(layout->itemAt(i)->widget()))
            return panel;
    }
    return nullptr;
}

// The panel in the named layout, for the commands that follow the set-up.
ThostFileOptionsPanel* panelFor(const QString& layoutName, Mode mode, TvslCmdResult& result)
{
    QLayout* layout = findLayout(layoutName);
    ThostFileOptionsPanel* panel = layout ? panelIn(layout) : nullptr;
    if (!panel || panel->mode() != mode) {
        fail(result, QStringLiteral("no %1 options were set up in %2").arg(modeWord(mode).toLower(), layoutName));
        return nullptr;
    }
    return panel;
}

// initCurrentFileTypeOption MODE "" ""
bool initCurrentFileTypeOption(const QString& line, TvslCmdResult& result)
{
    Mode mode;
    QStringList words;
    if (!modeAndWords(line, 2, mode, words, result))
        return false;
    result.setString(modeWord(mode) + QStringLiteral(" options ready"));
    return true;
}

// fileOperationsOptionsUISetup MODE LAYOUT
bool optionsUISetup(const QString& line, TvslCmdResult& result)
{
    Mode mode;
    QStringList words;
    if (!modeAndWords(line, 3, mode, words, result))
        return false;
    QLayout* layout = findLayout(words.at(2));
    if (!layout)
        return fail(result, QStringLiteral("fileOperationsOptionsUISetup: no layout named %1").arg(words.at(2)));
    ThostFileOptionsPanel* panel = panelIn(layout);
    if (panel && panel->mode() != mode) {
        layout->removeWidget(panel);
        delete panel;
        panel = nullptr;
    }
    if (!panel) {
        panel = new ThostFileOptionsPanel(mode, layout->parentWidget());
        layout->addWidget(panel);
    }
    lastPanel(mode) = panel;
    result.setString(QStringLiteral("%1 options placed in %2").arg(modeWord(mode), words.at(2)));
    return true;
}

// fileOperationsOptionsUIInitValues MODE LAYOUT "TYPE"
bool optionsUIInitValues(const QString& line, TvslCmdResult& result)
{
    Mode mode;
    QStringList words;
    if (!modeAndWords(line, 4, mode, words, result))
        return false;
    ThostFileOptionsPanel* panel = panelFor(words.at(2), mode, result);
    if (!panel)
        return false;
    panel->load();
    if (!panel->setFileType(words.at(3)))
        return fail(result, QStringLiteral("fileOperationsOptionsUIInitValues: unknown file type \"%1\"").arg(words.at(3)));
    result.setString(panel->fileType());
    return true;
}

// setCurrentFileTypeOption MODE LAYOUT "TYPE"
bool setCurrentFileTypeOption(const QString& line, TvslCmdResult& result)
{
    Mode mode;
    QStringList words;
    if (!modeAndWords(line, 4, mode, words, result))
        return false;
    ThostFileOptionsPanel* panel = panelFor(words.at(2), mode, result);
    if (!panel)
        return false;
    if (!panel->setFileType(words.at(3)))
        return fail(result, QStringLiteral("setCurrentFileTypeOption: unknown file type \"%1\"").arg(words.at(3)));
    result.setString(panel->fileType());
    return true;
}

// fileOperationsSelectionChangedCallback MODE LAYOUT "FILE"
bool selectionChangedCallback(const QString& line, TvslCmdResult& result)
{
    Mode mode;
    QStringList words;
    if (!modeAndWords(line, 4, mode, words, result))
        return false;
    ThostFileOptionsPanel* panel = panelFor(words.at(2), mode, result);
    if (!panel)
        return false;
    panel->setFile(words.at(3));
    result.setString(QStringLiteral("%1 as %2").arg(QFileInfo(words.at(3)).fileName(), panel->fileType()));
    return true;
}

// fileOperationsOptionsUICallback MODE LAYOUT "FILE": the user confirmed the dialog.
bool optionsUICallback(const QString& line, TvslCmdResult& result)
{
    Mode mode;
    QStringList words;
    if (!modeAndWords(line, 4, mode, words, result))
        return false;
    ThostFileOptionsPanel* panel = panelFor(words.at(2), mode, result);
    if (!panel)
        return false;
    panel->save();
    result.setString(QStringLiteral("%1 options saved for %2 (%3)")
                         .arg(modeWord(mode), QFileInfo(words.at(3)).fileName(), panel->fileType()));
    return true;
}

// fileOptionsCallback "Import Options" "Import" "": save and close.
bool fileOptionsCallback(const QString& line, TvslCmdResult& result)
{
    QStringList words;
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("fileOptionsCallback: unterminated string"));
    Mode mode;
    if (words.size() < 3 || !ThostFileOptionsPanel::parseMode(words.at(2), mode))
        return fail(result, QStringLiteral("fileOptionsCallback: expected a title and Import or Reference"));
    ThostFileOptionsPanel* panel = lastPanel(mode);
    if (!panel)
        return fail(result, QStringLiteral("fileOptionsCallback: no %1 options are open").arg(modeWord(mode).toLower()));
    panel->save();
    result.setString(QStringLiteral("%1 saved").arg(words.at(1)));
    return true;
}

void registerOptionsCommands()
{
    TcommandEngine::registerHandler(QStringLiteral("initCurrentFileTypeOption"), &initCurrentFileTypeOption);
    TcommandEngine::registerHandler(QStringLiteral("fileOperationsOptionsUISetup"), &optionsUISetup);
    TcommandEngine::registerHandler(QStringLiteral("fileOperationsOptionsUIInitValues"), &optionsUIInitValues);
    TcommandEngine::registerHandler(QStringLiteral("setCurrentFileTypeOption"), &setCurrentFileTypeOption);
    TcommandEngine::registerHandler(QStringLiteral("fileOperationsSelectionChangedCallback"), &selectionChangedCallback);
    TcommandEngine::registerHandler(QStringLiteral("fileOperationsOptionsUICallback"), &optionsUICallback);
    TcommandEngine::registerHandler(QStringLiteral("fileOptionsCallback"), &fileOptionsCallback);
}

const ThostCommands::Registrar registrar(&registerOptionsCommands);
} // namespace
