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

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // The writer leaves the array open until exit, as trace viewers allow; close it to parse.
    QByteArray text = file.readAll().trimmed();
    ASSERT_TRUE(text.endsWith(','));
    text.chop(1);
    text += ']';
    QJsonParseError error{};
    const QJsonArray events = QJsonDocument::fromJson(text, &error).array();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << text.toStdString();
    ASSERT_EQ(events.size(), 3);
    EXPECT_EQ(events[0]["name"].toString(), "TreeLayout.done");
    EXPECT_EQ(events[0]["ph"].toString(), "i");
    EXPECT_EQ(events[0]["args"]["message"].toString(), "nodes=12");
    EXPECT_EQ(events[1]["ph"].toString(), "B");
    EXPECT_EQ(events[1]["args"]["message"].toString(), "nodes=3 scale=1.00 \"quoted\"");
    EXPECT_EQ(events[2]["ph"].toString(), "E");
    EXPECT_LE(events[1]["ts"].toDouble(), events[2]["ts"].toDouble());
}

} // namespace
