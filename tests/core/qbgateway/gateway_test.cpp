// SPDX-License-Identifier: GPL-3.0-or-later
// The exchange with QuickBooks: call order, traces and what a person is told.
#include "qbgateway/gateway.h"

#include <gtest/gtest.h>

#include "platform/programfolder.h"
#include "qbgateway/responsefolder.h"
#include "support/testsupport.h"

namespace dorvane::qbgateway {
namespace {

using test::ScriptedUi;
using test::TempDir;

// Records every operation into a shared journal and fails the named one.
struct Journal {
    std::vector<std::string> calls;
    std::string failAt;
    Error failure{static_cast<std::int32_t>(0x80040408), "Could not start QuickBooks."};
    std::string companyFile = "/data/Acme.qbw";
    std::string response = "<?xml version=\"1.0\" ?>\n<QBXML/>";
    int processors = 0;
    std::vector<std::string> tickets;
};

class ScriptedProcessor final : public RequestProcessor {
public:
    explicit ScriptedProcessor(Journal& j) : m_j(j) {}

    Status openConnection(const std::string& appId, const std::string& appName) override {
        return step("OpenConnection(" + appId + "," + appName + ")", "OpenConnection");
    }
    Result<std::string> beginSession(const std::string& file, FileMode mode) override {
        if (auto s =
                step("BeginSession(" + file + "," + std::to_string(static_cast<int>(mode)) + ")",
                     "BeginSession");
            !s) {
            return s.error();
        }
        m_ticket = "T" + std::to_string(m_j.processors);
        m_j.tickets.push_back(m_ticket);
        return m_ticket;
    }
    Result<std::string> getCurrentCompanyFileName(const std::string& ticket) override {
        if (auto s = step("GetCurrentCompanyFileName(" + ticket + ")", "GetCurrentCompanyFileName");
            !s) {
            return s.error();
        }
        return m_j.companyFile;
    }
    Result<std::string> processRequest(const std::string& ticket, const std::string&) override {
        if (auto s = step("ProcessRequest(" + ticket + ")", "ProcessRequest"); !s) {
            return s.error();
        }
        return m_j.response;
    }
    Status endSession(const std::string& ticket) override {
        return step("EndSession(" + ticket + ")", "EndSession");
    }
    Status closeConnection() override { return step("CloseConnection", "CloseConnection"); }

private:
    Status step(const std::string& call, const std::string& op) {
        m_j.calls.push_back(call);
        if (m_j.failAt == op) {
            return m_j.failure;
        }
        return {};
    }
    Journal& m_j;
    std::string m_ticket;
};

class GatewayTest : public ::testing::Test {
protected:
    GatewayTest()
        : folder(dir.path()),
          gateway(folder, ui, [this]() -> Result<std::unique_ptr<RequestProcessor>> {
              ++journal.processors;
              if (journal.failAt == "create") {
                  return journal.failure;
              }
              return std::unique_ptr<RequestProcessor>(new ScriptedProcessor(journal));
          }) {}

    std::string trace(const char* name) {
        gateway.waitForTraces();
        return test::readFile(dir / name);
    }

