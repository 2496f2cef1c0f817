#include "AboutView.h"

#include "look/Look.h"

#include <QLabel>
#include <QVBoxLayout>

#ifndef ORANTIUM_VERSION
#define ORANTIUM_VERSION "0.0.0"
#endif
#ifndef ORANTIUM_BUILD
#define ORANTIUM_BUILD "1"
#endif

QString AboutView::versionText()
{
    return QStringLiteral("Version ") + QStringLiteral(ORANTIUM_VERSION) + QStringLiteral(" (")
        + QStringLiteral(ORANTIUM_BUILD) + QLatin1Char(')');
}

AboutView::AboutView(QWidget* parent)
    : QWidget(parent)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(40, 64, 40, 40);
    column->setSpacing(10);

    auto* name = new QLabel(QStringLiteral("Orantium"), this);
    QFont nameFont;
    nameFont.setFamilies({QStringLiteral("Luminari"), QStringLiteral("Noto Serif"), QStringLiteral("DejaVu Serif")});
    nameFont.setPixelSize(38);
    name->setFont(nameFont);
    name->setAlignment(Qt::AlignHCenter);

    auto* version = new QLabel(versionText(), this);
    version->setObjectName(QStringLiteral("version"));
    version->setAlignment(Qt::AlignHCenter);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* description = new QLabel(
        QStringLiteral("Prepare a sermon as a mind map of short lines, from the keyboard, and deliver it from a "
                       "timed reading view. Each sermon is one plain Markdown file that any text editor can read."),
        this);
    description->setWordWrap(true);
    description->setAlignment(Qt::AlignHCenter);

    auto* contact = new QLabel(QStringLiteral("<a href=\"mailto:hello@orantium.app\">hello@orantium.app</a>"), this);
    contact->setOpenExternalLinks(true);
    contact->setAlignment(Qt::AlignHCenter);

    const QColor ink = Look::ink(Look::isDarkPalette(palette()));
    QPalette p = name->palette();
    p.setColor(QPalette::WindowText, ink);
    name->setPalette(p);

    column->addWidget(name);
    column->addWidget(version);
    column->addSpacing(24);
    column->addWidget(description);
    column->addStretch(1);
    column->addWidget(contact);
}
