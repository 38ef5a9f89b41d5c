// SPDX-License-Identifier: GPL-3.0-or-later
// The Web Connector service, driven over real HTTP by a Web Connector stand-in that answers
// from a second sandbox company playing the office's QuickBooks.
#include <gtest/gtest.h>
#include <memory>

#include "common/files.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/testsupport.h"
#include "support/webconnectorstandin.h"
#include "webconnector/config.h"
#include "webconnector/credentials.h"
#include "webconnector/service.h"
#include "xml/xml.h"

namespace dorvane {
namespace {

using test::ScopedEnvironment;
using test::ScriptedUi;
using test::TempDir;
using test::WebConnectorStandIn;
using webconnector::Service;

constexpr const char* kCouldNotStart =
    "QuickBooks Access Error\r\nCould not start QuickBooks.(-2147220472)";

// The password hash is slow on purpose: made once for the whole suite.
const std::string& secretHash() {
    static const std::string hash = *webconnector::hashPassword("secret");
    return hash;
}

class WebConnectorTest : public ::testing::Test {
protected:
    WebConnectorTest() {
        test::copyProgramFiles(home / "dorvane");
        test::copyProgramFiles(home / "direct");
        test::copyDemoCompany(home / "office.dvq");
        EXPECT_TRUE(qbsandbox::writeState(home / "office", {true, home / "office.dvq"}));
    }

    // Dorvane with the Web Connector connection, serving on a port of the system's choosing;
    // the time limits come through the settings as a person sets them.
    void startDorvane(bool hold = true, int waitSeconds = 20,
                      std::chrono::milliseconds pollWait = std::chrono::milliseconds(300),
                      int answerSeconds = 600) {
        platform::SettingsStore store(home / "cfg" / "service.ini");
        ASSERT_TRUE(
            store
                .setEntries(
                    {{webconnector::kSection, "WaitSeconds", std::to_string(waitSeconds)},
                     {webconnector::kSection, "AnswerSeconds", std::to_string(answerSeconds)}})
                .ok());
        webconnector::ServiceOptions o;
        o.settings = webconnector::ServiceSettings::load(store);
        o.settings.port = 0;
        o.settings.userName = "office";
        o.settings.passwordHash = secretHash();
        o.settings.maxRequestBytes = 1024 * 1024;
        o.logFile = home / "dorvane" / webconnector::kLogFile;
        o.holdSession = hold;
        o.pollWait = pollWait;
        o.linger = std::chrono::milliseconds(300);
        o.refusalDelay = std::chrono::milliseconds(10);
        service = std::make_unique<Service>(std::move(o));
        ASSERT_TRUE(service->start());
        app = std::make_unique<shell::Application>(
            ui, shell::StartOptions{(home / "dorvane").string()}, service->processorFactory());
    }

    std::string url() const {
        return "http://127.0.0.1:" + std::to_string(service->port()) + "/qbwc";
    }

    WebConnectorStandIn::Options standIn(
        WebConnectorStandIn::Mode mode = WebConnectorStandIn::Mode::Answer) const {
        WebConnectorStandIn::Options o;
        o.url = url();
        o.office = home / "office";
        o.mode = mode;
        return o;
    }

    // The office's QuickBooks reached directly, as the window would on that PC.
    std::unique_ptr<shell::Application> direct(ScriptedUi& directUi) {
        return std::make_unique<shell::Application>(directUi,
                                                    shell::StartOptions{(home / "direct").string()},
                                                    qbsandbox::processorFactory(home / "office"));
    }

    static std::vector<std::vector<std::string>> rows(shell::Application& a, const char* type) {
        a.window().selectTimeframe("ALL");
        a.window().selectDocumentType(type);
        std::vector<std::vector<std::string>> out;
        for (int r = 0; r < a.window().list().rowCount(); ++r) {
            out.push_back(a.window().list().row(r).cells);
        }
        return out;
    }

