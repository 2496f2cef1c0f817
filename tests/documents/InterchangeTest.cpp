#include "core/TreeOutline.h"
#include "documents/FileTestSupport.h"

#include "core/SermonJson.h"
#include "documents/Opml.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

// Sermons as they travel to other tools and back: JSON both ways, OPML both ways.

const QByteArray crafted =
    "---\n"
    "occasions:\n- place: Grace \"Chapel\"\n  date: '2026-03-15'\n- place: ''\n  date: '2025-11-02'\n"
    "scripture: Romans 8:28-39\nseries: \"Hope \\xE9\"\nduration: 35\n---\n\n"
    "# Title & <more>\n\n## Opening\n[//]: # (collapsed)\n\n\u2B50 Have you felt \"forgotten\"?\n"
    "> He will never\n> leave you.\n\n### Story\n\n- one\n  - deeper\n- two\n";

std::vector<std::pair<QString, QByteArray>> samples()
{
    std::vector<std::pair<QString, QByteArray>> out{{QStringLiteral("crafted"), crafted}};
    const QDir examples(QStringLiteral("examples"));
    for (const QString& name : examples.entryList({QStringLiteral("*.md")}, QDir::Files))
        out.emplace_back(name, readAll(examples.filePath(name)));
    return out;
}

QString withoutCollapse(QString outlineText)
{
    return outlineText.replace(QRegularExpression(QStringLiteral("(\\d+q?)c ")), QStringLiteral("\\1 "));
}

TEST(Interchange, JsonAndOpmlRoundTripsKeepTheTree)
{
    const auto all = samples();
    ASSERT_GE(all.size(), 4u); // the examples are there
    for (const auto& [name, bytes] : all) {
        const auto contents = readSermon(bytes);
        ASSERT_TRUE(contents) << name.toStdString();
        const QByteArray json = SermonJson::toJson(contents->metadata, *contents->root);
        QString error;
        const auto fromJson = SermonJson::fromJson(json, &error);
        ASSERT_TRUE(fromJson) << name.toStdString() << ": " << error.toStdString();
        EXPECT_EQ(outline(*fromJson->root), outline(*contents->root)) << name.toStdString();
        EXPECT_EQ(fromJson->metadata.scripture, contents->metadata.scripture);
        EXPECT_EQ(SermonJson::toJson(fromJson->metadata, *fromJson->root), json) << name.toStdString();

        // OPML carries the tree, quotes and markers, not the folding or the metadata.
        const auto fromOpml = Opml::read(Opml::write(*contents->root), &error);
        ASSERT_TRUE(fromOpml) << name.toStdString() << ": " << error.toStdString();
        EXPECT_EQ(outline(*fromOpml->root), withoutCollapse(outline(*contents->root))) << name.toStdString();
    }
}

TEST(Interchange, JsonFromAScriptNeedsOnlyTheTree)
{
    struct Row {
        const char* why;
        const char* json;
        const char* outline;
    } rows[] = {
        {"only texts and children", R"({"root":{"text":"T","children":[{"text":"a"},{"text":"b"}]}})",
         "0 T | 1 a | 1 b"},
        {"keys in any order, unknown ones skipped",
         R"({"x":[{"y":[]}],"root":{"children":[{"isQuote":true,"text":"q","z":{}}],"text":"T"}})", "0 T | 1q q"},
        {"wrong depths renumbered", R"({"root":{"text":"T","depth":4,"children":[{"text":"a","depth":9}]}})",
         "0 T | 1 a"},
        {"escapes", R"({"root":{"text":"\u00e9\ud83d\ude00\n\"\\/"}})", "0 \u00e9\U0001F600/\"\\/"},
    };
    for (const Row& row : rows) {
        QString error;
        const auto contents = SermonJson::fromJson(row.json, &error);
        ASSERT_TRUE(contents) << row.why << ": " << error.toStdString();
        EXPECT_EQ(outline(*contents->root), QString::fromUtf8(row.outline)) << row.why;
    }
    const auto withMetadata = SermonJson::fromJson(
        R"({"metadata":{"occasions":[{"date":"2026-03-15"}],"scripture":"John 1","duration":null},"root":{}})");
    ASSERT_TRUE(withMetadata);
    ASSERT_EQ(withMetadata->metadata.occasions.size(), 1);
    EXPECT_EQ(withMetadata->metadata.occasions[0].date, QDate(2026, 3, 15));
    EXPECT_EQ(withMetadata->metadata.scripture, QStringLiteral("John 1"));
    EXPECT_FALSE(withMetadata->metadata.duration);
}

