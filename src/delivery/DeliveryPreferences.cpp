#include "DeliveryPreferences.h"

#include <QSettings>

#include <cmath>

namespace {

const QString fontSizeKey = QStringLiteral("deliveryFontSize");
const QString lineSpacingKey = QStringLiteral("deliveryLineSpacing");
const QString textWidthKey = QStringLiteral("deliveryTextWidth");
const QString wpmKey = QStringLiteral("deliveryWPM");
const QString fullscreenKey = QStringLiteral("deliveryFullscreen");

double readDouble(const QSettings& settings, const QString& key, double fallback, double lo, double hi)
{
    bool ok = false;
    const double value = settings.value(key).toDouble(&ok);
    return ok && std::isfinite(value) && value >= lo && value <= hi ? value : fallback;
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
    const QVariant fullscreen = s.value(fullscreenKey);
    const QString text = fullscreen.toString().toLower();
    if (fullscreen.typeId() == QMetaType::Bool)
        m_fullscreen = fullscreen.toBool();
    else if (text == QLatin1String("true") || text == QLatin1String("1"))
        m_fullscreen = true;
    else if (text == QLatin1String("false") || text == QLatin1String("0"))
        m_fullscreen = false;
    else
        m_fullscreen = defaultFullscreen;
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
    if (m_fullscreen == on)
        return false;
    m_fullscreen = on;
    m_settings->setValue(fullscreenKey, on);
    emit fullscreenChanged(on);
    return true;
}