    TempDir home;
    ScopedEnvironment sandbox{"DORVANE_SANDBOX_DIR", (home / "no-sandbox-here").string()};
    ScopedEnvironment today{"DORVANE_TODAY", "2026-11-18"};
    ScopedEnvironment config{"XDG_CONFIG_HOME", (home / "cfg").string()};
    ScopedEnvironment processor{"DORVANE_PROCESSOR", std::nullopt};
    ScriptedUi ui;
    std::unique_ptr<Service> service;
    std::unique_ptr<shell::Application> app;
};

// The window's lists through the Web Connector are the office company's, row for row; the
// session stays open between requests (NoOp) and carries them all on one login.
TEST_F(WebConnectorTest, ListsThroughTheWebConnectorEqualTheOfficeCompanysOwn) {
    startDorvane(true, 20, std::chrono::seconds(2));
    WebConnectorStandIn connector(standIn());
    app->window().startUp();
    ASSERT_TRUE(ui.messages.empty()) << ui.texts().front();

    ScriptedUi directUi;
    auto office = direct(directUi);
    office->window().startUp();
    EXPECT_EQ(app->window().companyText(), office->window().companyText());
    EXPECT_EQ(app->gateway().currentCompanyFile(), "C:\\Office\\Harbor Lane.QBW");
    for (const char* type : {"Invoice", "Estimate", "SalesReceipt", "Statement"}) {
        const auto bridged = rows(*app, type);
        EXPECT_FALSE(bridged.empty()) << type;
        EXPECT_EQ(bridged, rows(*office, type)) << type;
    }
    ASSERT_TRUE(connector.waitFor([](const auto& c) { return c.noOps >= 1; }));
    const auto afterPause = rows(*app, "Invoice");
    EXPECT_EQ(afterPause, rows(*office, "Invoice"));
    EXPECT_TRUE(ui.messages.empty());
    const auto counts = connector.counts();
    EXPECT_EQ(counts.logins, 1);
    EXPECT_EQ(counts.closed, 0);
    EXPECT_GE(counts.answered, 5);

    // Closing Dorvane ends the session in an orderly way: the waiting poll answers "" and
    // getLastError says why.
    ASSERT_TRUE(connector.waitFor([](const auto& c) { return c.polling; }));
    app.reset();
    service.reset();
    ASSERT_TRUE(connector.waitFor([](const auto& c) { return c.closed == 1; }))
        << connector.counts().unreachable << " unreachable, last error "
        << connector.counts().lastError;
    EXPECT_EQ(connector.counts().lastClose, "OK");
    EXPECT_NE(connector.counts().lastError.find("Dorvane has stopped"), std::string::npos);
}

// A send run and an import, each through the Web Connector, against the office company.
TEST_F(WebConnectorTest, SendsAndImportsThroughTheWebConnector) {
    test::SmtpTestServer smtp;
    startDorvane();
    WebConnectorStandIn connector(standIn());
    app->window().startUp();
    ASSERT_TRUE(app->settings()
                    .setEntries({{"SMTP", "Hostname", "127.0.0.1"},
                                 {"SMTP", "Port", smtp.portText()},
                                 {"Settings", "MailOption", "0"},
                                 {"Settings", "Attachment", "1"}})
                    .ok());
    rows(*app, "Invoice");
    ui::ListModel& list = app->window().list();
    int ready = 0;
    for (int r = 0; r < list.rowCount(); ++r) {
        list.setChecked(r, list.row(r).checked && ready++ == 0);
    }
    ASSERT_EQ(ready > 0, true);
    app->sender().sendSelectedDocuments();
    const auto mails = smtp.record().accepted();
    ASSERT_EQ(mails.size(), 1u) << (ui.messages.empty() ? "" : ui.texts().back());

    // The invoice's exchange file, taken from the mail, booked back as a bill.
    const auto exchange = home / "Invoice.dvx";
    for (const auto& part : mails[0].mime.parts) {
        if (part.filename.ends_with(".dvx")) {
            test::writeFile(exchange, part.body);
        }
    }
    ASSERT_TRUE(std::filesystem::exists(exchange)) << "no exchange file in the mail";
    ScriptedUi directUi;
    auto office = direct(directUi);
    auto bills = [&office] {
        auto doc = xml::Document::parse(office->gateway().processRequest(
            "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
            "onError=\"stopOnError\"><BillQueryRq/></QBXMLMsgsRq></QBXML>"));
        return doc ? doc->selectAll("//BillRet").size() : 0u;
    };
    const std::size_t before = bills();
    app->importWindow().open();
    app->importWindow().openExchangeFile(exchange.string());
    app->importWindow().importSelectedDocument();
    EXPECT_EQ(bills(), before + 1) << app->importWindow().statusText();
}

// What the gateway shows when QuickBooks cannot be had through the Web Connector: the
// Web Connector's own HRESULT and text, or "Could not start QuickBooks." when no session came.
TEST_F(WebConnectorTest, FailuresReadAsTheGatewayShowsQuickBooksOwn) {
    const std::string hostQuery =
        "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><HostQueryRq/></QBXMLMsgsRq></QBXML>";
    const std::string modal =
        "A modal dialog box is showing in the QuickBooks user interface. Your application "
        "cannot access QuickBooks until the user dismisses the dialog box.";
    struct Case {
        const char* name;
        WebConnectorStandIn::Mode mode;
        const char* password;
        std::pair<std::string, std::string> connectionError;
        std::string request;
        std::string shown;
    };
    const Case cases[] = {
        {"connectionError",
         WebConnectorStandIn::Mode::ConnectionError,
         "secret",
         {"0x80040414", modal},
         hostQuery,
         "QuickBooks Access Error\r\n" + modal + "(-2147220460)"},
        {"no company file open",
         WebConnectorStandIn::Mode::ConnectionError,
         "secret",
         {"0x80040416", "If QuickBooks is not running, a company file must be named."},
         hostQuery,
         qbgateway::kNoCompanyMessage},
        {"an HRESULT for the request",
         WebConnectorStandIn::Mode::Answer,
         "secret",
         {},
         "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><HostQueryRq>",
         "QuickBooks Access Error\r\nQuickBooks found an error when parsing the provided XML "
         "text stream.(-2147220480)"},
        {"a wrong password",
         WebConnectorStandIn::Mode::Answer,
         "guess",
         {},
         hostQuery,
         kCouldNotStart},
        {"no answer within AnswerSeconds",
         WebConnectorStandIn::Mode::Stall,
         "secret",
         {},
         hostQuery,
         "QuickBooks Access Error\r\nCould not access QuickBooks.(-2147220479)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ui.messages.clear();
        startDorvane(true, 2, std::chrono::milliseconds(300), 1);
        // Each failure ends within its limits (2 s for the pickup, 1 s for the answer); the
        // hook only ends a wait that overran them by far.
        const auto start = std::chrono::steady_clock::now();
        service->setWaitHook([start](const webconnector::WaitProgress&) {
            return std::chrono::steady_clock::now() - start < std::chrono::seconds(10);
        });
        auto options = standIn(c.mode);
        options.password = c.password;
        options.connectionError = c.connectionError;
        WebConnectorStandIn connector(options);
        EXPECT_EQ(app->gateway().processRequest(c.request), "");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(6));
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text, c.shown);
        if (c.mode == WebConnectorStandIn::Mode::ConnectionError) {
            EXPECT_TRUE(connector.waitFor([](const auto& n) { return n.closed == 1; }));
            EXPECT_EQ(connector.counts().lastClose, "OK");
        }
        if (c.password != std::string("secret")) {
            EXPECT_GE(connector.counts().refusals, 1);
            EXPECT_EQ(connector.counts().logins, 0);
        }
        connector.stop();
        app.reset();
        service.reset();
    }
    // Neither the password nor a ticket ever reaches the log.
    const std::string log = test::readFile(home / "dorvane" / webconnector::kLogFile);
    EXPECT_NE(log.find("refused: login as 'office'"), std::string::npos) << log;
    EXPECT_EQ(log.find("secret"), std::string::npos);
    EXPECT_EQ(log.find("guess"), std::string::npos);
}

// A Web Connector that took the request and went quiet: the wait can be stopped, the
// request's fate is logged, and a new session serves the next request.
TEST_F(WebConnectorTest, AStalledWebConnectorCanBeLeft) {
    startDorvane(true, 5);
    std::vector<webconnector::WaitProgress::Phase> phases;
    service->setWaitHook([&phases](const webconnector::WaitProgress& p) {
        if (phases.empty() || phases.back() != p.phase) {
            phases.push_back(p.phase);
        }
        return p.phase != webconnector::WaitProgress::Phase::Answer || p.elapsedSeconds < 1;
    });
    {
        WebConnectorStandIn stalled(standIn(WebConnectorStandIn::Mode::Stall));
        EXPECT_EQ(app->gateway().processRequest("<QBXML/>"), "");
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text,
                  "QuickBooks Access Error\r\nCould not access QuickBooks.(-2147220479)");
        using Phase = webconnector::WaitProgress::Phase;
        EXPECT_EQ(phases.back(), Phase::Answer);
    }
    EXPECT_NE(test::readFile(home / "dorvane" / webconnector::kLogFile)
                  .find("QuickBooks may still carry out the request"),
              std::string::npos);
    ui.messages.clear();
    WebConnectorStandIn connector(standIn());
    const std::string answer = app->gateway().processRequest(
        "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><HostQueryRq/></QBXMLMsgsRq></QBXML>");
    EXPECT_NE(answer.find("<HostRet>"), std::string::npos) << answer;
    EXPECT_TRUE(ui.messages.empty());
}

