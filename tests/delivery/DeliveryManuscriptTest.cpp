#include "delivery/DeliveryManuscript.h"
#include "delivery/DeliveryTestSupport.h"

#include "core/SermonNode.h"

#include <QFile>
#include <QPageSize>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace DeliveryManuscript;

const QSizeF a4 = QPageSize(QPageSize::A4).size(QPageSize::Point);
const double bodyHeight = a4.height() - marginTop - marginBottom;

// Root with `sections` headings of `leaves` numbered lines of `words` words each.
SermonNodePtr numberedSermon(int sections, int leaves, int words)
{
    auto root = SermonNode::make(QStringLiteral("The Shepherd"), 0);
    int n = 0;
    for (int s = 0; s < sections; ++s) {
        auto section = root->addChild(QStringLiteral("Section %1").arg(s + 1));
        for (int l = 0; l < leaves; ++l)
            section->addChild(QStringLiteral("Line %1 %2").arg(++n).arg(wordsText(words)));
    }
    return root;
}

bool isText(const DeliveryItem& item)
{
    return item.kind == DeliveryItem::Kind::heading || item.kind == DeliveryItem::Kind::leaf;
}

TEST(ManuscriptPages, SheetsHoldTheColumnWholeAndNoHeadingEndsOne)
{
    ensureApplication();
    auto tall = SermonNode::make(QStringLiteral("T"), 0);
    tall->addChild(QStringLiteral("Before"));
    tall->addChild(wordsText(1500)); // taller than a sheet
    tall->addChild(QStringLiteral("After"));
    struct Row {
        const char* why;
        SermonNodePtr root;
        Settings settings;
        size_t minPages;
    } rows[] = {
        {"sections of short lines", numberedSermon(6, 5, 40), {}, 3},
        {"a heading before each long line", numberedSermon(14, 1, 90), {}, 4},
        {"large type, single spacing", numberedSermon(8, 4, 30), {22, 1.0, 700, 130}, 3},
        {"a line taller than a sheet", tall, {}, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const Manuscript m = prepare(*row.root, {}, row.settings, a4, QDate(2026, 1, 1));
        const double base = row.settings.baseFontSize;
        ASSERT_GE(m.pages.size(), row.minPages);
        for (size_t p = 0; p + 1 < m.pages.size(); ++p)
            EXPECT_EQ(m.pages[p].toY, m.pages[p + 1].fromY);
        for (size_t p = 0; p < m.pages.size(); ++p) {
            const PageSlice& page = m.pages[p];
            const DeliveryItem* lastOnPage = nullptr;
            for (const DeliveryItem& item : m.layout.items) {
                if (!isText(item))
                    continue;
                const double top = visualTop(item, base);
                const double bottom = visualBottom(item, base);
                if (top >= page.fromY && top < page.toY) {
                    lastOnPage = &item;
                    // What starts on a sheet ends on it, unless it is taller than a sheet.
                    if (bottom - top <= bodyHeight) {
                        EXPECT_LE(bottom, page.toY + 0.01) << item.text.left(20).toStdString();
                    }
                    EXPECT_LE(std::min(bottom, page.toY) - page.fromY, bodyHeight + 0.01);
                }
            }
            if (lastOnPage && p + 1 < m.pages.size()) {
                EXPECT_EQ(lastOnPage->kind, DeliveryItem::Kind::leaf) << "page " << p + 1;
            }
        }
    }
}

TEST(ManuscriptPages, TheHeaderDateIsTheNextOccasion)
{
    const QDate today(2026, 3, 10);
    struct Row {
        std::vector<QDate> dates;
        QDate expected; // invalid: none
    } rows[] = {
        {{}, {}},
        {{QDate(2026, 3, 9), QDate(2025, 1, 1)}, {}},
        {{QDate(2026, 3, 10), QDate(2026, 3, 20)}, QDate(2026, 3, 10)},
        {{QDate(2027, 1, 1), QDate(2026, 1, 1), QDate(2026, 4, 5)}, QDate(2026, 4, 5)},
    };
    for (const Row& row : rows) {
        SermonMetadata metadata;
        for (const QDate& date : row.dates)
            metadata.occasions.append({QUuid::createUuid(), QStringLiteral("Here"), date});
        EXPECT_EQ(nextOccasionDate(metadata, today).value_or(QDate()), row.expected);
    }
}

TEST(ManuscriptPdf, HasTheLayoutsSheetsAndEveryLineInOrderWithItsMinuteMarks)
{
    ensureApplication();
    auto root = numberedSermon(4, 8, 30);
    SermonMetadata metadata;
    metadata.duration = 12;
    metadata.scripture = QStringLiteral("Psalm 23");
    metadata.occasions.append({QUuid::createUuid(), QStringLiteral("Grace Chapel"), QDate(2026, 3, 15)});
    const Manuscript m = prepare(*root, metadata, {}, a4, QDate(2026, 1, 1));
    ASSERT_GE(m.pages.size(), 3u);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("sermon.pdf"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(writePdf(file, m));
    file.close();
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray pdf = file.readAll();
    EXPECT_EQ(size_t(QString::fromLatin1(pdf).count(QRegularExpression(QStringLiteral("/Type\\s*/Page[^s]")))),
              m.pages.size());

    const QString pdftotext = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
    if (pdftotext.isEmpty())
        GTEST_SKIP() << "pdftotext (poppler-utils) is not installed; the sheets were checked on the layout above";
    QProcess process;
    process.start(pdftotext, {path, QStringLiteral("-")});
    ASSERT_TRUE(process.waitForFinished(60000));
    QString text = QString::fromUtf8(process.readAllStandardOutput());
    const QStringList sheets = text.split(QLatin1Char('\f'), Qt::SkipEmptyParts);
    ASSERT_EQ(size_t(sheets.size()), m.pages.size());
    for (qsizetype i = 0; i < sheets.size(); ++i) {
        EXPECT_TRUE(sheets[i].contains(pageNumberText(int(i) + 1, int(m.pages.size()))));
        EXPECT_TRUE(sheets[i].contains(QStringLiteral("Psalm 23")));
    }
    for (int minute = 1; minute < 12; ++minute)
        EXPECT_TRUE(text.contains(QRegularExpression(QStringLiteral("\\b%1 min\\b").arg(minute)))) << minute;

    // Every line, in order, once the margin and the furniture are out of the way.
    text.remove(QRegularExpression(QStringLiteral("\\b\\d+ min\\b|Page \\d+ of \\d+")));
    text = text.simplified();
    qsizetype at = 0;
    for (const auto& node : root->flattened()) {
        const qsizetype found = text.indexOf(node->text(), at);
        ASSERT_GE(found, 0) << node->text().left(20).toStdString();
        at = found + node->text().size();
    }
}

} // namespace
