#include "DeliveryAppearance.h"

#include <QGuiApplication>
#include <QPalette>

namespace DeliveryAppearance {

QColor primary()
{
    return QGuiApplication::palette().color(QPalette::WindowText);
}

QColor secondary()
{
    return Look::withAlpha(primary(), 0.55);
}

QColor tertiary()
{
    return Look::withAlpha(primary(), 0.3);
}

QColor accent()
{
    return Look::Palette::current().accent;
}

QColor red()
{
    return Look::Palette::current().red;
}

QColor orange()
{
    return Look::Palette::current().orange;
}

QColor green()
{
    return Look::Palette::current().green;
}

} // namespace DeliveryAppearance