// A command's session ends when its work is done: the last answer reports 100 %.
TEST_F(WebConnectorTest, ACommandsSessionEndsWithItsWork) {
    startDorvane(false);
    WebConnectorStandIn connector(standIn());
    app->window().startUp();
    EXPECT_TRUE(ui.messages.empty());
    ASSERT_TRUE(connector.waitFor([](const auto& c) { return c.closed >= 1; }));
    EXPECT_EQ(connector.counts().lastClose, "OK");
    EXPECT_EQ(connector.counts().lastError, "");
    EXPECT_FALSE(rows(*app, "Invoice").empty());
}

// Messages that are not the Web Connector's are refused with a fault, and the service goes on.
TEST_F(WebConnectorTest, RefusesMalformedAndHostileMessages) {
    startDorvane();
    const std::string big(1024 * 1024 + 1, 'x');
    struct Case {
        const char* name;
        std::string body;
        long status;
        const char* fault;
    };
    const Case cases[] = {
        {"not XML", "hello", 500, "not well-formed"},
        {"no envelope", "<authenticate xmlns=\"http://developer.intuit.com/\"/>", 500,
         "not a SOAP 1.1 envelope"},
        {"another namespace",
         "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>"
         "<authenticate xmlns=\"urn:other\"/></s:Body></s:Envelope>",
         500, "namespace"},
        {"unknown method", WebConnectorStandIn::envelope("formatDisk", {}), 500,
         "does not know the method"},
        {"entity expansion",
         "<?xml version=\"1.0\"?><!DOCTYPE s:Envelope [<!ENTITY a \"aaaaaaaaaa\">"
         "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
         "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>"
         "<authenticate xmlns=\"http://developer.intuit.com/\"><strUserName>&b;"
         "</strUserName></authenticate></s:Body></s:Envelope>",
         500, "not well-formed"},
        {"external entity",
         "<?xml version=\"1.0\"?><!DOCTYPE s [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>"
         "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>"
         "<authenticate xmlns=\"http://developer.intuit.com/\"><strUserName>&x;"
         "</strUserName></authenticate></s:Body></s:Envelope>",
         500, "not well-formed"},
        {"over the size limit", big, 413, "larger than Dorvane accepts"},
    };
    for (const Case& c : cases) {
        const auto [status, reply] = WebConnectorStandIn::post(url(), c.body);
        EXPECT_EQ(status, c.status) << c.name;
        EXPECT_NE(reply.find("<faultstring>"), std::string::npos) << c.name << ": " << reply;
        EXPECT_NE(reply.find(c.fault), std::string::npos) << c.name << ": " << reply;
        EXPECT_EQ(reply.find("root:"), std::string::npos) << c.name;
    }
    EXPECT_EQ(WebConnectorStandIn::post(url(), "", {}).first, 500);
    EXPECT_EQ(WebConnectorStandIn::post(
                  "http://127.0.0.1:" + std::to_string(service->port()) + "/other", "")
                  .first,
              404);

    // A forged ticket gets nothing; the service still answers properly.
    auto ask = [this](const std::string& method,
                      const std::vector<std::pair<std::string, std::string>>& params) {
        return WebConnectorStandIn::results(
            WebConnectorStandIn::post(url(), WebConnectorStandIn::envelope(method, params)).second,
            method);
    };
    EXPECT_EQ(ask("sendRequestXML", {{"ticket", std::string(32, '0')}}),
              std::vector<std::string>{""});
    EXPECT_EQ(ask("getLastError", {{"ticket", std::string(32, '0')}}),
              std::vector<std::string>{"The ticket parameter is invalid."});
    EXPECT_EQ(ask("serverVersion", {}),
              std::vector<std::string>{webconnector::Bridge::versionText()});
    EXPECT_EQ(ask("clientVersion", {{"strVersion", "2.1.0.30"}}), std::vector<std::string>{""});

    // A ticket is random, 128 bits, and dies with its session.
    const auto first = ask("authenticate", {{"strUserName", "office"}, {"strPassword", "secret"}});
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first[0].size(), 32u);
    EXPECT_EQ(first[1], "");
    const auto second = ask("authenticate", {{"strUserName", "office"}, {"strPassword", "secret"}});
    EXPECT_NE(first[0], second[0]);
    EXPECT_EQ(ask("getLastError", {{"ticket", first[0]}}),
              std::vector<std::string>{"The ticket parameter is invalid."});
    EXPECT_EQ(ask("closeConnection", {{"ticket", second[0]}}), std::vector<std::string>{"OK"});
    EXPECT_EQ(ask("getLastError", {{"ticket", second[0]}}),
              std::vector<std::string>{"The ticket parameter is invalid."});
    EXPECT_EQ(ask("sendRequestXML", {{"ticket", second[0]}}), std::vector<std::string>{""});
    EXPECT_EQ(ask("closeConnection", {{"ticket", first[0]}}),
              std::vector<std::string>{"The ticket parameter is invalid."});
    EXPECT_EQ(ask("authenticate", {{"strUserName", "Office"}, {"strPassword", "secret"}})[1],
              "nvu");
}