    TempDir dir;
    ScriptedUi ui;
    Journal journal;
    platform::ProgramFolder folder;
    Gateway gateway;
};

TEST_F(GatewayTest, OneCallOpensAndClosesEverythingInOrder) {
    EXPECT_EQ(gateway.processRequest("<req/>"), journal.response);
    EXPECT_EQ(journal.calls, (std::vector<std::string>{"OpenConnection(,Dorvane)",
                                                       "BeginSession(,2)", "ProcessRequest(T1)",
                                                       "EndSession(T1)", "CloseConnection"}));
    EXPECT_EQ(trace("QBXMLReq.txt"), "<req/>\r\n");
    EXPECT_EQ(trace("QBXMLResult.txt"), journal.response + "\r\n");
    EXPECT_TRUE(ui.messages.empty());

    // A second call is a new processor with a session of its own.
    journal.calls.clear();
    gateway.processRequest("<again/>");
    EXPECT_EQ(journal.processors, 2);
    EXPECT_EQ(journal.tickets, (std::vector<std::string>{"T1", "T2"}));
    EXPECT_EQ(journal.calls.front(), "OpenConnection(,Dorvane)");
    EXPECT_EQ(journal.calls.back(), "CloseConnection");

    // A company request asks for the file between the session and the request.
    journal.calls.clear();
    gateway.processCompanyRequest("<req/>");
    EXPECT_EQ(journal.calls,
              (std::vector<std::string>{"OpenConnection(,Dorvane)", "BeginSession(,2)",
                                        "GetCurrentCompanyFileName(T3)", "ProcessRequest(T3)",
                                        "EndSession(T3)", "CloseConnection"}));
    EXPECT_EQ(gateway.currentCompanyFile(), "/data/Acme.qbw");
}

// A failure at any step ends the call there: no EndSession or CloseConnection follows, the
// person is told, the request stays traced and the previous answer stays in its trace.
TEST_F(GatewayTest, AFailedStepEndsTheCallAtOnce) {
    gateway.processRequest("<first/>");
    const std::string previous = trace("QBXMLResult.txt");

    const std::vector<std::string> steps = {
        "create",         "OpenConnection", "BeginSession",   "GetCurrentCompanyFileName",
        "ProcessRequest", "EndSession",     "CloseConnection"};
    for (const auto& step : steps) {
        SCOPED_TRACE(step);
        journal.calls.clear();
        ui.messages.clear();
        journal.failAt = step;
        EXPECT_EQ(gateway.processCompanyRequest("<" + step + "/>"), "");
        EXPECT_EQ(trace("QBXMLReq.txt"), "<" + step + "/>\r\n");
        EXPECT_EQ(trace("QBXMLResult.txt"), previous);
        EXPECT_EQ(gateway.currentCompanyFile(), "") << "noted only after a whole exchange";
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text,
                  "QuickBooks Access Error\r\nCould not start QuickBooks.(-2147220472)");
        EXPECT_EQ(ui.messages[0].title, "Dorvane");
        EXPECT_EQ(ui.messages[0].buttons, ui::Buttons::Ok);
        if (step != "EndSession" && step != "CloseConnection") {
            for (const auto& call : journal.calls) {
                EXPECT_EQ(call.find("EndSession"), std::string::npos) << call;
            }
        }
        if (step != "CloseConnection") {
            EXPECT_TRUE(journal.calls.empty() || journal.calls.back().rfind(step, 0) == 0)
                << journal.calls.back();
        }
    }
}

TEST_F(GatewayTest, NoCompanyFileOpenHasItsOwnMessage) {
    journal.failAt = "BeginSession";
    journal.failure = processorError(kErrNoCompanyFile, "no file open");
    EXPECT_EQ(gateway.processRequest("<r/>"), "");
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text,
              "Please open Quickbooks and select the appropriate Company file");
}

// An answer declaring entities is dropped before anyone parses it; a plain DOCTYPE or one in a
// comment is not a declaration.
TEST_F(GatewayTest, AnAnswerDeclaringEntitiesIsNotUsed) {
    const struct {
        const char* answer;
        bool dropped;
    } cases[] = {
        {"<?xml version=\"1.0\"?><!DOCTYPE QBXML [<!ENTITY a \"x\">]><QBXML>&a;</QBXML>", true},
        {"<!-- [ --><!DOCTYPE QBXML PUBLIC \"[x\" \"y\"\n[<!ELEMENT QBXML ANY>]><QBXML/>", true},
        {"<?xml version=\"1.0\"?><!DOCTYPE QBXML PUBLIC \"[x]\" \"y\"><QBXML/>", false},
        {"<?xml version=\"1.0\"?><!-- <!DOCTYPE x [ --><QBXML><A>[</A></QBXML>", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer);
        ui.messages.clear();
        journal.response = c.answer;
        EXPECT_EQ(gateway.processRequest("<req/>"), c.dropped ? "" : c.answer);
        EXPECT_EQ(ui.messages.size(), c.dropped ? 1u : 0u);
        EXPECT_FALSE(gateway.unreachable());
    }
}

TEST_F(GatewayTest, ErrorNumbersPrintAsSigned32BitDecimals) {
    EXPECT_EQ(Gateway::failureMessage(processorError(0x80040400, "Parse.")),
              "QuickBooks Access Error\r\nParse.(-2147220480)");
    EXPECT_EQ(Gateway::failureMessage(Error{53, "File not found"}),
              "QuickBooks Access Error\r\nFile not found(53)");
}