TEST(Interchange, BadJsonSaysWhereAndWhy)
{
    struct Row {
        const char* json;
        const char* error;
    } rows[] = {
        {"", "holds no JSON"},
        {"sermon", "line 1, column 1: expected an object"},
        {"[]", "expected an object"},
        {"{\"metadata\":{}}", "no \"root\""},
        {"{\"root\":{\"text\":3}}", "column 17: expected a string for \"text\""},
        {"{\"root\":{\"children\":[1]}}", "expected an object"},
        {"{\"root\":{\"depth\":1.5}}", "expected a whole number for \"depth\""},
        {"{\"root\":{}} {}", "unexpected text after"},
        {"{\"root\":{\"text\":\"a}}", "ends inside a string"},
        {"{\"root\":{\"text\":\"\\q\"}}", "unknown escape"},
        {"{\"root\":{\"text\":\"\\u12\"}}", "four hex digits"},
        {"{\"root\":{\"children\":[{},]}}", "column 25: expected an object"},
        {"{\"root\":{}\n,\"metadata\":{\"occasions\":[{\"place\":\"x\"}]}}", "line 2, column 39: an occasion needs"},
        {"{\"metadata\":{\"occasions\":[{\"date\":\"soon\"}]},\"root\":{}}", "yyyy-MM-dd"},
        {"{\"root\":{\"children\":[{\"children\":[", "ends before a closing \"]\""},
    };
    for (const Row& row : rows) {
        QString error;
        EXPECT_FALSE(SermonJson::fromJson(row.json, &error)) << row.json;
        EXPECT_TRUE(error.contains(QString::fromUtf8(row.error))) << row.json << " gave " << error.toStdString();
    }
}

TEST(Interchange, OpmlFromOtherToolsBecomesASermon)
{
    struct Row {
        const char* why;
        const char* opml;
        const char* outline;
    } rows[] = {
        {"the head's title is the title, notes are lines under their outline",
         "<opml version=\"1.0\"><head><title> My\n Talk </title></head><body>"
         "<outline text=\"Point\" _note=\"A note&#10;in two lines\"><outline text=\"Sub\"/></outline>"
         "<outline text=\"&gt; Quoted\"/></body></opml>",
         "0 My Talk | 1 Point | 2 A note\u2028in two lines | 2 Sub | 1q Quoted"},
        {"no title, foreign elements and attributes skipped",
         "<?xml version=\"1.0\"?><opml><head/><body><outline text=\"a\" type=\"link\"><x><outline text=\"lost\"/></x>"
         "</outline><outline/></body><outline text=\"outside\"/></opml>",
         "0 Untitled | 1 a | 1 "},
        {"a quote with lines under it is a line",
         "<opml><body><outline text=\"&gt; q\"><outline text=\"b\"/></outline></body></opml>",
         "0 Untitled | 1 > q | 2 b"},
    };
    for (const Row& row : rows) {
        QString error;
        const auto contents = Opml::read(row.opml, &error);
        ASSERT_TRUE(contents) << row.why << ": " << error.toStdString();
        EXPECT_EQ(outline(*contents->root), QString::fromUtf8(row.outline)) << row.why;
    }
}

TEST(Interchange, BadOpmlIsRefusedWithAReason)
{
    struct Row {
        const char* opml;
        const char* error;
    } rows[] = {
        {"", "holds no XML"},
        {"# A sermon\n", "isn\u2019t well-formed XML"},
        {"<opml><body><outline text=\"a\"></body></opml>", "isn\u2019t well-formed XML"},
        {"<html><body/></html>", "its top element is <html>"},
        {"<opml><head><title>T</title></head></opml>", "has no <body>"},
        {"<!DOCTYPE lol [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
         "<opml><body><outline text=\"&b;\"/></body></opml>",
         "document type"},
        {"<!DOCTYPE opml [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><opml><body><outline text=\"&x;\"/></body></opml>",
         "document type"},
        {"<opml><body><outline text=\"&x;\"/></body></opml>", "isn\u2019t well-formed XML"},
    };
    for (const Row& row : rows) {
        QString error;
        EXPECT_FALSE(Opml::read(row.opml, &error)) << row.opml;
        EXPECT_TRUE(error.contains(QString::fromUtf8(row.error))) << row.opml << " gave " << error.toStdString();
    }
}

TEST(Interchange, DeepOutlinesTravelWithoutRecursion)
{
    constexpr int levels = 20000;
    auto root = SermonNode::make(QStringLiteral("Deep"), 0);
    SermonNode* node = root.get();
    for (int i = 0; i < levels; ++i)
        node = node->addChild(QStringLiteral("level")).get();
    const QByteArray opml = Opml::write(*root);
    EXPECT_LT(opml.size(), levels * 250); // indentation is capped
    const QByteArray json = SermonJson::toJson({}, *root);
    for (const auto& contents : {Opml::read(opml), SermonJson::fromJson(json)}) {
        ASSERT_TRUE(contents);
        int depth = 0;
        for (const SermonNode* n = contents->root.get(); n->hasChildren(); n = n->children().front().get())
            ++depth;
        EXPECT_EQ(depth, levels);
        EXPECT_TRUE(contents->root->depthsAreConsistent());
    }
}

} // namespace
