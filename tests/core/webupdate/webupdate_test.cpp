// SPDX-License-Identifier: GPL-3.0-or-later
// The web item update on the demo company: the listing of each kind, and the ticked items
// posted to a real HTTP server on loopback.
#include "webupdate/webupdate.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include "qbsandbox/demo.h"
#include "qbsandbox/state.h"
#include "support/demoapp.h"
#include "support/webserver.h"

namespace dorvane::webupdate {
namespace {

class WebUpdateTest : public test::DemoAppTest {
protected:
    WebUpdateTest() { startApp(); }

    WebUpdater& updater() { return app->webUpdater(); }
    shell::MainWindow& window() { return app->window(); }

    void publishTo(const std::string& url, const std::string& token = {}) {
        app->settings()
            .setEntries(
                {{"Web", "UpdateURL", url}, {"Web", "Token", token}, {"Web", "Timeout", "1"}})
            .ok();
    }

    std::vector<bool> ticks() {
        std::vector<bool> out;
        for (const ui::ListRow& row : window().list().rows()) {
            out.push_back(row.checked);
        }
        return out;
    }

    // True when python's json module reads every body as one object whose `field` is
    // `value`, for the row of that name.
    bool decodes(const std::vector<test::HttpRequestRecord>& requests, const std::string& name,
                 const std::string& field, const std::string& value) {
        std::string lines;
        for (const auto& r : requests) {
            lines += r.body + "\n";
        }
        test::writeFile(home / "bodies.json", lines);
        test::writeFile(home / "want.txt", name + "\x01" + field + "\x01" + value);
        return test::runCommand(
                   "/usr/bin/python3 -c \"import json,sys\n"
                   "name, field, value = open(sys.argv[2], encoding='utf-8').read().split(chr(1))\n"
                   "items = [json.loads(l) for l in open(sys.argv[1], encoding='utf-8')]\n"
                   "hit = [i for i in items if i['name'] == name]\n"
                   "sys.exit(0 if hit and str(hit[0][field]) == value else 1)\" '" +
                   (home / "bodies.json").string() + "' '" + (home / "want.txt").string() + "'") ==
               0;
    }
};

// Each kind lists with its five columns from its own paths, every item ticked; the window
// shows the update button instead of the mail controls until a document type is chosen.
TEST_F(WebUpdateTest, EachKindListsItsItemsWithPricesTicked) {
    struct Case {
        const char* entry;
        const char* caption;
        const char* name;  // an item of the demo company of that kind
        const char* price;
    };
    for (const Case& c :
         {Case{"serviceitems_update", "Dorvane WEB-Update-Services", "Design", ""},
          Case{"inventoryitems_update", "Dorvane WEB-Update-Inventory", "Pump", "149.99"},
          Case{"noninventoryitems_update", "Dorvane WEB-Update-NonInventory", "Garden Gloves",
               "14.95"}}) {
        SCOPED_TRACE(c.entry);
        const ItemKind* kind = itemKindNamed(c.entry);
        ASSERT_TRUE(kind);
        ASSERT_TRUE(updater().listItems(*kind)) << ui.texts().back();
        EXPECT_EQ(window().caption(), c.caption);
        EXPECT_FALSE(window().control(shell::kSendButton).visible);
        EXPECT_FALSE(window().control(shell::kPreviewCheck).visible);
        EXPECT_TRUE(window().control(shell::kUpdateWebButton).visible);
        const ui::ListModel& list = window().list();
        ASSERT_EQ(list.columns().size(), 5u);
        EXPECT_EQ(list.columns()[4].caption, "Description");
        ASSERT_GT(list.rowCount(), 0);
        bool found = false;
        for (const ui::ListRow& row : list.rows()) {
            EXPECT_TRUE(row.checked);
            EXPECT_EQ(row.key, row.cells[0]);
            EXPECT_FALSE(row.cells[1].empty());
            if (row.cells[2] == c.name) {
                found = true;
                if (*c.price) {
                    EXPECT_EQ(row.cells[3], c.price);
                }
                EXPECT_FALSE(row.cells[4].empty());
            }
        }
        EXPECT_TRUE(found) << c.name;
    }
    window().selectDocumentType("Invoice");
    EXPECT_TRUE(window().control(shell::kSendButton).visible);
    EXPECT_FALSE(window().control(shell::kUpdateWebButton).visible);
}

// The ticked items arrive as JSON over one connection; a refused, stalled or redirected item
// stays ticked while the run goes on (a redirect leads to a page that stores nothing), and the
// result page names each; a second run sends only what is still ticked.
TEST_F(WebUpdateTest, TickedItemsArriveAsJsonAndOnlyTakenOnesAreUnticked) {
    app->gateway().processRequest(
        "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><ItemServiceAddRq><ItemServiceAdd><Name>Say \"Hi\" \\ "
        "Caf\xC3\xA9</Name><SalesOrPurchase><Desc>Line one\nline\ttwo</Desc><Price>12.50</Price>"
        "<AccountRef><FullName>Sales</FullName></AccountRef></SalesOrPurchase>"
        "</ItemServiceAdd></ItemServiceAddRq></QBXMLMsgsRq></QBXML>");
    test::HttpTestServer server({.fail = {2}, .stall = {3}, .stallSeconds = 3, .redirect = {4}});
    publishTo(server.url(), "s3cret");
    ASSERT_TRUE(updater().listItems(*itemKindNamed("Service")));
    const int rows = window().list().rowCount();
    window().list().setChecked(0, false);  // left alone by the person

    UpdateReport report = updater().updateItems();
    // The stalled request is recorded when the server gets round to answering it.
    auto requests = server.requests();
    for (int wait = 0; wait < 50 && static_cast<int>(requests.size()) < rows - 1; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        requests = server.requests();
    }
    ASSERT_EQ(static_cast<int>(requests.size()), rows - 1);
    EXPECT_EQ(report.ticked, rows - 1);
    EXPECT_EQ(report.failed, 3);
    std::vector<bool> expected(static_cast<std::size_t>(rows), false);
    expected[2] = expected[3] = expected[4] = true;  // refused, stalled, redirected
    EXPECT_EQ(ticks(), expected);
    EXPECT_EQ(window().statusText(), "Update done");
    const std::string page = test::readFile(program / kResultPage);
    EXPECT_NE(page.find("3 of " + std::to_string(rows - 1) + " not taken"), std::string::npos)
        << page;
    for (const char* why : {"answered 500", "did not answer in time", "answered 302"}) {
        EXPECT_NE(page.find(why), std::string::npos) << why << " in " << page;
    }
    EXPECT_EQ(ui.opened.back(), (program / kResultPage).string());
    for (const auto& r : requests) {
        EXPECT_EQ(r.method, "POST");
        EXPECT_EQ(r.path, "/items");
        EXPECT_EQ(r.contentType, "application/json; charset=utf-8");
        EXPECT_EQ(r.authorization, "Bearer s3cret");
    }
    // One connection, but the stalled one, which the client gave up on.
    EXPECT_EQ(requests[0].connection, requests[1].connection);
    EXPECT_TRUE(
        decodes(requests, "Say \"Hi\" \\ Caf\xC3\xA9", "description", "Line one\nline\ttwo"));
    EXPECT_TRUE(decodes(requests, "Design", "kind", "Service"));
    EXPECT_TRUE(decodes(requests, "Say \"Hi\" \\ Caf\xC3\xA9", "price", "12.5"));

    // The second run sends only the three still ticked, all taken now.
    report = updater().updateItems();
    EXPECT_EQ(report.accepted, 3);
    EXPECT_TRUE(report.notes().empty());
    EXPECT_EQ(server.requests().size(), requests.size() + 3);
    EXPECT_EQ(ticks(), std::vector<bool>(static_cast<std::size_t>(rows), false));
    EXPECT_EQ(window().statusText(), "Update done");
    updater().updateItems();
    EXPECT_EQ(server.requests().size(), requests.size() + 3);

    // Inventory items carry their quantity on hand.
    ASSERT_TRUE(updater().listItems(*itemKindNamed("inventory")));
    updater().updateItems();
    EXPECT_TRUE(decodes(server.requests(), "Pump", "kind", "Inventory"));
    EXPECT_EQ(server.requests().back().body.find("\"quantityOnHand\":") != std::string::npos, true);
}

// Without a site (the settings as installed) the items are converted and unticked, the status
// is "Update done" and the result page says nothing was sent;
// a missing style sheet touches nothing; an unreachable company file says so.
TEST_F(WebUpdateTest, NoSiteMissingSheetAndNoCompanyFile) {
    ASSERT_TRUE(updater().listItems(*itemKindNamed("NonInventory")));
    std::filesystem::rename(program / kUpdateSheet, home / kUpdateSheet);
    EXPECT_TRUE(updater().updateItems().sheetMissing);
    EXPECT_EQ(window().statusText(), "Conversion failed");
    EXPECT_EQ(ticks(), std::vector<bool>(ticks().size(), true));

    std::filesystem::rename(home / kUpdateSheet, program / kUpdateSheet);
    const UpdateReport report = updater().updateItems();
    EXPECT_TRUE(report.noSite);
    EXPECT_EQ(report.accepted, report.ticked);
    EXPECT_EQ(ticks(), std::vector<bool>(ticks().size(), false));
    EXPECT_EQ(window().statusText(), "Update done");
    EXPECT_NE(test::readFile(program / kResultPage).find("No web site is set"), std::string::npos);
    EXPECT_EQ(ui.opened.back(), (program / kResultPage).string());

    qbsandbox::createEmptyCompany(home / "empty.dvq", "Empty Co");
    ASSERT_TRUE(qbsandbox::writeState(home / "sandbox", {true, home / "empty.dvq"}));
    ASSERT_TRUE(updater().listItems(*itemKindNamed("Service")));
    EXPECT_EQ(window().list().rowCount(), 0);
    EXPECT_EQ(updater().updateItems().ticked, 0);
    EXPECT_EQ(window().statusText(), "Update done");

    ASSERT_TRUE(qbsandbox::writeState(home / "sandbox", {true, {}}));
    ui.messages.clear();
    EXPECT_FALSE(updater().listItems(*itemKindNamed("Service")));
    EXPECT_EQ(ui.texts().back(), "Could not access the company file(1)");
    EXPECT_EQ(window().statusText(), "Could not access the company file");
}

}  // namespace
}  // namespace dorvane::webupdate
