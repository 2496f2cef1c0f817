#pragma once

#include "DeliveryContentLayout.h"

#include "core/SermonMetadata.h"

#include <QDate>
#include <QSizeF>
#include <QString>

#include <optional>
#include <vector>

class QIODevice;
class QPagedPaintDevice;
class QPainter;
class SermonNode;

// The delivery page on paper: the same column of prose (one layout, cut into pages), minute
// marks in the margin, a header with the title, scripture and next date, and page numbers.
// A page holds a stretch of the column, so nothing is laid out twice.
namespace DeliveryManuscript {

// The delivery view's text settings and pace.
struct Settings {
    double baseFontSize = 15;
    double lineSpacing = 1.8;
    double textWidth = 700;
    int wpm = 130;
};

// Margins of the sheet, in points. The left one holds the minute marks.
constexpr double marginLeft = 100;
constexpr double marginRight = 54;
constexpr double marginTop = 72;
constexpr double marginBottom = 64;

// One sheet: the column from `fromY` down to the next sheet's `fromY`.
struct PageSlice {
    double fromY = 0;
    double toY = 0;
    bool operator==(const PageSlice&) const = default;
};

struct Manuscript {
    DeliveryContentLayout layout;
    std::vector<PageSlice> pages;
    QSizeF paper; // points
    Settings settings; // textWidth as fitted to the paper
    QString title;
    QString scripture;
    std::optional<QDate> date;
};

// The first occasion on `today` or later; none when all are past.
std::optional<QDate> nextOccasionDate(const SermonMetadata& metadata, QDate today);

// The sermon's planned minutes, else the estimate at the pace.
int minutesFor(const SermonNode& root, const SermonMetadata& metadata, int wpm);

// Where the text of an item starts and ends on the column (its first line's box to its last).
// Minute marks take no room in the column.
double visualTop(const DeliveryItem& item, double baseFontSize);
double visualBottom(const DeliveryItem& item, double baseFontSize);

// Cuts the column into sheets of `bodyHeight`. A heading stays with what follows it down to its
// first spoken line, so none is left alone at the foot of a sheet; only a line taller than a
// sheet is cut, between two of its lines.
std::vector<PageSlice> paginate(const DeliveryContentLayout& layout, double baseFontSize, double bodyHeight);

Manuscript prepare(const SermonNode& root, const SermonMetadata& metadata, Settings settings, QSizeF paper,
                   QDate today);

// Draws every sheet, starting a new page on the device for each after the first. The device's
// page size should be `manuscript.paper` with no margins.
bool paint(QPagedPaintDevice& device, const Manuscript& manuscript);

// The manuscript as a PDF written to `device` (open for writing).
bool writePdf(QIODevice& device, const Manuscript& manuscript);

// "Page 2 of 5".
QString pageNumberText(int page, int count);

} // namespace DeliveryManuscript
