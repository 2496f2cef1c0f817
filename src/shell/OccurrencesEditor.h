#pragma once

#include "core/SermonMetadata.h"

#include <QDateTime>
#include <QLineEdit>
#include <QList>
#include <QPointer>
#include <QUuid>
#include <QWidget>

#include <functional>
#include <optional>

class QLineEdit;
class QVBoxLayout;
class SectionBlock;

// The start of the Sunday on or after `moment`, in local time: a Sunday gives its own start.
QDateTime comingSunday(const QDateTime& moment);

// The list of places and dates a sermon is preached, latest first on screen (the stored order
// stays), with one row at a time open for editing.
class OccurrencesEditor : public QWidget {
    Q_OBJECT
public:
    explicit OccurrencesEditor(QWidget* parent = nullptr);

    const QList<SermonOccasion>& occasions() const { return m_occasions; }
    // From outside (the document changed): shown, not called back.
    void setOccasions(const QList<SermonOccasion>& occasions);

    std::optional<QUuid> editingID() const { return m_editingID; }
    QDate editDate() const { return m_editDate; }
    QString editPlace() const { return m_editPlace; }
    void setEditDate(QDate date);
    void setEditPlace(const QString& place);

    // Appends an occasion on the coming Sunday after `now` and opens it.
    void add(const QDateTime& now = QDateTime::currentDateTime());
    void beginEditing(const QUuid& id);
    // Writes the open row back, if it changed, and closes it.
    void commit();
    void remove(const QUuid& id);

    QLineEdit* placeField() const { return m_placeField; }

    // The occasions after each change made here.
    std::function<void(const QList<SermonOccasion>&)> onChanged;

private:
    void rebuild();
    void changed();
    QWidget* restingRow(const SermonOccasion& occasion);
    QWidget* editingRow();
    void openCalendar(QWidget* anchor);

    QList<SermonOccasion> m_occasions;
    std::optional<QUuid> m_editingID;
    QDate m_editDate;
    QString m_editPlace;
    bool m_isCalendarOpen = false;
    SectionBlock* m_block;
    QPointer<QLineEdit> m_placeField;
};
