#include "QvelaBreadCrumb.h"

#include <QAbstractButton>
#include <QEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QRegularExpression>
#include <QVector>

#include <algorithm>
#include <cmath>

const QString QvelaBreadCrumb::folderIconName = QStringLiteral("CB_FolderRegularClosed.png");
const QString QvelaBreadCrumb::separatorIconName = QStringLiteral("CB_BreadCrumbSeparator.png");
const QString QvelaBreadCrumb::historyIconName = QStringLiteral("CB_BreadCrumbHistory.png");
const QString QvelaBreadCrumb::collapsedIconName = QStringLiteral("CB_BreadCrumbCollapsed.png");

namespace {

enum class CrumbKind { Folder, Separator, Collapse, History };

QColor mixed(const QColor& a, const QColor& b, qreal amountOfB)
{
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * amountOfB),
                            float(a.greenF() + (b.greenF() - a.greenF()) * amountOfB),
                            float(a.blueF() + (b.blueF() - a.blueF()) * amountOfB));
}

// One flat part of the bar. Painted here rather than by the style so that the bar reads as
// one field, whatever style the host runs.
class TcrumbButton : public QAbstractButton
{
public:
    TcrumbButton(CrumbKind kind, int barHeight, QWidget* parent)
        : QAbstractButton(parent)
        , m_kind(kind)
        , m_barHeight(barHeight)
    {
        static const char* const names[] = {"breadCrumbFolder", "breadCrumbSeparator", "breadCrumbCollapse",
                                            "breadCrumbHistory"};
        setObjectName(QLatin1String(names[int(kind)]));
        setFocusPolicy(Qt::NoFocus);
        setCursor(Qt::ArrowCursor);
        setAttribute(Qt::WA_Hover);
    }

    CrumbKind kind() const { return m_kind; }

