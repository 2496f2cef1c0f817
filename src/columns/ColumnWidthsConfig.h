#pragma once

#include <QString>

#include <optional>
#include <vector>

// The width of each column, set by dragging a divider and kept for all documents as JSON text in
// the preference "columnWidths". Columns past the end of the list have the default width.
class ColumnWidthsConfig {
public:
    static constexpr const char* preferenceKey = "columnWidths";

    ColumnWidthsConfig() = default;
    explicit ColumnWidthsConfig(std::vector<double> widths)
        : m_widths(std::move(widths))
    {
    }
    // Nothing when the text isn't a JSON array of finite, positive numbers of reasonable length:
    // the default (no widths) then stands.
    static std::optional<ColumnWidthsConfig> fromRawValue(const QString& rawValue);
    // Parsed, or the default for anything that doesn't parse.
    static ColumnWidthsConfig fromRawValueOrDefault(const QString& rawValue);

    const std::vector<double>& widths() const { return m_widths; }
    double width(int depth) const;
    // Clamped to the allowed range; columns before it without a width are written out as the
    // default. A negative depth changes nothing.
    void setWidth(int depth, double width);

    QString rawValue() const;
    bool operator==(const ColumnWidthsConfig& other) const { return rawValue() == other.rawValue(); }

private:
    std::vector<double> m_widths;
};
