#include "ColumnWidthsConfig.h"

#include "ColumnLayout.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace {
// Far more columns than any sermon has depth; a stored list longer than this is not ours.
constexpr qsizetype maxStoredWidths = 10000;
} // namespace

std::optional<ColumnWidthsConfig> ColumnWidthsConfig::fromRawValue(const QString& rawValue)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(rawValue.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    const QJsonArray array = document.array();
    if (array.size() > maxStoredWidths)
        return std::nullopt;
    std::vector<double> widths;
    widths.reserve(size_t(array.size()));
    for (const QJsonValue& value : array) {
        // A width that no drag could have set (negative, zero, not finite) spoils the whole list.
        if (!value.isDouble() || !std::isfinite(value.toDouble()) || value.toDouble() <= 0)
            return std::nullopt;
        widths.push_back(value.toDouble());
    }
    return ColumnWidthsConfig(std::move(widths));
}

ColumnWidthsConfig ColumnWidthsConfig::fromRawValueOrDefault(const QString& rawValue)
{
    return fromRawValue(rawValue).value_or(ColumnWidthsConfig());
}

double ColumnWidthsConfig::width(int depth) const
{
    return ColumnLayout::widthAt(m_widths, depth);
}

void ColumnWidthsConfig::setWidth(int depth, double width)
{
    if (depth < 0 || depth >= maxStoredWidths || std::isnan(width))
        return;
    while (m_widths.size() <= size_t(depth))
        m_widths.push_back(ColumnLayout::defaultColumnWidth);
    m_widths[size_t(depth)] = std::clamp(width, ColumnLayout::minColumnWidth, ColumnLayout::maxColumnWidth);
}

QString ColumnWidthsConfig::rawValue() const
{
    QJsonArray array;
    for (const double width : m_widths)
        array.append(width);
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}
