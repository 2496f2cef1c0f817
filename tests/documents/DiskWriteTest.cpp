#include "documents/DiskWrite.h"
#include "FileTestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <utime.h>

namespace {

void age(const QString& path, int seconds)
{
    struct stat info {};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0);
    const utimbuf times{info.st_atime - seconds, info.st_mtime - seconds};
    ASSERT_EQ(::utime(QFile::encodeName(path).constData(), &times), 0);
}

TEST(DiskWriteTest, TheFirstSaveTidiesOnlyStaleTemporariesOfItsOwnFile)
{
    QTemporaryDir dir;
    const QString sermon = dir.filePath(QStringLiteral("sermon.md"));
    struct Case {
        const char* name;
        int ageSeconds;
        bool removed;
    };
    const Case cases[] = {
        {".sermon.md.a1B2c3", 3600, true}, // left by a save that was killed
        {".sermon.md.Zz9Yy8", 10, false}, // a save of another instance may still be writing it
        {".sermon.md.a1B2c", 3600, false}, // not a name a save makes
        {".sermon.md.a1B2c3.bak", 3600, false}, {".other.md.a1B2c3", 3600, false}, {"sermon.md.a1B2c3", 3600, false},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(writeFile(dir.filePath(QString::fromLatin1(c.name)), "half a sermon"));
        age(dir.filePath(QString::fromLatin1(c.name)), c.ageSeconds);
    }
    // A link by that name is never followed or removed.
    const QString kept = dir.filePath(QStringLiteral("kept.md"));
    ASSERT_TRUE(writeFile(kept, "keep me"));
    ASSERT_TRUE(QFile::link(kept, dir.filePath(QStringLiteral(".sermon.md.LINK00"))));

    ASSERT_TRUE(DiskWrite::replaceFile(sermon, "# Sermon\n", nullptr));
    for (const Case& c : cases)
        EXPECT_EQ(QFileInfo::exists(dir.filePath(QString::fromLatin1(c.name))), !c.removed) << c.name;
    EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral(".sermon.md.LINK00"))).isSymLink());
    EXPECT_EQ(readAll(kept), "keep me");
    EXPECT_EQ(readAll(sermon), "# Sermon\n");
}

} // namespace
