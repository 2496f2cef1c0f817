#include "ReadingPace.h"

#include <QCoreApplication>

namespace ReadingPaces {

std::optional<ReadingPace> fromWordsPerMinute(int wpm)
{
    for (ReadingPace pace : allCases)
        if (int(pace) == wpm)
            return pace;
    return std::nullopt;
}

QString label(ReadingPace pace)
{
    switch (pace) {
    case ReadingPace::slow:
        return QCoreApplication::translate("ReadingPace", "Slow (100 wpm)");
    case ReadingPace::moderate:
        return QCoreApplication::translate("ReadingPace", "Moderate (120 wpm)");
    case ReadingPace::normal:
        return QCoreApplication::translate("ReadingPace", "Normal (140 wpm)");
    case ReadingPace::brisk:
        return QCoreApplication::translate("ReadingPace", "Brisk (160 wpm)");
    }
    return {};
}

} // namespace ReadingPaces
