// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane installed as a desktop program: into a prefix, and as a Debian package.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/testsupport.h"

namespace dorvane::test {
namespace {

namespace fs = std::filesystem;

unsigned modeOf(const fs::path& p) {
    struct stat st {};
    ::stat(p.c_str(), &st);
    return st.st_mode & 07777;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Install, APrefixGivesAWorkingProgramWithMenuEntryAndManual) {
    TempDir prefix, user;
    std::string out, err;
    ASSERT_EQ(runCommand(std::string(DORVANE_CMAKE_COMMAND) + " --install " + DORVANE_BUILD_DIR +
                             " --prefix " + prefix.path().string(),
                         &out, &err),
              0)
        << err;
    for (const char* installed :
         {"bin/dorvane", "share/dorvane/invoice.xslt", "share/dorvane/CompanyInvoiceGetRq.xml",
          "share/dorvane/icons/3-ready.png", "share/dorvane/DorvaneHelp.htm",
          "share/applications/dorvane.desktop", "share/icons/hicolor/scalable/apps/dorvane.svg",
          "share/icons/hicolor/48x48/apps/dorvane.png", "share/man/man1/dorvane.1.gz",
          "share/metainfo/org.dorvane.Dorvane.metainfo.xml", "share/doc/dorvane/copyright",
          "share/bash-completion/completions/dorvane"}) {
        EXPECT_TRUE(fs::is_regular_file(prefix / installed)) << installed;
    }
    EXPECT_FALSE(fs::exists(prefix / "share/dorvane/CMakeLists.txt"));
    const std::string desktop = readFile(prefix / "share/applications/dorvane.desktop");
    EXPECT_TRUE(contains(desktop, "\nExec=dorvane\n"));
    EXPECT_TRUE(contains(desktop, "\nIcon=dorvane\n"));

    // A new user's first list, from the installed program: the program folder is made and
    // seeded in the user's data folder, and nothing complains about a missing log.
    const std::string env = "env -u DORVANE_HOME -u DORVANE_SHARE_DIR -u DORVANE_PROCESSOR HOME=" +
                            user.path().string() + " XDG_DATA_HOME=" + (user / "data").string() +
                            " XDG_CONFIG_HOME=" + (user / "config").string() +
                            " DORVANE_SANDBOX_DIR=" + (user / "sandbox").string() + " ";
    ASSERT_EQ(runCommand(env + (prefix / "bin/dorvane").string() + " list Invoice", &out, &err), 0)
        << err;
    EXPECT_FALSE(contains(err, "Could not open file")) << err;
    EXPECT_TRUE(contains(out, "Invoice")) << out;
    const fs::path home = user / "data" / "dorvane";
    EXPECT_EQ(modeOf(home), 0700u);
    EXPECT_EQ(readFile(home / "invoice.xslt"), readFile(prefix / "share/dorvane/invoice.xslt"));
    // What holds customer data is the user's alone.
    for (const char* name :
         {"EmailsSent.log", "QBXMLReq.txt", "QBXMLResult.txt", "companyinfo.xml"}) {
        ASSERT_TRUE(fs::exists(home / name)) << name;
        EXPECT_EQ(modeOf(home / name) & 077, 0u) << name;
    }
    const std::string manual = (prefix / "share/man/man1/dorvane.1.gz").string();
    EXPECT_EQ(runCommand("man -l " + manual + " 2>/dev/null | grep -q 'EXIT STATUS' || " +
                         "zgrep -q 'EXIT STATUS' " + manual),
              0);
}

// One package build serves both: what the package carries, then what Debian's lintian and
// AppStream's validator say of it, where the machine has them.
TEST(Install, TheDebianPackageCarriesTheProgramAndPassesDebiansChecks) {
    TempDir out;
    std::string log, err;
    ASSERT_EQ(runCommand("cd " + std::string(DORVANE_BUILD_DIR) + " && " + DORVANE_CPACK_COMMAND +
                             " -G DEB -B " + out.path().string(),
                         &log, &err),
              0)
        << log << err;
    fs::path deb;
    for (const auto& f : fs::directory_iterator(out.path())) {
        if (f.path().extension() == ".deb") {
            deb = f.path();
        }
    }
    ASSERT_FALSE(deb.empty()) << log;
    std::string info, listing;
    ASSERT_EQ(runCommand("dpkg-deb -I " + deb.string(), &info), 0);
    ASSERT_EQ(runCommand("dpkg-deb -c " + deb.string(), &listing), 0);
    EXPECT_TRUE(contains(info, "Package: dorvane")) << info;
    for (const char* library :
         {"libxml2", "libxslt1.1", "libsqlite3-0", "libgmime-3.0-0", "libcurl4", "libc-ares2"}) {
        EXPECT_TRUE(contains(info, library)) << library << "\n" << info;
    }
    EXPECT_TRUE(contains(info, "fonts-liberation2")) << info;  // the PDF copy's fonts
#if DORVANE_TEST_WITH_GUI
    EXPECT_TRUE(contains(info, "libqt6widgets6")) << info;
    EXPECT_TRUE(contains(info, "qt6-qpa-plugins")) << info;
#endif
    for (const char* path :
         {"./usr/bin/dorvane", "./usr/share/dorvane/invoice.xslt",
          "./usr/share/applications/dorvane.desktop", "./usr/share/man/man1/dorvane.1.gz",
          "./usr/share/icons/hicolor/48x48/apps/dorvane.png", "./usr/share/doc/dorvane/copyright",
          "./usr/share/doc/dorvane/changelog.Debian.gz"}) {
        EXPECT_TRUE(contains(listing, path)) << path;
    }

    if (runCommand("command -v lintian && command -v appstreamcli") != 0) {
        GTEST_SKIP() << "lintian or appstreamcli is missing: the package's contents were "
                        "checked, Debian's and AppStream's rules were not (apt-get install "
                        "lintian appstream)";
    }
    std::string report;
    EXPECT_EQ(runCommand("lintian --fail-on error,warning --no-tag-display-limit " + deb.string(),
                         &report, &err),
              0)
        << report << err;
    const fs::path root = out / "root";
    ASSERT_EQ(runCommand("dpkg-deb -x " + deb.string() + " " + root.string()), 0);
    EXPECT_EQ(runCommand("appstreamcli validate-tree --no-net --strict --explain " + root.string(),
                         &report, &err),
              0)
        << report << err;
}

}  // namespace
}  // namespace dorvane::test
