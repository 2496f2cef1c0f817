#include "NewSermonSheet.h"

#include "DurationChooser.h"
#include "OccurrencesEditor.h"
#include "SectionBlock.h"
#include "SheetLayout.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

NewSermonSheet::NewSermonSheet(QWidget* parent)
    : QWidget(parent)
    , m_title(new QLineEdit)
    , m_scripture(new QLineEdit)
    , m_series(new QLineEdit)
    , m_duration(new DurationChooser)
    , m_occurrences(new OccurrencesEditor(this))
{
    setObjectName(QStringLiteral("newSermonSheet"));
    const SheetLayout::Frame frame = SheetLayout::build(this, QStringLiteral("New Sermon"), QStringLiteral("Create"));
    m_create = frame.confirm;
    m_title->setObjectName(QStringLiteral("title"));
    SheetLayout::addSermonRows(frame, m_title, m_scripture, m_series, m_duration, m_occurrences);

    connect(frame.cancel, &QPushButton::clicked, this, &NewSermonSheet::cancel);
    connect(m_create, &QPushButton::clicked, this, &NewSermonSheet::create);
    connect(m_title, &QLineEdit::textChanged, this, &NewSermonSheet::updateCreateButton);
    for (QLineEdit* field : {m_title, m_scripture, m_series})
        connect(field, &QLineEdit::returnPressed, this, &NewSermonSheet::create);
    m_duration->onChoosePreset = [this](int minutes) {
        m_durationValue = minutes;
        m_duration->setDuration(minutes);
    };
    // A refused draft stays as typed here; only a good one sets the duration.
    m_duration->onCommitCustom = [this] {
        if (auto minutes = DurationRules::parseCustom(m_duration->customDraft())) {
            m_durationValue = *minutes;
            m_duration->setDuration(*minutes);
        }
    };
    updateCreateButton();
}

void NewSermonSheet::reset()
{
    for (QLineEdit* field : {m_title, m_scripture, m_series})
        field->clear();
    m_durationValue.reset();
    m_duration->setDuration(std::nullopt);
    m_duration->setCustomDraft({});
    m_occurrences->setOccasions({});
    updateCreateButton();
}

void NewSermonSheet::focusTitle()
{
    m_title->setFocus();
}

bool NewSermonSheet::canCreate() const
{
    return !m_title->text().trimmed().isEmpty();
}

void NewSermonSheet::updateCreateButton()
{
    m_create->setEnabled(canCreate());
}

void NewSermonSheet::create()
{
    if (!canCreate())
        return;
    m_occurrences->commit();
    SermonMetadata metadata;
    metadata.occasions = m_occurrences->occasions();
    metadata.scripture = m_scripture->text().trimmed();
    metadata.series = m_series->text().trimmed();
    metadata.duration = m_durationValue;
    if (onCreate)
        onCreate(m_title->text().trimmed(), metadata);
}

void NewSermonSheet::cancel()
{
    if (onCancel)
        onCancel();
}
