#include "ShellTestSupport.h"

#include "documents/DateText.h"
#include "documents/SafeFileName.h"
#include "shell/DurationChooser.h"
#include "shell/FileSettingsSheet.h"
#include "shell/NewSermonSheet.h"
#include "shell/OccurrencesEditor.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimeZone>

#include <gtest/gtest.h>

namespace {

TEST(DurationRules, CustomDraftsAreWholeMinutesFromOneTo180)
{
    const struct {
        const char* draft;
        std::optional<int> minutes;
    } cases[] = {
        {"0", std::nullopt}, {"181", std::nullopt}, {"abc", std::nullopt},
        {"+45", 45},         {"180", 180},          {"1", 1},
        {" \t37 ", 37},      {"-5", std::nullopt},  {"", std::nullopt},
        {"+", std::nullopt}, {"4 5", std::nullopt}, {"99999999999999999999", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DurationRules::parseCustom(QString::fromUtf8(c.draft)), c.minutes) << c.draft;
}

TEST(DurationRules, TheFieldShowsOnlyDurationsThatAreNoPreset)
{
    EXPECT_EQ(DurationRules::draftReset(std::nullopt), QString()); // shown as 35, a preset
    EXPECT_EQ(DurationRules::draftReset(45), QString());
    EXPECT_EQ(DurationRules::draftReset(37), QStringLiteral("37"));
    EXPECT_EQ(DurationRules::selected(std::nullopt), 35);
}

TEST(ComingSunday, ASundayIsItsOwnAndOtherDaysGoForward)
{
    const QTimeZone zone = QTimeZone::systemTimeZone();
    // 2026-03-15 is a Sunday.
    const QDateTime sundayNoon(QDate(2026, 3, 15), QTime(12, 0), zone);
    EXPECT_EQ(comingSunday(sundayNoon), QDateTime(QDate(2026, 3, 15), QTime(0, 0), zone));
    const QDateTime saturdayLate(QDate(2026, 3, 14), QTime(23, 59), zone);
    EXPECT_EQ(comingSunday(saturdayLate), QDateTime(QDate(2026, 3, 15), QTime(0, 0), zone));
    const QDateTime monday(QDate(2026, 3, 16), QTime(8, 0), zone);
    EXPECT_EQ(comingSunday(monday).date(), QDate(2026, 3, 22));
}

TEST(DateText, LongDatesCarryNoWeekdayAndFollowTheLocale)
{
    const QDate easter(2024, 3, 31);
    EXPECT_EQ(DateText::longDate(easter, QLocale(QStringLiteral("en_US"))), QStringLiteral("March 31, 2024"));
    EXPECT_EQ(DateText::longDate(easter, QLocale(QStringLiteral("de_DE"))), QStringLiteral("31. M\u00e4rz 2024"));
    EXPECT_EQ(DateText::longDate(QDate(), QLocale(QStringLiteral("en_US"))), QString());
}

TEST(DateText, DistancesUseTheLargestWholeUnit)
{
    const QLocale english(QStringLiteral("en_US"));
    const QDateTime now(QDate(2026, 3, 12), QTime(15, 30));
    const struct {
        QDateTime moment;
        const char* text;
    } cases[] = {
        {QDateTime(QDate(2026, 3, 15), QTime(0, 0)), "in 2 days"}, // Sunday's start, 56.5 hours on
        {QDateTime(QDate(2026, 3, 12), QTime(0, 0)), "15 hours ago"}, // today's start
        {QDateTime(QDate(2026, 3, 29), QTime(0, 0)), "in 2 weeks"},
        {QDateTime(QDate(2026, 4, 12), QTime(15, 30)), "in 1 month"},
        {QDateTime(QDate(2025, 3, 12), QTime(15, 30)), "1 year ago"},
        {QDateTime(QDate(2024, 1, 1), QTime(0, 0)), "2 years ago"},
        {now.addSecs(90), "in 1 minute"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DateText::relative(c.moment, now, english), QString::fromUtf8(c.text)) << c.text;
    EXPECT_EQ(DateText::relative(now.addDays(3), now, QLocale(QStringLiteral("de_DE"))), QStringLiteral("in 3 Tagen"));
}

TEST(SafeFileName, DropsPathCharactersAndLeadingDotsAndFitsAFileName)
{
    auto u = [](const char* text) { return QString::fromUtf8(text); };
    // With ".md" a name may take 255 bytes of UTF-8: 252 are left for it.
    const struct {
        QString title;
        QString name;
    } cases[] = {
        {u("  ..a/b:c  "), u("abc")},
        {u("..."), u("Untitled")},
        {u(""), u("Untitled")},
        {u("What?<Now>|\"x\"\\"), u("WhatNowx")},
        {u("Easter Morning"), u("Easter Morning")},
        {u(". . hidden"), u(". hidden")},
        {u("a.b."), u("a.b.")},
        {QString(300, u'a'), QString(252, u'a')},
        {u("\u00e9").repeated(300), u("\u00e9").repeated(126)}, // two bytes each
        {u("\U0001F600").repeated(100), u("\U0001F600").repeated(63)}, // surrogate pairs
        {u("e\u0301").repeated(100), u("e\u0301").repeated(84)}, // accent kept with its letter
        {u("a\u0301\u0301").repeated(60), u("a\u0301\u0301").repeated(50)}, // five-byte graphemes
        {QString(251, u'a') + u(" bcd"), QString(251, u'a')}, // no space before ".md"
        {u("/").repeated(300) + u("Psalm"), u("Psalm")},
    };
    for (const auto& c : cases) {
        const QString name = safeFileName(c.title);
        EXPECT_EQ(name, c.name) << c.title.left(40).toStdString();
        EXPECT_LE((name + u(".md")).toUtf8().size(), 255);
    }
}

class SheetTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }
};

TEST_F(SheetTest, NewSermonNeedsATitleAndTrimsIt)
{
    NewSermonSheet sheet;
    std::optional<std::pair<QString, SermonMetadata>> created;
    sheet.onCreate = [&](const QString& title, const SermonMetadata& metadata) { created = {title, metadata}; };
    sheet.titleField()->setText(QStringLiteral("   "));
    EXPECT_FALSE(sheet.createButton()->isEnabled());
    sheet.create();
    EXPECT_FALSE(created);

    sheet.titleField()->setText(QStringLiteral("  Sunday  "));
    sheet.scriptureField()->setText(QStringLiteral(" John 1 "));
    EXPECT_TRUE(sheet.createButton()->isEnabled());
    // Digits typed without Return are not a duration.
    sheet.durationChooser()->setCustomDraft(QStringLiteral("42"));
    sheet.create();
    ASSERT_TRUE(created);
    EXPECT_EQ(created->first, QStringLiteral("Sunday"));
    EXPECT_EQ(created->second.scripture, QStringLiteral("John 1"));
    EXPECT_EQ(created->second.duration, std::nullopt);
}

TEST_F(SheetTest, FileSettingsOpensWithTheKeyboardInTheTitle)
{
    SermonDocument document(SermonNode::make(QStringLiteral("Old"), 0));
    UndoManager undo;
    FileSettingsSheet sheet(&document, &undo);
    sheet.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&sheet));
    EXPECT_EQ(QApplication::focusWidget(), sheet.titleField());
}

