#include "TpathSelector.h"

#include "TbrowserStrings.h"
#include "TuiScale.h"

#include <QDir>
#include <QFileInfo>

TpathSelector::TpathSelector(const QString& startFolder, const TassetBrowserOptions* options, QWidget* parent)
    : QFileDialog(parent)
{
    setObjectName(QStringLiteral("favoritesPathSelector"));
    setWindowTitle(kContentBrowserChooseLocation.asQString());
    // The platform's own dialog cannot be embedded in the host's look, nor driven by its tests.
    setOption(QFileDialog::DontUseNativeDialog);
    setFileMode(QFileDialog::Directory);
    setViewMode(QFileDialog::List);
    setAcceptMode(QFileDialog::AcceptOpen);
    resize(TuiScale::size(options, 560, 380));
    TuiScale::scaleWindowFont(options, this);
    if (!startFolder.isEmpty()) {
        const QFileInfo start(startFolder);
        setDirectory(start.isDir() ? start.absoluteFilePath() : start.absolutePath());
    }
    connect(this, &QFileDialog::fileSelected, this,
            [this](const QString& path) { Q_EMIT pathChosen(QDir::fromNativeSeparators(path)); });
}

TpathSelector::~TpathSelector() = default;
