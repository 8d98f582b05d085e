#include "TcontentStatusLine.h"

#include "TbrowserStrings.h"
#include "Tstring.h"
#include "TuiScale.h"

#include <QLocale>

TcontentStatusLine::TcontentStatusLine(const TassetBrowserOptions* options, QWidget* parent)
    : QLabel(parent)
{
    setObjectName(QStringLiteral("contentStatusLine"));
    const int side = TuiScale::length(options, 4);
    setContentsMargins(side, 0, side, TuiScale::length(options, 2));
    setTextFormat(Qt::PlainText);
    // The count changes as a folder loads; the line must never push the panes about.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void TcontentStatusLine::showCounts(int shown, int selected, int selectedFiles, qint64 bytes)
{
    const QString items = shown == 1 ? kContentBrowserStatusOneItem.asQString()
                                     : Tstring_toQString(kContentBrowserStatusItemCount.format({shown}));
    QString text = items;
    if (selected > 0 && selectedFiles > 0) {
        const QString size = QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
        text = Tstring_toQString(kContentBrowserStatusSelectedSize.format({items, selected, size}));
    } else if (selected > 0) {
        text = Tstring_toQString(kContentBrowserStatusSelected.format({items, selected}));
    }
    setText(text);
}
