// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's logic without a window.
#include "shell/mainwindow.h"

#include <gtest/gtest.h>

#include "browser/documenttypes.h"
#include "platform/programfolder.h"
#include "support/testsupport.h"

namespace dorvane::shell {
namespace {

class MainWindowTest : public ::testing::Test {
protected:
    MainWindowTest() : folder("/opt/dorvane"), window(ui, folder) {
        MainWindowServices s;
        s.loadCompanyInfo = [this] { journal.push_back("company"); };
        s.ensureDefaultRecords = [this] { journal.push_back("defaults"); };
        s.loadList = [this](const std::string& type, const std::string& timeframe) {
            journal.push_back("load " + type + " " + timeframe);
            EXPECT_GT(ui.busyDepth, 0) << "loads run under the busy pointer";
        };
        window.setServices(s);
    }

    test::ScriptedUi ui;
    platform::ProgramFolder folder;
    MainWindow window;
    std::vector<std::string> journal;
};

TEST_F(MainWindowTest, StartUpHidesSendControlsAndLoadsNoList) {
    window.startUp();
    EXPECT_FALSE(window.control(kSendButton).visible);
    EXPECT_FALSE(window.control(kPreviewCheck).visible);
    EXPECT_FALSE(window.control(kUpdateWebButton).visible);
    EXPECT_TRUE(window.control(kImportButton).visible);
    EXPECT_EQ(window.timeframe(), "ThisWeekToDate");
    EXPECT_EQ(
        window.timeframes(),
        (std::vector<std::string>{"ThisWeekToDate", "ThisMonthToDate", "ThisFiscalQuarterToDate",
                                  "ThisFiscalYearToDate", "LastWeek", "LastMonth",
                                  "LastFiscalQuarter", "LastFiscalYear", "ALL"}));
    EXPECT_EQ(journal, (std::vector<std::string>{"company", "defaults"}));
    EXPECT_EQ(window.list().rowCount(), 0);
    EXPECT_EQ(window.documentType(), "");
}

TEST_F(MainWindowTest, PickingATypeLoadsItAndShowsTheSendControls) {
    window.startUp();
    journal.clear();
    window.selectTimeframe(std::string_view("LastMonth"));
    window.selectDocumentType("Invoice");
    EXPECT_EQ(window.caption(), "Dorvane Invoice");
    EXPECT_EQ(journal, (std::vector<std::string>{"load Invoice LastMonth"}));
    EXPECT_TRUE(window.control(kSendButton).visible);
    EXPECT_TRUE(window.control(kPreviewCheck).visible);
    EXPECT_FALSE(window.control(kUpdateWebButton).visible);
    EXPECT_EQ(ui.busyDepth, 0);
}

TEST_F(MainWindowTest, RefreshReloadsEveryTypeButTimesheetsByEntity) {
    window.startUp();
    for (const auto& entry : browser::kDocumentTypes) {
        window.selectDocumentType(entry.name);
        journal.clear();
        window.setStatusText("old status");
        window.refresh();
        EXPECT_EQ(window.statusText(), "");
        if (std::string(entry.name) == "TimesheetA") {
            EXPECT_TRUE(journal.empty());
        } else {
            EXPECT_EQ(journal, (std::vector<std::string>{std::string("load ") + entry.name +
                                                         " ThisWeekToDate"}));
        }
    }
    // Nothing picked yet: nothing to refresh.
    MainWindow fresh(ui, folder);
    fresh.refresh();
    EXPECT_EQ(ui.busyDepth, 0);
}

TEST_F(MainWindowTest, ChangingTheTimeframeAloneLoadsNothing) {
    window.startUp();
    window.selectDocumentType("Estimate");
    journal.clear();
    EXPECT_TRUE(window.selectTimeframe(std::string_view("ALL")));
    EXPECT_FALSE(window.selectTimeframe(std::string_view("Yesterday")));
    EXPECT_TRUE(journal.empty());
}

TEST_F(MainWindowTest, HelpOpensThePageInTheProgramFolder) {
    window.openHelp();
    EXPECT_EQ(ui.opened, (std::vector<std::string>{"/opt/dorvane/DorvaneHelp.htm"}));
}

// Sorting, once switched on by a click, stays on: a Refresh brings the rows back in the order
// shown before, and the next click on the same column turns it round.
TEST_F(MainWindowTest, RefreshKeepsTheSortOrder) {
    MainWindowServices s;
    s.loadList = [this](const std::string&, const std::string&) {
        auto& list = window.list();
        list.clear();
        list.setColumns({{"Date"}, {"Customer"}});
        list.setRows({{true, 3, {"2026-11-17", "Cole"}, "c"},
                      {true, 3, {"2026-11-16", "Able"}, "a"},
                      {true, 3, {"2026-11-18", "Baker"}, "b"}});
    };
    window.setServices(s);
    window.startUp();
    window.selectDocumentType("Invoice");
    auto keys = [&] {
        std::string k;
        for (const auto& r : window.list().rows()) {
            k += r.key;
        }
        return k;
    };
    EXPECT_EQ(keys(), "cab") << "in the answer's order until a column is clicked";
    window.columnClicked(1);
    EXPECT_EQ(keys(), "abc");
    window.refresh();
    EXPECT_EQ(keys(), "abc");
    EXPECT_TRUE(window.list().sorted());
    window.columnClicked(1);
    EXPECT_EQ(keys(), "cba");
    window.selectDocumentType("Estimate");
    EXPECT_EQ(keys(), "cba");
}

TEST(ListModel, ColumnClicksSortAsTextAndToggle) {
    ui::ListModel list;
    list.setColumns({{"Number"}, {"Customer"}});
    list.addRow({true, 3, {"10", "Baker"}, "a"});
    list.addRow({false, 1, {"9", "Able"}, "b"});
    list.addRow({true, 3, {"100", "Cole"}, "c"});
    auto keys = [&] {
        std::string k;
        for (const auto& r : list.rows()) {
            k += r.key;
        }
        return k;
    };
    list.sortByColumn(0);
    EXPECT_EQ(keys(), "acb") << "text order: 10 < 100 < 9";
    list.sortByColumn(0);
    EXPECT_EQ(keys(), "bca");
    list.sortByColumn(1);
    EXPECT_EQ(list.sortOrder(), ui::SortOrder::Ascending);
    EXPECT_EQ(keys(), "bac");
    // Rows added to a sorted list take their place in the order.
    EXPECT_EQ(list.addRow({false, 0, {"1", "Adams"}, "d"}), 1);
    EXPECT_EQ(keys(), "bdac");
}

}  // namespace
}  // namespace dorvane::shell
