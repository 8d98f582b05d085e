// A host that knows the browser only through its installed headers and package.
#include <ORLOAssetBrowser.h>

#include <QApplication>

class Scaling : public TabDpiScaling
{
public:
    QSize scaledSize(const QSize& size) const override { return size; }
    int scaledLength(int length) const override { return length; }
    int metric(int) const override { return 4; }
    qreal scaleFactor() const override { return 1.0; }
    QPixmap pixmap(const QString&) const override { return QPixmap(); }
    QIcon icon(const QString&) const override { return QIcon(); }
    QPixmap pixmapAtSize(const QString&, const QSize&) const override { return QPixmap(); }
    QFont scaledFont(const QFont& font) const override { return font; }
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    Scaling scaling;
    TassetBrowserOptions options;
    options.setDpiScaling(&scaling);
    options.setWantPreviewPanel(false);
    ORLOAssetBrowser* browser = CreateORLOAssetBrowser(options, nullptr);
    if (!browser)
        return 1;
    browser->setBrowserContext(Tstring("consumer"), Tstring(), Tstring());
    browser->saveBrowserState();
    delete browser;
    return 0;
}
