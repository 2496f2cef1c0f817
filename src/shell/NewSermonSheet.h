#pragma once

#include "core/SermonMetadata.h"

#include <QWidget>

#include <functional>

class DurationChooser;
class OccurrencesEditor;
class QLineEdit;
class QPushButton;

// Asks for a new sermon's title and metadata before the document exists.
class NewSermonSheet : public QWidget {
    Q_OBJECT
public:
    explicit NewSermonSheet(QWidget* parent = nullptr);

    // Empties every field, for the next new sermon.
    void reset();
    void focusTitle();

    bool canCreate() const;
    // Calls onCreate with the trimmed title and the metadata as they stand, if a title is there.
    void create();
    void cancel();

    QLineEdit* titleField() const { return m_title; }
    QLineEdit* scriptureField() const { return m_scripture; }
    QLineEdit* seriesField() const { return m_series; }
    DurationChooser* durationChooser() const { return m_duration; }
    OccurrencesEditor* occurrencesEditor() const { return m_occurrences; }
    QPushButton* createButton() const { return m_create; }
    std::optional<int> duration() const { return m_durationValue; }

    std::function<void(const QString& title, const SermonMetadata& metadata)> onCreate;
    std::function<void()> onCancel;

private:
    void updateCreateButton();

    QLineEdit* m_title;
    QLineEdit* m_scripture;
    QLineEdit* m_series;
    DurationChooser* m_duration;
    OccurrencesEditor* m_occurrences;
    QPushButton* m_create;
    std::optional<int> m_durationValue;
};
