// The YAML block alone: decoding never fails loudly, and what decodes encodes and decodes equal.
#include "core/FrontMatter.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString yaml = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    const FrontMatterResult result = decodeFrontMatter(yaml);
    if (!result.metadata)
        return 0;
    const auto encoded = encodeFrontMatter(*result.metadata);
    if (!encoded)
        return 0;
    const FrontMatterResult again = decodeFrontMatter(*encoded);
    if (!again.metadata)
        __builtin_trap();
    SermonMetadata a = *result.metadata;
    SermonMetadata b = *again.metadata;
    // Ids are fresh on every read and the file orders occasions latest first.
    auto normalise = [](SermonMetadata& m) {
        for (auto& o : m.occasions)
            o.id = QUuid();
        std::stable_sort(m.occasions.begin(), m.occasions.end(),
                         [](const SermonOccasion& x, const SermonOccasion& y) { return x.date > y.date; });
    };
    normalise(a);
    normalise(b);
    if (!(a == b))
        __builtin_trap();
    return 0;
}
