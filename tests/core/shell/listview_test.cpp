// SPDX-License-Identifier: GPL-3.0-or-later
// The lists' view option on the demo company: the number and open balance after the type's own
// columns, "unpaid only", the status that stays where it was, and a send run over such a list.
#include <gtest/gtest.h>
#include <map>

#include "browser/documenttypes.h"
#include "browser/loaders.h"
#include "browser/sentlog.h"
#include "support/demoapp.h"

namespace dorvane::shell {
namespace {

using browser::ListView;

class ListViewTest : public test::DemoAppTest {
protected:
    ListViewTest() { startApp(); }

    const ui::ListModel& load(const std::string& type, ListView view,
                              const std::string& timeframe = "ALL") {
        app->window().setListView(view);
        app->window().selectTimeframe(std::string_view(timeframe));
        app->window().selectDocumentType(type);
        return app->window().list();
    }
    // The list document's records of the shown type by TxnID (a statement's by ListID).
    std::map<std::string, xml::Node> records(const browser::DocumentType& type) {
        std::map<std::string, xml::Node> out;
        for (xml::Node r : app->window().listDocument().selectAll(type.recordPath)) {
            out[r.valueOf("TxnID").empty() ? r.valueOf("ListID") : r.valueOf("TxnID")] = r;
        }
        return out;
    }
    void mailThrough(const test::SmtpTestServer& smtp) {
        ASSERT_TRUE(app->settings()
                        .setEntries({{"SMTP", "Hostname", "127.0.0.1"},
                                     {"SMTP", "Port", smtp.portText()},
                                     {"Settings", "MailOption", "0"}})
                        .ok());
    }
    static std::vector<std::string> own(const ui::ListRow& row, const browser::DocumentType& t) {
        return {row.cells.begin(), row.cells.begin() + browser::columnCount(t)};
    }
};

TEST_F(ListViewTest, NumbersOpenBalancesAndUnpaidOnly) {
    // One unpaid invoice is in the sent log; the status must still say so with the columns on.
    const ui::ListModel& first = load("Invoice", {});
    std::string logged;
    for (const ui::ListRow& row : first.rows()) {
        if (row.checked) {
            logged = row.key;
        }
    }
    ASSERT_FALSE(logged.empty());
    test::writeFile(app->folder().filePath(browser::kSentLogFile),
                    "<Invoice><TxnID>" + logged + "</TxnID><SentDate>x</SentDate></Invoice>\r\n");

    struct Case {
        const char* type;
        const char* open;  // the element the open balance comes from; "" for none, "0.00" paid
    };
    const Case cases[] = {{"Invoice", "BalanceRemaining"},
                          {"CreditMemo", "CreditRemaining"},
                          {"SalesReceipt", "0.00"},
                          {"Statement", "TotalBalance"},
                          {"Estimate", ""},
                          {"Timesheet", ""}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type);
        const browser::DocumentType& type = *browser::findDocumentType(c.type);
        const std::size_t n = browser::columnCount(type);
        const std::vector<ui::ListRow> off = load(c.type, {}).rows();
        ASSERT_EQ(app->window().list().columns().size(), n) << "the list as it was";
        ASSERT_FALSE(off.empty());

        const ui::ListModel& on = load(c.type, {.openBalances = true});
        ASSERT_EQ(on.columns().size(), n + 2);
        EXPECT_EQ(on.columns()[n].caption, "No.");
        EXPECT_EQ(on.columns()[n + 1].caption, "Open Balance");
        ASSERT_EQ(on.rowCount(), static_cast<int>(off.size()));
        auto byKey = records(type);
        int paid = 0, open = 0;
        for (std::size_t i = 0; i < off.size(); ++i) {
            const ui::ListRow& row = on.rows()[i];
            // The type's own cells, check, icon and status as without the view.
            EXPECT_EQ(own(row, type), off[i].cells);
            EXPECT_EQ(row.checked, off[i].checked);
            EXPECT_EQ(row.icon, off[i].icon);
            EXPECT_EQ(browser::rowStatus(type, row), off[i].cells.back());
            ASSERT_EQ(row.cells.size(), n + 2);
            const std::string& balance = row.cells[n + 1];
            if (type.shape == browser::ListShape::Timesheets) {
                EXPECT_EQ(row.cells[n], "");
            } else if (type.shape == browser::ListShape::Transactions) {
                EXPECT_EQ(row.cells[n], byKey[row.key].valueOf("RefNumber"));
            }
            if (std::string_view(c.open).empty()) {
                EXPECT_EQ(balance, "");
            } else if (std::string_view(c.open) == "0.00") {
                EXPECT_EQ(balance, "0.00");
            } else {
                EXPECT_EQ(balance, byKey[row.key].valueOf(c.open));
            }
            (!balance.empty() && std::stod(balance) <= 0 ? paid : open) += 1;
        }

        const ui::ListModel& unpaid = load(c.type, {.unpaidOnly = true});
        ASSERT_EQ(unpaid.columns().size(), n + 2) << "unpaid only shows the columns too";
        for (const ui::ListRow& row : unpaid.rows()) {
            EXPECT_TRUE(row.cells[n + 1].empty() || std::stod(row.cells[n + 1]) > 0) << row.key;
        }
        EXPECT_EQ(unpaid.rowCount(), open) << "hides exactly the rows with nothing open";
        if (type.name == std::string_view("Invoice")) {
            EXPECT_GT(paid, 0) << "the demo has paid invoices";
            EXPECT_GT(open, 0);
            bool sawLogged = false;
            for (const ui::ListRow& row : unpaid.rows()) {
                if (row.key == logged) {
                    sawLogged = true;
                    EXPECT_EQ(browser::rowStatus(type, row), browser::kAlreadySent);
                    EXPECT_FALSE(row.checked);
                }
            }
            EXPECT_TRUE(sawLogged);
        }
    }
}

// The window's "&View" entries keep the choice in the settings and load the list again; a send
// run over the unpaid invoices mails exactly the rows the list checked.
TEST_F(ListViewTest, TheMenuKeepsTheChoiceAndASendRunMailsTheListedRows) {
    const test::SmtpTestServer smtp;
    mailThrough(smtp);
    load("Invoice", {}, "ThisMonthToDate");
    const int all = app->window().list().rowCount();
    app->window().chooseListView({.unpaidOnly = true});
    EXPECT_EQ(app->settings().get("View", "UnpaidOnly"), "1");
    EXPECT_EQ(app->settings().get("View", "OpenBalances"), "0");
    EXPECT_EQ(browser::listViewSettings(app->settings()), ListView{.unpaidOnly = true});
    const ui::ListModel& list = app->window().list();
    ASSERT_EQ(list.columns().size(), 8u) << "the list was loaded again";
    ASSERT_LT(list.rowCount(), all);

    std::vector<std::string> checked, sent;
    for (const ui::ListRow& row : list.rows()) {
        EXPECT_GT(std::stod(row.cells[7]), 0);
        if (row.checked) {
            checked.push_back(row.key);
        }
    }
    ASSERT_FALSE(checked.empty());
    app->sender().onRowProcessed([&](const mail::RowOutcome& o) {
        EXPECT_TRUE(o.sent) << o.why;
        sent.push_back(o.key);
    });
    app->sender().sendSelectedDocuments();
    EXPECT_EQ(sent, checked);
    EXPECT_EQ(smtp.record().accepted().size(), checked.size());
}

// The heading names the list and its timeframe; the counts under it follow ticks, the search
// and the view's open balances (a list without amounts only counts).
TEST_F(ListViewTest, TheHeadingCountsAndSearchFollowTheList) {
    MainWindow& window = app->window();
    window.startUp();  // the timeframes
    EXPECT_EQ(window.listSummary(), "") << "no list yet";
    load("Invoice", {}, "ThisMonthToDate");
    EXPECT_EQ(window.listHeading(), "Invoices — This Month To Date");
    struct Case {
        const char* search;
        const char* summary;
    };
    const Case cases[] = {
        {"", "11 rows · 7 ticked · ticked total 6,909.65"},
        {"PINECREST", "2 of 11 rows shown · 2 ticked · ticked total 637.00"},
        {"no such text", "0 of 11 rows shown · 0 ticked · ticked total 0.00"},
    };
    for (const Case& c : cases) {
        window.search(c.search);
        EXPECT_EQ(window.listSummary(), c.summary) << c.search;
    }
    window.search("pinecrest");
    const ui::ListModel& list = window.list();
    for (int r = 0; r < list.rowCount(); ++r) {
        EXPECT_EQ(list.shown(r), list.row(r).cells[2].starts_with("Pinecrest")) << r;
    }
    const int patio = window.rowOfDocument("5");
    ASSERT_TRUE(list.shown(patio));
    EXPECT_FALSE(window.tickRow(patio, false));
    EXPECT_EQ(window.listSummary(), "2 of 11 rows shown · 1 ticked · ticked total 190.00");
    window.search("");
    EXPECT_EQ(window.listSummary(), "11 rows · 6 ticked · ticked total 6,462.65")
        << "the hidden rows come back with their ticks";

    load("Invoice", {.openBalances = true}, "ThisMonthToDate");
    EXPECT_EQ(window.listSummary(), "11 rows · 7 ticked · ticked open balance 7,055.74");
    load("Timesheet", {}, "ALL");
    EXPECT_EQ(window.listHeading(), "Timesheets by Customer — All");
    EXPECT_EQ(window.listSummary().find("total"), std::string::npos) << window.listSummary();
}

// A ticked row the search hides is not mailed; ticking a document sent before asks, and Yes
// mails it again (a second record in the sent log), No leaves it.
TEST_F(ListViewTest, ASendRunMailsOnlyShownRowsAndAsksBeforeSendingAgain) {
    const test::SmtpTestServer smtp;
    mailThrough(smtp);
    MainWindow& window = app->window();
    window.startUp();
    load("Invoice", {}, "ThisMonthToDate");
    window.search("pinecrest");
    std::vector<std::string> sent;
    app->sender().onRowProcessed([&](const mail::RowOutcome& o) {
        EXPECT_TRUE(o.sent) << o.why;
        sent.push_back(o.name);
    });
    app->sender().sendSelectedDocuments();
    EXPECT_EQ(sent, (std::vector<std::string>{"Pinecrest Apartments",
                                              "Pinecrest Apartments:Backyard Patio 2"}));
    EXPECT_EQ(smtp.record().accepted().size(), 2u);
    window.search("");
    EXPECT_EQ(window.listSummary(), "11 rows · 5 ticked · ticked total 6,272.65");

    window.refresh();
    const int patio = window.rowOfDocument("5");
    const std::string txn = window.list().row(patio).key;
    EXPECT_EQ(browser::rowStatus(*browser::findDocumentType("Invoice"), window.list().row(patio)),
              browser::kAlreadySent);
    for (int r = 0; r < window.list().rowCount(); ++r) {
        window.tickRow(r, false);
    }
    ui.answers = {ui::Answer::No};
    EXPECT_FALSE(window.tickRow(patio, true));
    EXPECT_FALSE(window.list().row(patio).checked);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text,
              "Invoice 5 to Pinecrest Apartments:Backyard Patio 2 was already sent. Send it "
              "again?");
    EXPECT_EQ(ui.messages[0].buttons, ui::Buttons::YesNo);
    ui.answers = {ui::Answer::Yes};
    EXPECT_TRUE(window.tickRow(patio, true));
    sent.clear();
    app->sender().sendSelectedDocuments();
    EXPECT_EQ(sent, std::vector<std::string>{"Pinecrest Apartments:Backyard Patio 2"});
    const std::string log = test::readFile(app->folder().filePath(browser::kSentLogFile));
    std::size_t records = 0;
    for (std::size_t at = log.find("<TxnID>" + txn + "<"); at != std::string::npos;
         at = log.find("<TxnID>" + txn + "<", at + 1)) {
        ++records;
    }
    EXPECT_EQ(records, 2u) << log;
}

// The window's layout comes back from the settings as it was kept; what is not a width of a
// known type is passed over.
TEST_F(ListViewTest, TheWindowLayoutIsKeptInTheSettings) {
    EXPECT_EQ(windowLayoutSettings(app->settings()), WindowLayout{}) << "the first start";
    const WindowLayout kept{
        .width = 900, .height = 600, .columns = {{"Invoice", {90, 120}}, {"Statement", {60}}}};
    ASSERT_TRUE(saveWindowLayout(app->settings(), kept).ok());
    EXPECT_EQ(windowLayoutSettings(app->settings()), kept);
    ASSERT_TRUE(app->settings()
                    .setAll("Window", {{"Width", "-5"},
                                       {"Columns",
                                        "Bogus:1,2;Invoice:90,x;Estimate:;Statement:60,70;"
                                        "CreditMemo:0,40"}})
                    .ok());
    EXPECT_EQ(windowLayoutSettings(app->settings()),
              (WindowLayout{.height = 600, .columns = {{"Statement", {60, 70}}}}));
}

}  // namespace
}  // namespace dorvane::shell
