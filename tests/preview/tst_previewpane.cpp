#include "FilePreview.h"
#include "MetaDataViewer.h"
#include "PreviewLoader.h"
#include "PreviewPane.h"
#include "TbasicWidgetWithToolbar.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "Tint32Array.h"
#include "TrecordingHost.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QSignalSpy>
#include <QSplitter>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

#include <cmath>
#include <memory>

namespace {

// Every pixel differs from its neighbours, so a picture scaled down and up again can
// never pass for one scaled once from the original.
QImage patterned(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 37 + y * 11) % 256, (x * 5 + y * 53) % 256, (x ^ y) % 256));
    return image;
}

QPixmap solid(const QSize& size, Qt::GlobalColor color)
{
    QPixmap picture(size);
    picture.fill(color);
    return picture;
}

QString writeImage(const QString& path, const QSize& size, const char* format)
{
    return patterned(size).save(path, format) ? path : QString();
}

QString writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? path : QString();
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

QString describe(const Tint32Array& array)
{
    QStringList parts;
    for (int value : array.items())
        parts << QString::number(value);
    return QLatin1Char('[') + parts.join(QLatin1Char(',')) + QLatin1Char(']');
}

} // namespace

class TestPreviewPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void loaderEmissions_data();
    void loaderEmissions();
    void pictureOrNoPreviewText();
    void resizingRescalesFromTheFullPicture_data();
    void resizingRescalesFromTheFullPicture();
    void sizesFollowTheHostScale_data();
    void sizesFollowTheHostScale();
    void metadataAbovePreviewWithoutToolbars();
    void requestFillsBothTabs();
    void togglesHideThePanel_data();
    void togglesHideThePanel();
    void panelsStatus_data();
    void panelsStatus();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TrecordingHost> m_host;
    TassetBrowserOptions m_options;
};

void TestPreviewPane::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_host = std::make_unique<TrecordingHost>();
    m_options = m_host->options();
}

void TestPreviewPane::cleanup()
{
    m_dir.reset();
    m_host.reset();
}

void TestPreviewPane::loaderEmissions_data()
{
    QTest::addColumn<QString>("kind");     // what the path names: folder, missing, png, jpg, text
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("withHost");    // whether the loader has the host's image loader
    QTest::addColumn<bool>("hostAnswers"); // whether the host has a picture for the path
    QTest::addColumn<int>("emissions");
    QTest::addColumn<QSize>("pictureSize"); // invalid: a null picture

    const QSize none;
    QTest::newRow("folder") << "folder" << "textures" << true << false << 0 << none;
    QTest::newRow("folder the host would answer for") << "folder" << "rig.orl" << true << true << 0 << none;
    QTest::newRow("missing path") << "missing" << "gone.png" << true << false << 0 << none;
    QTest::newRow("png") << "png" << "wood.png" << true << false << 1 << QSize(40, 30);
    QTest::newRow("upper-case suffix") << "png" << "WOOD.PNG" << true << false << 1 << QSize(40, 30);
    QTest::newRow("mixed-case jpeg without host") << "jpg" << "sky.JpG" << false << false << 1 << QSize(24, 12);
    QTest::newRow("unsupported suffix, no host loader") << "text" << "rig.orl" << false << false << 1 << none;
    QTest::newRow("unsupported suffix, host declines") << "text" << "rig.orl" << true << false << 1 << none;
    QTest::newRow("unsupported suffix, host answers") << "text" << "rig.orl" << true << true << 1 << QSize(64, 48);
    QTest::newRow("host answers before Qt reads") << "png" << "wood.png" << true << true << 1 << QSize(64, 48);
    QTest::newRow("supported suffix, unreadable") << "text" << "broken.png" << true << false << 1 << none;
    QTest::newRow("no suffix") << "text" << "README" << true << false << 1 << none;
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
        QVERIFY2(!writeImage(path, QSize(40, 30), "PNG").isEmpty(), row);
    else if (kind == QLatin1String("jpg"))
        QVERIFY2(!writeImage(path, QSize(24, 12), "JPEG").isEmpty(), row);
    else if (kind == QLatin1String("text"))
        QVERIFY2(!writeBytes(path, "not a picture\n").isEmpty(), row);
    if (hostAnswers)
        m_host->images.insert(path, solid(QSize(64, 48), Qt::magenta));

    PreviewLoader loader(withHost ? m_host.get() : nullptr);
    QSignalSpy spy(&loader, &PreviewLoader::newImagePreviewToDisplay);
    loader.loadPreview(path);

    QVERIFY2(spy.count() == emissions, qPrintable(QStringLiteral("%1: %2 emissions").arg(row).arg(spy.count())));
    const bool hostAsked = m_host->calls.contains(QStringLiteral("loadImage ") + path);
    QVERIFY2(hostAsked == (withHost && emissions > 0), row);
    if (emissions == 0)
        return;
    const QPixmap picture = spy.at(0).at(0).value<QPixmap>();
    QVERIFY2(picture.isNull() == !pictureSize.isValid(), row);
    if (pictureSize.isValid())
        QVERIFY2(picture.size() == pictureSize, qPrintable(QStringLiteral("%1: %2x%3").arg(row).arg(
                                                    picture.width()).arg(picture.height())));
}

