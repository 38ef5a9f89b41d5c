// SPDX-License-Identifier: GPL-3.0-or-later
// The handheld sync and the time import, end to end on the demo company: the lists handed to
// a device folder, Dialog4, the fetch that must come before the handheld's file is replaced,
// and the recorded hours booked into the sandbox and read back.
#include <gtest/gtest.h>

#include "common/text.h"
#include "handheld/folderdevice.h"
#include "handheld/timetracksync.h"
#include "import/importwindow.h"
#include "support/demoapp.h"

namespace dorvane::handheld {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

// The status texts of the import window, in order.
struct StatusLog : ui::WindowObserver {
    void changed(std::string_view what) override {
        if (what == imports::kStatusBar) {
            texts.push_back(window->statusText());
        }
    }
    imports::ImportWindow* window = nullptr;
    std::vector<std::string> texts;
};

class SyncTest : public test::DemoAppTest {
protected:
    SyncTest() {
        startApp();
        app->window().startUp();
        sync = std::make_unique<TimeTrackingSync>(ui, app->folder(), app->gateway(), window(),
                                                  folderDeviceFactory(app->settings()));
        sync->setEndApplication([this] { ++ended; });
        // The window's SynchronizePDA entry and its Import button on a handheld file.
        imports::ImportWindowServices services;
        services.synchronizePDA = [this] { sync->synchronizePDA(); };
        services.importTimeTracking = [this] { sync->importTimeTracking(); };
        window().setServices(std::move(services));
        statuses.window = &window();
        window().setObserver(&statuses);
        window().open();
        fs::create_directories(deviceData().parent_path());
        writeFile(deviceData(), readFile(test::dataDir() / "handheld" / "data.xml"));
    }

    imports::ImportWindow& window() { return app->importWindow(); }
    fs::path deviceData() const { return device / "Program Files" / "TimeTrack" / "data.xml"; }

    // Dialog4 answers with the entry of `name`, or Cancel when it is empty.
    void chooseInDialog(const std::string& name) {
        ui.dialogHandler = [this, name](ui::DialogModel& model) {
            auto& choice = dynamic_cast<EmployeeChoiceModel&>(model);
            preselected = choice.selected() ? choice.entries()[*choice.selected()] : "";
            for (std::size_t i = 0; i < choice.entries().size(); ++i) {
                if (!name.empty() && choice.entries()[i].starts_with(name + " / ")) {
                    choice.select(i);
                    return true;
                }
            }
            return false;
        };
    }

    std::vector<xml::Node> timeEntries(xml::Document& answer) {
        answer = query(
            "<TimeTrackingQueryRq><TxnDateRangeFilter><FromTxnDate>2026-11-16</"
            "FromTxnDate><ToTxnDate>2026-11-17</ToTxnDate></TxnDateRangeFilter><"
            "TimeTrackingEntityFilter><FullName>Ana Lopez</FullName></"
            "TimeTrackingEntityFilter></TimeTrackingQueryRq>");
        return answer.selectAll("//TimeTrackingRet");
    }
    std::size_t timeEntryCount() {
        xml::Document answer;
        return timeEntries(answer).size();
    }