TEST_F(SheetTest, EveryChangedFieldIsOneUndoStepAndUnchangedOnesNone)
{
    SermonDocument document(SermonNode::make(QStringLiteral("Old"), 0));
    UndoManager undo;
    FileSettingsSheet sheet(&document, &undo);
    sheet.titleField()->setText(QStringLiteral("New"));
    sheet.scriptureField()->setText(QStringLiteral("Psalm 23"));
    sheet.durationChooser()->setCustomDraft(QStringLiteral("+45"));
    sheet.confirm();
    EXPECT_EQ(document.root()->text(), QStringLiteral("New"));
    EXPECT_EQ(document.metadata().scripture, QStringLiteral("Psalm 23"));
    EXPECT_EQ(document.metadata().duration, 45);
    EXPECT_EQ(document.undoStack().size(), 3u);

    undo.undo();
    EXPECT_EQ(document.metadata().duration, std::nullopt);
    undo.undo();
    EXPECT_EQ(document.metadata().scripture, QString());
    undo.undo();
    EXPECT_EQ(document.root()->text(), QStringLiteral("Old"));
    EXPECT_FALSE(undo.canUndo());
}

TEST_F(SheetTest, RefusedCustomDurationsFallBackToWhatTheDocumentHolds)
{
    SermonMetadata metadata;
    metadata.duration = 37;
    SermonDocument document(SermonNode::make(QStringLiteral("T"), 0), metadata);
    UndoManager undo;
    FileSettingsSheet sheet(&document, &undo);
    EXPECT_EQ(sheet.durationChooser()->customDraft(), QStringLiteral("37"));
    for (const char* draft : {"0", "181", "abc", ""}) {
        sheet.durationChooser()->setCustomDraft(QString::fromUtf8(draft));
        sheet.commitCustomDuration();
        EXPECT_EQ(document.metadata().duration, 37) << draft;
        EXPECT_EQ(sheet.durationChooser()->customDraft(), QStringLiteral("37")) << draft;
    }
    EXPECT_FALSE(undo.canUndo());
    sheet.durationChooser()->setCustomDraft(QStringLiteral("180"));
    sheet.commitCustomDuration();
    EXPECT_EQ(document.metadata().duration, 180);
}

