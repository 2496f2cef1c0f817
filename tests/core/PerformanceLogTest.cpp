#include "core/PerformanceLog.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// The log decides once, on first use, whether ORANTIUM_TRACE names a file.
TEST(PerformanceLog, WritesChromeTraceEventsWhenAskedTo)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("trace.json"));
    qputenv("ORANTIUM_TRACE", QFile::encodeName(path));
    ASSERT_TRUE(performanceLog::isEnabled());

    int built = 0;
    performanceLog::signpostEvent("TreeLayout.done", [&] {
        ++built;
        return QStringLiteral("nodes=%1").arg(12);
    });
    const int result = performanceLog::signpostInterval(
        "CanvasDraw", [] { return QStringLiteral("nodes=3 scale=1.00 \"quoted\""); }, [] { return 42; });
    EXPECT_EQ(result, 42);
    EXPECT_EQ(built, 1);

    int detailBuilt = 0;
    performanceLog::signpostDetailEvent("TextCacheHit", [&] {
        ++detailBuilt;
        return QString();
    });
    EXPECT_EQ(detailBuilt, 0) << "per-node events stay out unless ORANTIUM_TRACE_DETAIL=1";

    // Enough events for several batches; none may be lost, and the file must parse once closed.
    const int many = 5000;
    for (int i = 0; i < many; ++i)
        performanceLog::signpostEvent("Scroll", [i] { return QStringLiteral("dx=%1").arg(i); });
    performanceLog::close();
    performanceLog::signpostEvent("AfterClose", performanceLog::noMessage);

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QJsonParseError error{};
    const QJsonArray events = QJsonDocument::fromJson(text, &error).array();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    // The array ends with an empty object, so that every event line can end with a comma.
    ASSERT_EQ(events.size(), 3 + many + 1);
    EXPECT_EQ(events[0]["name"].toString(), "TreeLayout.done");
    EXPECT_EQ(events[0]["ph"].toString(), "i");
    EXPECT_EQ(events[0]["args"]["message"].toString(), "nodes=12");
    EXPECT_EQ(events[1]["ph"].toString(), "B");
    EXPECT_EQ(events[1]["args"]["message"].toString(), "nodes=3 scale=1.00 \"quoted\"");
    EXPECT_EQ(events[2]["ph"].toString(), "E");
    for (int i = 0; i < many; ++i)
        ASSERT_EQ(events[3 + i]["args"]["message"].toString(), QStringLiteral("dx=%1").arg(i));
    EXPECT_TRUE(events[3 + many].toObject().isEmpty());
    EXPECT_LE(events[1]["ts"].toDouble(), events[2]["ts"].toDouble());
}

} // namespace