    fs::path device = home / "device";
    test::ScopedEnvironment deviceDir{"DORVANE_DEVICE_DIR", device.string()};
    std::unique_ptr<TimeTrackingSync> sync;
    StatusLog statuses;
    int ended = 0;
    std::string preselected;
};

TEST_F(SyncTest, ListsGoOutTheHoursComeBackAndAreBookedEachTimeTheyAreSent) {
    writeFile(program / kDataInFile, "left from an older program");
    chooseInDialog("Ben Carter");
    window().runMenuEntry(imports::kSynchronizePDA);
    EXPECT_FALSE(fs::exists(program / kDataInFile));
    EXPECT_EQ(ui.dialogsShown, std::vector<std::string>{"Dialog4"});
    EXPECT_EQ(preselected, "");
    EXPECT_TRUE(ui.messages.empty()) << ui.texts().front();
    EXPECT_EQ(statuses.texts, (std::vector<std::string>{
                                  "Transfer data created", "Uploading file ...", "Upload succeeded",
                                  "Downloading file ...", "Download succeeded"}));

    // dataout.xml: the prolog, the chosen worker and QuickBooks' lists, and it is now the
    // handheld's file.
    const std::string out = readFile(program / kDataOutFile);
    EXPECT_EQ(out.rfind(kDataOutProlog, 0), 0u);
    EXPECT_EQ(readFile(deviceData()), out);
    auto sent = xml::Document::parse(out);
    ASSERT_TRUE(sent);
    xml::Document lists =
        query("<EmployeeQueryRq/><CustomerQueryRq/><ItemServiceQueryRq/><PayrollItemWageQueryRq/>");
    const xml::Node ben = lists.selectOne("//EmployeeRet[Name='Ben Carter']");
    EXPECT_EQ(sent->valueOf("/Dorvane_PDA/Employee/Name"), "Ben Carter");
    EXPECT_EQ(sent->valueOf("/Dorvane_PDA/Employee/ListID"), ben.valueOf("ListID"));
    struct Section {
        const char* sent;
        const char* ret;
        const char* name;
    };
    for (const Section& s : {Section{"Customers/Customer", "CustomerRet", "FullName"},
                             Section{"Projects/Project", "ItemServiceRet", "FullName"},
                             Section{"PayrollItems/PayrollItem", "PayrollItemWageRet", "Name"}}) {
        SCOPED_TRACE(s.sent);
        const auto names = sent->selectAll(std::string("/Dorvane_PDA/") + s.sent + "/Name");
        const auto rets = lists.selectAll(std::string("//") + s.ret);
        ASSERT_EQ(names.size(), rets.size());
        ASSERT_FALSE(rets.empty());
        for (std::size_t i = 0; i < rets.size(); ++i) {
            EXPECT_EQ(names[i].text(), rets[i].valueOf(s.name));
        }
    }
    EXPECT_EQ(sent->selectAll("/Dorvane_PDA/*").size(), 5u);
    EXPECT_TRUE(sent->selectOne("/Dorvane_PDA/TimeTracks[not(node())]"));

    // The fetched file is open in the window, previewed day by day with totals per customer.
    EXPECT_EQ(window().caption(), "Dorvane - Import Time Tracking from PDA");
    EXPECT_EQ(window().documentKind(), "Dorvane_PDA");
    const std::string preview = readFile(program / "viewitem.htm");
    for (const char* expected : {"Nov 16, 2026", "Nov 17, 2026", "Total Harborside Cafe",
                                 "Total Cedar Ridge HOA", "3 entries, <b>4:45</b> hours",
                                 "<td style=\"padding:4px 8px;font-weight:bold;"
                                 "text-align:right;white-space:nowrap;\">3:45</td>"}) {
        EXPECT_NE(preview.find(expected), std::string::npos) << expected;
    }

    // Import: one entry per recorded line, as QuickBooks reads them back.
    const std::size_t before = timeEntryCount();
    window().importSelectedDocument();
    EXPECT_EQ(sync->lastImport(), TimeImportOutcome::Added);
    EXPECT_EQ(window().statusText(), "Time Tracking items added");
    EXPECT_EQ(window().browserBody(), std::optional<std::string>(kTimeTrackingAddedPage));
    EXPECT_EQ(window().caption(), imports::kIdleCaption);
    xml::Document answer;
    const auto entries = timeEntries(answer);
    ASSERT_EQ(entries.size(), before + 3);
    struct Booked {
        const char* date;
        const char* customer;
        const char* item;
        const char* payroll;
        const char* duration;
        const char* notes;
        const char* billable;
    };
    const Booked booked[] = {
        {"2026-11-16", "Harborside Cafe", "Maintenance", "Hourly Rate", "PT2H30M0S",
         "Weekly visit, beds weeded", "true"},
        {"2026-11-16", "Cedar Ridge HOA", "Labor:Trimming", "Overtime Rate", "PT1H15M0S",
         "Hedges along the gate, M\xC3\xBCller's side", "false"},
        {"2026-11-17", "Harborside Cafe", "Maintenance", "Hourly Rate", "PT1H0M0S", "", "true"},
    };
    for (const Booked& b : booked) {
        SCOPED_TRACE(b.duration);
        std::size_t found = 0;
        for (const xml::Node& e : entries) {
            found += e.valueOf("TxnDate") == b.date &&
                     e.valueOf("CustomerRef/FullName") == b.customer &&
                     e.valueOf("ItemServiceRef/FullName") == b.item &&
                     e.valueOf("PayrollItemWageRef/FullName") == b.payroll &&
                     e.valueOf("Duration") == b.duration && e.valueOf("Notes") == b.notes &&
                     e.valueOf("IsBillable") == b.billable;
        }
        EXPECT_EQ(found, 1u);
    }

    // The import keeps no log: the same file booked again adds the entries again.
    window().openExchangeFile((program / "dataFromPDA.xml").string());
    window().importSelectedDocument();
    EXPECT_EQ(timeEntryCount(), before + 6);

    // The next sync offers the worker of the last one first.
    chooseInDialog("Ben Carter");
    window().runMenuEntry(imports::kSynchronizePDA);
    EXPECT_EQ(preselected.rfind("Ben Carter / ", 0), 0u);
}

TEST_F(SyncTest, NothingIsReplacedUnlessTheHandheldsFileArrived) {
    const std::string handheld = readFile(deviceData());
    struct Case {
        const char* name;
        std::function<void()> setUp;
        const char* employee;  // "" cancels Dialog4
        std::vector<std::string> messages;
        const char* lastStatus;
        bool dataOutWritten;
        int ended;
    };
    const Case cases[] = {
        {"Dialog4 cancelled",
         [] {},
         "",
         {"Please select your name ! "},
         "Employee name not selected",
         false,
         0},
        {"no device folder",
         [this] { fs::remove_all(device); },
         "Ana Lopez",
         {"Failed to initialise RAPI with device with error 1167"},
         "Could not initialize the transfer",
         true,
         1},
        {"no file on the handheld",
         [this] { fs::remove(deviceData()); },
         "Ana Lopez",
         {"File \\Program Files\\TimeTrack\\data.xml Not Found. Operation Aborted."},
         "Could not transfer file from mobile device",
         true,
         0},
        {"a file cut by the transfer",
         [this, &handheld] {
             writeFile(deviceData(), handheld.substr(0, handheld.rfind("</TimeTracks>")) +
                                         std::string(20000, ' ') + "</TimeTracks></Dorvane_PDA>");
         },
         "Ana Lopez",
         {},
         "Could not transfer file from mobile device",
         true,
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove(program / kDataOutFile);
        fs::remove(program / "dataFromPDA.xml");
        fs::create_directories(deviceData().parent_path());
        writeFile(deviceData(), handheld);
        c.setUp();
        const std::string onDevice = fs::exists(deviceData()) ? readFile(deviceData()) : "";
        ui.messages.clear();
        statuses.texts.clear();
        ended = 0;
        chooseInDialog(c.employee);
        window().runMenuEntry(imports::kSynchronizePDA);

        if (!c.messages.empty()) {
            EXPECT_EQ(ui.texts(), c.messages);
        } else {
            ASSERT_EQ(ui.messages.size(), 1u);
            EXPECT_NE(ui.messages[0].text.find("Only the first 16384 bytes"), std::string::npos);
        }
        ASSERT_FALSE(statuses.texts.empty());
        EXPECT_EQ(statuses.texts.back(), c.lastStatus);
        EXPECT_EQ(fs::exists(program / kDataOutFile), c.dataOutWritten);
        EXPECT_FALSE(fs::exists(program / "dataFromPDA.xml"));
        EXPECT_EQ(fs::exists(deviceData()) ? readFile(deviceData()) : "", onDevice);
        EXPECT_EQ(ended, c.ended);
        EXPECT_EQ(window().caption(), imports::kIdleCaption);
    }
}

TEST_F(SyncTest, TimeImportSendsOnlyWhatItCanReadAndSaysWhatWasBooked) {
    const std::string data = readFile(test::dataDir() / "handheld" / "data.xml");
    struct Case {
        const char* name;
        std::string file;
        std::size_t added;
        TimeImportOutcome outcome;
        const char* status;
        const char* message;  // the start of the one message, "" for none
    };
    const Case cases[] = {
        {"an unknown customer in the second entry",
         text::replaceAll(data, "<Customer>Cedar Ridge HOA</Customer>",
                          "<Customer>Nobody Inc</Customer>"),
         1, TimeImportOutcome::Refused, "An error occurred",
         "1 of 3 time entries were added; QuickBooks refused entry 2: There is an invalid "
         "reference to QuickBooks Customer \"Nobody Inc\"."},
        {"a duration QuickBooks cannot read first", text::replaceAll(data, "PT2H30M", "2.5h"), 0,
         TimeImportOutcome::Refused, "An error occurred", ""},
        {"a later layout", text::replaceAll(data, "version=\"1\"", "version=\"2\""), 0,
         TimeImportOutcome::NotSent, "An error occurred",
         "The time entries could not be converted: "},
        {"no entries", data.substr(0, data.find("<TimeTracks")) + "<TimeTracks/></Dorvane_PDA>", 0,
         TimeImportOutcome::NotSent, "No time entries to import", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        writeFile(home / "fetched.xml", c.file);
        window().openExchangeFile((home / "fetched.xml").string());
        const std::size_t before = timeEntryCount();
        ui.messages.clear();
        window().importSelectedDocument();
        EXPECT_EQ(timeEntryCount(), before + c.added);
        EXPECT_EQ(sync->lastImport(), c.outcome);
        EXPECT_EQ(window().statusText(), c.status);
        if (*c.message) {
            ASSERT_FALSE(ui.messages.empty());
            EXPECT_EQ(ui.messages.back().text.rfind(c.message, 0), 0u) << ui.messages.back().text;
        }
        EXPECT_EQ(window().caption(), "Dorvane - Import Time Tracking from PDA");
    }
}

TEST(HandheldDocument, ListsQuickBooksLacksStayAsEmptySections) {
    const auto rs = [](const char* query, const std::string& rets) {
        return std::string("<") + query + "Rs statusCode=\"0\">" + rets + "</" + query + "Rs>";
    };
    const std::string employee = "<EmployeeRet><Name>Ana</Name><ListID>E1</ListID></EmployeeRet>";
    struct Case {
        const char* name;
        std::string answers;
        const char* expected;
    };
    const Case cases[] = {
        {"all lists",
         rs("EmployeeQuery", employee) +
             rs("CustomerQuery",
                "<CustomerRet><FullName>B &amp; C:Job</FullName></CustomerRet>"
                "<CustomerRet><FullName>A</FullName></CustomerRet>") +
             rs("ItemServiceQuery",
                "<ItemServiceRet><FullName>Labor:Trim</FullName><Name>Trim"
                "</Name></ItemServiceRet>") +
             rs("PayrollItemWageQuery",
                "<PayrollItemWageRet><Name>Hourly</Name></PayrollItemWageRet>"),
         "<Dorvane_PDA><Employee><Name>Ana</Name><ListID>E1</ListID></Employee><Customers>"
         "<Customer><Name>B &amp; C:Job</Name></Customer><Customer><Name>A</Name></Customer>"
         "</Customers><Projects><Project><Name>Labor:Trim</Name></Project></Projects>"
         "<PayrollItems><PayrollItem><Name>Hourly</Name></PayrollItem></PayrollItems>"
         "<TimeTracks/></Dorvane_PDA>"},
        {"no customers, service items or payroll items",
         rs("EmployeeQuery", employee) + rs("CustomerQuery", "") +
             "<ItemServiceQueryRs statusCode=\"1\"/>",
         "<Dorvane_PDA><Employee><Name>Ana</Name><ListID>E1</ListID></Employee><Customers/>"
         "<Projects/><PayrollItems/><TimeTracks/></Dorvane_PDA>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto lists =
            xml::Document::parse("<QBXML><QBXMLMsgsRs>" + c.answers + "</QBXMLMsgsRs></QBXML>");
        ASSERT_TRUE(lists);
        EXPECT_EQ(buildHandheldDocument(*lists, "Ana", "E1").root().xml(), c.expected);
    }
}

}  // namespace
}  // namespace dorvane::handheld