// The password is kept only as a salted slow hash; the .qwc names the service and the user.
TEST_F(WebConnectorTest, UserAndQwcFile) {
    platform::SettingsStore store(home / "cfg" / "s.ini");
    ASSERT_TRUE(webconnector::setUser(store, "office", "correct horse"));
    const std::string ini = test::readFile(store.file());
    EXPECT_EQ(ini.find("correct horse"), std::string::npos);
    const std::string hash = store.get("WebConnector", "PasswordHash");
    EXPECT_EQ(hash.rfind("$y$", 0), 0u);
    EXPECT_TRUE(webconnector::verifyPassword("correct horse", hash));
    EXPECT_FALSE(webconnector::verifyPassword("correct horse ", hash));
    EXPECT_FALSE(webconnector::verifyPassword("correct horse", ""));
    ASSERT_TRUE(webconnector::setUser(store, "office", "correct horse"));
    EXPECT_NE(store.get("WebConnector", "PasswordHash"), hash);  // a new salt each time

    ASSERT_TRUE(store.setEntries({{"WebConnector", "Port", "9443"},
                                  {"WebConnector", "Host", "books.example.com"},
                                  {"WebConnector", "Certificate", "/etc/dorvane/cert.pem"},
                                  {"WebConnector", "Key", "/etc/dorvane/key.pem"}}));
    ASSERT_TRUE(webconnector::writeQwc(store, home / "a.qwc"));
    ASSERT_TRUE(webconnector::writeQwc(store, home / "b.qwc"));
    EXPECT_EQ(test::readFile(home / "a.qwc"), test::readFile(home / "b.qwc"));
    auto qwc = xml::Document::load(home / "a.qwc");
    ASSERT_TRUE(qwc);
    EXPECT_EQ(qwc->valueOf("/QBWCXML/AppURL"), "https://books.example.com:9443/qbwc");
    EXPECT_EQ(qwc->valueOf("/QBWCXML/AppSupport"), "https://books.example.com:9443/support");
    EXPECT_EQ(qwc->valueOf("/QBWCXML/UserName"), "office");
    EXPECT_EQ(qwc->valueOf("/QBWCXML/QBType"), "QBFS");
    EXPECT_EQ(qwc->valueOf("/QBWCXML/Scheduler/RunEveryNMinutes"), "1");
    EXPECT_EQ(qwc->valueOf("/QBWCXML/IsReadOnly"), "false");
    for (const char* id : {"/QBWCXML/OwnerID", "/QBWCXML/FileID"}) {
        const std::string guid = qwc->valueOf(id);
        EXPECT_EQ(guid.size(), 38u) << id;
        EXPECT_EQ(guid.front(), '{');
        EXPECT_EQ(guid[15], '4');  // a random GUID
    }
    EXPECT_NE(qwc->valueOf("/QBWCXML/OwnerID"), qwc->valueOf("/QBWCXML/FileID"));
    EXPECT_EQ(test::readFile(home / "a.qwc").find("correct horse"), std::string::npos);

    // Without a certificate the service is this computer's only, and says so.
    ASSERT_TRUE(store.setEntries({{"WebConnector", "Certificate", ""}}));
    const auto plain = webconnector::ServiceSettings::load(store);
    EXPECT_FALSE(plain.secure());
    EXPECT_EQ(plain.appUrl(), "http://localhost:9443/qbwc");
}