    QString path() const { return property("path").toString(); }
    void setPath(const QString& path) { setProperty("path", path); }

    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }

    // The deepest folder is drawn in bold: it is where the browser is.
    bool isCurrent() const { return m_current; }
    void setCurrent(bool current)
    {
        if (m_current == current)
            return;
        m_current = current;
        update();
    }

    // A separator whose menu is open points down.
    void setOpen(bool open)
    {
        if (m_open == open)
            return;
        m_open = open;
        update();
    }
    bool isOpen() const { return m_open; }

    void setImage(const QIcon& image)
    {
        m_image = image;
        update();
    }

    QFont textFont() const
    {
        QFont f = font();
        f.setBold(m_current);
        return f;
    }

    int padding() const { return int(std::lround(m_barHeight * 0.3)); }

    QSize sizeHint() const override
    {
        switch (m_kind) {
        case CrumbKind::Folder:
            return QSize(QFontMetrics(textFont()).horizontalAdvance(text()) + 2 * padding(), m_barHeight);
        case CrumbKind::Separator:
            return QSize(int(std::lround(m_barHeight * 0.7)), m_barHeight);
        case CrumbKind::Collapse:
            return QSize(int(std::lround(m_barHeight * 0.9)), m_barHeight);
        case CrumbKind::History:
            return QSize(m_barHeight, m_barHeight);
        }
        return QSize();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        const QPalette& pal = palette();
        const bool hot = underMouse() && isEnabled();
        const bool down = isDown() || m_open;

        // A rounded plate only while hovered or pressed: at rest the bar is one flat field.
        const qreal inset = std::max(1.0, height() / 12.0);
        const QRectF plate = QRectF(rect()).adjusted(0.5, inset, -0.5, -inset);
        const qreal radius = height() * 0.15;
        if (down) {
            QColor fill = pal.color(QPalette::Highlight);
            fill.setAlphaF(0.45f);
            p.setPen(Qt::NoPen);
            p.setBrush(fill);
            p.drawRoundedRect(plate, radius, radius);
        } else if (hot) {
            p.setPen(Qt::NoPen);
            p.setBrush(mixed(pal.color(QPalette::Base), pal.color(QPalette::Text), 0.12));
            p.drawRoundedRect(plate, radius, radius);
        }

        const QColor strong = pal.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text);
        const QColor muted = mixed(strong, pal.color(QPalette::Base), 0.4);
        if (m_kind == CrumbKind::Folder) {
            p.setFont(textFont());
            p.setPen(strong);
            // Shortened only when the bar gave less than asked: measuring again on the paint
            // device can differ by a fraction of a pixel and must not cut a name that fits.
            const bool shortened = width() < sizeHint().width();
            const QRect area = shortened ? rect().adjusted(padding(), 0, -padding(), 0) : rect();
            const QString shown = shortened ? p.fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width()) : text();
            p.drawText(area, Qt::AlignCenter | Qt::TextSingleLine, shown);
            // Keyboard focus on the bar shows as a ring around where the browser is.
            if (m_current && parentWidget() && parentWidget()->hasFocus()) {
                p.setPen(QPen(pal.color(QPalette::Highlight), std::max(1.0, height() / 12.0)));
                p.setBrush(Qt::NoBrush);
                p.drawRoundedRect(plate, radius, radius);
            }
            return;
        }

        const QPointF centre = QRectF(rect()).center();
        if (!m_image.isNull()) {
            const int side = int(std::lround(height() * 0.7));
            p.translate(centre);
            if (m_open)
                p.rotate(90);
            m_image.paint(&p, QRect(-side / 2, -side / 2, side, side), Qt::AlignCenter,
                          isEnabled() ? QIcon::Normal : QIcon::Disabled);
            return;
        }

        QPen pen(hot || down ? strong : muted, std::max(1.0, height() / 13.0), Qt::SolidLine, Qt::RoundCap,
                 Qt::RoundJoin);
        p.setPen(pen);
        p.setBrush(Qt::NoBrush);
        const qreal s = height() * 0.16;
        QPainterPath glyph;
        const auto chevronRight = [&glyph, s](QPointF c) {
            glyph.moveTo(c.x() - s / 2, c.y() - s);
            glyph.lineTo(c.x() + s / 2, c.y());
            glyph.lineTo(c.x() - s / 2, c.y() + s);
        };
        const auto chevronLeft = [&glyph, s](QPointF c) {
            glyph.moveTo(c.x() + s / 2, c.y() - s);
            glyph.lineTo(c.x() - s / 2, c.y());
            glyph.lineTo(c.x() + s / 2, c.y() + s);
        };
        const auto chevronDown = [&glyph, s](QPointF c) {
            glyph.moveTo(c.x() - s, c.y() - s / 2);
            glyph.lineTo(c.x(), c.y() + s / 2);
            glyph.lineTo(c.x() + s, c.y() - s / 2);
        };
        switch (m_kind) {
        case CrumbKind::Separator:
            m_open ? chevronDown(centre) : chevronRight(centre);
            break;
        case CrumbKind::Collapse:
            chevronLeft(centre - QPointF(s * 0.6, 0));
            chevronLeft(centre + QPointF(s * 0.6, 0));
            break;
        case CrumbKind::History:
            chevronDown(centre);
            break;
        case CrumbKind::Folder:
            break;
        }
        p.drawPath(glyph);
    }

private:
    CrumbKind m_kind;
    int m_barHeight;
    int m_index = -1;
    bool m_current = false;
    bool m_open = false;
    QIcon m_image;
};

struct Segment
{
    QString text;
    QString path;
};

// "/home/user/" gives "/", "home", "user"; "C:/a" gives "C:", "a"; "rel/x" gives "rel", "x".
QVector<Segment> splitPath(const QString& path)
{
    QVector<Segment> segments;
    QString normal = path;
    normal.replace(QRegularExpression(QStringLiteral("[/\\\\]+")), QStringLiteral("/"));
    if (normal.isEmpty())
        return segments;

    QString prefix;
    int start = 0;
    const QRegularExpressionMatch drive = QRegularExpression(QStringLiteral("^([A-Za-z]:)(/|$)")).match(normal);
    if (drive.hasMatch()) {
        prefix = drive.captured(1) + QLatin1Char('/');
        segments.append({drive.captured(1), prefix});
        start = int(drive.capturedLength(0));
    } else if (normal.startsWith(QLatin1Char('/'))) {
        prefix = QStringLiteral("/");
        segments.append({prefix, prefix});
        start = 1;
    }
    const QStringList names = normal.mid(start).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString& name : names) {
        prefix += name + QLatin1Char('/');
        segments.append({name, prefix});
    }
    return segments;
}

