#include "FilePreview.h"
#include "MetaDataViewer.h"
#include "PreviewLoader.h"
#include "PreviewPane.h"
#include "TpoolBlocker.h"
#include "TthumbnailService.h"
#include "TbrowserStrings.h"
#include "TtestImageFiles.h"
#include "Tint32Array.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace {

// Every pixel differs from its neighbours, so a picture scaled twice never passes for one
// scaled once from the original.
QImage patterned(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 37 + y * 11) % 256, (x * 5 + y * 53) % 256, (x ^ y) % 256));
    return image;
}

QPixmap solid(const QSize& size)
{
    QPixmap picture(size);
    picture.fill(Qt::magenta);
    return picture;
}

Tint32Array intArray(const QList<int>& values)
{
    Tint32Array array;
    for (int value : values)
        array.addLast(value);
    return array;
}

QLabel* pictureLabel(const FilePreview& preview)
{
    return preview.findChild<QLabel*>(QStringLiteral("filePreviewLabel"));
}

} // namespace

class TestPreviewPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void loaderEmissions_data();
    void loaderEmissions();
    void resizingRescalesFromTheFullPicture_data();
    void resizingRescalesFromTheFullPicture();
    void requestFillsBothTabs();
    void latestSelectionWins();
    void pictureIsDecodedAtThePanelSize();
    void renderFormatsArePreviewed();
    void panelHiding_data();
    void panelHiding();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TrecordingHost> m_host;
    TassetBrowserOptions m_options;
};

void TestPreviewPane::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_host = std::make_unique<TrecordingHost>();
    m_options = m_host->options();
}

void TestPreviewPane::loaderEmissions_data()
{
    QTest::addColumn<QString>("kind"); // folder, missing, png, jpg or text
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("withHost");
    QTest::addColumn<bool>("hostAnswers");
    QTest::addColumn<int>("emissions");
    QTest::addColumn<QSize>("pictureSize"); // invalid: a null picture
    const QSize none;
    QTest::newRow("folder") << "folder" << "rig.orl" << true << true << 0 << none;
    QTest::newRow("missing path") << "missing" << "gone.png" << true << false << 0 << none;
    QTest::newRow("upper-case suffix") << "png" << "WOOD.PNG" << true << false << 1 << QSize(40, 30);
    QTest::newRow("mixed-case jpeg without host") << "jpg" << "sky.JpG" << false << false << 1 << QSize(24, 12);
    QTest::newRow("unsupported, no host loader") << "text" << "rig.orl" << false << false << 1 << none;
    QTest::newRow("unsupported, host declines") << "text" << "rig.orl" << true << false << 1 << none;
    QTest::newRow("unsupported, host answers") << "text" << "rig.orl" << true << true << 1 << QSize(64, 48);
    QTest::newRow("host answers before Qt reads") << "png" << "wood.png" << true << true << 1 << QSize(64, 48);
    QTest::newRow("supported suffix, unreadable") << "text" << "broken.png" << true << false << 1 << none;
}

void TestPreviewPane::loaderEmissions()
{
    QFETCH(QString, kind);
    QFETCH(QString, fileName);
    QFETCH(bool, withHost);
    QFETCH(bool, hostAnswers);
    QFETCH(int, emissions);
    QFETCH(QSize, pictureSize);
    const char* row = QTest::currentDataTag();
    const QString path = m_dir->filePath(fileName);
    if (kind == QLatin1String("folder"))
        QVERIFY2(QDir().mkdir(path), row);
    else if (kind == QLatin1String("png"))
        QVERIFY2(patterned(QSize(40, 30)).save(path, "PNG"), row);
    else if (kind == QLatin1String("jpg"))
        QVERIFY2(patterned(QSize(24, 12)).save(path, "JPEG"), row);
    else if (kind == QLatin1String("text"))
        QVERIFY2(TtestFiles::writeBytes(path, "not a picture\n"), row);
    if (hostAnswers)
        m_host->images.insert(path, solid(QSize(64, 48)));

    PreviewLoader loader(withHost ? m_host.get() : nullptr);
    QSignalSpy spy(&loader, &PreviewLoader::newImagePreviewToDisplay);
    loader.loadPreview(path);
    QTRY_VERIFY2(!loader.isLoading(), row);
    QVERIFY2(spy.count() == emissions, qPrintable(QStringLiteral("%1: %2 emissions").arg(row).arg(spy.count())));
    // The host is asked for the picture only after it said it has one.
    QVERIFY2(m_host->calls.contains(QStringLiteral("loadImage ") + path) == (withHost && hostAnswers && emissions > 0),
             row);
    if (emissions == 0)
        return;
    const QPixmap picture = spy.at(0).at(0).value<QPixmap>();
    QVERIFY2(picture.isNull() ? !pictureSize.isValid() : picture.size() == pictureSize,
             qPrintable(QStringLiteral("%1: %2x%3").arg(row).arg(picture.width()).arg(picture.height())));
}

