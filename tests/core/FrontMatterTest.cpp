#include "core/FrontMatter.h"

#include <gtest/gtest.h>

namespace {

SermonOccasion occasion(const QString& place, int y, int m, int d)
{
    SermonOccasion o;
    o.place = place;
    o.date = QDate(y, m, d);
    return o;
}

SermonMetadata decoded(const char* yaml)
{
    auto result = decodeFrontMatter(QString::fromUtf8(yaml));
    EXPECT_TRUE(result.metadata.has_value()) << yaml << " failed: " << result.error.toStdString();
    return result.metadata.value_or(SermonMetadata{});
}

TEST(FrontMatter, WritesKeysInFixedOrderWithOccasionsLatestFirst)
{
    SermonMetadata m;
    m.duration = 35;
    m.series = QStringLiteral("Hope in Hard Times");
    m.scripture = QStringLiteral("Romans 8:28-39");
    m.occasions = {occasion(QStringLiteral("Riverside Fellowship"), 2025, 11, 2),
                   occasion(QStringLiteral("Grace Chapel"), 2026, 3, 15)};
    EXPECT_EQ(encodeFrontMatter(m).value_or(QString()).toStdString(),
              "occasions:\n"
              "- place: Grace Chapel\n"
              "  date: '2026-03-15'\n"
              "- place: Riverside Fellowship\n"
              "  date: '2025-11-02'\n"
              "scripture: Romans 8:28-39\n"
              "series: Hope in Hard Times\n"
              "duration: 35\n");
    // Only the file is ordered; the record keeps its own order.
    EXPECT_EQ(m.occasions.first().place, "Riverside Fellowship");
}

TEST(FrontMatter, OmitsWhatIsUnset)
{
    EXPECT_FALSE(encodeFrontMatter(SermonMetadata{}).has_value());
    SermonMetadata zero;
    zero.duration = 0;
    EXPECT_EQ(encodeFrontMatter(zero).value_or(QString()), "duration: 0\n");
}

TEST(FrontMatter, OccasionsOfOneDayKeepTheirOrder)
{
    SermonMetadata m;
    m.occasions = {occasion(QStringLiteral("First"), 2026, 1, 4), occasion(QStringLiteral("Older"), 2025, 1, 4),
                   occasion(QStringLiteral("Second"), 2026, 1, 4), occasion({}, 2027, 2, 1)};
    EXPECT_EQ(encodeFrontMatter(m).value_or(QString()).toStdString(),
              "occasions:\n"
              "- place: ''\n"
              "  date: '2027-02-01'\n"
              "- place: First\n"
              "  date: '2026-01-04'\n"
              "- place: Second\n"
              "  date: '2026-01-04'\n"
              "- place: Older\n"
              "  date: '2025-01-04'\n");
}

TEST(FrontMatter, QuotesStringsThatWouldReadAsAnotherType)
{
    struct Row {
        const char* text;
        const char* written;
    } rows[] = {
        {"1234", "scripture: '1234'\n"},
        {"yes", "scripture: 'yes'\n"},
        {"Off", "scripture: 'Off'\n"},
        {"3.5", "scripture: '3.5'\n"},
        {"~", "scripture: '~'\n"},
        {"null", "scripture: 'null'\n"},
        {"2026-03-15", "scripture: '2026-03-15'\n"},
        {"1:30", "scripture: '1:30'\n"},
        {"<<", "scripture: '<<'\n"},
        {".inf", "scripture: '.inf'\n"},
        {"John 3:16", "scripture: John 3:16\n"},
        {"Psalm 23", "scripture: Psalm 23\n"},
        {"yesterday", "scripture: yesterday\n"},
    };
    for (const auto& row : rows) {
        SermonMetadata m;
        m.scripture = QString::fromUtf8(row.text);
        EXPECT_EQ(encodeFrontMatter(m).value_or(QString()).toStdString(), row.written) << row.text;
        EXPECT_EQ(decoded(row.written).scripture, m.scripture) << row.text;
    }
}

TEST(FrontMatter, NonAsciiIsEscapedInDoubleQuotesAndReadsBack)
{
    SermonMetadata m;
    m.series = QStringLiteral("Caf\u00e9 \u2019faith\u2019");
    const QString yaml = encodeFrontMatter(m).value_or(QString());
    EXPECT_EQ(yaml.toStdString(), "series: \"Caf\\xE9 \\u2019faith\\u2019\"\n");
    EXPECT_EQ(decoded(yaml.toUtf8().constData()).series, m.series);
}

TEST(FrontMatter, EncodedRecordsReadBackEqualApartFromOccasionIds)
{
    SermonMetadata m;
    m.occasions = {occasion(QStringLiteral("St. Mark's: \"upper\" room"), 2026, 12, 24)};
    m.scripture = QStringLiteral("- not a list");
    m.series = QStringLiteral("#hashtag, [brackets] & more: yes");
    m.duration = -3;
    auto back = decoded(encodeFrontMatter(m).value_or(QString()).toUtf8().constData());
    ASSERT_EQ(back.occasions.size(), 1);
    back.occasions[0].id = m.occasions[0].id;
    EXPECT_EQ(back, m);
}

TEST(FrontMatter, FieldsAbsorbTheirOwnFaults)
{
    struct Row {
        const char* yaml;
        const char* scripture;
        std::optional<int> duration;
        int occasions;
    } rows[] = {
        {"scripture: 12", "12", std::nullopt, 0},
        {"duration: '35'", "", 35, 0},
        {"duration: 35.5", "", std::nullopt, 0},
        {"duration: soon", "", std::nullopt, 0},
        {"duration: [1, 2]", "", std::nullopt, 0},
        {"duration: +40", "", 40, 0},
        {"duration: 99999999999999", "", std::nullopt, 0},
        {"occasions: notalist\nscripture: Acts 2", "Acts 2", std::nullopt, 0},
        {"scripture: [a, b]\nduration: 20", "", 20, 0},
        {"scripture: {a: b}", "", std::nullopt, 0},
        {"scripture:", "", std::nullopt, 0},
        {"title: Ignored\nscripture: Ruth 1", "Ruth 1", std::nullopt, 0},
        {"occasion:\n- place: X\n  date: 2026-01-01", "", std::nullopt, 0},
        {"occasions:\n- place: A\n  date: 2026-01-01\n- place: B\n  date: soon\n- place: C\n  date: '2025-02-03'", "",
         std::nullopt, 2},
        {"occasions:\n- date: 2026-01-01\n- place: No date\n- just a string\n- [1, 2]", "", std::nullopt, 1},
        {"base: &b\n  scripture: Merged\n<<: *b\nduration: 5", "Merged", 5, 0},
        {"base: &b\n  scripture: Merged\n<<: *b\nscripture: Own", "Own", std::nullopt, 0},
    };
    for (const auto& row : rows) {
        const SermonMetadata m = decoded(row.yaml);
        EXPECT_EQ(m.scripture, QString::fromUtf8(row.scripture)) << row.yaml;
        EXPECT_EQ(m.duration, row.duration) << row.yaml;
        EXPECT_EQ(m.occasions.size(), row.occasions) << row.yaml;
    }
}

TEST(FrontMatter, OccasionsReadInFileOrderWithFreshIds)
{
    const auto m = decoded("occasions:\n- place: A\n  date: 2026-01-01\n- date: '2025-02-03'\n  place: B");
    ASSERT_EQ(m.occasions.size(), 2);
    EXPECT_EQ(m.occasions[0].place, "A");
    EXPECT_EQ(m.occasions[0].date, QDate(2026, 1, 1));
    EXPECT_EQ(m.occasions[1].place, "B");
    EXPECT_EQ(m.occasions[1].date, QDate(2025, 2, 3));
    EXPECT_NE(m.occasions[0].id, m.occasions[1].id);
    EXPECT_NE(decoded("occasions:\n- place: A\n  date: 2026-01-01").occasions[0].id, m.occasions[0].id);
}

TEST(FrontMatter, WholeBlockFailures)
{
    const char* failures[] = {
        "",
        "just a string",
        "- a list\n- at the top",
        "scripture: [unclosed",
        "scripture: a\nscripture: b",
        "occasions:\n- place: A\n  place: B\n  date: 2026-01-01",
        "a: 1\n---\nb: 2",
        "\t: tab",
    };
    for (const char* yaml : failures) {
        const auto result = decodeFrontMatter(QString::fromUtf8(yaml));
        EXPECT_FALSE(result.metadata.has_value()) << yaml;
        EXPECT_FALSE(result.error.isEmpty()) << yaml;
    }
    // A block larger than any sermon's is refused unread, however plain.
    EXPECT_FALSE(
        decodeFrontMatter(QStringLiteral("duration: 5\n") + QStringLiteral("# note\n").repeated(40000)).metadata);
}

TEST(FrontMatter, DatesNeedTheDayForm)
{
    EXPECT_EQ(YAMLDate::parse(QStringLiteral("2026-03-15")), QDate(2026, 3, 15));
    EXPECT_EQ(YAMLDate::parse(QStringLiteral("2026-3-5")), QDate(2026, 3, 5));
    for (const char* bad : {"2026-02-30", "26-03-15", "2026/03/15", "2026-03-15T10:00:00", "", "soon"})
        EXPECT_FALSE(YAMLDate::parse(QString::fromUtf8(bad)).has_value()) << bad;
    EXPECT_EQ(YAMLDate::format(QDate(987, 1, 2)), "0987-01-02");
}

} // namespace
