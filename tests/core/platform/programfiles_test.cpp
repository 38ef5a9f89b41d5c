// SPDX-License-Identifier: GPL-3.0-or-later
// Program-folder files.
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "common/files.h"
#include "platform/programfolder.h"
#include "support/testsupport.h"
#include "ui/uiport.h"

namespace dorvane::platform {
namespace {

using test::ScriptedUi;
using test::TempDir;

class ProgramFolderTest : public ::testing::Test {
protected:
    int entries() const {
        const auto all = std::filesystem::directory_iterator(dir.path());
        return static_cast<int>(std::distance(begin(all), end(all)));
    }

    TempDir dir;
    ScriptedUi ui;
    ProgramFolder folder{dir.path()};
};

TEST(ProgramFolder, NamesJoinWithOneSlashWhateverTheirLeadingSeparator) {
    ProgramFolder folder("/opt/dorvane/");
    EXPECT_EQ(folder.path(), "/opt/dorvane");
    EXPECT_EQ(folder.filePath("EmailsSent.log"), "/opt/dorvane/EmailsSent.log");
    EXPECT_EQ(folder.filePath("/invoice.xslt"), "/opt/dorvane/invoice.xslt");
    EXPECT_EQ(folder.filePath("\\DorvaneHelp.htm"), "/opt/dorvane/DorvaneHelp.htm");
    EXPECT_EQ(folder.filePath("icons\\1.png"), "/opt/dorvane/icons/1.png");
}

TEST_F(ProgramFolderTest, ReadJoinsLinesWithNothingBetween) {
    test::writeFile(dir / "t.xml", "a\r\nb\nc\r\n");
    EXPECT_EQ(folder.readProgramFile("t.xml").value(), "abc");
    test::writeFile(dir / "two.xml", "<A>\n  <B>x</B>\n</A>");
    EXPECT_EQ(folder.readProgramFile("/two.xml").value(), "<A>  <B>x</B></A>");
}

TEST_F(ProgramFolderTest, AMissingFileIsReportedWithItsPathAndErrorNumber) {
    EXPECT_EQ(folder.readProgramFile("Missing.xml").error().code, 2);
    EXPECT_EQ(ui::textOrShown(folder.readProgramFile("Missing.xml"), ui), "");
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text,
              "Could not open file " + (dir / "Missing.xml").string() + " (2)");
    EXPECT_EQ(ui.messages[0].buttons, ui::Buttons::Ok);
}

TEST_F(ProgramFolderTest, WriteReplacesWholeFileEndingInCrLf) {
    ASSERT_TRUE(folder.writeProgramFile("a much longer first text", "log.txt").ok());
    ASSERT_TRUE(folder.writeProgramFile("short", "log.txt").ok());
    EXPECT_EQ(test::readFile(dir / "log.txt"), "short\r\n");
    EXPECT_EQ(entries(), 1) << "no temporary file is left behind";
}

// A replaced file keeps its permissions unless the caller names others; a new one gets what
// the umask leaves of rw-rw-rw-.
TEST(ProgramFolder, AReplacedFileKeepsOrTakesItsMode) {
    TempDir dir;
    struct Case {
        std::optional<unsigned> before;  // the file's mode before, or no file
        std::optional<unsigned> asked;
        unsigned after;
    };
    const Case cases[] = {
        {0600, std::nullopt, 0600}, {0640, std::nullopt, 0640},         {0644, 0600u, 0600},
        {0600, 0644u, 0644},        {std::nullopt, std::nullopt, 0640},
    };
    const mode_t oldMask = ::umask(027);
    int n = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(n);
        const auto path = dir / ("f" + std::to_string(n++));
        if (c.before) {
            test::writeFile(path, "old");
            ::chmod(path.c_str(), *c.before);
        }
        ASSERT_TRUE(files::writeAtomically(path, {"new"}, c.asked).ok());
        struct stat st {};
        ASSERT_EQ(::stat(path.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 07777, c.after);
        EXPECT_EQ(test::readFile(path), "new");
    }
    ::umask(oldMask);
}

TEST_F(ProgramFolderTest, AFailedWriteFailsAndLeavesTheOldFileWhole) {
    ASSERT_TRUE(folder.writeProgramFile("kept", "sent.log").ok());
    // The disk "fills up" half-way through the new text: files may grow to 64 bytes only.
    struct rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    struct rlimit small = old;
    small.rlim_cur = 64;
    auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(folder.writeProgramFile(std::string(1000, 'x'), "sent.log").ok());
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_EQ(test::readFile(dir / "sent.log"), "kept\r\n");
    EXPECT_EQ(entries(), 1) << "no temporary file is left behind";
}

TEST_F(ProgramFolderTest, AFailedWriteIntoAFolderInTheWayFails) {
    std::filesystem::create_directory(dir / "busy.log");
    const Status written = folder.writeProgramFile("x", "busy.log");
    ASSERT_FALSE(written.ok());
    EXPECT_NE(written.error().code, 0);
    EXPECT_FALSE(written.error().description.empty());
    EXPECT_TRUE(std::filesystem::is_directory(dir / "busy.log"));
}

}  // namespace
}  // namespace dorvane::platform