void TestPreviewPane::pictureOrNoPreviewText()
{
    FilePreview preview(nullptr, nullptr);
    preview.resize(200, 200);
    QLabel* label = pictureLabel(preview);
    QVERIFY(label);
    const QString noPreview = rContentBrowserFilePreviewNoPreviewAvail.asQString();
    QCOMPARE(label->text(), noPreview);

    preview.loadNewPreviewImage(solid(QSize(50, 50), Qt::red));
    QVERIFY(label->text().isEmpty());
    QCOMPARE(label->pixmap().size(), QSize(200, 200));
    QCOMPARE(preview.fullPicture().size(), QSize(50, 50));
    QCOMPARE(label->alignment(), Qt::AlignCenter);

    preview.loadNewPreviewImage(QPixmap());
    QCOMPARE(label->text(), noPreview);
    QVERIFY(label->pixmap().isNull());
    QVERIFY(preview.fullPicture().isNull());

    // A null picture drops the stored one: resizing must not bring the old picture back.
    preview.resize(300, 300);
    QCOMPARE(label->text(), noPreview);
    QVERIFY(label->pixmap().isNull());
}

void TestPreviewPane::resizingRescalesFromTheFullPicture_data()
{
    QTest::addColumn<QSize>("pictureSize");
    QTest::addColumn<QList<QSize>>("widgetSizes"); // applied in turn
    QTest::addColumn<QSize>("shownSize");          // of the picture after the last resize

    QTest::newRow("shrunk and grown back to full size")
        << QSize(800, 400) << QList<QSize>{QSize(100, 100), QSize(800, 400)} << QSize(800, 400);
    QTest::newRow("wide picture, tall panel") << QSize(800, 400) << QList<QSize>{QSize(300, 400)} << QSize(300, 150);
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

    QCOMPARE(preview->size(), widgetSizes.last());
    const QImage shown = pictureLabel(*preview)->pixmap().toImage().convertToFormat(QImage::Format_RGB32);
    QVERIFY2(shown.size() == shownSize,
             qPrintable(QStringLiteral("%1: %2x%3").arg(row).arg(shown.width()).arg(shown.height())));
    const QImage expected =
        full.scaled(shownSize, Qt::KeepAspectRatio, Qt::FastTransformation).convertToFormat(QImage::Format_RGB32);
    QVERIFY2(shown == expected, qPrintable(QStringLiteral("%1: not scaled from the full picture").arg(row)));
}

void TestPreviewPane::sizesFollowTheHostScale_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::newRow("100 per cent") << 1.0;
    QTest::newRow("150 per cent") << 1.5;
    QTest::newRow("200 per cent") << 2.0;
}

void TestPreviewPane::sizesFollowTheHostScale()
{
    QFETCH(qreal, scale);
    const char* row = QTest::currentDataTag();
    m_host->scale = scale;
    m_host->metrics.insert(2, 3);
    m_host->metrics.insert(5, 4);

    QWidget window;
    auto* pane = new PreviewPane(&m_options, &window);
    const auto scaled = [scale](int pixels) { return int(std::lround(pixels * scale)); };

    QVERIFY2(pane->sizeHint() == QSize(scaled(300), scaled(500)), row);
    QVERIFY2(pane->filePreview()->minimumSize() == QSize(scaled(100), scaled(100)), row);
    QVERIFY2(pane->layout()->contentsMargins() == QMargins(scaled(3), 0, 0, 0), row);
    QVERIFY2(pane->layout()->spacing() == scaled(4), row);
}

