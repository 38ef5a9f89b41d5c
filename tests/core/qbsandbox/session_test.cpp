// SPDX-License-Identifier: GPL-3.0-or-later
// Sessions, tickets and injected faults of the sandbox QuickBooks, seen through the request
// processor. (Its three states as the program sees them: the demo company tests.)
#include <chrono>

#include "qbgateway/gateway.h"
#include "qbsandbox/companyfile.h"
#include "sandboxfixture.h"

namespace dorvane::test {
namespace {

constexpr const char* kCompanyQuery = "<CompanyQueryRq requestID=\"1\"/>";

class SessionTest : public SandboxTest {};

TEST_F(SessionTest, FirstUseCreatesAndOpensTheDemoCompany) {
    auto doc = ask(kCompanyQuery);
    EXPECT_EQ(status(doc), "0 Info Status OK");
    EXPECT_EQ(doc.valueOf("//CompanyRet/CompanyName"), "Harbor Lane Landscaping");
    EXPECT_EQ(doc.valueOf("//CompanyRet/IsSampleCompany"), "true");
    auto state = qbsandbox::readState(folder());
    ASSERT_TRUE(state);
    EXPECT_TRUE(state->running);
    EXPECT_EQ(state->company, qbsandbox::demoCompanyPath(folder()));
}

TEST_F(SessionTest, SessionsNameTheOpenFileAndCheckTickets) {
    useEmptyCompany();
    auto processor = qbsandbox::processorFactory()();
    ASSERT_TRUE(processor);
    auto& p = **processor;
    ASSERT_TRUE(p.openConnection("", "Dorvane"));
    auto ticket = p.beginSession("", qbgateway::FileMode::DoNotCare);
    ASSERT_TRUE(ticket);
    auto name = p.getCurrentCompanyFileName(*ticket);
    ASSERT_TRUE(name);
    EXPECT_EQ(*name, company().string());

    auto wrong = p.processRequest("{00000000-0000-0000-0000-000000000000}", message(kCompanyQuery));
    ASSERT_FALSE(wrong);
    EXPECT_EQ(static_cast<std::uint32_t>(wrong.error().code), qbgateway::kErrTicket);
    EXPECT_EQ(wrong.error().description, "The ticket parameter is invalid.");

    auto other = p.beginSession((folder() / "other.dvq").string(), qbgateway::FileMode::DoNotCare);
    ASSERT_FALSE(other);
    EXPECT_EQ(static_cast<std::uint32_t>(other.error().code), 0x8004040Au);

    ASSERT_TRUE(p.endSession(*ticket));
    EXPECT_FALSE(p.getCurrentCompanyFileName(*ticket));
    EXPECT_TRUE(p.closeConnection());
}

TEST_F(SessionTest, BeginSessionWithAFileNameOpensItWhenNoneIsOpen) {
    qbsandbox::createEmptyCompany(company(), "Named");
    ASSERT_TRUE(qbsandbox::writeState(folder(), {true, {}}));
    auto processor = qbsandbox::processorFactory()();
    auto& p = **processor;
    ASSERT_TRUE(p.openConnection("", "Dorvane"));
    auto missing =
        p.beginSession((folder() / "absent.dvq").string(), qbgateway::FileMode::DoNotCare);
    ASSERT_FALSE(missing);
    EXPECT_EQ(static_cast<std::uint32_t>(missing.error().code), 0x80040403u);
    ASSERT_TRUE(p.beginSession(company().string(), qbgateway::FileMode::DoNotCare));
    EXPECT_EQ(qbsandbox::readState(folder())->company, company());
}

TEST_F(SessionTest, InjectedFaultsFailTheNextCallsThenStop) {
    useEmptyCompany();
    ASSERT_TRUE(
        qbsandbox::writeFaults(folder(), qbsandbox::parseFaults("ProcessRequest:2:0x80040414")));
    for (int i = 0; i < 2; ++i) {
        auto answer = exchange(message(kCompanyQuery));
        ASSERT_FALSE(answer);
        EXPECT_EQ(static_cast<std::uint32_t>(answer.error().code), 0x80040414u);
        EXPECT_EQ(answer.error().description.rfind("A modal dialog box is showing", 0), 0u);
    }
    EXPECT_TRUE(exchange(message(kCompanyQuery)));
    EXPECT_TRUE(qbsandbox::readFaults(folder()).empty());
}

TEST_F(SessionTest, FaultsFromTheEnvironmentAndDelays) {
    useEmptyCompany();
    ::setenv("DORVANE_SANDBOX_FAULTS", "OpenConnection:1:0x80040408,BeginSession:1:delay=150", 1);
    auto first = exchange(message(kCompanyQuery));
    ASSERT_FALSE(first);
    EXPECT_EQ(first.error().description, "Could not start QuickBooks.");
    auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(exchange(message(kCompanyQuery)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(150));
    EXPECT_TRUE(exchange(message(kCompanyQuery)));
    ::unsetenv("DORVANE_SANDBOX_FAULTS");
}

TEST_F(SessionTest, ParseFaultsIgnoresMalformedEntries) {
    auto faults = qbsandbox::parseFaults(
        "ProcessRequest:3:0x80040400, nonsense, EndSession:0:0x1, "
        "BeginSession:1:0x80040416:delay=20");
    ASSERT_EQ(faults.size(), 2u);
    EXPECT_EQ(faults[0].remaining, 3);
    EXPECT_EQ(faults[0].code, 0x80040400u);
    EXPECT_EQ(faults[1].delayMs, 20);
    EXPECT_EQ(faults[1].code, 0x80040416u);
}

}  // namespace
}  // namespace dorvane::test