TEST_F(SheetTest, APresetIsWrittenAtOnceAndSurvivesCancel)
{
    SermonDocument document(SermonNode::make(QStringLiteral("T"), 0));
    UndoManager undo;
    FileSettingsSheet sheet(&document, &undo);
    // Absent shows as 35 without touching the document.
    EXPECT_FALSE(sheet.durationChooser()->isCustom());
    EXPECT_EQ(document.metadata().duration, std::nullopt);
    sheet.durationChooser()->presetButton(50)->click();
    sheet.cancel();
    EXPECT_EQ(document.metadata().duration, 50);
    undo.undo();
    EXPECT_EQ(document.metadata().duration, std::nullopt);
}

TEST_F(SheetTest, ReturnInTheDurationOrPlaceFieldCommitsThereAndLeavesTheSheetOpen)
{
    SermonDocument document(SermonNode::make(QStringLiteral("T"), 0));
    UndoManager undo;
    FileSettingsSheet sheet(&document, &undo);
    sheet.show();
    QLineEdit* custom = sheet.durationChooser()->customField();
    custom->setFocus();
    sheet.durationChooser()->setCustomDraft(QStringLiteral("42"));
    QTest::keyClick(custom, Qt::Key_Return);
    EXPECT_EQ(document.metadata().duration, 42);
    EXPECT_TRUE(sheet.isVisible());

    OccurrencesEditor* occurrences = sheet.occurrencesEditor();
    occurrences->add(QDateTime(QDate(2026, 3, 14), QTime(10, 0)));
    ASSERT_NE(occurrences->placeField(), nullptr);
    QTest::keyClicks(occurrences->placeField(), QStringLiteral("Chapel"));
    QTest::keyClick(occurrences->placeField(), Qt::Key_Return);
    EXPECT_EQ(occurrences->editingID(), std::nullopt);
    EXPECT_EQ(occurrences->occasions().value(0).place, QStringLiteral("Chapel"));
    EXPECT_TRUE(sheet.isVisible());
}

TEST_F(SheetTest, AddingTwiceKeepsTheFirstOccasionWithAnEmptyPlace)
{
    OccurrencesEditor editor;
    const QDateTime saturday(QDate(2026, 3, 14), QTime(10, 0));
    editor.add(saturday);
    editor.add(saturday);
    ASSERT_EQ(editor.occasions().size(), 2);
    EXPECT_EQ(editor.occasions()[0].date, QDate(2026, 3, 15));
    EXPECT_EQ(editor.occasions()[1].date, QDate(2026, 3, 15));
    EXPECT_EQ(editor.editingID(), editor.occasions()[1].id);
    editor.setEditPlace(QStringLiteral("Chapel"));
    editor.remove(editor.occasions()[1].id);
    EXPECT_EQ(editor.editingID(), std::nullopt);
    ASSERT_EQ(editor.occasions().size(), 1);
    EXPECT_EQ(editor.occasions()[0].place, QString());
}

} // namespace