void TestPreviewPane::metadataAbovePreviewWithoutToolbars()
{
    QWidget window;
    PreviewPane* pane = new PreviewPane(&m_options, &window);
    auto* splitter = pane->findChild<QSplitter*>();
    QVERIFY(splitter);
    QCOMPARE(splitter->orientation(), Qt::Vertical);
    QCOMPARE(splitter->count(), 2);
    QCOMPARE(splitter->widget(0), pane->metadataTabWidget());
    QCOMPARE(splitter->widget(1), pane->previewTabWidget());

    struct Tab
    {
        QTabWidget* tabs;
        QWidget* content;
        QString label;
    };
    const Tab tabs[] = {
        {pane->metadataTabWidget(), pane->metaDataViewer(), rContentBrowserTabMetadata.asQString()},
        {pane->previewTabWidget(), pane->filePreview(), rContentBrowserTabPreview.asQString()},
    };
    for (const Tab& tab : tabs) {
        QCOMPARE(tab.tabs->count(), 1);
        QCOMPARE(tab.tabs->tabText(0), tab.label);
        auto* frame = qobject_cast<TbasicWidgetWithToolbar*>(tab.tabs->widget(0));
        QVERIFY2(frame, qPrintable(tab.label));
        QCOMPARE(frame->contentWidget(), tab.content);
        QVERIFY2(frame->toolbar()->isHidden(), qPrintable(tab.label));
    }
}

void TestPreviewPane::requestFillsBothTabs()
{
    const QString picture = writeImage(m_dir->filePath(QStringLiteral("wood.png")), QSize(40, 30), "PNG");
    const QString scene = writeBytes(m_dir->filePath(QStringLiteral("rig.orl")), "scene");
    const QString notes = writeBytes(m_dir->filePath(QStringLiteral("notes.xyz")), "notes");
    QVERIFY(!picture.isEmpty() && !scene.isEmpty() && !notes.isEmpty());
    m_host->images.insert(scene, solid(QSize(64, 48), Qt::magenta));

    QWidget window;
    window.resize(400, 700);
    auto* layout = new QVBoxLayout(&window);
    auto* pane = new PreviewPane(&m_options, &window);
    layout->addWidget(pane);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    MetaDataViewer* viewer = pane->metaDataViewer();
    FilePreview* preview = pane->filePreview();
    QLabel* label = pictureLabel(*preview);
    const QString noPreview = rContentBrowserFilePreviewNoPreviewAvail.asQString();

    Q_EMIT pane->newPreviewRequested(picture);
    QCOMPARE(preview->fullPicture().size(), QSize(40, 30));
    QVERIFY(!label->pixmap().isNull());
    QCOMPARE(viewer->valueText(MetaDataViewer::NameRow), QStringLiteral("wood.png"));

    // A folder clears the metadata but leaves the last picture on screen.
    Q_EMIT pane->newPreviewRequested(m_dir->path());
    QCOMPARE(preview->fullPicture().size(), QSize(40, 30));
    QVERIFY(viewer->valueText(MetaDataViewer::NameRow).isEmpty());

    Q_EMIT pane->newPreviewRequested(scene);
    QCOMPARE(preview->fullPicture().size(), QSize(64, 48));
    QCOMPARE(viewer->valueText(MetaDataViewer::NameRow), QStringLiteral("rig.orl"));

    Q_EMIT pane->newPreviewRequested(notes);
    QVERIFY(preview->fullPicture().isNull());
    QCOMPARE(label->text(), noPreview);
    QCOMPARE(viewer->valueText(MetaDataViewer::TypeRow),
             QStringLiteral("xyz ") + rContentBrowserMetadataFileTypeTag.asQString());
}

