#include "WelcomeView.h"

#include "Preferences.h"
#include "Symbols.h"
#include "documents/RecentSermonsStore.h"

#include "look/Look.h"

#include <QApplication>
#include <QEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QTextDocument>
#include <QVBoxLayout>

namespace {

// A row of the recent list: the title and, under it, the latest occasion.
class RecentRow : public QPushButton {
public:
    RecentRow(const QString& title, const QString& occasion, QWidget* parent)
        : QPushButton(parent)
    {
        setFlat(true);
        setCursor(Qt::PointingHandCursor);
        setFocusPolicy(Qt::TabFocus);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(6, 2, 6, 2);
        layout->setSpacing(0);
        m_title = new QLabel(title, this);
        QFont titleFont = m_title->font();
        titleFont.setPixelSize(13);
        m_title->setFont(titleFont);
        layout->addWidget(m_title);
        if (!occasion.isEmpty()) {
            m_occasion = new QLabel(occasion, this);
            QFont small = m_occasion->font();
            small.setPixelSize(11);
            m_occasion->setFont(small);
            layout->addWidget(m_occasion);
        }
        for (QLabel* label : {m_title, m_occasion}) {
            if (!label)
                continue;
            // Titles and places come from files: markup in them is shown, never obeyed.
            label->setTextFormat(Qt::PlainText);
            label->setAttribute(Qt::WA_TransparentForMouseEvents);
        }
        setAccessibleName(title);
        setMinimumHeight(layout->sizeHint().height());
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

    QSize sizeHint() const override { return layout()->sizeHint(); }

protected:
    // Return opens the row with the keyboard, as a click does; Up and Down walk the list.
    void keyPressEvent(QKeyEvent* event) override
    {
        switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            click();
            return;
        case Qt::Key_Up:
        case Qt::Key_Down:
            if (moveFocus(event->key() == Qt::Key_Down))
                return;
            break;
        default:
            break;
        }
        QPushButton::keyPressEvent(event);
    }

    // A flat row draws no frame: the one with the keyboard is marked in the accent colour.
    void paintEvent(QPaintEvent* event) override
    {
        QPushButton::paintEvent(event);
        if (!hasFocus())
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor accent = palette().color(QPalette::Highlight);
        painter.setPen(QPen(accent, 1));
        painter.setBrush(Look::withAlpha(accent, 0.12));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    }

private:
    bool moveFocus(bool down)
    {
        const QList<QPushButton*> rows = parentWidget()->findChildren<QPushButton*>(Qt::FindDirectChildrenOnly);
        const qsizetype next = rows.indexOf(this) + (down ? 1 : -1);
        if (next < 0 || next >= rows.size())
            return false;
        // Rows are made in list order, so the children's order is the list's.
        rows[next]->setFocus(Qt::TabFocusReason);
        return true;
    }

public:
    void setInk(const QColor& ink)
    {
        QPalette p = palette();
        p.setColor(QPalette::WindowText, ink);
        m_title->setPalette(p);
        if (m_occasion) {
            QColor faded = ink;
            faded.setAlphaF(0.6f);
            p.setColor(QPalette::WindowText, faded);
            m_occasion->setPalette(p);
        }
    }

private:
    QLabel* m_title = nullptr;
    QLabel* m_occasion = nullptr;
};

} // namespace

