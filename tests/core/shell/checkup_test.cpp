// SPDX-License-Identifier: GPL-3.0-or-later
// The check-up against real components: a seeded program folder, the sandbox's state, an SMTP
// and a DNS server on loopback, a handheld folder.
#include "shell/checkup.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

#include "mail/mxresolver.h"
#include "platform/programhome.h"
#include "platform/settings.h"
#include "qbsandbox/state.h"
#include "support/mailservers.h"
#include "webconnector/config.h"

namespace dorvane::shell {
namespace {
namespace fs = std::filesystem;

// One user's machine: program folder, settings, sandbox state, environment.
struct Machine {
    Machine() {
        fs::create_directories(dir / "cfg");
        (void)platform::prepareProgramHome(home, shipped);
    }
    void set(const char* section, const char* key, const std::string& value) {
        ASSERT_TRUE(store.set(section, key, value));
    }
    void setEnv(const char* name, std::optional<std::string> value) {
        env.push_back(std::make_unique<test::ScopedEnvironment>(name, std::move(value)));
    }
    void useSmtp(const std::string& port, const std::string& user, const std::string& password) {
        set("SMTP", "Hostname", "127.0.0.1");
        set("SMTP", "Port", port);
        set("SMTP", "User", user);
        set("SMTP", "Pwd", password);
    }
    std::vector<CheckResult> run() {
        store.reload();
        return runCheckup(CheckupSources{home, shipped, store, dir / "sandbox", sender});
    }

    test::TempDir dir;
    fs::path home = dir / "home";
    fs::path shipped = test::programSource();
    platform::SettingsStore store{dir / "cfg" / "DV01.ini"};
    std::string sender;
    std::vector<std::unique_ptr<test::ScopedEnvironment>> env;
};

// A release whose invoice.xslt differs from the one the user changed: the user's stays, the
// release's goes beside it.
void changeSheetAcrossReleases(Machine& s) {
    test::writeFile(s.home / "invoice.xslt", "<!-- mine -->");
    const fs::path release = s.dir / "release";
    fs::copy(test::programSource(), release, fs::copy_options::recursive);
    test::writeFile(release / "invoice.xslt", "<!-- the next release's -->");
    (void)platform::prepareProgramHome(s.home, release);
    s.shipped = release;
}

void openDemoCompany(Machine& s) {
    const fs::path company = s.dir / "sandbox" / "demo.dvq";
    fs::create_directories(company.parent_path());
    test::copyDemoCompany(company);
    ASSERT_TRUE(qbsandbox::writeState(s.dir / "sandbox", {true, company}));
}

void makeHandheldFolder(Machine& s, bool withFile) {
    const fs::path device = s.dir / "device";
    fs::create_directories(device / "Program Files" / "TimeTrack");
    if (withFile) {
        test::writeFile(device / "Program Files" / "TimeTrack" / "DATA.XML", "<Dorvane_PDA/>");
    }
    s.set("Handheld", "DeviceFolder", device.string());
}

TEST(Checkup, EachComponentSaysWhatIsReadyAndWhatToDo) {
    test::SmtpServerOptions login;
    login.authUser = "clerk";
    login.authPassword = "right";
    const test::SmtpTestServer smtp(login);
    const test::DnsTestServer dns(
        "dorvane.test. 60 IN MX 10 mx.dorvane.test.\nmx.dorvane.test. 60 IN A 127.0.0.1\n");

    struct Case {
        const char* name;
        std::function<void(Machine&)> prepare;
        // Per component in order (program folder, settings, QuickBooks, SMTP server, MX
        // delivery, handheld folder, web update, window): o ok, P problem, - not configured.
        const char* states;
        std::vector<std::string> words;  // each in the report
    };
    const Case cases[] = {
        {"a fresh user",
         [](Machine&) {},
         "ooo-----",
         {"demo company is created", "dorvane settings set SMTP Hostname"}},
        {"everything set up and working",
         [&](Machine& s) {
             openDemoCompany(s);
             s.useSmtp(smtp.portText(), "clerk", "right");
             makeHandheldFolder(s, true);
             s.set("Web", "UpdateURL", "https://www.example.com/items");
             s.setEnv("DISPLAY", ":7");
         },
         "oooo-ooo",
         {"demo.dvq open", "unencrypted", "login as clerk accepted", "DISPLAY=:7"}},
        {"set up and broken",
         [&](Machine& s) {
             changeSheetAcrossReleases(s);
             ASSERT_TRUE(qbsandbox::writeState(s.dir / "sandbox", {false, {}, "/q/acme.dvq"}));
             s.set("SMTP", "Hostnme", "typo.example.com");
             s.useSmtp(smtp.portText(), "clerk", "wrong");
             makeHandheldFolder(s, false);
             s.set("Web", "UpdateURL", "www.example.com/items");
         },
         "PPPP-PP-",
         {"mv '", "invoice.xslt.new' ", "SMTP Hostnme", "dorvane sandbox open '/q/acme.dvq'",
          "refused the login", "dorvane settings set SMTP User", "time-tracking application",
          "Web UpdateURL \"www.example.com/items\""}},
        {"direct delivery, and the Web Connector that polled",
         [&](Machine& s) {
             s.set("Settings", "MailOption", "2");
             s.sender = "Office <office@dorvane.test>";
             s.set("QuickBooks", "Connection", "webconnector");
             ASSERT_TRUE(webconnector::setUser(s.store, "office", "secret"));
             webconnector::logEvent(s.home / webconnector::kLogFile, "connected",
                                    "user office from 10.0.0.5");
         },
         "ooo-o---",
         {"mail for dorvane.test goes to mx.dorvane.test (127.0.0.1)", "user office"}},
        {"direct delivery without DNS answers, no Web Connector user",
         [&](Machine& s) {
             s.set("Settings", "MailOption", "2");
             s.set("SMTP", "Port", "abc");
             s.set("QuickBooks", "Connection", "webconnector");
             s.set("Handheld", "DeviceFolder", (s.dir / "unplugged").string());
         },
         "oPP-PP--",
         {"dorvane settings set SMTP Port 25", "dorvane webconnector user NAME",
          "no mail exchanger for gmail.com", "unplugged (from settings) is not there"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Machine machine;
        machine.setEnv(mail::kDnsServerVariable, dns.address());
        for (const char* name : {"DORVANE_PROCESSOR", "DORVANE_DEVICE_DIR", "DISPLAY",
                                 "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            machine.setEnv(name, std::nullopt);
        }
        c.prepare(machine);
        const auto results = machine.run();
        const std::string report = checkupText(results);
        std::string states;
        for (const CheckResult& r : results) {
            states += r.state == CheckState::Ok ? 'o' : r.state == CheckState::Problem ? 'P' : '-';
        }
        EXPECT_EQ(states, c.states) << report;
        EXPECT_EQ(checkupPassed(results), states.find('P') == std::string::npos);
        for (const std::string& word : c.words) {
            EXPECT_NE(report.find(word), std::string::npos) << word << " in:\n" << report;
        }
    }
    // The check-up logs in but never begins a message.
    const test::SmtpRecord record = smtp.record();
    EXPECT_TRUE(record.messages.empty());
    EXPECT_EQ(record.sessions.size(), 2u);
}

}  // namespace
}  // namespace dorvane::shell
