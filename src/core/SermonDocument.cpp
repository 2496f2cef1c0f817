#include "SermonDocument.h"

#include "MarkdownCodec.h"
#include "UndoManager.h"

#include <QPointer>
#include <QStringDecoder>

#include <utility>

QString describe(SermonReadError error)
{
    switch (error) {
    case SermonReadError::empty:
        return QStringLiteral("The file is empty.");
    case SermonReadError::notUtf8:
        return QStringLiteral("The file is not UTF-8 text.");
    }
    return {};
}

std::optional<SermonContents> readSermon(const QByteArray& bytes, SermonReadError* error)
{
    auto fail = [error](SermonReadError why) {
        if (error)
            *error = why;
        return std::nullopt;
    };
    if (bytes.isEmpty())
        return fail(SermonReadError::empty);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return fail(SermonReadError::notUtf8);
    if (text.isEmpty())
        return fail(SermonReadError::empty);
    auto split = MarkdownCodec::splitFrontMatter(text);
    return SermonContents{std::move(split.metadata), MarkdownCodec::parseBody(split.body)};
}

SermonDocument::SermonDocument(SermonNodePtr root, SermonMetadata metadata, QObject* parent)
    : QObject(parent)
    , m_metadata(std::move(metadata))
    , m_root(std::move(root))
{
}

SermonDocument::SermonDocument(SermonContents contents, QObject* parent)
    : SermonDocument(std::move(contents.root), std::move(contents.metadata), parent)
{
}

bool SermonDocument::setMetadata(const SermonMetadata& metadata)
{
    if (m_metadata == metadata)
        return false;
    m_metadata = metadata;
    emit metadataChanged();
    return true;
}

bool SermonDocument::setRoot(SermonNodePtr root)
{
    if (m_root == root)
        return false;
    m_root = std::move(root);
    emit rootChanged();
    return true;
}

UndoSnapshot SermonDocument::present() const
{
    return {m_root->freeze(), m_metadata, m_currentSelectedNodeID};
}

void SermonDocument::restore(SermonNodePtr root, const SermonMetadata& metadata, std::optional<NodeID> selection)
{
    setRoot(std::move(root));
    setMetadata(metadata);
    m_lastRestoredNodeID = selection;
    ++m_undoRedoGeneration;
    emit undoRedoGenerationChanged(m_undoRedoGeneration);
}

void SermonDocument::restore(const UndoSnapshot& snapshot)
{
    // The lines the step shares with the present tree move over as they are; the rest is made.
    restore(m_root ? SermonNode::thaw(snapshot.root, *m_root) : SermonNode::thaw(snapshot.root), snapshot.metadata,
            snapshot.selectedNodeID);
}

void SermonDocument::fileStep(UndoManager* manager, void (SermonDocument::*step)(UndoManager*))
{
    if (!manager)
        return;
    QPointer<SermonDocument> self(this);
    manager->registerUndo([self, manager, step] {
        if (self)
            (self->*step)(manager);
    });
}

void SermonDocument::captureUndo(std::optional<NodeID> selection, UndoManager* manager)
{
    m_undoStack.push_back({m_root->freeze(), m_metadata, selection});
    if (m_undoStack.size() > size_t(undoLimit))
        m_undoStack.erase(m_undoStack.begin());
    m_redoStack.clear();
    fileStep(manager, &SermonDocument::undo);
}

void SermonDocument::replaceContents(SermonContents contents, UndoManager* manager)
{
    if (!contents.root)
        return;
    captureUndo(m_currentSelectedNodeID, manager);
    const NodeID rootID = contents.root->id();
    restore(std::move(contents.root), contents.metadata, rootID);
}

void SermonDocument::undo(UndoManager* manager)
{
    if (m_undoStack.empty())
        return;
    UndoSnapshot taken = std::move(m_undoStack.back());
    m_undoStack.pop_back();
    m_redoStack.push_back(present());
    restore(taken);
    fileStep(manager, &SermonDocument::redo);
}

void SermonDocument::redo(UndoManager* manager)
{
    if (m_redoStack.empty())
        return;
    UndoSnapshot taken = std::move(m_redoStack.back());
    m_redoStack.pop_back();
    m_undoStack.push_back(present());
    restore(taken);
    fileStep(manager, &SermonDocument::undo);
}

QString SermonDocument::snapshot() const
{
    return MarkdownCodec::serialize(m_metadata, *m_root);
}

QByteArray SermonDocument::fileContents() const
{
    return snapshot().toUtf8();
}
