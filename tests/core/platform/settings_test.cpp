// SPDX-License-Identifier: GPL-3.0-or-later
// The per-user settings store and the mail settings read from it.
#include "platform/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/testsupport.h"

namespace dorvane::platform {
namespace {

using test::TempDir;

TEST(SettingsStore, KeysAndSectionsIgnoreCaseAndValuesSurviveAReload) {
    TempDir dir;
    SettingsStore store(dir / "DV01.ini");
    ASSERT_TRUE(store.set("SMTP", "Pwd", "s3cret = with spaces ").ok());
    ASSERT_TRUE(store.set("Settings", "BCCAdr", "a@example.com;b@example.org").ok());
    EXPECT_EQ(store.get("smtp", "pwd"), "s3cret = with spaces ");
    store.set("SMTP", "PWD", "changed\nline\\two").ok();

    SettingsStore again(dir / "DV01.ini");
    EXPECT_EQ(again.get("Smtp", "pwd"), "changed\nline\\two");
    EXPECT_EQ(again.get("Settings", "bccadr"), "a@example.com;b@example.org");
    EXPECT_EQ(again.get("Settings", "Missing", "fallback"), "fallback");
    EXPECT_FALSE(again.contains("Import", "Pwd"));
    // One value per key, however it was spelt.
    EXPECT_EQ(test::readFile(dir / "DV01.ini").find("PWD="), std::string::npos);
}

TEST(SettingsStore, FileIsPrivateAndCreatedWithItsFolder) {
    TempDir dir;
    ::setenv("XDG_CONFIG_HOME", (dir / "cfg").c_str(), 1);
    SettingsStore store = SettingsStore::forUser();
    EXPECT_EQ(store.file(), dir / "cfg" / "dorvane" / "DV01.ini");
    ASSERT_TRUE(store.set("SMTP", "Hostname", "mail.example.com").ok());
    struct stat st {};
    ASSERT_EQ(::stat(store.file().c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    ::unsetenv("XDG_CONFIG_HOME");
}

TEST(SettingsStore, NumbersReadAs16BitWithDefaults) {
    TempDir dir;
    SettingsStore store(dir / "s.ini");
    store
        .setAll("Settings",
                {{"MailOption", "2"}, {"Test", "abc"}, {"BCC", "70000"}, {"Attachment", " 1 "}})
        .ok();
    EXPECT_EQ(store.getInt("Settings", "MailOption", 0), 2);
    EXPECT_EQ(store.getInt("Settings", "Test", 0), 0);
    EXPECT_EQ(store.getInt("Settings", "BCC", 0), 0);
    EXPECT_EQ(store.getInt("Settings", "Attachment", 0), 1);
    EXPECT_EQ(store.getInt("Settings", "Missing", 7), 7);
}

TEST(SettingsStore, AHandEditedFileIsRead) {
    TempDir dir;
    test::writeFile(dir / "s.ini",
                    "; written by hand\r\n[ smtp ]\r\nHostname = mail.example.net\r\n"
                    "junk line\r\nport=2525\r\n");
    SettingsStore store(dir / "s.ini");
    EXPECT_EQ(store.get("SMTP", "Hostname"), " mail.example.net");
    EXPECT_EQ(store.get("SMTP", "Port", "25"), "2525");
}

TEST(CheckSetting, RefusesUnknownSettingsAndValuesTheirTypeDoesNotTake) {
    struct Case {
        const char* section;
        const char* key;
        const char* value;
        const char* refusal;  // a fragment of the message; null: accepted
    };
    const Case cases[] = {
        {"smtp", "HOSTNAME", "mail.example.com", nullptr},
        {"SMTP", "Hostname", "smtp://mail.example.com", "a host name or IP address"},
        {"SMTP", "Hostnme", "x", "SMTP Hostnme: no such setting. Did you mean 'SMTP Hostname'?"},
        {"Mail", "Hostname", "x", "Did you mean 'SMTP Hostname'?"},
        {"Bogus", "Key", "1", "Bogus Key: no such setting."},
        {"SMTP", "Port", "2525", nullptr},
        {"SMTP", "Port", "abc", "a port number from 1 to 65535"},
        {"SMTP", "Port", "65536", "from 1 to 65535"},
        {"SMTP", "Pwd", "any thing \\ at all", nullptr},
        {"Settings", "Test", "1", nullptr},
        {"Settings", "Test", "yes", "give 0 (off) or 1 (on)"},
        {"Settings", "MailOption", "2", nullptr},
        {"Settings", "MailOption", "3",
         "1 (Outlook, which Linux lacks: nothing is sent) or 2 (direct delivery"},
        {"QuickBooks", "Connection", "WebConnector", nullptr},
        {"QuickBooks", "Connection", "office", "sandbox (the embedded sandbox company)"},
        {"Web", "Timeout", "0", "a number of seconds from 1 to 32767"},
        {"WebConnector", "MaxRequestMB", "1024", nullptr},
        {"WebConnector", "MaxRequestMB", "-1", "a whole number from 1 to 1024"},
        {"Handheld", "DeviceFolder", "/media/handheld", nullptr},
        {"Handheld", "DeviceFolder", "", nullptr},
        {"Handheld", "DeviceFolder", "media/handheld", "an absolute path"},
        {"Web", "UpdateURL", "https://shop.example.com/items", nullptr},
        {"Web", "UpdateURL", "shop.example.com", "http:// or https://"},
        {"Reminders", "Days", " 0, 7 ,60", nullptr},
        {"Reminders", "Days", "1,15,15", "three increasing numbers of days"},
        {"Reminders", "Days", "1,15", "three increasing numbers of days"},
        {"Settings", "EmailAdr", "me@example.com", nullptr},
        {"Settings", "EmailAdr", "me at example.com", "an e-mail address"},
        {"Settings", "BCCAdr", "a@example.com; b@example.org", nullptr},
        {"Settings", "BCCAdr", "a@example.com, b@example.org", "separated with ';'"},
        {"Import", "Account", "[Expense] Office Supplies", nullptr},
        {"Import", "Account", "Office Supplies", "[TYPE] NAME"},
        {"WebConnector", "OwnerID", "{57F3B9B1-86F1-4fcc-B1EE-566DE1813D20}", nullptr},
        {"WebConnector", "OwnerID", "57F3B9B1", "a GUID"},
        {"WebConnector", "PasswordHash", "x", "not set by hand"},
    };
    for (const Case& c : cases) {
        const Status checked = checkSetting(c.section, c.key, c.value);
        const std::string what = std::string(c.section) + " " + c.key + " " + c.value;
        if (!c.refusal) {
            EXPECT_TRUE(checked.ok()) << what << ": " << checked.error().description;
        } else {
            ASSERT_FALSE(checked.ok()) << what;
            EXPECT_NE(checked.error().description.find(c.refusal), std::string::npos)
                << what << ": " << checked.error().description;
        }
    }
    // Every default is a value its setting takes.
    for (const KnownSetting& s : kKnownSettings) {
        if (s.type != SettingType::Hash) {
            EXPECT_TRUE(checkSetting(s.section, s.key, s.defaultValue).ok()) << s.key;
        }
    }
}

TEST(MailSettings, AFreshInstallationSendsPlainlyAndEveryKeyReachesItsField) {
    TempDir dir;
    SettingsStore store(dir / "s.ini");
    const MailSettings fresh = loadMailSettings(store);
    for (int field : {fresh.mailOption, fresh.test, fresh.bcc, fresh.attachment,
                      fresh.returnReceipt, fresh.trace}) {
        EXPECT_EQ(field, 0);
    }
    store
        .setAll("Settings", {{"Test", "1"},
                             {"EmailAdr", "t@example.com"},
                             {"MailOption", "2"},
                             {"BCC", "1"},
                             {"BCCAdr", "b@example.com"},
                             {"alwaysBCC", "1"},
                             {"altEmail", "1"},
                             {"Attachment", "1"},
                             {"ReturnReceipt", "1"},
                             {"Encrypt", "1"}})
        .ok();
    store.set("SMTP", "Trace", "1").ok();
    MailSettings m = loadMailSettings(store);
    EXPECT_EQ(m.test, 1);
    EXPECT_EQ(m.emailAdr, "t@example.com");
    EXPECT_EQ(m.mailOption, 2);
    EXPECT_EQ(m.trace, 1);
    EXPECT_EQ(m.bcc, 1);
    EXPECT_EQ(m.bccAdr, "b@example.com");
    EXPECT_EQ(m.alwaysBcc, 1);
    EXPECT_EQ(m.altEmail, 1);
    EXPECT_EQ(m.attachment, 1);
    EXPECT_EQ(m.returnReceipt, 1);
    EXPECT_EQ(m.encrypt, 1);
    // A change takes effect at the next read, without restarting anything.
    store.set("Settings", "MailOption", "1").ok();
    EXPECT_EQ(loadMailSettings(store).mailOption, 1);
}

}  // namespace
}  // namespace dorvane::platform