TEST_F(GatewayTest, AnUnwritableTraceIsAFailedCall) {
    std::filesystem::create_directory(dir / "QBXMLReq.txt");  // a folder where the file goes
    EXPECT_EQ(gateway.processRequest("<r/>"), "");
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text.rfind("QuickBooks Access Error\r\n", 0), 0u);
    EXPECT_TRUE(journal.calls.empty());

    // The answer's trace is written while the caller reads the answer; a failure is told
    // by the next exchange.
    std::filesystem::remove(dir / "QBXMLReq.txt");
    std::filesystem::create_directory(dir / "QBXMLResult.txt");
    ui.messages.clear();
    EXPECT_EQ(gateway.processRequest("<r/>"), journal.response);
    gateway.waitForTraces();
    EXPECT_TRUE(ui.messages.empty());
    std::filesystem::remove(dir / "QBXMLResult.txt");
    EXPECT_EQ(gateway.processRequest("<r/>"), journal.response);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text.rfind("QuickBooks Access Error\r\n", 0), 0u);
    EXPECT_EQ(trace("QBXMLResult.txt"), journal.response + "\r\n");
}

TEST_F(GatewayTest, CompanyFileChangeReloadsOnlyOnARealSwitch) {
    int reloads = 0;
    gateway.onCompanyFileChanged([&] { ++reloads; });
    gateway.processCompanyRequest("<r/>");
    EXPECT_EQ(reloads, 0) << "the first call after start-up only records the file";
    gateway.processCompanyRequest("<r/>");
    EXPECT_EQ(reloads, 0);
    journal.companyFile = "/data/Other.qbw";
    gateway.processCompanyRequest("<r/>");
    EXPECT_EQ(reloads, 1);
    gateway.processCompanyRequest("<r/>");
    EXPECT_EQ(reloads, 1);
    journal.companyFile = "/data/other.qbw";  // names compare case-sensitively
    gateway.processCompanyRequest("<r/>");
    EXPECT_EQ(reloads, 2);
    // processRequest never looks at the company file.
    journal.companyFile = "/data/Third.qbw";
    gateway.processRequest("<r/>");
    EXPECT_EQ(reloads, 2);
    EXPECT_EQ(gateway.currentCompanyFile(), "/data/other.qbw");
}

TEST(ResponseFolder, AnswersByRequestNameAndFailsOnRequest) {
    TempDir dir;
    ScriptedUi ui;
    platform::ProgramFolder folder(dir.path());
    std::filesystem::create_directory(dir / "qb");
    test::writeFile(dir / "qb" / "InvoiceQueryRs.xml", "<invoices/>");
    test::writeFile(dir / "qb" / "default.xml", "<default/>");
    Gateway gateway(folder, ui, responseFolderFactory(dir / "qb"));

    EXPECT_EQ(gateway.processRequest("<?xml version=\"1.0\"?><?qbxml version=\"2.0\"?><QBXML>"
                                     "<QBXMLMsgsRq onError=\"stopOnError\"><InvoiceQueryRq "
                                     "requestID=\"1\"/></QBXMLMsgsRq></QBXML>"),
              "<invoices/>");
    EXPECT_EQ(gateway.processRequest("<QBXML><QBXMLMsgsRq><HostQueryRq/></QBXMLMsgsRq></QBXML>"),
              "<default/>");
    // A long name before the request is read past in one pass.
    EXPECT_EQ(
        gateway.processRequest("<QBXML><QBXMLMsgsRq><" + std::string(200000, 'a') +
                               "Rqx/><InvoiceQueryRq></InvoiceQueryRq></QBXMLMsgsRq></QBXML>"),
        "<invoices/>");

    test::writeFile(dir / "qb" / "failures.txt", "BeginSession 0x80040416 No company file\n");
    EXPECT_EQ(gateway.processRequest("<x/>"), "");
    EXPECT_EQ(ui.texts().back(), "Please open Quickbooks and select the appropriate Company file");
}

}  // namespace
}  // namespace dorvane::qbgateway