// With a certificate the service speaks HTTPS on every address, and a client that trusts the
// certificate gets through; a plain-HTTP call gets nothing.
TEST_F(WebConnectorTest, ServesHttpsWithTheConfiguredCertificate) {
    const auto cert = home / "cert.pem";
    const auto key = home / "key.pem";
    ASSERT_EQ(test::runCommand("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "
                               "/CN=localhost -addext subjectAltName=DNS:localhost,IP:127.0.0.1 "
                               "-keyout '" +
                               key.string() + "' -out '" + cert.string() + "' 2>/dev/null"),
              0);
    webconnector::ServiceOptions o;
    o.settings.port = 0;
    o.settings.certificate = cert.string();
    o.settings.key = key.string();
    o.settings.userName = "office";
    o.settings.passwordHash = secretHash();
    o.holdSession = true;
    o.pollWait = std::chrono::milliseconds(300);
    service = std::make_unique<Service>(std::move(o));
    ASSERT_TRUE(service->start());
    app = std::make_unique<shell::Application>(ui, shell::StartOptions{(home / "dorvane").string()},
                                               service->processorFactory());
    const std::string secure = "https://localhost:" + std::to_string(service->port()) + "/qbwc";

    auto options = standIn();
    options.url = secure;
    options.caFile = cert.string();
    WebConnectorStandIn connector(options);
    const std::string answer = app->gateway().processRequest(
        "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><HostQueryRq/></QBXMLMsgsRq></QBXML>");
    EXPECT_NE(answer.find("<HostRet>"), std::string::npos) << ui.texts().size();
    EXPECT_EQ(
        WebConnectorStandIn::post(url(), WebConnectorStandIn::envelope("serverVersion", {})).first,
        0);
    EXPECT_EQ(
        WebConnectorStandIn::post(secure, WebConnectorStandIn::envelope("serverVersion", {})).first,
        0);  // not trusted without the certificate
}

}  // namespace
}  // namespace dorvane
