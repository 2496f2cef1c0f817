#include "DeliveryManuscript.h"

#include "DeliveryText.h"

#include "look/Look.h"

#include "core/SermonNode.h"
#include "core/WordCount.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>

#include <algorithm>
#include <cmath>

namespace DeliveryManuscript {

namespace {

bool isText(const DeliveryItem& item)
{
    return item.kind == DeliveryItem::Kind::heading || item.kind == DeliveryItem::Kind::leaf;
}

QFont itemFont(const DeliveryItem& item, double baseFontSize)
{
    QFont font = deliveryFont(item.depth, item.kind == DeliveryItem::Kind::leaf, baseFontSize);
    font.setItalic(item.kind == DeliveryItem::Kind::leaf && item.isQuote);
    return font;
}

// A run of the column that one sheet must hold whole if it can.
struct Block {
    double top;
    double bottom;
    double lineHeight;
    bool keepsWithNext;
};

std::vector<Block> blocks(const DeliveryContentLayout& layout, double baseFontSize)
{
    std::vector<Block> out;
    for (const DeliveryItem& item : layout.items) {
        if (item.kind == DeliveryItem::Kind::timeMarker)
            continue;
        if (item.kind == DeliveryItem::Kind::headingDivider && !out.empty()) {
            // The rule belongs to its heading.
            out.back().bottom = std::max(out.back().bottom, item.y + 1);
            continue;
        }
        const double top = visualTop(item, baseFontSize);
        const double lineHeight = isText(item) ? QFontMetricsF(itemFont(item, baseFontSize)).lineSpacing() : 1;
        out.push_back({top, visualBottom(item, baseFontSize), std::max(lineHeight, 1.0),
                       item.kind == DeliveryItem::Kind::heading});
    }
    return out;
}

QColor inkAt(double alpha)
{
    return Look::withAlpha(Look::ink(false), alpha);
}

void drawHeader(QPainter& painter, const Manuscript& m)
{
    const double width = m.paper.width() - marginLeft - marginRight;
    const double baseline = marginTop - 30;
    QFont titleFont = DeliveryText::makeFont(10, QFont::DemiBold);
    QFont font = DeliveryText::makeFont(10, QFont::Normal);
    QStringList right;
    if (!m.scripture.isEmpty())
        right << m.scripture;
    if (m.date)
        right << QLocale().toString(*m.date, QLocale::LongFormat);
    const QFontMetricsF metrics(font);
    const QString rightText = metrics.elidedText(right.join(QStringLiteral("  \u00B7  ")), Qt::ElideRight, width * 0.6);
    const double rightWidth = metrics.horizontalAdvance(rightText);
    const QString title = QFontMetricsF(titleFont).elidedText(QString(m.title).replace(QChar(0x2028), QLatin1Char(' ')),
                                                              Qt::ElideRight, std::max(width - rightWidth - 16, 0.0));
    painter.setPen(inkAt(0.85));
    painter.setFont(titleFont);
    painter.drawText(QPointF(marginLeft, baseline), title);
    painter.setPen(inkAt(0.65));
    painter.setFont(font);
    painter.drawText(QPointF(marginLeft + width - rightWidth, baseline), rightText);
    painter.setPen(QPen(inkAt(0.25), 0.5));
    painter.drawLine(QPointF(marginLeft, baseline + 8), QPointF(marginLeft + width, baseline + 8));
}

void drawFooter(QPainter& painter, const Manuscript& m, int page)
{
    const QFont font = DeliveryText::makeFont(9, QFont::Normal);
    const QString text = pageNumberText(page, int(m.pages.size()));
    const double width = QFontMetricsF(font).horizontalAdvance(text);
    painter.setFont(font);
    painter.setPen(inkAt(0.55));
    painter.drawText(QPointF((m.paper.width() - width) / 2, m.paper.height() - marginBottom + 34), text);
}

// The column's items within one slice, in the same fonts, indents and wraps as on screen.
void drawSlice(QPainter& painter, const Manuscript& m, const PageSlice& slice, bool isFirst, bool isLast)
{
    const double base = m.settings.baseFontSize;
    const double bodyHeight = m.paper.height() - marginTop - marginBottom;
    const double dx = marginLeft - DeliveryContentLayout::textLeft;
    const double dy = marginTop - slice.fromY;
    const QFont markFont = DeliveryText::makeFont(9, QFont::Normal);
    const QFontMetricsF markMetrics(markFont);

    painter.save();
    painter.translate(dx, dy);
    // A line cut between two sheets shows each of its halves on one of them.
    painter.setClipRect(QRectF(-dx, slice.fromY, m.paper.width(), bodyHeight + 1));
    for (const DeliveryItem& item : m.layout.items) {
        switch (item.kind) {
        case DeliveryItem::Kind::heading:
        case DeliveryItem::Kind::leaf: {
            if (visualBottom(item, base) <= slice.fromY || visualTop(item, base) >= slice.toY)
                continue;
            const QFont font = itemFont(item, base);
            const bool isLeaf = item.kind == DeliveryItem::Kind::leaf;
            const double ascent = QFontMetricsF(font).ascent();
            double alpha = 1;
            if (!isLeaf)
                alpha = item.depth <= 1 ? 1.0 : item.depth == 2 ? 0.8 : item.depth == 3 ? 0.7 : 0.6;
            const double wrap = m.settings.textWidth
                - (isLeaf ? DeliveryContentLayout::leafIndent(item.depth)
                          : DeliveryContentLayout::headingIndent(item.depth));
            if (isLeaf && item.isQuote) {
                QPainterPath bar;
                bar.addRoundedRect(
                    QRectF(item.frame.left() - 10, item.frame.top() - ascent - 2, 3, item.frame.height() + 2), 1.5,
                    1.5);
                // Paper is always light.
                painter.fillPath(bar, Look::withAlpha(Look::Palette::forAppearance(false).orange, 0.5));
            }
            DeliveryText::draw(painter, item.text, font, inkAt(alpha),
                               QPointF(item.frame.left(), item.frame.top() - ascent), wrap);
            break;
        }
        case DeliveryItem::Kind::headingDivider:
            if (item.y < slice.fromY || item.y >= slice.toY)
                continue;
            painter.setPen(QPen(inkAt(0.3), 0.5));
            painter.drawLine(QPointF(DeliveryContentLayout::textLeft, item.y),
                             QPointF(DeliveryContentLayout::textLeft + item.width, item.y));
            break;
        case DeliveryItem::Kind::timeMarker:
            break;
        }
    }
    painter.setClipping(false);
    // Marks sit in the margin, unclipped: one at a sheet's very top still shows whole.
    for (const DeliveryItem& item : m.layout.items) {
        if (item.kind != DeliveryItem::Kind::timeMarker)
            continue;
        if ((!isFirst && item.y < slice.fromY) || (!isLast && item.y >= slice.toY))
            continue;
        const double right = DeliveryContentLayout::runnerX - 6;
        const double width = markMetrics.horizontalAdvance(item.text);
        painter.setFont(markFont);
        painter.setPen(inkAt(0.6));
        painter.drawText(QPointF(right - width, item.y - markMetrics.descent()), item.text);
        painter.setPen(QPen(inkAt(0.45), 0.75));
        painter.drawLine(QPointF(DeliveryContentLayout::runnerX - 2, item.y),
                         QPointF(DeliveryContentLayout::textLeft - 8, item.y));
    }
    painter.restore();
}

} // namespace

std::optional<QDate> nextOccasionDate(const SermonMetadata& metadata, QDate today)
{
    std::optional<QDate> next;
    for (const SermonOccasion& occasion : metadata.occasions)
        if (occasion.date.isValid() && occasion.date >= today && (!next || occasion.date < *next))
            next = occasion.date;
    return next;
}

int minutesFor(const SermonNode& root, const SermonMetadata& metadata, int wpm)
{
    if (metadata.duration)
        return *metadata.duration;
    return WordCount::estimatedMinutes(WordCount::wordCount(root), wpm);
}

double visualTop(const DeliveryItem& item, double baseFontSize)
{
    if (isText(item))
        return item.frame.top() - QFontMetricsF(itemFont(item, baseFontSize)).ascent();
    return item.y;
}

double visualBottom(const DeliveryItem& item, double baseFontSize)
{
    if (isText(item))
        return visualTop(item, baseFontSize) + item.frame.height();
    return item.kind == DeliveryItem::Kind::headingDivider ? item.y + 1 : item.y;
}

std::vector<PageSlice> paginate(const DeliveryContentLayout& layout, double baseFontSize, double bodyHeight)
{
    const std::vector<Block> all = blocks(layout, baseFontSize);
    bodyHeight = std::max(bodyHeight, 1.0);
    std::vector<double> starts{all.empty() ? 0.0 : all.front().top};
    const auto startAt = [&](double y) { starts.push_back(y); };

    for (size_t first = 0; first < all.size();) {
        // A group: headings down to the first spoken line after them.
        size_t last = first;
        while (last + 1 < all.size() && all[last].keepsWithNext)
            ++last;
        double groupBottom = all[first].bottom;
        for (size_t i = first; i <= last; ++i)
            groupBottom = std::max(groupBottom, all[i].bottom);
        const double groupTop = all[first].top;
        if (groupBottom - starts.back() <= bodyHeight) {
            first = last + 1;
            continue;
        }
        if (groupTop > starts.back() && groupBottom - groupTop <= bodyHeight) {
            startAt(groupTop);
            first = last + 1;
            continue;
        }
        // Taller than a sheet: one block at a time, a too tall one cut between its lines.
        for (size_t i = first; i <= last; ++i) {
            const Block& b = all[i];
            if (b.bottom - starts.back() <= bodyHeight)
                continue;
            if (b.top > starts.back() && b.bottom - b.top <= bodyHeight) {
                startAt(b.top);
                continue;
            }
            while (b.bottom - starts.back() > bodyHeight) {
                const double room = starts.back() + bodyHeight - b.top;
                double cut = b.top + std::floor(room / b.lineHeight) * b.lineHeight;
                if (cut <= starts.back())
                    cut = starts.back() + bodyHeight;
                startAt(cut);
            }
        }
        first = last + 1;
    }

    std::vector<PageSlice> pages;
    for (size_t i = 0; i < starts.size(); ++i)
        pages.push_back({starts[i], i + 1 < starts.size() ? starts[i + 1] : std::max(layout.totalHeight, starts[i])});
    return pages;
}

Manuscript prepare(const SermonNode& root, const SermonMetadata& metadata, Settings settings, QSizeF paper, QDate today)
{
    Manuscript m;
    m.paper = paper;
    settings.textWidth = std::max(std::min(settings.textWidth, paper.width() - marginLeft - marginRight), 100.0);
    m.settings = settings;
    m.title = root.text();
    m.scripture = metadata.scripture;
    m.date = nextOccasionDate(metadata, today);
    const int minutes = std::max(minutesFor(root, metadata, settings.wpm), 1);
    m.layout =
        DeliveryContentLayout::compute(root, minutes, settings.textWidth, settings.baseFontSize, settings.lineSpacing);
    m.pages = paginate(m.layout, settings.baseFontSize, paper.height() - marginTop - marginBottom);
    return m;
}

bool paint(QPagedPaintDevice& device, const Manuscript& manuscript)
{
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    // Work in points whatever the device's resolution.
    painter.scale(device.logicalDpiX() / 72.0, device.logicalDpiY() / 72.0);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    const int count = int(manuscript.pages.size());
    for (int i = 0; i < count; ++i) {
        if (i > 0 && !device.newPage())
            return false;
        drawHeader(painter, manuscript);
        drawSlice(painter, manuscript, manuscript.pages[size_t(i)], i == 0, i + 1 == count);
        drawFooter(painter, manuscript, i + 1);
    }
    return painter.end();
}

bool writePdf(QIODevice& device, const Manuscript& manuscript)
{
    QPdfWriter writer(&device);
    writer.setCreator(QStringLiteral("Orantium"));
    writer.setTitle(manuscript.title);
    writer.setPageLayout(
        QPageLayout(QPageSize(manuscript.paper, QPageSize::Point), QPageLayout::Portrait, QMarginsF(0, 0, 0, 0)));
    return paint(writer, manuscript);
}

QString pageNumberText(int page, int count)
{
    return QStringLiteral("Page %1 of %2").arg(page).arg(count);
}

} // namespace DeliveryManuscript
