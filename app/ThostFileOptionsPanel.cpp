#include "ThostFileOptionsPanel.h"

#include "ThostCommands.h"
#include "ThostFileCommands.h"
#include "ThostFileKinds.h"

#include "TprefOptionVar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace {
Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

const char* nameSpaceKey(ThostFileOptionsPanel::Mode mode)
{
    return mode == ThostFileOptionsPanel::Mode::Import ? ThostFileCommands::kImportNamespace
                                                       : ThostFileCommands::kReferenceNamespace;
}

const char* switchKey(ThostFileOptionsPanel::Mode mode)
{
    return mode == ThostFileOptionsPanel::Mode::Import ? ThostFileCommands::kImportGroup
                                                       : ThostFileCommands::kReferenceLock;
}
} // namespace

ThostFileOptionsPanel::ThostFileOptionsPanel(Mode mode, QWidget* parent)
    : QWidget(parent)
    , m_mode(mode)
    , m_fileLabel(new QLabel(this))
    , m_type(new QComboBox(this))
    , m_nameSpace(new QLineEdit(this))
    , m_switch(new QCheckBox(mode == Mode::Import ? tr("Group the imported nodes under one node")
                                                  : tr("Lock the reference against edits"),
                             this))
{
    setObjectName(QStringLiteral("hostFileOptionsPanel"));
    m_type->setObjectName(QStringLiteral("fileType"));
    m_type->addItems(ThostFileKinds::fileTypes());
    m_nameSpace->setObjectName(QStringLiteral("nameSpace"));
    m_nameSpace->setPlaceholderText(tr("none"));
    m_switch->setObjectName(mode == Mode::Import ? QStringLiteral("group") : QStringLiteral("lock"));
    m_fileLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* form = new QFormLayout(this);
    form->addRow(tr("File:"), m_fileLabel);
    form->addRow(tr("File type:"), m_type);
    form->addRow(tr("Namespace:"), m_nameSpace);
    form->addRow(QString(), m_switch);
}

bool ThostFileOptionsPanel::parseMode(const QString& text, Mode& mode)
{
    if (text.compare(QLatin1String("import"), Qt::CaseInsensitive) == 0) {
        mode = Mode::Import;
        return true;
    }
    if (text.compare(QLatin1String("reference"), Qt::CaseInsensitive) == 0) {
        mode = Mode::Reference;
        return true;
    }
    return false;
}

const char* ThostFileOptionsPanel::fileTypeKey(Mode mode)
{
    return mode == Mode::Import ? "defaultFileImportType" : "defaultFileCreateReferenceType";
}

QString ThostFileOptionsPanel::fileType() const
{
    return m_type->currentText();
}

bool ThostFileOptionsPanel::setFileType(const QString& type)
{
    const int index = m_type->findText(type);
    if (index < 0)
        return false;
    m_type->setCurrentIndex(index);
    return true;
}

void ThostFileOptionsPanel::setFile(const QString& path)
{
    m_file = path;
    m_fileLabel->setText(QFileInfo(path).fileName());
    m_fileLabel->setToolTip(QDir::toNativeSeparators(path));
    const QString type = ThostFileKinds::fileTypeOf(path);
    if (!type.isEmpty())
        setFileType(type);
}

QString ThostFileOptionsPanel::nameSpace() const
{
    return m_nameSpace->text().trimmed();
}

bool ThostFileOptionsPanel::switchOn() const
{
    return m_switch->isChecked();
}

void ThostFileOptionsPanel::load()
{
    Tstring text;
    m_nameSpace->setText(TprefOptionVar::getOptionVarValue(Tstring(nameSpaceKey(m_mode)), text) ? Tstring_toQString(text)
                                                                                             : QString());
    m_switch->setChecked(TprefOptionVar::intValue(Tstring(switchKey(m_mode)), 0) != 0);
    Tstring type;
    if (TprefOptionVar::getOptionVarValue(Tstring(fileTypeKey(m_mode)), type))
        setFileType(Tstring_toQString(type));
    else
        setFileType(ThostCommands::hostDefault(QLatin1String(fileTypeKey(m_mode))));
}

void ThostFileOptionsPanel::save() const
{
    const Tstring category(ThostFileCommands::kCategory);
    TprefOptionVar::setOptionVarValue(Tstring(nameSpaceKey(m_mode)), toT(nameSpace()), category);
    TprefOptionVar::setOptionVarValue(Tstring(switchKey(m_mode)), switchOn() ? 1 : 0, category);
    TprefOptionVar::setOptionVarValue(Tstring(fileTypeKey(m_mode)), toT(fileType()), category);
}