// Folder names as people count: "frame2" before "frame10", letter case aside. Written out
// because the platform collator may not know numeric order.
bool naturalLess(const QString& a, const QString& b)
{
    int i = 0;
    int j = 0;
    while (i < a.size() && j < b.size()) {
        if (a.at(i).isDigit() && b.at(j).isDigit()) {
            int endA = i;
            int endB = j;
            while (endA < a.size() && a.at(endA).isDigit())
                ++endA;
            while (endB < b.size() && b.at(endB).isDigit())
                ++endB;
            // Compare the runs as numbers of any length: without leading zeros, the longer is larger.
            QStringView runA = QStringView(a).mid(i, endA - i);
            QStringView runB = QStringView(b).mid(j, endB - j);
            while (runA.size() > 1 && runA.front() == QLatin1Char('0'))
                runA = runA.mid(1);
            while (runB.size() > 1 && runB.front() == QLatin1Char('0'))
                runB = runB.mid(1);
            if (runA.size() != runB.size())
                return runA.size() < runB.size();
            if (const int order = runA.compare(runB))
                return order < 0;
            i = endA;
            j = endB;
            continue;
        }
        const QChar ca = a.at(i).toCaseFolded();
        const QChar cb = b.at(j).toCaseFolded();
        if (ca != cb)
            return ca < cb;
        ++i;
        ++j;
    }
    if ((a.size() - i) != (b.size() - j))
        return (a.size() - i) < (b.size() - j);
    // Names equal but for letter case still need a fixed order.
    return a < b;
}

// Menu texts take "&" as a shortcut marker; folder names must show as they are.
QString menuText(const QString& name)
{
    QString text = name;
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

struct QvelaBreadCrumb::Private
{
    int barHeight = 0;
    QString path;
    QVector<Segment> segments;
    int firstShown = 0;

    QVector<TcrumbButton*> folders;
    QVector<TcrumbButton*> separators;
    TcrumbButton* collapse = nullptr;
    TcrumbButton* history = nullptr;

    IconSource iconSource;
    QPointer<QMenu> menu;

    QStringList subfolders;
    int pendingSeparator = -1;
    bool inSeparatorSignal = false;

    QIcon image(const QString& name) const { return iconSource ? iconSource(name) : QIcon(); }
};

QvelaBreadCrumb::QvelaBreadCrumb(QWidget* parent, int height)
    : QWidget(parent)
    , d(std::make_unique<Private>())
{
    d->barHeight = height > 0 ? height : fontMetrics().height() + 8;
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    // The free area is where the user clicks to type.
    setCursor(Qt::IBeamCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // Reached with Tab only: a click on a folder navigates, a click on the free area edits.
    setFocusPolicy(Qt::TabFocus);

    d->collapse = new TcrumbButton(CrumbKind::Collapse, d->barHeight, this);
    d->history = new TcrumbButton(CrumbKind::History, d->barHeight, this);
    connect(d->collapse, &QAbstractButton::clicked, this, &QvelaBreadCrumb::showCollapsedMenu);
    connect(d->history, &QAbstractButton::clicked, this, &QvelaBreadCrumb::historyButtonClicked);
    d->collapse->hide();
    relayout();
}

QvelaBreadCrumb::~QvelaBreadCrumb() = default;

void QvelaBreadCrumb::setPath(const QString& path)
{
    d->path = path;
    d->segments = splitPath(path);
    d->pendingSeparator = -1;

    // Buttons are reused, never deleted here: setPath is often called from inside a
    // button's own clicked signal.
    while (d->folders.size() < d->segments.size()) {
        auto* folder = new TcrumbButton(CrumbKind::Folder, d->barHeight, this);
        auto* separator = new TcrumbButton(CrumbKind::Separator, d->barHeight, this);
        folder->setFont(font());
        separator->setFont(font());
        separator->setIndex(int(d->separators.size()));
        separator->setImage(d->image(separatorIconName));
        connect(folder, &QAbstractButton::clicked, this, [this, folder] { Q_EMIT newPathSelected(folder->path()); });
        connect(separator, &QAbstractButton::clicked, this, [this, separator] { onSeparatorClicked(separator->index()); });
        d->folders.append(folder);
        d->separators.append(separator);
    }
    for (int i = 0; i < d->segments.size(); ++i) {
        const Segment& segment = d->segments.at(i);
        d->folders[i]->setText(segment.text);
        d->folders[i]->setPath(segment.path);
        d->folders[i]->setToolTip(segment.path);
        d->folders[i]->setCurrent(i == d->segments.size() - 1);
        d->separators[i]->setPath(segment.path);
        d->separators[i]->setOpen(false);
    }
    relayout();
    updateGeometry();
}

QString QvelaBreadCrumb::getPath() const
{
    return d->path;
}

void QvelaBreadCrumb::setSubfolderList(const QStringList& folders)
{
    d->subfolders = folders;
    if (!d->inSeparatorSignal && d->pendingSeparator >= 0)
        showSubfolderMenu();
}

void QvelaBreadCrumb::setIconSource(IconSource source)
{
    d->iconSource = std::move(source);
    const QIcon separator = d->image(separatorIconName);
    for (TcrumbButton* button : std::as_const(d->separators))
        button->setImage(separator);
    d->history->setImage(d->image(historyIconName));
    d->collapse->setImage(d->image(collapsedIconName));
}

QMenu* QvelaBreadCrumb::openMenu() const
{
    return d->menu && d->menu->isVisible() ? d->menu.data() : nullptr;
}

QSize QvelaBreadCrumb::sizeHint() const
{
    int width = d->history->sizeHint().width() + d->barHeight;
    for (int i = 0; i < d->segments.size(); ++i)
        width += d->folders.at(i)->sizeHint().width() + d->separators.at(i)->sizeHint().width();
    return QSize(width, d->barHeight);
}

QSize QvelaBreadCrumb::minimumSizeHint() const
{
    return QSize(d->collapse->sizeHint().width() + d->history->sizeHint().width() + d->barHeight, d->barHeight);
}

void QvelaBreadCrumb::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    relayout();
}

void QvelaBreadCrumb::mousePressEvent(QMouseEvent* event)
{
    // Presses on the buttons never get here: what is left is the free area.
    if (event->button() == Qt::LeftButton) {
        event->accept();
        Q_EMIT filePathBarClicked();
        return;
    }
    QWidget::mousePressEvent(event);
}

void QvelaBreadCrumb::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    if (mods == Qt::NoModifier && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space
                                   || key == Qt::Key_F2)) {
        event->accept();
        Q_EMIT filePathBarClicked();
        return;
    }
    if ((mods == Qt::AltModifier && key == Qt::Key_Down) || (mods == Qt::NoModifier && key == Qt::Key_F4)) {
        event->accept();
        Q_EMIT historyButtonClicked();
        return;
    }
    QWidget::keyPressEvent(event);
}

