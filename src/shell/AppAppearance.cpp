#include "AppAppearance.h"

#include <QApplication>
#include <QStyle>

#include <optional>

namespace AppAppearances {

namespace {
std::optional<QPalette>& systemPalette()
{
    static std::optional<QPalette> palette;
    return palette;
}
} // namespace

QString text(AppAppearance appearance)
{
    switch (appearance) {
    case AppAppearance::light:
        return QStringLiteral("Light");
    case AppAppearance::dark:
        return QStringLiteral("Dark");
    case AppAppearance::system:
        break;
    }
    return QStringLiteral("System");
}

AppAppearance fromText(const QString& text)
{
    if (text == QLatin1String("Light"))
        return AppAppearance::light;
    if (text == QLatin1String("Dark"))
        return AppAppearance::dark;
    return AppAppearance::system;
}

AppAppearance next(AppAppearance appearance)
{
    switch (appearance) {
    case AppAppearance::system:
        return AppAppearance::light;
    case AppAppearance::light:
        return AppAppearance::dark;
    case AppAppearance::dark:
        break;
    }
    return AppAppearance::system;
}

QString symbolName(AppAppearance appearance)
{
    switch (appearance) {
    case AppAppearance::light:
        return QStringLiteral("sun.max");
    case AppAppearance::dark:
        return QStringLiteral("moon");
    case AppAppearance::system:
        break;
    }
    return QStringLiteral("circle.lefthalf.filled");
}

QPalette lightPalette()
{
    QPalette p;
    const QColor window(0xf3, 0xef, 0xe8);
    const QColor text(0x2b, 0x22, 0x1c);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, QColor(0xfd, 0xfb, 0xf7));
    p.setColor(QPalette::AlternateBase, QColor(0xee, 0xe9, 0xe0));
    p.setColor(QPalette::ToolTipBase, QColor(0xff, 0xfc, 0xf2));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(0x2b, 0x22, 0x1c, 0x70));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0xec, 0xe6, 0xdc));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, Qt::white);
    p.setColor(QPalette::Midlight, QColor(0xf6, 0xf2, 0xeb));
    p.setColor(QPalette::Mid, QColor(0xc8, 0xbf, 0xb2));
    p.setColor(QPalette::Dark, QColor(0xa8, 0x9e, 0x90));
    p.setColor(QPalette::Shadow, QColor(0x60, 0x58, 0x50));
    p.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xd6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, QColor(0x2f, 0x6f, 0xd6));
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, QColor(0x2b, 0x22, 0x1c, 0x60));
    return p;
}

QPalette darkPalette()
{
    QPalette p;
    const QColor window(0x24, 0x22, 0x28);
    const QColor text(0xea, 0xe2, 0xd4);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, QColor(0x1b, 0x1a, 0x1f));
    p.setColor(QPalette::AlternateBase, QColor(0x2c, 0x2a, 0x31));
    p.setColor(QPalette::ToolTipBase, QColor(0x33, 0x30, 0x38));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(0xea, 0xe2, 0xd4, 0x70));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x34, 0x31, 0x39));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, QColor(0x4a, 0x46, 0x50));
    p.setColor(QPalette::Midlight, QColor(0x3c, 0x39, 0x41));
    p.setColor(QPalette::Mid, QColor(0x2a, 0x28, 0x2e));
    p.setColor(QPalette::Dark, QColor(0x16, 0x15, 0x19));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Highlight, QColor(0x3d, 0x7e, 0xe6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, QColor(0x6c, 0xa0, 0xf2));
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, QColor(0xea, 0xe2, 0xd4, 0x60));
    return p;
}

void rememberSystemPalette(const QPalette& palette)
{
    if (!systemPalette())
        systemPalette() = palette;
}

void apply(AppAppearance appearance)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return;
    QPalette palette;
    switch (appearance) {
    case AppAppearance::light:
        palette = lightPalette();
        break;
    case AppAppearance::dark:
        palette = darkPalette();
        break;
    case AppAppearance::system: {
        // Our own warm palettes in either case; the desktop only decides which.
        const QPalette desktop = systemPalette() ? *systemPalette() : QApplication::style()->standardPalette();
        palette = desktop.color(QPalette::Window).lightnessF() < 0.5 ? darkPalette() : lightPalette();
        break;
    }
    }
    if (QApplication::palette() != palette)
        QApplication::setPalette(palette);
}

} // namespace AppAppearances
