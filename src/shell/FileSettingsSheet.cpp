#include "FileSettingsSheet.h"

#include "DurationChooser.h"
#include "OccurrencesEditor.h"
#include "SectionBlock.h"
#include "SheetLayout.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

FileSettingsSheet::FileSettingsSheet(SermonDocument* document, UndoManager* undoManager, QWidget* parent)
    : QDialog(parent)
    , m_document(document)
    , m_undoManager(undoManager)
    , m_title(new QLineEdit)
    , m_scripture(new QLineEdit)
    , m_series(new QLineEdit)
    , m_duration(new DurationChooser)
    , m_occurrences(new OccurrencesEditor(this))
{
    setObjectName(QStringLiteral("fileSettingsSheet"));
    setWindowTitle(QStringLiteral("File settings"));
    setMinimumWidth(620);
    setMaximumHeight(600);
    const SheetLayout::Frame frame = SheetLayout::build(this, QStringLiteral("File settings"), QStringLiteral("Done"));
    m_done = frame.confirm;
    m_done->setAutoDefault(false);
    frame.cancel->setAutoDefault(false);
    SheetLayout::addSermonRows(frame, m_title, m_scripture, m_series, m_duration, m_occurrences);

    connect(frame.cancel, &QPushButton::clicked, this, &FileSettingsSheet::cancel);
    connect(m_done, &QPushButton::clicked, this, &FileSettingsSheet::confirm);
    for (QLineEdit* field : {m_title, m_scripture, m_series})
        connect(field, &QLineEdit::returnPressed, this, &FileSettingsSheet::confirm);
    m_duration->onChoosePreset = [this](int minutes) { choosePreset(minutes); };
    m_duration->onCommitCustom = [this] { commitCustomDuration(); };
    m_occurrences->onChanged = [this](const QList<SermonOccasion>& occasions) { m_occasionsDraft = occasions; };

    // While open, a change in the document (undo, another window) refreshes what changed.
    connect(document, &SermonDocument::metadataChanged, this, &FileSettingsSheet::refreshDrafts);
    connect(document, &SermonDocument::rootChanged, this, &FileSettingsSheet::refreshDrafts);
    connect(document, &SermonDocument::undoRedoGenerationChanged, this, &FileSettingsSheet::refreshDrafts);
    m_shownTitle = document->root()->text();
    m_shownMetadata = document->metadata();
    m_title->setText(m_shownTitle);
    m_scripture->setText(m_shownMetadata.scripture);
    m_series->setText(m_shownMetadata.series);
    m_duration->setDuration(m_shownMetadata.duration);
    m_duration->setCustomDraft(DurationRules::draftReset(m_shownMetadata.duration));
    m_occasionsDraft = m_shownMetadata.occasions;
    m_occurrences->setOccasions(m_occasionsDraft);
    // Typing starts in the title, never on a button that Space would press.
    m_title->setFocus();
}

void FileSettingsSheet::refreshDrafts()
{
    const QString title = m_document->root()->text();
    const SermonMetadata& metadata = m_document->metadata();
    if (title != m_shownTitle)
        m_title->setText(title);
    if (metadata.scripture != m_shownMetadata.scripture)
        m_scripture->setText(metadata.scripture);
    if (metadata.series != m_shownMetadata.series)
        m_series->setText(metadata.series);
    if (metadata.duration != m_shownMetadata.duration) {
        m_duration->setDuration(metadata.duration);
        m_duration->setCustomDraft(DurationRules::draftReset(metadata.duration));
    }
    if (metadata.occasions != m_shownMetadata.occasions) {
        m_occasionsDraft = metadata.occasions;
        m_occurrences->setOccasions(m_occasionsDraft);
    }
    m_shownTitle = title;
    m_shownMetadata = metadata;
}

void FileSettingsSheet::refreshDurationDraft()
{
    m_duration->setDuration(m_document->metadata().duration);
    m_duration->setCustomDraft(DurationRules::draftReset(m_document->metadata().duration));
}

void FileSettingsSheet::snapshot()
{
    m_document->captureUndo(std::nullopt, m_undoManager);
}

void FileSettingsSheet::setMetadata(const std::function<void(SermonMetadata&)>& change)
{
    SermonMetadata metadata = m_document->metadata();
    change(metadata);
    if (metadata == m_document->metadata())
        return;
    snapshot();
    m_document->setMetadata(metadata);
}

void FileSettingsSheet::commitTitle()
{
    const QString title = m_title->text();
    if (title == m_document->root()->text())
        return;
    snapshot();
    m_document->root()->setText(title);
    m_shownTitle = title;
    if (onTitleChanged)
        onTitleChanged();
}

void FileSettingsSheet::commitScripture()
{
    setMetadata([&](SermonMetadata& m) { m.scripture = m_scripture->text(); });
}

void FileSettingsSheet::commitSeries()
{
    setMetadata([&](SermonMetadata& m) { m.series = m_series->text(); });
}

void FileSettingsSheet::writeDuration(int minutes)
{
    setMetadata([&](SermonMetadata& m) { m.duration = minutes; });
}

void FileSettingsSheet::choosePreset(int minutes)
{
    writeDuration(minutes);
    refreshDurationDraft();
}

void FileSettingsSheet::commitCustomDuration()
{
    if (auto minutes = DurationRules::parseCustom(m_duration->customDraft()))
        writeDuration(*minutes);
    // Refused or accepted, the field shows what the document holds.
    refreshDurationDraft();
}

void FileSettingsSheet::commitOccasions()
{
    m_occurrences->commit();
    const QList<SermonOccasion> occasions = m_occasionsDraft;
    setMetadata([&](SermonMetadata& m) { m.occasions = occasions; });
}

void FileSettingsSheet::confirm()
{
    commitTitle();
    commitScripture();
    commitSeries();
    commitCustomDuration();
    commitOccasions();
    accept();
}

void FileSettingsSheet::cancel()
{
    reject();
}
