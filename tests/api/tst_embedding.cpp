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
    void settersReplaceOneMember();
    void copyReplacesEveryMember_data();
    void copyReplacesEveryMember();
    void copyOntoItselfChangesNothing();
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

void TstEmbedding::settersReplaceOneMember()
{
    Fakes f;
    TassetBrowserOptions o;
    o.setWantPreviewPanel(false);
    QVERIFY(!o.wantPreviewPanel());
    QVERIFY(o.wantTreeViewPanel() && o.wantThumbnailViewPanel());
    o.setPopupMenuCreator(&f.host);
    QCOMPARE(o.popupMenuCreator(), static_cast<TabPopupMenuCreator*>(&f.host));
    QVERIFY(!o.imageLoader() && !o.dpiScaling() && !o.projectSidebarManager());
    o.setAppDir("/opt/app");
    QCOMPARE(o.appDir(), std::string("/opt/app"));
    QVERIFY(o.preferenceDir().empty());
    // The getters hand out copies: changing one never reaches the record.
    std::string dir = o.appDir();
    dir += "/changed";
    QCOMPARE(o.appDir(), std::string("/opt/app"));
}

void TstEmbedding::copyReplacesEveryMember_data()
{
    QTest::addColumn<bool>("sourceHasPointers");
    QTest::newRow("pointers set in source") << true;
    QTest::newRow("null pointers in source") << false;
}

void TstEmbedding::copyReplacesEveryMember()
{
    QFETCH(bool, sourceHasPointers);
    Fakes a;
    Fakes b;
    TassetBrowserOptions source = sourceHasPointers ? a.host.options() : TassetBrowserOptions();
    if (sourceHasPointers)
        source.setBrowserMenu(&a.menu);
    source.setWantTreeViewPanel(false);
    source.setWantThumbnailViewPanel(false);
    source.setWantPreviewPanel(true);
    source.setPreferenceDir("/prefs/\xc3\xa9t\xc3\xa9");
    source.setAppDir("");

    TassetBrowserOptions target = b.host.options();
    target.setBrowserMenu(&b.menu);
    target.setWantPreviewPanel(false);
    target.setAppDir("/old/app");
    target.setPreferenceDir("/old/prefs");
    target.copy(source);

    QCOMPARE(target.wantTreeViewPanel(), false);
    QCOMPARE(target.wantThumbnailViewPanel(), false);
    QCOMPARE(target.wantPreviewPanel(), true);
    QCOMPARE(target.imageLoader(), source.imageLoader());
    QCOMPARE(target.popupMenuCreator(), source.popupMenuCreator());
    QCOMPARE(target.projectSidebarManager(), source.projectSidebarManager());
    QCOMPARE(target.dpiScaling(), source.dpiScaling());
    QCOMPARE(target.browserMenu(), source.browserMenu());
    QCOMPARE(target.preferenceDir(), source.preferenceDir());
    QCOMPARE(target.appDir(), std::string());
}

void TstEmbedding::copyOntoItselfChangesNothing()
{
    Fakes f;
    TassetBrowserOptions o = f.host.options();
    o.setBrowserMenu(&f.menu);
    o.setWantThumbnailViewPanel(false);
    o.setPreferenceDir(std::string(300, 'p'));
    o.setAppDir("/app");
    o.copy(o);
    QCOMPARE(o.dpiScaling(), static_cast<TabDpiScaling*>(&f.host));
    QCOMPARE(o.imageLoader(), static_cast<TabImageLoader*>(&f.host));
    QCOMPARE(o.browserMenu(), &f.menu);
    QVERIFY(!o.wantThumbnailViewPanel());
    QCOMPARE(o.preferenceDir(), std::string(300, 'p'));
    QCOMPARE(o.appDir(), std::string("/app"));
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
