#include "RecoveryOffer.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

RecoveryOffer::RecoveryOffer(QWidget* parent)
    : QWidget(parent)
    , m_rows(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("recoveryOffer"));
    m_rows->setContentsMargins(24, 16, 24, 0);
    m_rows->setSpacing(4);
    setVisible(false);
}

void RecoveryOffer::setCopies(const QList<RecoveryStore::Copy>& copies)
{
    m_copies = copies;
    while (QLayoutItem* item = m_rows->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    setVisible(!copies.isEmpty());
    if (copies.isEmpty())
        return;
    auto* header =
        new QLabel(copies.size() == 1
                       ? QStringLiteral("A sermon was left unsaved when Orantium last ended.")
                       : QStringLiteral("%1 sermons were left unsaved when Orantium last ended.").arg(copies.size()),
                   this);
    header->setWordWrap(true);
    m_rows->addWidget(header);
    for (const RecoveryStore::Copy& copy : copies) {
        auto* row = new QWidget(this);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        // Text from a file: never read as markup.
        auto* title = new QLabel(copy.title, row);
        title->setTextFormat(Qt::PlainText);
        title->setToolTip(QLocale().toString(copy.written, QLocale::LongFormat));
        auto* restore = new QPushButton(QStringLiteral("Restore"), row);
        auto* discard = new QPushButton(QStringLiteral("Discard"), row);
        line->addWidget(title, 1);
        line->addWidget(restore);
        line->addWidget(discard);
        const QString path = copy.path;
        connect(restore, &QPushButton::clicked, this, [this, path] {
            if (onRestore)
                onRestore(path);
        });
        connect(discard, &QPushButton::clicked, this, [this, path] {
            if (onDiscard)
                onDiscard(path);
        });
        m_rows->addWidget(row);
    }
}
