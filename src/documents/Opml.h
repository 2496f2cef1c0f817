#pragma once

#include "core/SermonDocument.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Outlines shared with other tools. The title travels as the head's title and every other line
// as an outline's text; a quote goes as its text behind "> ", so that quotes and markers travel
// as text any outliner shows.
namespace Opml {

QByteArray write(const SermonNode& root);

// A new sermon from an outline: the head's title becomes the title ("Untitled" without one),
// each outline's "text" a line and its "_note" a line under it. On failure, nothing and a
// sentence for a person in `error`. A document type declaration is refused outright, so no
// entity is ever expanded; nesting of any depth is read without recursion.
std::optional<SermonContents> read(const QByteArray& bytes, QString* error = nullptr);

} // namespace Opml
