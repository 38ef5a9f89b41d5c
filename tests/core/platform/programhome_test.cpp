// SPDX-License-Identifier: GPL-3.0-or-later
// The user's program folder: where it is, how it is seeded and kept in step with a release.
#include "platform/programhome.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/testsupport.h"

namespace dorvane::platform {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

unsigned modeOf(const fs::path& p) {
    struct stat st {};
    ::stat(p.c_str(), &st);
    return st.st_mode & 07777;
}

class ProgramHome : public ::testing::Test {
protected:
    ProgramHome() {
        writeFile(release / "invoice.xslt", "<invoice v1/>");
        writeFile(release / "estimate.xslt", "<estimate v1/>");
        writeFile(release / "companyinfo.xml", "<template v1/>");
        fs::create_directories(release / "icons");
        writeFile(release / "icons" / "3-ready.png", "png v1");
    }
    HomeReport prepare(const fs::path& legacy = {}) {
        return prepareProgramHome(home, release.path(), legacy);
    }

    test::TempDir release, scratch;
    fs::path home = scratch / "user" / "dorvane";
};

TEST_F(ProgramHome, AnEmptyFolderIsCreatedPrivateAndSeededWithAnEmptySentLog) {
    const HomeReport first = prepare();
    EXPECT_TRUE(first.error.empty()) << first.error;
    EXPECT_TRUE(first.notices.empty());
    EXPECT_EQ(modeOf(home), 0700u);
    EXPECT_EQ(readFile(home / "invoice.xslt"), "<invoice v1/>");
    EXPECT_EQ(readFile(home / "icons" / "3-ready.png"), "png v1");
    EXPECT_EQ(readFile(home / "companyinfo.xml"), "<template v1/>");
    EXPECT_TRUE(fs::exists(home / "EmailsSent.log"));
    EXPECT_EQ(fs::file_size(home / "EmailsSent.log"), 0u);
    for (const char* name : {"EmailsSent.log", "companyinfo.xml", kShippedManifest}) {
        EXPECT_EQ(modeOf(home / name), 0600u) << name;
    }
}

TEST_F(ProgramHome, ANewReleaseUpdatesUntouchedFilesAndKeepsChangedOnes) {
    ASSERT_TRUE(prepare().error.empty());
    writeFile(home / "EmailsSent.log", "<Invoice><TxnID>1-1</TxnID></Invoice>\r\n");
    writeFile(home / "estimate.xslt", "<estimate mine/>");
    writeFile(home / "companyinfo.xml", "<records of the user/>");

    writeFile(release / "invoice.xslt", "<invoice v2/>");
    writeFile(release / "estimate.xslt", "<estimate v2/>");
    writeFile(release / "companyinfo.xml", "<template v2/>");
    writeFile(release / "EmailsSent.log", "shipped by mistake");
    writeFile(release / "statement.xslt", "<statement v2/>");

    const HomeReport upgrade = prepare();
    EXPECT_TRUE(upgrade.error.empty()) << upgrade.error;
    EXPECT_EQ(readFile(home / "invoice.xslt"), "<invoice v2/>");
    EXPECT_EQ(readFile(home / "statement.xslt"), "<statement v2/>");
    EXPECT_EQ(readFile(home / "estimate.xslt"), "<estimate mine/>");
    EXPECT_EQ(readFile(home / "estimate.xslt.new"), "<estimate v2/>");
    ASSERT_EQ(upgrade.notices.size(), 1u);
    EXPECT_NE(upgrade.notices[0].find("estimate.xslt.new"), std::string::npos);
    // What the program writes is never replaced, whatever a release carries.
    EXPECT_EQ(readFile(home / "companyinfo.xml"), "<records of the user/>");
    EXPECT_FALSE(fs::exists(home / "companyinfo.xml.new"));
    EXPECT_EQ(readFile(home / "EmailsSent.log"), "<Invoice><TxnID>1-1</TxnID></Invoice>\r\n");

    // The same release again says nothing more; the next one updates the .new beside the
    // changed file, and a file the user deleted comes back.
    EXPECT_TRUE(prepare().notices.empty());
    writeFile(release / "estimate.xslt", "<estimate v3/>");
    fs::remove(home / "invoice.xslt");
    EXPECT_EQ(prepare().notices.size(), 1u);
    EXPECT_EQ(readFile(home / "estimate.xslt.new"), "<estimate v3/>");
    EXPECT_EQ(readFile(home / "estimate.xslt"), "<estimate mine/>");
    EXPECT_EQ(readFile(home / "invoice.xslt"), "<invoice v2/>");
}

TEST_F(ProgramHome, AFileTheUserChangedBeforeAnyManifestIsKept) {
    fs::create_directories(home);
    writeFile(home / "invoice.xslt", "<invoice customised long ago/>");
    const HomeReport report = prepare();
    EXPECT_EQ(readFile(home / "invoice.xslt"), "<invoice customised long ago/>");
    EXPECT_EQ(readFile(home / "invoice.xslt.new"), "<invoice v1/>");
    EXPECT_EQ(report.notices.size(), 1u);
}

TEST_F(ProgramHome, TheOldProgramFolderHandsOverItsRecordsOnce) {
    test::TempDir legacy;
    writeFile(legacy / "EmailsSent.log", "<Invoice><TxnID>7-7</TxnID></Invoice>\r\n");
    writeFile(legacy / "companyinfo.xml", "<records from the build folder/>");
    writeFile(legacy / "invoice.xslt", "<old shipped copy/>");

    const HomeReport moved = prepare(legacy.path());
    EXPECT_TRUE(moved.error.empty()) << moved.error;
    EXPECT_EQ(moved.notices.size(), 2u);
    EXPECT_EQ(readFile(home / "EmailsSent.log"), "<Invoice><TxnID>7-7</TxnID></Invoice>\r\n");
    EXPECT_EQ(readFile(home / "companyinfo.xml"), "<records from the build folder/>");
    EXPECT_EQ(readFile(home / "invoice.xslt"), "<invoice v1/>");
    EXPECT_FALSE(fs::exists(legacy / "EmailsSent.log"));
    EXPECT_TRUE(fs::exists(legacy / "invoice.xslt"));

    // A log of the user's own is never replaced by an older one.
    writeFile(legacy / "EmailsSent.log", "<older/>\r\n");
    EXPECT_TRUE(prepare(legacy.path()).notices.empty());
    EXPECT_EQ(readFile(home / "EmailsSent.log"), "<Invoice><TxnID>7-7</TxnID></Invoice>\r\n");
}

TEST(ProgramHomeLocation, OptionThenEnvironmentThenXdgThenHome) {
    auto keep = [](const char* name) {
        const char* v = std::getenv(name);
        return std::make_pair(std::string(name), v ? std::optional<std::string>(v) : std::nullopt);
    };
    const auto saved = {keep("DORVANE_HOME"), keep("XDG_DATA_HOME"), keep("HOME")};
    ::unsetenv("DORVANE_HOME");
    ::setenv("XDG_DATA_HOME", "/srv/data", 1);
    ::setenv("HOME", "/home/pat", 1);
    EXPECT_EQ(locateProgramHome("/opt/books"), fs::path("/opt/books"));
    EXPECT_EQ(locateProgramHome(""), fs::path("/srv/data/dorvane"));
    ::setenv("XDG_DATA_HOME", "relative/ignored", 1);
    EXPECT_EQ(locateProgramHome(""), fs::path("/home/pat/.local/share/dorvane"));
    ::setenv("DORVANE_HOME", "/srv/dorvane-env", 1);
    EXPECT_EQ(locateProgramHome(""), fs::path("/srv/dorvane-env"));
    for (const auto& [name, value] : saved) {
        value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }
}

}  // namespace
}  // namespace dorvane::platform
