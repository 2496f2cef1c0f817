#include "DeliveryPreferences.h"

#include <QSettings>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

namespace {

const QString fontSizeKey = QStringLiteral("deliveryFontSize");
const QString lineSpacingKey = QStringLiteral("deliveryLineSpacing");
const QString textWidthKey = QStringLiteral("deliveryTextWidth");
const QString wpmKey = QStringLiteral("deliveryWPM");
const QString fullscreenKey = QStringLiteral("deliveryFullscreen");
const QString largeClockKey = QStringLiteral("deliveryLargeClock");
const QString endCuesKey = QStringLiteral("deliveryEndCues");
const QString cueMinutesKey = QStringLiteral("deliveryCueMinutes");
const QString presenterKeysKey = QStringLiteral("deliveryPresenterKeys");

double readDouble(const QSettings& settings, const QString& key, double fallback, double lo, double hi)
{
    bool ok = false;
    const double value = settings.value(key).toDouble(&ok);
    return ok && std::isfinite(value) && value >= lo && value <= hi ? value : fallback;
}

bool readBool(const QSettings& settings, const QString& key, bool fallback)
{
    const QVariant value = settings.value(key);
    const QString text = value.toString().toLower();
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (text == QLatin1String("true") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0"))
        return false;
    return fallback;
}

// "5,2,1": whole minutes from 1 to 120, largest first, each once; nothing else is a list.
std::optional<std::vector<int>> parseMinutes(const QString& text)
{
    std::vector<int> out;
    for (const QString& piece : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool ok = false;
        const int m = piece.trimmed().toInt(&ok);
        if (!ok || m < 1 || m > 120)
            return std::nullopt;
        out.push_back(m);
    }
    if (out.empty())
        return std::nullopt;
    std::sort(out.begin(), out.end(), std::greater<>());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

QString minutesText(const std::vector<int>& minutes)
{
    QStringList pieces;
    for (int m : minutes)
        pieces << QString::number(m);
    return pieces.join(QLatin1Char(','));
}

} // namespace

DeliveryPreferences::DeliveryPreferences(QObject* parent)
    : DeliveryPreferences(std::make_unique<QSettings>(), parent)
{
}

DeliveryPreferences::DeliveryPreferences(std::unique_ptr<QSettings> settings, QObject* parent)
    : QObject(parent)
    , m_settings(std::move(settings))
{
    load();
}

DeliveryPreferences::~DeliveryPreferences() = default;

void DeliveryPreferences::load()
{
    const QSettings& s = *m_settings;
    // Whole sizes only, as the slider sets them: the page's fonts are base + n pixels exactly.
    m_fontSize = std::round(readDouble(s, fontSizeKey, defaultFontSize, 12, 24));
    m_lineSpacing = readDouble(s, lineSpacingKey, defaultLineSpacing, 1, 3);
    m_textWidth = readDouble(s, textWidthKey, defaultTextWidth, 400, 1000);
    bool ok = false;
    const int wpm = s.value(wpmKey).toInt(&ok);
    m_wpm = ok && wpm >= 1 ? wpm : defaultWPM;
    m_fullscreen = readBool(s, fullscreenKey, defaultFullscreen);
    m_largeClock = readBool(s, largeClockKey, defaultLargeClock);
    m_endCues = readBool(s, endCuesKey, defaultEndCues);
    m_presenterKeys = readBool(s, presenterKeysKey, defaultPresenterKeys);
    m_cueMinutes = parseMinutes(s.value(cueMinutesKey).toString()).value_or(defaultCueMinutes());
}

bool DeliveryPreferences::setFlag(bool& field, bool on, const QString& key, void (DeliveryPreferences::*changed)(bool))
{
    if (field == on)
        return false;
    field = on;
    m_settings->setValue(key, on);
    emit(this->*changed)(on);
    return true;
}

bool DeliveryPreferences::setLargeClock(bool on)
{
    return setFlag(m_largeClock, on, largeClockKey, &DeliveryPreferences::largeClockChanged);
}

bool DeliveryPreferences::setEndCues(bool on)
{
    return setFlag(m_endCues, on, endCuesKey, &DeliveryPreferences::endCuesChanged);
}

bool DeliveryPreferences::setPresenterKeys(bool on)
{
    return setFlag(m_presenterKeys, on, presenterKeysKey, &DeliveryPreferences::presenterKeysChanged);
}

bool DeliveryPreferences::setCueMinutes(std::vector<int> minutes)
{
    const auto clean = parseMinutes(minutesText(minutes));
    if (!clean || *clean == m_cueMinutes)
        return false;
    m_cueMinutes = *clean;
    m_settings->setValue(cueMinutesKey, minutesText(m_cueMinutes));
    emit cueMinutesChanged();
    return true;
}

bool DeliveryPreferences::setFontSize(double size)
{
    if (m_fontSize == size || !std::isfinite(size))
        return false;
    m_fontSize = size;
    m_settings->setValue(fontSizeKey, size);
    emit fontSizeChanged(size);
    return true;
}

bool DeliveryPreferences::setLineSpacing(double spacing)
{
    if (m_lineSpacing == spacing || !std::isfinite(spacing))
        return false;
    m_lineSpacing = spacing;
    m_settings->setValue(lineSpacingKey, spacing);
    emit lineSpacingChanged(spacing);
    return true;
}

bool DeliveryPreferences::setTextWidth(double width)
{
    if (m_textWidth == width || !std::isfinite(width))
        return false;
    m_textWidth = width;
    m_settings->setValue(textWidthKey, width);
    emit textWidthChanged(width);
    return true;
}

bool DeliveryPreferences::setWPM(int wpm)
{
    if (m_wpm == wpm || wpm < 1)
        return false;
    m_wpm = wpm;
    m_settings->setValue(wpmKey, wpm);
    emit wpmChanged(wpm);
    return true;
}

bool DeliveryPreferences::setFullscreen(bool on)
{
    return setFlag(m_fullscreen, on, fullscreenKey, &DeliveryPreferences::fullscreenChanged);
}