void TestPreviewPane::togglesHideThePanel_data()
{
    QTest::addColumn<QStringList>("toggles"); // "P" preview or "M" metadata, then 1 show or 0 hide
    QTest::addColumn<bool>("previewShown");
    QTest::addColumn<bool>("metadataShown");
    QTest::addColumn<bool>("paneShown");

    QTest::newRow("nothing toggled") << QStringList{} << true << true << true;
    QTest::newRow("preview hidden") << QStringList{"P0"} << false << true << true;
    QTest::newRow("metadata hidden") << QStringList{"M0"} << true << false << true;
    QTest::newRow("both hidden") << QStringList{"P0", "M0"} << false << false << false;
    QTest::newRow("both hidden, metadata back") << QStringList{"P0", "M0", "M1"} << false << true << true;
    QTest::newRow("both hidden, preview back") << QStringList{"M0", "P0", "P1"} << true << false << true;
    QTest::newRow("shown twice") << QStringList{"P1", "M1"} << true << true << true;
    QTest::newRow("hidden twice") << QStringList{"P0", "P0", "M0", "M0"} << false << false << false;
}

void TestPreviewPane::togglesHideThePanel()
{
    QFETCH(QStringList, toggles);
    QFETCH(bool, previewShown);
    QFETCH(bool, metadataShown);
    QFETCH(bool, paneShown);
    const char* row = QTest::currentDataTag();

    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* pane = new PreviewPane(&m_options, &window);
    layout->addWidget(pane);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    for (const QString& toggle : toggles) {
        const bool visible = toggle.endsWith(QLatin1Char('1'));
        if (toggle.startsWith(QLatin1Char('P')))
            pane->onTogglePreviewTab(visible);
        else
            pane->onToggleMetadataTab(visible);
    }

    QVERIFY2(pane->metadataTabWidget()->isVisibleTo(pane) == metadataShown, row);
    QVERIFY2(pane->previewTabWidget()->isVisibleTo(pane) == previewShown, row);
    QVERIFY2(pane->isVisible() == paneShown, row);
    Tint32Array status = intArray({1, 1, 1, 1, 1});
    pane->appendPanelsStatus(status);
    QVERIFY2(status == intArray({1, 1, 1, 1, 1, previewShown, metadataShown}), qPrintable(describe(status)));
}

void TestPreviewPane::panelsStatus_data()
{
    QTest::addColumn<QList<int>>("stored");
    QTest::addColumn<bool>("previewShown");
    QTest::addColumn<bool>("metadataShown");
    QTest::addColumn<bool>("paneShown");

    // Each row starts from a pane whose two tabs were hidden by their toggles.
    QTest::newRow("both shown") << QList<int>{1, 1, 1, 1, 1, 1, 1} << true << true << true;
    QTest::newRow("preview only") << QList<int>{1, 1, 1, 1, 1, 1, 0} << true << false << true;
    QTest::newRow("metadata only") << QList<int>{0, 0, 0, 0, 0, 0, 1} << false << true << true;
    QTest::newRow("both hidden") << QList<int>{1, 1, 1, 1, 1, 0, 0} << false << false << false;
    QTest::newRow("any non-zero is shown") << QList<int>{1, 1, 1, 1, 1, 2, -1} << true << true << true;
    QTest::newRow("side panel's four only") << QList<int>{1, 1, 1, 1} << false << false << false;
    QTest::newRow("no room for the metadata") << QList<int>{1, 1, 1, 1, 1, 1} << false << false << false;
}

void TestPreviewPane::panelsStatus()
{
    QFETCH(QList<int>, stored);
    QFETCH(bool, previewShown);
    QFETCH(bool, metadataShown);
    QFETCH(bool, paneShown);
    const char* row = QTest::currentDataTag();

    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* pane = new PreviewPane(&m_options, &window);
    layout->addWidget(pane);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    pane->onTogglePreviewTab(false);
    pane->onToggleMetadataTab(false);

    pane->applyPanelsStatus(intArray(stored));

    QVERIFY2(pane->isPreviewTabShown() == previewShown && pane->isMetadataTabShown() == metadataShown, row);
    QVERIFY2(pane->previewTabWidget()->isVisibleTo(pane) == previewShown, row);
    QVERIFY2(pane->metadataTabWidget()->isVisibleTo(pane) == metadataShown, row);
    QVERIFY2(pane->isVisible() == paneShown, row);

    // What is stored again is the normalised state, appended after the rest of the array.
    Tint32Array status = intArray({1, 0, 1, 0, 1});
    pane->appendPanelsStatus(status);
    QVERIFY2(status == intArray({1, 0, 1, 0, 1, previewShown, metadataShown}),
             qPrintable(QStringLiteral("%1: %2").arg(row, describe(status))));
}

QTEST_MAIN(TestPreviewPane)
#include "tst_previewpane.moc"