void QvelaBreadCrumb::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    for (TcrumbButton* button : std::as_const(d->folders))
        button->update();
}

void QvelaBreadCrumb::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    for (TcrumbButton* button : std::as_const(d->folders))
        button->update();
}

void QvelaBreadCrumb::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        // Given explicitly: a style sheet above the bar may otherwise hand the buttons the
        // application's font rather than the bar's.
        for (TcrumbButton* button : std::as_const(d->folders))
            button->setFont(font());
        for (TcrumbButton* button : std::as_const(d->separators))
            button->setFont(font());
        d->collapse->setFont(font());
        d->history->setFont(font());
        relayout();
        updateGeometry();
    }
}

void QvelaBreadCrumb::relayout()
{
    const int count = int(d->segments.size());
    const int h = height() > 0 ? height() : d->barHeight;
    const int historyWidth = d->history->sizeHint().width();
    const int collapseWidth = d->collapse->sizeHint().width();
    // Some free area is always kept, so that there is somewhere to click to type.
    const int reservedFree = d->barHeight;
    const int room = width() - historyWidth - reservedFree;

    QVector<int> need(count);
    int total = 0;
    for (int i = 0; i < count; ++i) {
        need[i] = d->folders.at(i)->sizeHint().width() + d->separators.at(i)->sizeHint().width();
        total += need.at(i);
    }

    int first = 0;
    if (total > room && count > 0) {
        // Fill from the deepest folder back towards the root while the folders fit.
        const int roomAfterCollapse = room - collapseWidth;
        first = count - 1;
        int used = need.at(first);
        while (first > 0 && used + need.at(first - 1) <= roomAfterCollapse) {
            --first;
            used += need.at(first);
        }
    }
    d->firstShown = first;

    int x = 0;
    d->collapse->setVisible(first > 0);
    if (first > 0) {
        d->collapse->setGeometry(0, 0, collapseWidth, h);
        x = collapseWidth;
    }
    for (int i = 0; i < d->folders.size(); ++i) {
        TcrumbButton* folder = d->folders.at(i);
        TcrumbButton* separator = d->separators.at(i);
        const bool shown = i >= first && i < count;
        folder->setVisible(shown);
        separator->setVisible(shown);
        if (!shown)
            continue;
        const int separatorWidth = separator->sizeHint().width();
        int folderWidth = folder->sizeHint().width();
        if (i == count - 1) {
            // The deepest folder stays even when it alone is too wide: shortened, first at the
            // expense of its own name and then of the free area.
            const int widest = std::max(0, width() - historyWidth - x - separatorWidth);
            const int legible = 2 * folder->padding() + folder->fontMetrics().horizontalAdvance(QStringLiteral("...."));
            folderWidth = std::min(folderWidth, std::max(widest - reservedFree, std::min(legible, widest)));
        }
        folder->setGeometry(x, 0, folderWidth, h);
        x += folderWidth;
        separator->setGeometry(x, 0, separatorWidth, h);
        x += separatorWidth;
    }
    d->history->setGeometry(width() - historyWidth, 0, historyWidth, h);
    d->history->raise();
}

