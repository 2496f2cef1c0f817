#pragma once

#include <QString>

#include <functional>

// Texts told apart by their characters' address and length, never read. Lines keep sharing the
// characters they were given through edits, undo and copies, so a cache keyed this way hits
// without reading a text; it holds its key, a copy, so the address can't be reused for another
// text while the entry lives. Equal text elsewhere counts as another: measured once more.
struct SameCharacters {
    bool operator()(const QString& a, const QString& b) const
    {
        return a.constData() == b.constData() && a.size() == b.size();
    }
};

struct SameCharactersHash {
    size_t operator()(const QString& text) const noexcept
    {
        return std::hash<const void*>()(text.constData()) ^ size_t(text.size()) * 0x9e3779b97f4a7c15ull;
    }
};