WelcomeView::WelcomeView(Preferences* preferences, QWidget* parent)
    : QWidget(parent)
    , m_preferences(preferences)
    , m_recents(new RecentSermonsStore(this))
    , m_name(new QLabel(QStringLiteral("Orantium"), this))
    , m_tagline(new QLabel(QStringLiteral("Sermon preparation"), this))
    , m_newSermon(new QPushButton(QStringLiteral("New Sermon"), this))
    , m_open(new QPushButton(QStringLiteral("Open existing file\u2026"), this))
    , m_recentSection(new QWidget(this))
    , m_recentHeader(new QLabel(QStringLiteral("RECENT"), m_recentSection))
    , m_recentRows(new QVBoxLayout)
    , m_recentScroll(new QScrollArea(m_recentSection))
{
    setMinimumSize(420, 420);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(24, 36, 24, 20);
    column->setSpacing(0);

    QFont nameFont(QStringLiteral("Luminari"));
    nameFont.setStyleHint(QFont::Serif);
    nameFont.setFamilies({QStringLiteral("Luminari"), QStringLiteral("Noto Serif"), QStringLiteral("DejaVu Serif")});
    nameFont.setPixelSize(38);
    m_name->setFont(nameFont);
    m_name->setAlignment(Qt::AlignHCenter);
    QFont taglineFont = font();
    taglineFont.setPixelSize(10);
    taglineFont.setLetterSpacing(QFont::AbsoluteSpacing, 2.4);
    m_tagline->setFont(taglineFont);
    m_tagline->setAlignment(Qt::AlignHCenter);
    column->addWidget(m_name);
    column->addSpacing(6);
    column->addWidget(m_tagline);
    column->addSpacing(34);

    QFont buttonFont = font();
    buttonFont.setPixelSize(15);
    buttonFont.setWeight(QFont::Medium);
    m_newSermon->setFont(buttonFont);
    m_newSermon->setDefault(true);
    m_newSermon->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
    m_newSermon->setMinimumHeight(36);
    m_newSermon->setMinimumWidth(200);
    m_newSermon->setIconSize(QSize(14, 14));
    m_open->setMinimumWidth(200);
    column->addWidget(m_newSermon, 0, Qt::AlignHCenter);
    column->addSpacing(10);
    column->addWidget(m_open, 0, Qt::AlignHCenter);

    auto* recentLayout = new QVBoxLayout(m_recentSection);
    recentLayout->setContentsMargins(0, 32, 0, 0);
    recentLayout->setSpacing(8);
    QFont headerFont = font();
    headerFont.setPixelSize(10);
    headerFont.setLetterSpacing(QFont::AbsoluteSpacing, 1.2);
    m_recentHeader->setFont(headerFont);
    recentLayout->addWidget(m_recentHeader, 0, Qt::AlignLeft);
    auto* rowsHost = new QWidget;
    rowsHost->setLayout(m_recentRows);
    m_recentRows->setContentsMargins(0, 0, 0, 0);
    m_recentRows->setSpacing(2);
    m_recentRows->addStretch(1);
    m_recentScroll->setWidget(rowsHost);
    m_recentScroll->setWidgetResizable(true);
    m_recentScroll->setFrameShape(QFrame::NoFrame);
    m_recentScroll->setMaximumHeight(360);
    m_recentScroll->viewport()->setAutoFillBackground(false);
    rowsHost->setAutoFillBackground(false);
    recentLayout->addWidget(m_recentScroll);
    column->addWidget(m_recentSection, 1);
    column->addStretch(0);
    m_recentSection->setVisible(false);

    connect(m_newSermon, &QPushButton::clicked, this, [this] {
        if (onNewSermon)
            onNewSermon();
    });
    connect(m_open, &QPushButton::clicked, this, [this] {
        if (onOpenFile)
            onOpenFile();
    });
    connect(m_recents, &RecentSermonsStore::entriesChanged, this, &WelcomeView::rebuildRecentRows);
    if (preferences)
        connect(preferences, &Preferences::recentFilesChanged, this, [this] {
            if (isVisible())
                refreshRecents();
        });
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive && isVisible())
            refreshRecents();
    });
    restyle();
}

QList<QPushButton*> WelcomeView::recentButtons() const
{
    QList<QPushButton*> buttons;
    for (int i = 0; i < m_recentRows->count(); ++i)
        if (auto* button = qobject_cast<QPushButton*>(m_recentRows->itemAt(i)->widget()))
            buttons.append(button);
    return buttons;
}

void WelcomeView::refreshRecents()
{
    m_recents->refresh(m_preferences ? m_preferences->recentFiles() : QStringList());
}

void WelcomeView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    refreshRecents();
}

void WelcomeView::rebuildRecentRows()
{
    // Each activation reads the list again: rows that stand as they were keep the keyboard.
    if (m_recents->entries() != m_shownEntries)
        remakeRecentRows();

    // Files that have gone leave the stored list too.
    if (m_preferences) {
        for (const QString& path : m_preferences->recentFiles())
            if (!QFileInfo::exists(path))
                m_preferences->forgetRecentFile(path);
    }
}

void WelcomeView::remakeRecentRows()
{
    m_shownEntries = m_recents->entries();
    while (m_recentRows->count() > 1) {
        QLayoutItem* item = m_recentRows->takeAt(0);
        delete item->widget();
        delete item;
    }
    const auto& entries = m_recents->entries();
    const QColor ink = Look::ink(Look::isDarkPalette(palette()));
    int index = 0;
    for (const RecentSermonsStore::Entry& entry : entries) {
        auto* row = new RecentRow(entry.title, entry.occasionLine.value_or(QString()), m_recentScroll->widget());
        row->setToolTip(Qt::convertFromPlainText(entry.path, Qt::WhiteSpacePre));
        row->setInk(ink);
        const QString path = entry.path;
        connect(row, &QPushButton::clicked, this, [this, path] {
            if (onOpenRecent)
                onOpenRecent(path);
        });
        m_recentRows->insertWidget(index++, row);
    }
    m_recentSection->setVisible(!entries.isEmpty());
}

void WelcomeView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

void WelcomeView::restyle()
{
    const QColor ink = Look::ink(Look::isDarkPalette(palette()));
    QColor faded = ink;
    faded.setAlphaF(0.6f);
    auto tint = [](QLabel* label, const QColor& color) {
        QPalette p = label->palette();
        p.setColor(QPalette::WindowText, color);
        label->setPalette(p);
    };
    tint(m_name, ink);
    tint(m_tagline, faded);
    tint(m_recentHeader, faded);
    m_newSermon->setIcon(Symbols::icon(QStringLiteral("plus"), palette().color(QPalette::ButtonText), 14));
    for (QPushButton* button : recentButtons())
        static_cast<RecentRow*>(button)->setInk(ink);
}