void QvelaBreadCrumb::onSeparatorClicked(int index)
{
    if (index < 0 || index >= d->segments.size())
        return;
    d->subfolders.clear();
    d->pendingSeparator = index;
    d->inSeparatorSignal = true;
    const QString path = d->segments.at(index).path;
    Q_EMIT separatorClicked(path);
    d->inSeparatorSignal = false;
    // The owner may have answered during the signal, or moved elsewhere altogether.
    if (d->pendingSeparator == index && !d->subfolders.isEmpty())
        showSubfolderMenu();
}

void QvelaBreadCrumb::showSubfolderMenu()
{
    const int index = d->pendingSeparator;
    d->pendingSeparator = -1;
    if (index < 0 || index >= d->segments.size() || d->subfolders.isEmpty())
        return;
    TcrumbButton* separator = d->separators.at(index);
    if (!separator->isVisible())
        return;

    QStringList names = d->subfolders;
    std::sort(names.begin(), names.end(), naturalLess);

    const QString base = d->segments.at(index).path;
    const QString onPath = index + 1 < d->segments.size() ? d->segments.at(index + 1).text : QString();
    const QIcon folderIcon = d->image(folderIconName);

    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("breadCrumbSubfolderMenu"));
    menu->setFont(font());
    for (const QString& name : std::as_const(names)) {
        QAction* action = menu->addAction(folderIcon, menuText(name));
        action->setData(base + name + QLatin1Char('/'));
        if (name == onPath) {
            QFont bold = font();
            bold.setBold(true);
            action->setFont(bold);
        }
    }
    separator->setOpen(true);
    connect(menu, &QMenu::aboutToHide, separator, [separator] { separator->setOpen(false); });
    popupMenu(menu, separator);
}

void QvelaBreadCrumb::showCollapsedMenu()
{
    if (d->firstShown <= 0)
        return;
    const QIcon folderIcon = d->image(folderIconName);
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("breadCrumbCollapsedMenu"));
    menu->setFont(font());
    // Deepest first: the folder nearest the ones still in view is the likeliest pick.
    for (int i = d->firstShown - 1; i >= 0; --i) {
        QAction* action = menu->addAction(folderIcon, menuText(d->segments.at(i).text));
        action->setData(d->segments.at(i).path);
    }
    d->collapse->setOpen(true);
    TcrumbButton* collapse = d->collapse;
    connect(menu, &QMenu::aboutToHide, collapse, [collapse] { collapse->setOpen(false); });
    popupMenu(menu, collapse);
}

void QvelaBreadCrumb::popupMenu(QMenu* menu, QWidget* below)
{
    if (d->menu)
        d->menu->close();
    d->menu = menu;
    connect(menu, &QMenu::triggered, this, [this](QAction* action) { Q_EMIT newPathSelected(action->data().toString()); });
    // Deleted once closed, after its triggered signal has been delivered.
    connect(menu, &QMenu::aboutToHide, menu, &QObject::deleteLater);
    menu->popup(below->mapToGlobal(QPoint(0, below->height())));
}
