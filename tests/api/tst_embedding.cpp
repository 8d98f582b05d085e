// The embedding interface as a host links against it: the options record, the layout of the
// callback interfaces and of the browser type, and the factory.
#include "AssetBrowser.h"
#include "ORLOAssetBrowser.h"
#include "TrecordingHost.h"

#include <QLayout>
#include <QMenuBar>
#include <QSplitter>
#include <QtTest>

#include <cstring>

namespace {
// Itanium C++ ABI: a pointer to a virtual member function holds 1 + the byte offset of its
// vtable slot, so the slot number can be read back and compared with the published order.
template <typename Pmf>
long vtableSlot(Pmf pmf)
{
    static_assert(sizeof(Pmf) == 2 * sizeof(long), "unexpected member pointer layout");
    long raw[2];
    std::memcpy(raw, &pmf, sizeof raw);
    if ((raw[0] & 1) == 0)
        return -1;
    return (raw[0] - 1) / long(sizeof(void*));
}

// QWidget's last virtuals are protected; a subclass may name them.
struct WidgetSlots : QWidget
{
    static QList<long> lastVirtuals()
    {
        return {vtableSlot(&WidgetSlots::paintEvent), vtableSlot(&WidgetSlots::initPainter),
                vtableSlot(&WidgetSlots::focusNextPrevChild), vtableSlot(&WidgetSlots::sharedPainter),
                vtableSlot(&WidgetSlots::redirected)};
    }
};

struct Fakes
{
    TrecordingHost host;
    QMenuBar menu;
};
} // namespace

class TstEmbedding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void copyReplacesEveryMember_data();
    void copyReplacesEveryMember();
    void callbackInterfacesKeepTheirSlots();
    void browserOperationsFollowQWidget();
    void factoryKeepsItsOwnCopy();
    void factoryBuildsWithHostMetrics();
};

void TstEmbedding::defaults()
{
    const TassetBrowserOptions o;
    QVERIFY(o.wantTreeViewPanel());
    QVERIFY(o.wantThumbnailViewPanel());
    QVERIFY(o.wantPreviewPanel());
    QVERIFY(!o.imageLoader());
    QVERIFY(!o.popupMenuCreator());
    QVERIFY(!o.projectSidebarManager());
    QVERIFY(!o.dpiScaling());
    QVERIFY(!o.browserMenu());
    QVERIFY(o.preferenceDir().empty());
    QVERIFY(o.appDir().empty());
}

void TstEmbedding::copyReplacesEveryMember_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("pointers set in source") << "pointers";
    QTest::newRow("null pointers in source") << "null";
    QTest::newRow("onto itself") << "itself";
}

void TstEmbedding::copyReplacesEveryMember()
{
    QFETCH(QString, source);
    const bool pointers = source != QLatin1String("null");
    const std::string prefs = source == QLatin1String("itself") ? std::string(300, 'p') : "/prefs/\xc3\xa9t\xc3\xa9";
    Fakes a;
    Fakes b;
    TassetBrowserOptions from = pointers ? a.host.options() : TassetBrowserOptions();
    if (pointers)
        from.setBrowserMenu(&a.menu);
    from.setWantTreeViewPanel(false);
    from.setWantThumbnailViewPanel(false);
    from.setWantPreviewPanel(true);
    from.setPreferenceDir(prefs);
    from.setAppDir("");

    TassetBrowserOptions other = b.host.options();
    other.setBrowserMenu(&b.menu);
    other.setWantPreviewPanel(false);
    other.setAppDir("/old/app");
    other.setPreferenceDir("/old/prefs");
    TassetBrowserOptions& target = source == QLatin1String("itself") ? from : other;
    target.copy(from);

    QCOMPARE(target.wantTreeViewPanel(), false);
    QCOMPARE(target.wantThumbnailViewPanel(), false);
    QCOMPARE(target.wantPreviewPanel(), true);
    QCOMPARE(target.imageLoader(), pointers ? static_cast<TabImageLoader*>(&a.host) : nullptr);
    QCOMPARE(target.popupMenuCreator(), pointers ? static_cast<TabPopupMenuCreator*>(&a.host) : nullptr);
    QCOMPARE(target.projectSidebarManager(), pointers ? static_cast<TabProjectSidebarManager*>(&a.host) : nullptr);
    QCOMPARE(target.dpiScaling(), pointers ? static_cast<TabDpiScaling*>(&a.host) : nullptr);
    QCOMPARE(target.browserMenu(), pointers ? &a.menu : nullptr);
    QCOMPARE(target.preferenceDir(), prefs);
    QCOMPARE(target.appDir(), std::string());
}

