#pragma once

#include "core/SermonMetadata.h"

#include <QDialog>

#include <functional>
#include <optional>

class DurationChooser;
class OccurrencesEditor;
class QLineEdit;
class QPushButton;
class SermonDocument;
class UndoManager;

// Edits an open sermon's title and metadata. Drafts are written on "Done", each changed field as
// its own undo step; a duration preset is written at once.
class FileSettingsSheet : public QDialog {
    Q_OBJECT
public:
    FileSettingsSheet(SermonDocument* document, UndoManager* undoManager, QWidget* parent = nullptr);

    // Done: title, scripture, series, custom duration, occasions; then closes.
    void confirm();
    void cancel();

    // Writes each draft that differs, with its own undo step.
    void commitTitle();
    void commitScripture();
    void commitSeries();
    void commitCustomDuration();
    void commitOccasions();
    void writeDuration(int minutes);
    void choosePreset(int minutes);

    QLineEdit* titleField() const { return m_title; }
    QLineEdit* scriptureField() const { return m_scripture; }
    QLineEdit* seriesField() const { return m_series; }
    DurationChooser* durationChooser() const { return m_duration; }
    OccurrencesEditor* occurrencesEditor() const { return m_occurrences; }
    QPushButton* doneButton() const { return m_done; }

    // The root's text changed: the views lay out again.
    std::function<void()> onTitleChanged;

private:
    void refreshDrafts();
    void refreshDurationDraft();
    void snapshot();
    void setMetadata(const std::function<void(SermonMetadata&)>& change);

    SermonDocument* m_document;
    UndoManager* m_undoManager;
    QLineEdit* m_title;
    QLineEdit* m_scripture;
    QLineEdit* m_series;
    DurationChooser* m_duration;
    OccurrencesEditor* m_occurrences;
    QPushButton* m_done;
    QList<SermonOccasion> m_occasionsDraft;
    SermonMetadata m_shownMetadata;
    QString m_shownTitle;
};
