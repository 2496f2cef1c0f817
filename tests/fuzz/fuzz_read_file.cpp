// Any bytes a user can hand us: read them as a sermon, walk and write what was read, read that again.
#include "core/SermonDocument.h"
#include "core/SermonJson.h"
#include "core/WordCount.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto contents = readSermon(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!contents)
        return 0;
    SermonDocument document(std::move(*contents));
    const QByteArray written = document.fileContents();
    WordCount::nodeWordFractions(*document.root());
    SermonJson::toJson(document.metadata(), *document.root());
    document.captureUndo(std::nullopt);
    document.undo();

    // What we write must read again (it need not be the same tree: the format doesn't escape).
    if (!readSermon(written))
        __builtin_trap();
    return 0;
}
