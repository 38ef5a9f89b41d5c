// SPDX-License-Identifier: GPL-3.0-or-later
// The program against the embedded QuickBooks and its demo company: every request template,
// start-up, the lists of every menu entry, and a switch of company file.
#include <gtest/gtest.h>

#include "browser/documenttypes.h"
#include "common/text.h"
#include "qbgateway/defaultrecords.h"
#include "qbgateway/response.h"
#include "qbgateway/templates.h"
#include "qbsandbox/demo.h"
#include "qbsandbox/state.h"
#include "support/demoapp.h"

namespace dorvane::browser {
namespace {

class DemoCompanyTest : public test::DemoAppTest {
protected:
    DemoCompanyTest() { startApp(); }
};

// Every template the program ships is a request QuickBooks accepts: no parse failure of the
// whole message, and no response element with an error.
TEST_F(DemoCompanyTest, EveryRequestTemplateIsAccepted) {
    int templates = 0;
    for (const auto& f : std::filesystem::directory_iterator(home / "program")) {
        const std::string name = f.path().filename().string();
        if (!name.ends_with("Rq.xml") || name.find("Add") != std::string::npos) {
            continue;
        }
        ++templates;
        SCOPED_TRACE(name);
        std::string request = app->folder().readProgramFile(name).value();
        request = qbgateway::fillDateMacro(request, "LastFiscalYear");
        request = qbgateway::fillWholeList(request);
        request =
            text::replaceAll(request, qbgateway::kFromDatePlaceholder, qbgateway::kFixedFromDate);
        const std::string response = app->gateway().processRequest(request);
        ASSERT_FALSE(response.empty()) << ui.texts().back();
        auto doc = xml::Document::parse(response);
        ASSERT_TRUE(doc.ok());
        for (xml::Node rs : doc->selectAll("/QBXML/QBXMLMsgsRs/*")) {
            EXPECT_NE(rs.attribute("statusSeverity"), "Error")
                << rs.name() << ": " << rs.attribute("statusMessage");
        }
    }
    EXPECT_GE(templates, 15);
}

TEST_F(DemoCompanyTest, StartUpCreatesTheDefaultRecordsOnce) {
    app->window().startUp();
    EXPECT_TRUE(ui.messages.empty()) << ui.texts().front();
    EXPECT_EQ(app->window().companyText().substr(0, 23), "Harbor Lane Landscaping");
    auto check = [&] {
        auto doc = xml::Document::parse(app->gateway().processRequest(
            app->folder().readProgramFile("CheckAccountGetRq.xml").value()));
        return std::pair<bool, bool>{
            bool(doc->selectOne("//AccountQueryRs/*[FullName='Uncategorized Expenses']")),
            bool(doc->selectOne("//ItemQueryRs/*[FullName='Uncategorized Item']"))};
    };
    EXPECT_EQ(check(), (std::pair<bool, bool>{true, true}));

    // A second start-up only looks: the request trace holds the check, not an add.
    shell::Application again(ui, shell::StartOptions{(home / "program").string()});
    again.defaultRecords().ensureDefaultRecords();
    EXPECT_NE(test::readFile(home / "program" / "QBXMLReq.txt").find("AccountQueryRq"),
              std::string::npos);
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(DemoCompanyTest, EveryMenuEntryListsDocuments) {
    app->window().startUp();
    app->window().selectTimeframe(std::string_view("ALL"));
    for (const auto& entry : browser::kDocumentTypes) {
        SCOPED_TRACE(entry.name);
        ui.messages.clear();
        app->window().selectDocumentType(entry.name);
        const auto& list = app->window().list();
        EXPECT_GT(list.rowCount(), 3);
        bool ready = false;
        bool missing = false;
        for (const auto& row : list.rows()) {
            ready |= row.cells.back() == "Ready to send" && row.checked && row.icon == 3;
            missing |= row.cells.back() == "Missing Email address" && !row.checked;
            EXPECT_EQ(row.cells.size(), list.columns().size());
        }
        EXPECT_TRUE(ready);
        if (std::string(entry.name) != "TimesheetA") {
            EXPECT_TRUE(missing) << "the demo company has customers without e-mail";
        }
        EXPECT_TRUE(ui.messages.empty()) << ui.texts().front();
        EXPECT_TRUE(app->window().control(shell::kSendButton).visible);
    }
    // Statements list only active customers.
    app->window().selectDocumentType("Statement");
    for (const auto& row : app->window().list().rows()) {
        EXPECT_EQ(app->window()
                      .listDocument()
                      .selectOne("//CustomerRet[ListID = $id]", {{"id", row.cells[1]}})
                      .valueOf("IsActive"),
                  "true");
    }
}

TEST_F(DemoCompanyTest, TheThreeQuickBooksStatesAsTheWindowSeesThem) {
    ASSERT_TRUE(qbsandbox::writeState(home / "sandbox", {true, {}}).ok());
    app->window().selectDocumentType("Invoice");
    EXPECT_EQ(ui.texts().front(), "Please open Quickbooks and select the appropriate Company file");
    ui.messages.clear();
    ASSERT_TRUE(qbsandbox::writeState(home / "sandbox", {false, {}}).ok());
    app->company().retrieveCompanyInfo();
    EXPECT_EQ(ui.texts().front(),
              "QuickBooks Access Error\r\nCould not start QuickBooks.(-2147220472)");
    EXPECT_EQ(ui.texts().back(), "Could not access Quickbooks");
}

TEST_F(DemoCompanyTest, SwitchingCompanyFilesReloadsTheCompany) {
    app->window().startUp();
    EXPECT_TRUE(app->window().companyText().starts_with("Harbor Lane Landscaping"));
    qbsandbox::createEmptyCompany(home / "other.dvq", "Second Shop Inc");
    ASSERT_TRUE(qbsandbox::writeState(home / "sandbox", {true, home / "other.dvq"}).ok());
    app->window().selectDocumentType("Invoice");
    EXPECT_TRUE(app->window().companyText().starts_with("Second Shop Inc"));
    EXPECT_EQ(app->gateway().currentCompanyFile(), (home / "other.dvq").string());
}

}  // namespace
}  // namespace dorvane::browser