void TestPreviewPane::resizingRescalesFromTheFullPicture_data()
{
    QTest::addColumn<QSize>("pictureSize");
    QTest::addColumn<QList<QSize>>("widgetSizes"); // applied in turn
    QTest::addColumn<QSize>("shownSize");
    QTest::newRow("shrunk and grown back to full size")
        << QSize(800, 400) << QList<QSize>{QSize(100, 100), QSize(800, 400)} << QSize(800, 400);
    QTest::newRow("tall picture, wide panel")
        << QSize(120, 360) << QList<QSize>{QSize(100, 100), QSize(600, 300)} << QSize(100, 300);
    QTest::newRow("grown past full size")
        << QSize(64, 32) << QList<QSize>{QSize(100, 100), QSize(256, 256)} << QSize(256, 128);
}

void TestPreviewPane::resizingRescalesFromTheFullPicture()
{
    QFETCH(QSize, pictureSize);
    QFETCH(QList<QSize>, widgetSizes);
    QFETCH(QSize, shownSize);
    const char* row = QTest::currentDataTag();
    // A child widget, so each resize reaches it at once rather than through the window system.
    QWidget window;
    window.resize(1000, 1000);
    auto* preview = new FilePreview(nullptr, &window);
    preview->resize(pictureSize.expandedTo(QSize(100, 100)));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    const QImage full = patterned(pictureSize);
    preview->loadNewPreviewImage(QPixmap::fromImage(full));
    for (const QSize& size : widgetSizes)
        preview->resize(size);
    const QImage shown = pictureLabel(*preview)->pixmap().toImage().convertToFormat(QImage::Format_RGB32);
    QVERIFY2(shown.size() == shownSize,
             qPrintable(QStringLiteral("%1: %2x%3").arg(row).arg(shown.width()).arg(shown.height())));
    QVERIFY2(shown
                 == full.scaled(shownSize, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                        .convertToFormat(QImage::Format_RGB32),
             qPrintable(QStringLiteral("%1: not scaled from the full picture").arg(row)));

    // A null picture drops the stored one: resizing must not bring it back.
    preview->loadNewPreviewImage(QPixmap());
    preview->resize(300, 300);
    QVERIFY2(pictureLabel(*preview)->pixmap().isNull(), row);
}

void TestPreviewPane::requestFillsBothTabs()
{
    const QString picture = m_dir->filePath(QStringLiteral("wood.png"));
    QVERIFY(patterned(QSize(40, 30)).save(picture, "PNG"));
    const QString notes = m_dir->filePath(QStringLiteral("notes.xyz"));
    QVERIFY(TtestFiles::writeBytes(notes, "notes"));
    QWidget window;
    auto* pane = new PreviewPane(&m_options, &window);
    window.resize(400, 700);
    pane->resize(400, 700);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    MetaDataViewer* viewer = pane->metaDataViewer();
    FilePreview* preview = pane->filePreview();

    Q_EMIT pane->newPreviewRequested(picture);
    QTRY_COMPARE(preview->fullPicture().size(), QSize(40, 30));
    QTRY_COMPARE(viewer->valueText(MetaDataViewer::NameRow), QStringLiteral("wood.png"));
    // A folder clears the metadata but leaves the last picture on screen.
    Q_EMIT pane->newPreviewRequested(m_dir->path());
    QTRY_VERIFY(!pane->previewLoader()->isLoading());
    QCOMPARE(preview->fullPicture().size(), QSize(40, 30));
    QTRY_VERIFY(viewer->valueText(MetaDataViewer::NameRow).isEmpty());

    Q_EMIT pane->newPreviewRequested(notes);
    QTRY_VERIFY(preview->fullPicture().isNull());
    QCOMPARE(pictureLabel(*preview)->text(), rContentBrowserFilePreviewNoPreviewAvail.asQString());
    QTRY_COMPARE(viewer->valueText(MetaDataViewer::NameRow), QStringLiteral("notes.xyz"));
}

void TestPreviewPane::latestSelectionWins()
{
    const QString first = m_dir->filePath(QStringLiteral("first.png"));
    const QString second = m_dir->filePath(QStringLiteral("second.png"));
    QVERIFY(patterned(QSize(400, 300)).save(first, "PNG"));
    QVERIFY(patterned(QSize(20, 10)).save(second, "PNG"));
    TthumbnailService service;
    PreviewLoader loader(nullptr, nullptr, &service);
    QSignalSpy spy(&loader, &PreviewLoader::newImagePreviewToDisplay);
    {
        TpoolBlocker blocker(service);
        loader.loadPreview(first);
        loader.loadPreview(second);
    }
    QTRY_VERIFY(!loader.isLoading());
    QTRY_COMPARE(service.activeWorkers(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<QPixmap>().size(), QSize(20, 10));
}

void TestPreviewPane::pictureIsDecodedAtThePanelSize()
{
    const QString path = m_dir->filePath(QStringLiteral("wide.png"));
    QVERIFY(patterned(QSize(2000, 1000)).save(path, "PNG"));
    PreviewLoader loader(nullptr);
    loader.setTargetSize(QSize(200, 200));
    QSignalSpy spy(&loader, &PreviewLoader::newImagePreviewToDisplay);
    loader.loadPreview(path);
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<QPixmap>().size(), QSize(200, 100));
    // A larger panel asks for the picture again, at its own size.
    loader.setTargetSize(QSize(800, 800));
    QTRY_COMPARE(spy.count(), 2);
    QCOMPARE(spy.at(1).at(0).value<QPixmap>().size(), QSize(800, 400));
    // A smaller one rescales what is there.
    loader.setTargetSize(QSize(300, 300));
    QVERIFY(!loader.isLoading());
}

void TestPreviewPane::renderFormatsArePreviewed()
{
#ifndef ORLO_HAVE_OPENIMAGEIO
    QSKIP("built without OpenImageIO");
#else
    // An upper-case suffix too: the suffix is compared in lower case.
    const QString path = m_dir->filePath(QStringLiteral("render.EXR"));
    QVERIFY(TtestImageFiles::write(path, 1200, 600, 4, OIIO::TypeHalf,
                                   TtestImageFiles::filled(1200, 600, {2.0f, 0.0f, 0.0f, 1.0f})));
    PreviewLoader loader(nullptr);
    loader.setTargetSize(QSize(300, 300));
    QSignalSpy spy(&loader, &PreviewLoader::newImagePreviewToDisplay);
    loader.loadPreview(path);
    QTRY_COMPARE(spy.count(), 1);
    const QImage shown = spy.at(0).at(0).value<QPixmap>().toImage();
    QCOMPARE(shown.size(), QSize(300, 150));
    QCOMPARE(shown.pixelColor(150, 75), QColor(255, 0, 0));
#endif
}

void TestPreviewPane::panelHiding_data()
{
    QTest::addColumn<QList<int>>("stored"); // applied first, from both tabs hidden; empty: not applied
    QTest::addColumn<QStringList>("toggles"); // "P" preview or "M" metadata, then 1 show or 0 hide
    QTest::addColumn<bool>("previewShown");
    QTest::addColumn<bool>("metadataShown");
    QTest::newRow("preview toggled off") << QList<int>() << QStringList{"P0"} << false << true;
    QTest::newRow("both toggled off") << QList<int>() << QStringList{"P0", "M0"} << false << false;
    QTest::newRow("both off, metadata back") << QList<int>() << QStringList{"P0", "M0", "M1"} << false << true;
    QTest::newRow("both off, preview back") << QList<int>() << QStringList{"M0", "P0", "P1"} << true << false;
    QTest::newRow("stored preview only") << QList<int>{1, 1, 1, 1, 1, 1, 0} << QStringList() << true << false;
    QTest::newRow("stored metadata only") << QList<int>{0, 0, 0, 0, 0, 0, 1} << QStringList() << false << true;
    QTest::newRow("stored both hidden") << QList<int>{1, 1, 1, 1, 1, 0, 0} << QStringList() << false << false;
    QTest::newRow("stored non-zero is shown") << QList<int>{1, 1, 1, 1, 1, 2, -1} << QStringList() << true << true;
    QTest::newRow("stored without the metadata") << QList<int>{1, 1, 1, 1, 1, 1} << QStringList() << false << false;
}

void TestPreviewPane::panelHiding()
{
    QFETCH(QList<int>, stored);
    QFETCH(QStringList, toggles);
    QFETCH(bool, previewShown);
    QFETCH(bool, metadataShown);
    const char* row = QTest::currentDataTag();
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* pane = new PreviewPane(&m_options, &window);
    layout->addWidget(pane);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    if (!stored.isEmpty()) {
        // From both tabs hidden, so that a stored "shown" has to bring them back.
        pane->onTogglePreviewTab(false);
        pane->onToggleMetadataTab(false);
        pane->applyPanelsStatus(intArray(stored));
    }
    for (const QString& toggle : toggles) {
        const bool visible = toggle.endsWith(QLatin1Char('1'));
        if (toggle.startsWith(QLatin1Char('P')))
            pane->onTogglePreviewTab(visible);
        else
            pane->onToggleMetadataTab(visible);
    }
    QVERIFY2(pane->previewTabWidget()->isVisibleTo(pane) == previewShown, row);
    QVERIFY2(pane->metadataTabWidget()->isVisibleTo(pane) == metadataShown, row);
    QVERIFY2(pane->isVisible() == (previewShown || metadataShown), row);
    // What is stored again is the normalised state, after the rest of the array.
    Tint32Array status = intArray({1, 0, 1, 0, 1});
    pane->appendPanelsStatus(status);
    QVERIFY2(status == intArray({1, 0, 1, 0, 1, previewShown, metadataShown}), row);
}

QTEST_MAIN(TestPreviewPane)
#include "tst_previewpane.moc"
