#pragma once

#include <QString>

#include <array>
#include <optional>

// Words a minute, as the pace menu offers them.
enum class ReadingPace { slow = 100, moderate = 120, normal = 140, brisk = 160 };

namespace ReadingPaces {
inline constexpr std::array<ReadingPace, 4> allCases{ReadingPace::slow, ReadingPace::moderate, ReadingPace::normal,
                                                     ReadingPace::brisk};
inline constexpr int defaultWPM = 120;
inline int wordsPerMinute(ReadingPace pace)
{
    return int(pace);
}
std::optional<ReadingPace> fromWordsPerMinute(int wpm);
QString label(ReadingPace pace);
} // namespace ReadingPaces
