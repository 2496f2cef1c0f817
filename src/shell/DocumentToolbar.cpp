#include "DocumentToolbar.h"

#include "Symbols.h"

#include <QButtonGroup>
#include <QEvent>
#include <QHBoxLayout>
#include <QToolButton>

namespace {
QWidget* spacer(QWidget* parent)
{
    auto* widget = new QWidget(parent);
    widget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return widget;
}
} // namespace

DocumentToolbar::DocumentToolbar(QWidget* parent)
    : QToolBar(parent)
    , m_fileSettings(new QToolButton(this))
    , m_mapMode(new QToolButton)
    , m_deliveryMode(new QToolButton)
    , m_modes(new QButtonGroup(this))
    , m_appearance(new QToolButton(this))
{
    setObjectName(QStringLiteral("documentToolbar"));
    setMovable(false);
    setFloatable(false);
    setIconSize(QSize(18, 18));
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setContextMenuPolicy(Qt::PreventContextMenu);

    m_fileSettings->setToolTip(QStringLiteral("File settings"));
    m_fileSettings->setAutoRaise(true);
    m_fileSettings->setFocusPolicy(Qt::NoFocus);
    addWidget(m_fileSettings);
    addWidget(spacer(this));

    // Two segments side by side, as one control labelled "Mode".
    auto* picker = new QWidget(this);
    picker->setObjectName(QStringLiteral("modePicker"));
    picker->setAccessibleName(QStringLiteral("Mode"));
    auto* pickerLayout = new QHBoxLayout(picker);
    pickerLayout->setContentsMargins(0, 0, 0, 0);
    pickerLayout->setSpacing(0);
    const std::pair<QToolButton*, AppMode> segments[] = {{m_mapMode, AppMode::tree},
                                                         {m_deliveryMode, AppMode::delivery}};
    for (auto [button, mode] : segments) {
        button->setParent(picker);
        button->setText(AppModes::label(mode));
        button->setCheckable(true);
        button->setFocusPolicy(Qt::NoFocus);
        button->setMinimumWidth(92);
        m_modes->addButton(button, int(mode));
        pickerLayout->addWidget(button);
    }
    m_mapMode->setObjectName(QStringLiteral("segmentFirst"));
    m_deliveryMode->setObjectName(QStringLiteral("segmentLast"));
    m_modes->setExclusive(true);
    m_mapMode->setChecked(true);
    addWidget(picker);
    addWidget(spacer(this));

    m_appearance->setAutoRaise(true);
    m_appearance->setFocusPolicy(Qt::NoFocus);
    addWidget(m_appearance);

    connect(m_fileSettings, &QToolButton::clicked, this, [this] {
        if (onFileSettings)
            onFileSettings();
    });
    connect(m_modes, &QButtonGroup::idClicked, this, [this](int id) {
        if (onChooseMode)
            onChooseMode(AppMode(id));
    });
    connect(m_appearance, &QToolButton::clicked, this, [this] {
        if (onCycleAppearance)
            onCycleAppearance();
    });
    restyle();
}

QToolButton* DocumentToolbar::modeButton(AppMode mode) const
{
    return mode == AppMode::delivery ? m_deliveryMode : mode == AppMode::tree ? m_mapMode : nullptr;
}

void DocumentToolbar::setMode(AppMode mode)
{
    if (QToolButton* button = modeButton(mode)) {
        button->setChecked(true);
    } else {
        // Columns has no segment: neither shows as chosen.
        m_modes->setExclusive(false);
        m_mapMode->setChecked(false);
        m_deliveryMode->setChecked(false);
        m_modes->setExclusive(true);
    }
}

void DocumentToolbar::setAppearance(AppAppearance appearance)
{
    if (appearance == m_appearanceValue)
        return;
    m_appearanceValue = appearance;
    restyle();
}

void DocumentToolbar::changeEvent(QEvent* event)
{
    QToolBar::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

void DocumentToolbar::restyle()
{
    QColor ink = palette().color(QPalette::WindowText);
    ink.setAlphaF(0.75f);
    m_fileSettings->setIcon(Symbols::icon(QStringLiteral("doc.text"), ink, 18));
    m_appearance->setIcon(Symbols::icon(AppAppearances::symbolName(m_appearanceValue), ink, 18));
    m_appearance->setToolTip(QStringLiteral("Appearance: ") + AppAppearances::text(m_appearanceValue));

    // A segmented control: the chosen segment filled with the accent, so that it reads at a
    // glance in light and dark alike.
    const QPalette& p = palette();
    QColor border = p.color(QPalette::WindowText);
    border.setAlphaF(0.22f);
    const QString rgba = QStringLiteral("rgba(%1, %2, %3, %4)");
    auto css = [&](const QColor& c) { return rgba.arg(c.red()).arg(c.green()).arg(c.blue()).arg(c.alphaF()); };
    const QString sheet =
        QStringLiteral("QToolButton { padding: 3px 14px; border: 1px solid %1; background: %2; color: %3; }"
                       "QToolButton:hover:!checked { background: %4; }"
                       "QToolButton:checked { background: %5; border-color: %5; color: %6; }"
                       "QToolButton#segmentFirst { border-top-left-radius: 6px; border-bottom-left-radius: 6px; "
                       "border-right: none; }"
                       "QToolButton#segmentLast { border-top-right-radius: 6px; border-bottom-right-radius: 6px; "
                       "border-left: none; }")
            .arg(css(border), css(p.color(QPalette::Button)), css(p.color(QPalette::ButtonText)),
                 css(p.color(QPalette::Midlight)), css(p.color(QPalette::Highlight)),
                 css(p.color(QPalette::HighlightedText)));
    m_mapMode->parentWidget()->setStyleSheet(sheet);
}