void TstEmbedding::callbackInterfacesKeepTheirSlots()
{
    // Slots 0 and 1 hold the two destructor entries; the operations follow, in order.
    QCOMPARE(vtableSlot(&TabDpiScaling::scaledSize), 2L);
    QCOMPARE(vtableSlot(&TabDpiScaling::metric), 4L);
    QCOMPARE(vtableSlot(&TabDpiScaling::scaledFont), 9L);
    QCOMPARE(vtableSlot(&TabImageLoader::loadImage), 2L);
    QCOMPARE(vtableSlot(&TabImageLoader::canLoadImage), 3L);
    QCOMPARE(vtableSlot(&TabPopupMenuCreator::fileActions), 2L);
    QCOMPARE(vtableSlot(&TabProjectSidebarManager::projects), 2L);
    QCOMPARE(vtableSlot(&TabProjectSidebarManager::setCurrentProject), 7L);
}

void TstEmbedding::browserOperationsFollowQWidget()
{
    const long first = vtableSlot(&ORLOAssetBrowser::initializeBrowser);
    const QList<long> slots = {first,
                               vtableSlot(&ORLOAssetBrowser::setBrowserContext),
                               vtableSlot(&ORLOAssetBrowser::saveBrowserState),
                               vtableSlot(&ORLOAssetBrowser::showLibraryPath),
                               vtableSlot(&ORLOAssetBrowser::addLibraryPath),
                               vtableSlot(&ORLOAssetBrowser::removeLibraryPath),
                               vtableSlot(&ORLOAssetBrowser::refreshLibrary)};
    for (int i = 0; i < slots.size(); ++i)
        QVERIFY2(slots.at(i) == first + i, qPrintable(QStringLiteral("operation %1 out of order").arg(i + 1)));
    // After every QWidget virtual, so a host built against QWidget's layout stays compatible.
    for (long widgetSlot : WidgetSlots::lastVirtuals())
        QVERIFY2(widgetSlot >= 0 && first > widgetSlot, qPrintable(QString::number(widgetSlot)));
}

void TstEmbedding::factoryKeepsItsOwnCopy()
{
    TfreshHostState state;
    Fakes f;
    auto* options = new TassetBrowserOptions(f.host.options());
    options->setWantPreviewPanel(false);
    options->setAppDir("/app");
    std::unique_ptr<ORLOAssetBrowser> browser(CreateORLOAssetBrowser(*options, nullptr));
    QVERIFY(browser);
    options->setWantPreviewPanel(true);
    options->setAppDir("/changed");
    options->setDpiScaling(nullptr);
    delete options;

    auto* concrete = qobject_cast<AssetBrowser*>(browser.get());
    QVERIFY(concrete);
    QVERIFY(!concrete->options()->wantPreviewPanel());
    QCOMPARE(concrete->options()->appDir(), std::string("/app"));
    QCOMPARE(concrete->options()->dpiScaling(), static_cast<TabDpiScaling*>(&f.host));
}

void TstEmbedding::factoryBuildsWithHostMetrics()
{
    TfreshHostState state;
    Fakes f;
    f.host.scale = 2.0;
    f.host.metrics = {{3, 1}, {4, 2}, {6, 3}, {7, 5}};
    std::unique_ptr<ORLOAssetBrowser> browser(CreateORLOAssetBrowser(f.host.options(), nullptr));
    QVERIFY(browser);
    QCOMPARE(browser->layout()->contentsMargins(), QMargins(4, 6, 4, 2));
    QCOMPARE(browser->layout()->spacing(), 10);
    auto* splitter = browser->findChild<QSplitter*>(QStringLiteral("mainSplitter"));
    QVERIFY(splitter);
    QCOMPARE(splitter->contentsMargins(), QMargins(0, 2, 0, 0));
}

QTEST_MAIN(TstEmbedding)
#include "tst_embedding.moc"
