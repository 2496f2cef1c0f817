#pragma once

#include "NodeID.h"

#include <QDate>
#include <QList>
#include <QString>

#include <optional>

// Where and when a sermon is preached. The id only identifies rows on screen; it is
// never written and is made fresh on every read.
struct SermonOccasion {
    QUuid id = QUuid::createUuid();
    QString place;
    QDate date;

    bool operator==(const SermonOccasion&) const = default;
};

// What a sermon knows about itself apart from its text. The title is the root's text.
struct SermonMetadata {
    QList<SermonOccasion> occasions;
    QString scripture;
    QString series;
    std::optional<int> duration; // minutes

    bool operator==(const SermonMetadata&) const = default;
};
