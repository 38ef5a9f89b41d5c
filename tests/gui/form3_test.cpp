// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — the main window Form3 on real widgets, driven as a person would.
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTreeWidget>

#include "browser/documenttypes.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "guitestsupport.h"
#include "platform/settings.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/testsupport.h"
#include "support/webconnectorstandin.h"
#include "webconnector/config.h"

namespace dorvane::test {

namespace {

struct PaintCounter : QObject {
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

ui::ListRow listRow(bool checked, int icon, std::vector<std::string> cells) {
    std::string key = "TXN-" + cells.front();
    return {.checked = checked, .icon = icon, .cells = std::move(cells), .key = std::move(key)};
}

}  // namespace

class Form3Test : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void controlsAndMenusCarryTheirNames();
    void menuEntriesAndButtonsReachCore();
    void viewEntriesToggleTheColumns();
    void headerClicksSortAndCheckBoxesReachCore();
    void searchHidesRowsAndTheCountsFollow();
    void sizeAndColumnWidthsAreKept();
    void rowsShowTheirStatusIcons();
    void windowFollowsCore();
    void commandsReachTheirHooks();
    void commandsAreIgnoredWhileOneRuns();
    void typeSelectionShowsTheBusyPointerAndKeepsPainting();
    void webConnectorWaitShowsInBothStatusBarsAndCancels_data();
    void webConnectorWaitShowsInBothStatusBarsAndCancels();

private:
    QTreeWidget* listView() const {
        return m_view->findChild<QTreeWidget*>(QStringLiteral("ListView1"));
    }
    template <class T = QWidget>
    T* control(const char* name) const {
        return m_view->findChild<T*>(QString::fromUtf8(name));
    }
    void trigger(const char* entry) { control<QAction>(entry)->trigger(); }
    void click(const char* button) { QTest::mouseClick(control(button), Qt::LeftButton); }
    // One column of the list as shown, top to bottom.
    QString shownColumn(int column) const {
        QStringList texts;
        for (int i = 0; i < listView()->topLevelItemCount(); ++i) {
            texts << listView()->topLevelItem(i)->text(column);
        }
        return texts.join(QLatin1Char(' '));
    }
    shell::MainWindow& window() { return m_app->window(); }
    // A loader that records each call and fills the list through core, as the real ones do.
    void useRecordingLoader(std::vector<std::vector<std::string>> rows = {},
                            std::function<void()> during = {});
    void clickHeader(int section);
    // A start of the window over the program folder, as the program makes it.
    void start();

    std::unique_ptr<TempDir> m_home;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<shell::Application> m_app;
    std::unique_ptr<gui::MainWindowView> m_view;
    QStringList m_loads;  // "type/timeframe" of each loader run
};

void Form3Test::init() {
    m_home = std::make_unique<TempDir>();
    std::filesystem::copy(programSource() / "icons", m_home->path() / "icons");
    m_ui = std::make_unique<ScriptedUi>();
    start();
}

void Form3Test::start() {
    m_view.reset();
    m_app.reset();
    m_app = std::make_unique<shell::Application>(
        *m_ui, shell::StartOptions{m_home->path().string()}, noQuickBooks());
    m_view = std::make_unique<gui::MainWindowView>(*m_app);
    m_loads.clear();
    useRecordingLoader();
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    window().startUp();
}

void Form3Test::cleanup() {
    m_view.reset();
    m_app.reset();
    m_ui.reset();
    m_home.reset();
}

void Form3Test::useRecordingLoader(std::vector<std::vector<std::string>> rows,
                                   std::function<void()> during) {
    window().setServices(
        {.loadCompanyInfo = {},
         .ensureDefaultRecords = {},
         .loadList =
             [this, rows, during](const std::string& type, const std::string& timeframe) {
                 m_loads << QString::fromStdString(type + "/" + timeframe);
                 ui::ListModel& list = window().list();
                 list.clear();
                 list.setColumns({{"Customer", 0}, {"Amount", 0}, {"Status", 0}});
                 if (window().listView().extraColumns()) {
                     list.setColumns(
                         {{"Customer"}, {"Amount"}, {"Status"}, {"No."}, {"Open Balance"}});
                 }
                 for (const auto& cells : rows) {
                     list.addRow(listRow(true, 3, cells));
                 }
                 if (during) {
                     during();
                 }
             },
         .saveListView = [this](const browser::ListView& view) -> Status {
             m_loads << QStringLiteral("saved %1 %2").arg(view.openBalances).arg(view.unpaidOnly);
             return Ok{};
         },
         .saveLayout =
             [this](const shell::WindowLayout& layout) {
                 return shell::saveWindowLayout(m_app->settings(), layout);
             }});
}

void Form3Test::clickHeader(int section) {
    QHeaderView* header = listView()->header();
    const QPoint inside(header->sectionViewportPosition(section) + header->sectionSize(section) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, inside);
}

// Every control core keeps a state of, every menu entry and what shows core's texts carries its
// name, so that core reaches it.
void Form3Test::controlsAndMenusCarryTheirNames() {
    for (const char* name : shell::kMainWindowControls) {
        QVERIFY2(m_view->findChild<QObject*>(QString::fromUtf8(name)), name);
    }
    for (const auto& entry : browser::kDocumentTypes) {
        QVERIFY2(control<QAction>(entry.menuEntry), entry.menuEntry);
    }
    QVERIFY(control<QLabel>("StatusBar1Panel1") && control<QLabel>(shell::kCompanyLabel));
    QCOMPARE(m_view->statusBar(), control<QStatusBar>("StatusBar1"));
}

// Each E-Mail entry selects its own type and the caption shows it; Refresh and the timeframe
// box reach core. (What core then does with them is tested without a window.)
void Form3Test::menuEntriesAndButtonsReachCore() {
    for (const auto& entry : browser::kDocumentTypes) {
        m_loads.clear();
        trigger(entry.menuEntry);
        const QString type = QString::fromUtf8(entry.name);
        QCOMPARE(m_view->windowTitle(), QStringLiteral("Dorvane ") + type);
        QCOMPARE(m_loads, QStringList{type + QStringLiteral("/ThisWeekToDate")});
    }
    auto* combo = control<QComboBox>("timeframecombo");
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(window().timeframe(), std::string("ThisMonthToDate"));
    QCOMPARE(m_loads.size(), 1);
    click("RefreshBtn");
    QCOMPARE(m_loads.back(), QStringLiteral("Statement/ThisMonthToDate"));
}

// The "&View" entries are checkable and reach core, which keeps the choice and loads the list
// again; the entries show core's view.
void Form3Test::viewEntriesToggleTheColumns() {
    QCOMPARE(control<QMenu>(shell::kViewMenu)->title(), QStringLiteral("&View"));
    auto* open = control<QAction>(shell::kViewOpenBalances);
    auto* unpaid = control<QAction>(shell::kViewUnpaidOnly);
    QCOMPARE(open->text(), QStringLiteral("Numbers and open balances"));
    QCOMPARE(unpaid->text(), QStringLiteral("Unpaid only"));
    QVERIFY(open->isCheckable() && unpaid->isCheckable() && !open->isChecked());
    trigger("SelectInvoice");
    QCOMPARE(listView()->columnCount(), 3);
    m_loads.clear();
    open->trigger();
    QCOMPARE(m_loads,
             QStringList({QStringLiteral("saved 1 0"), QStringLiteral("Invoice/ThisWeekToDate")}));
    QCOMPARE(listView()->columnCount(), 5);
    QCOMPARE(listView()->headerItem()->text(4), QStringLiteral("Open Balance"));
    open->trigger();
    QCOMPARE(listView()->columnCount(), 3);
    window().setListView({.unpaidOnly = true});
    QVERIFY(unpaid->isChecked() && !open->isChecked());
}

void Form3Test::headerClicksSortAndCheckBoxesReachCore() {
    useRecordingLoader(
        {{"Bolt", "9.00", "ready"}, {"Acme", "100.00", "ready"}, {"Crane", "25.50", "ready"}});
    trigger("SelectInvoice");
    QHeaderView* header = listView()->header();

    clickHeader(1);
    QCOMPARE(shownColumn(1), QStringLiteral("100.00 25.50 9.00"));
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorSection(), 1);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);

    clickHeader(1);
    QCOMPARE(shownColumn(1), QStringLiteral("9.00 25.50 100.00"));
    QCOMPARE(shownColumn(0), QStringLiteral("Bolt Crane Acme"));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);

    clickHeader(0);  // another column starts ascending again
    QCOMPARE(header->sortIndicatorSection(), 0);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    // Refresh brings the rows back in the order shown, the indicator with them.
    click("RefreshBtn");
    QCOMPARE(shownColumn(0), QStringLiteral("Acme Bolt Crane"));
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorSection(), 0);
    // Rows added to a sorted list stand where core puts them.
    window().list().addRow(listRow(false, 1, {"Dyke", "4", "d"}));
    window().list().addRow(listRow(true, 2, {"Abel", "5", "e"}));
    QCOMPARE(shownColumn(0), QStringLiteral("Abel Acme Bolt Crane Dyke"));
    QCOMPARE(shownColumn(1), QStringLiteral("5 100.00 9.00 25.50 4"));

    // A check box clicked in the sorted view reaches core's row, and core's changes show.
    QTreeWidget* tree = listView();
    tree->setFocus();
    tree->setCurrentItem(tree->topLevelItem(1));
    QTest::keyClick(tree, Qt::Key_Space);
    const ui::ListModel& list = window().list();
    QCOMPARE(list.row(1).cells[0] + (list.row(1).checked ? " on" : " off"), "Acme off");
    QVERIFY(list.row(0).checked && list.row(2).checked);
    QTest::keyClick(tree, Qt::Key_Space);
    QVERIFY(list.row(1).checked);
    window().list().setChecked(2, false);
    QCOMPARE(tree->topLevelItem(2)->checkState(0), Qt::Unchecked);
    window().list().setCell(2, 2, "sent");
    QCOMPARE(tree->topLevelItem(2)->text(2), QStringLiteral("sent"));
}

// The heading names the list; the search box hides the rows without the text, and the counts
// under the list follow the search and the check boxes. A document sent before is ticked only
// when the person says Yes to sending it again.
void Form3Test::searchHidesRowsAndTheCountsFollow() {
    useRecordingLoader({{"2026-11-02", "T1", "Acme", "100.00", "acme@x.test", "Ready to send"},
                        {"2026-11-03", "T2", "Bolt", "1250.50", "bolt@x.test", "Ready to send"},
                        {"2026-11-04", "T3", "Crane", "9.00", "crane@x.test", "Already sent"}});
    trigger("SelectInvoice");
    window().list().setChecked(2, false);
    auto* summary = control<QLabel>(shell::kListSummary);
    auto summaryShown = [summary] {
        QCoreApplication::processEvents();
        return summary->text();
    };
    QCOMPARE(control<QLabel>(shell::kListHeading)->text(),
             QStringLiteral("Invoices — This Week To Date"));
    QCOMPARE(summaryShown(), QStringLiteral("3 rows · 2 ticked · ticked total 1,350.50"));

    auto* search = control<QLineEdit>(shell::kListSearch);
    QCOMPARE(search->placeholderText(), QStringLiteral("Search the list"));
    typeInto(search, QStringLiteral("BOL"));
    QTreeWidget* tree = listView();
    QVERIFY(tree->topLevelItem(0)->isHidden() && !tree->topLevelItem(1)->isHidden() &&
            tree->topLevelItem(2)->isHidden());
    QCOMPARE(summaryShown(),
             QStringLiteral("1 of 3 rows shown · 1 ticked · ticked total 1,250.50"));
    typeInto(search, QString());
    QVERIFY(!tree->topLevelItem(0)->isHidden() && !tree->topLevelItem(2)->isHidden());

    tree->setFocus();
    tree->setCurrentItem(tree->topLevelItem(2));
    m_ui->answers = {ui::Answer::No};
    QTest::keyClick(tree, Qt::Key_Space);
    QCOMPARE(m_ui->texts().back(),
             std::string("Invoice to Crane was already sent. Send it again?"));
    QCOMPARE(tree->topLevelItem(2)->checkState(0), Qt::Unchecked);
    QVERIFY(!window().list().row(2).checked);
    m_ui->answers = {ui::Answer::Yes};
    QTest::keyClick(tree, Qt::Key_Space);
    QVERIFY(window().list().row(2).checked);
    QCOMPARE(summaryShown(), QStringLiteral("3 rows · 3 ticked · ticked total 1,359.50"));
}

// A first start looks as it always did; the size and a document list's column widths the
// window closed with come back at the next start.
void Form3Test::sizeAndColumnWidthsAreKept() {
    TempDir config;
    ScopedEnvironment useConfig("XDG_CONFIG_HOME", config.path().string());
    start();
    QCOMPARE(m_view->size(), QSize(820, 560));
    trigger("SelectInvoice");
    const int first = listView()->columnWidth(0);
    listView()->header()->resizeSection(1, 150);
    m_view->resize(900, 650);
    QVERIFY(m_view->close());
    const platform::SettingsStore& kept = m_app->settings();
    QCOMPARE(kept.get("Window", "Width"), std::string("900"));
    QCOMPARE(kept.get("Window", "Height"), std::string("650"));
    QCOMPARE(kept.get("Window", "Columns"), "Invoice:" + std::to_string(first) + ",150");

    start();
    QCOMPARE(m_view->size(), QSize(900, 650));
    trigger("SelectInvoice");
    QCOMPARE(listView()->columnWidth(0), first);
    QCOMPARE(listView()->columnWidth(1), 150);
}

void Form3Test::rowsShowTheirStatusIcons() {
    const QList<QIcon>& images = m_view->imageList();
    QCOMPARE(images.size(), 4);
    ui::ListModel& list = window().list();
    list.setColumns({{"Customer", 120}, {"Status", 0}});
    for (int icon = 0; icon <= 4; ++icon) {
        list.addRow(listRow(false, icon, {"row " + std::to_string(icon), "status"}));
        const QIcon shown = listView()->topLevelItem(icon)->icon(0);
        QVERIFY(icon == 0 ? shown.isNull()
                          : !shown.isNull() && shown.cacheKey() == images.at(icon - 1).cacheKey());
    }
    QCOMPARE(listView()->topLevelItem(1)->toolTip(0),
             QStringLiteral("Email addres invalid or missing"));
    QCOMPARE(listView()->topLevelItem(2)->toolTip(0), QStringLiteral("item already sent"));
    QCOMPARE(listView()->columnWidth(0), 120);
    list.setIcon(0, 2);
    QCOMPARE(listView()->topLevelItem(0)->icon(0).cacheKey(), images.at(1).cacheKey());
}

void Form3Test::windowFollowsCore() {
    // As start-up left them.
    for (const char* name : {"Command1", "Check1", "UpdateWebBtn", "ImportBtn"}) {
        QVERIFY2(control(name)->isVisible() == window().control(name).visible, name);
    }
    auto* combo = control<QComboBox>("timeframecombo");
    QCOMPARE(combo->count(), static_cast<int>(window().timeframes().size()));
    for (int i = 0; i < combo->count(); ++i) {
        QCOMPARE(combo->itemText(i).toStdString(), window().timeframes()[std::size_t(i)]);
    }
    QCOMPARE(combo->currentIndex(), window().timeframeIndex());

    window().setStatusText("Loading invoice 3 of 12");
    QCOMPARE(control<QLabel>("StatusBar1Panel1")->text(),
             QStringLiteral("Loading invoice 3 of 12"));
    window().setCompanyText("Acme Supplies\n12 Harbour Road");
    QCOMPARE(control<QLabel>("Label1")->text(), QStringLiteral("Acme Supplies\n12 Harbour Road"));
    QVERIFY(window().selectTimeframe(std::string_view("LastMonth")));
    QCOMPARE(control<QComboBox>("timeframecombo")->currentText(), QStringLiteral("LastMonth"));

    window().setControlEnabled("RefreshBtn", false);
    QVERIFY(!control("RefreshBtn")->isEnabled());
    window().setControlEnabled("SelectInvoice", false);
    QVERIFY(!control<QAction>("SelectInvoice")->isEnabled());
    window().setControlVisible("webupdate", false);
    QVERIFY(!control<QMenu>("webupdate")->menuAction()->isVisible());
    window().setControlVisible("webupdate", true);
    QVERIFY(control<QMenu>("webupdate")->menuAction()->isVisible());
    QVERIFY2(!control<QMenu>("webupdate")->isVisible(), "showing a menu must not pop it up");

    window().showSendControls(true);
    auto* preview = control<QCheckBox>("Check1");
    tick(preview);
    QVERIFY(window().previewChecked());
    tick(preview);
    QVERIFY(!window().previewChecked());
    window().setPreviewChecked(true);
    QVERIFY(preview->isChecked());

    auto* bar = control<QProgressBar>("ProgressBar1");
    QCOMPARE(bar->parentWidget(), static_cast<QWidget*>(m_view->statusBar()));
    QVERIFY(!bar->isVisible());
    for (int percent : {0, 40, 100}) {
        window().setProgress(percent);
        QVERIFY(bar->isVisible());
        QCOMPARE(bar->value(), percent);
    }
    window().setProgress(-1);
    QVERIFY(!bar->isVisible());
}

// Import and the Web-Update entries and buttons reach their subsystems; Send Email reaches
// core's sender (which starts by clearing the status); the Preferences entries reach core.
void Form3Test::commandsReachTheirHooks() {
    QSignalSpy import(m_view.get(), &gui::MainWindowView::importRequested);
    QSignalSpy webItems(m_view.get(), &gui::MainWindowView::webItemsRequested);
    click("ImportBtn");
    QStringList sent;
    for (const char* entry :
         {"inventoryitems_update", "noninventoryitems_update", "serviceitems_update"}) {
        trigger(entry);
        sent << webItems.value(sent.size()).value(0).toString();
    }
    QCOMPARE(sent.join(QLatin1Char(' ')),
             QStringLiteral("inventoryitems_update noninventoryitems_update serviceitems_update"));
    QCOMPARE(import.count(), 1);
    QVERIFY(m_loads.isEmpty());
    // Without QuickBooks the web update switches modes and says it could not list anything.
    QCOMPARE(m_view->windowTitle(), QStringLiteral("Dorvane WEB-Update-Services"));
    QVERIFY(control<QPushButton>("UpdateWebBtn")->isVisible());
    QCOMPARE(m_ui->texts().back(), std::string("Could not access the company file(1)"));
    click("UpdateWebBtn");  // this program folder has no style sheets
    QCOMPARE(window().statusText(), std::string("Conversion failed"));
    m_ui->messages.clear();

    trigger("selectTimesheetA");  // nothing of this type is mailed
    window().setStatusText("an old note");
    click("Command1");
    QCOMPARE(window().statusText(), std::string());

    std::filesystem::copy(programSource() / "companyinfo.xml", m_home->path() / "companyinfo.xml");
    trigger("Parameter");
    trigger("editcompanyinfo");
    QCOMPARE(m_ui->dialogsShown, (std::vector<std::string>{"Dialog", "Dialog2"}));
    QVERIFY(m_ui->messages.empty());
    trigger("Company");
    QCOMPARE(m_ui->texts().back(), std::string("Could not access Quickbooks"));
    QCOMPARE(m_ui->busyDepth, 0);
    trigger("Help");
    QCOMPARE(m_ui->opened.size(), std::size_t{1});
}

// Core lets the event loop run during a long job; a command given meanwhile is not started
// inside it.
void Form3Test::commandsAreIgnoredWhileOneRuns() {
    bool nested = false;
    useRecordingLoader({{"Acme", "1", "ready"}}, [this, &nested] {
        if (!nested) {
            nested = true;
            trigger("SelectEstimate");
            click("RefreshBtn");
            trigger("Parameter");
            clickHeader(0);
        }
    });
    trigger("SelectInvoice");
    QCOMPARE(m_loads, QStringList{QStringLiteral("Invoice/ThisWeekToDate")});
    QVERIFY(m_ui->dialogsShown.empty());
    QVERIFY(!window().list().sorted());
    QCOMPARE(m_view->windowTitle(), QStringLiteral("Dorvane Invoice"));
    trigger("SelectEstimate");
    QCOMPARE(m_loads.back(), QStringLiteral("Estimate/ThisWeekToDate"));
}

// With the Qt UI port: the hourglass while a list loads, and the window keeps painting when
// the loader lets the event loop run.
void Form3Test::typeSelectionShowsTheBusyPointerAndKeepsPainting() {
    gui::QtUiPort ui;
    shell::Application app(ui, shell::StartOptions{m_home->path().string()}, noQuickBooks());
    gui::MainWindowView view(app);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    PaintCounter paints;
    view.findChild<QLabel*>(QStringLiteral("StatusBar1Panel1"))->installEventFilter(&paints);

    Qt::CursorShape during = Qt::ArrowCursor;
    int paintsBeforeYield = -1;
    app.window().setServices(
        {.loadCompanyInfo = {},
         .ensureDefaultRecords = {},
         .loadList =
             [&](const std::string&, const std::string&) {
                 const QCursor* cursor = QGuiApplication::overrideCursor();
                 during = cursor == nullptr ? Qt::ArrowCursor : cursor->shape();
                 app.window().setStatusText("parsing information ... 100 of 300");
                 paintsBeforeYield = paints.count;
                 ui.yield();
             },
         .saveListView = {},
         .saveLayout = {}});
    view.findChild<QAction*>(QStringLiteral("SelectInvoice"))->trigger();

    QCOMPARE(during, Qt::WaitCursor);
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    QVERIFY2(paints.count > paintsBeforeYield, "the status text was not painted while loading");
}

void Form3Test::webConnectorWaitShowsInBothStatusBarsAndCancels_data() {
    QTest::addColumn<bool>("stalled");
    QTest::addColumn<QString>("awaited");  // Cancel is pressed while the wait says this
    QTest::addColumn<QString>("failure");  // what the gateway's box says then
    QTest::newRow("no Web Connector")
        << false << QStringLiteral("Waiting for the Web Connector to connect (")
        << QStringLiteral("\nCould not start QuickBooks.(");
    QTest::newRow("stalled Web Connector")
        << true << QStringLiteral("Waiting for QuickBooks to answer through the Web Connector (")
        << QStringLiteral("\nCould not access QuickBooks.(");
}

// QuickBooks through the Web Connector, and none comes or the one that comes never answers:
// each wait shows in the status bars of both windows, no other command starts meanwhile, and
// Cancel ends the wait, and every further one of the same command, with the gateway's failure.
void Form3Test::webConnectorWaitShowsInBothStatusBarsAndCancels() {
    QFETCH(bool, stalled);
    QFETCH(QString, awaited);
    QFETCH(QString, failure);
    // The connection is chosen at start from the user's settings; port 0: any free one.
    TempDir config;
    std::filesystem::create_directories(config / "dorvane");
    writeFile(config / "dorvane" / "DV01.ini",
              "[QuickBooks]\nConnection=webconnector\n[WebConnector]\nPort=0\nWaitSeconds=30\n");
    if (stalled) {
        platform::SettingsStore store(config / "dorvane" / "DV01.ini");
        QVERIFY(webconnector::setUser(store, "office", "secret"));
    }
    ScopedEnvironment useConfig("XDG_CONFIG_HOME", config.path().string());
    gui::QtUiPort ui;
    shell::Application app(ui, shell::StartOptions{m_home->path().string(), true});
    webconnector::Service* service = app.webConnector();
    QVERIFY(service != nullptr);
    int dialogsOpened = 0;
    ui.registerDialog("Dialog", [&dialogsOpened](QWidget*, ui::DialogModel&) {
        ++dialogsOpened;
        return false;
    });
    gui::MainWindowView view(app);
    ui.setParentWidget(&view);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    TempDir office;
    std::unique_ptr<WebConnectorStandIn> connector;
    if (stalled) {
        QVERIFY(service->start());
        WebConnectorStandIn::Options stall;
        stall.url = "http://127.0.0.1:" + std::to_string(service->port()) + "/qbwc";
        stall.office = office.path();
        stall.mode = WebConnectorStandIn::Mode::Stall;
        connector = std::make_unique<WebConnectorStandIn>(stall);
    }

    // Watches the indicator in `bar`: how often it came up and, once it says what is awaited,
    // tries other commands and then presses its Cancel.
    struct Watch {
        QLabel* label = nullptr;
        QPushButton* cancel = nullptr;
        QString awaited;
        int showings = 0;
        QString cancelledAt;
        bool shownBefore = false;
    };
    Watch watch;
    const auto watchBar = [&watch](QStatusBar* bar, const QString& awaited) {
        watch = {};
        watch.awaited = awaited;
        watch.label = bar->findChild<QLabel*>(QStringLiteral("webConnectorWait"));
        watch.cancel = bar->findChild<QPushButton*>(QStringLiteral("webConnectorCancel"));
        QVERIFY(watch.label && watch.cancel);
        QVERIFY(!watch.label->isVisible() && !watch.cancel->isVisible());
    };
    MessageBoxRecorder boxes;
    const auto failed = [&boxes](const QString& text) {
        return !boxes.texts.filter(text).isEmpty();
    };
    QTimer poll;
    poll.setInterval(20);
    connect(&poll, &QTimer::timeout, &view, [&] {
        const bool shown = watch.label->isVisible() && watch.cancel->isVisible();
        watch.showings += shown && !watch.shownBefore ? 1 : 0;
        watch.shownBefore = shown;
        if (shown && watch.cancelledAt.isEmpty() && watch.label->text().startsWith(watch.awaited)) {
            watch.cancelledAt = watch.label->text();
            view.findChild<QAction*>(QStringLiteral("SelectEstimate"))->trigger();
            view.findChild<QAction*>(QStringLiteral("Parameter"))->trigger();
            QTest::mouseClick(view.findChild<QPushButton*>(QStringLiteral("RefreshBtn")),
                              Qt::LeftButton);
            QTest::mouseClick(watch.cancel, Qt::LeftButton);
        }
    });
    poll.start();

    // Start-up asks for the company information and the default records.
    watchBar(view.statusBar(), awaited);
    view.startUp();
    QCOMPARE(watch.showings, 1);
    QVERIFY(!watch.cancelledAt.isEmpty());
    QCOMPARE(watch.label->text(), watch.cancelledAt);  // no wait went on after Cancel
    QVERIFY(!watch.label->isVisible() && !watch.cancel->isVisible());
    QVERIFY2(failed(failure), qPrintable(boxes.texts.join(QLatin1Char('|'))));
    QCOMPARE(dialogsOpened, 0);
    QVERIFY(!view.windowTitle().contains(QStringLiteral("Estimate")));

    // With the import window open its status bar shows the wait too, and its Cancel works.
    QTest::mouseClick(view.findChild<QPushButton*>(QStringLiteral("ImportBtn")), Qt::LeftButton);
    auto* importWindow = view.findChild<QMainWindow*>(QStringLiteral("Form1"));
    QVERIFY(importWindow && importWindow->isVisible());
    watchBar(importWindow->statusBar(), QStringLiteral("Waiting for "));
    boxes.texts.clear();
    view.findChild<QAction*>(QStringLiteral("SelectInvoice"))->trigger();
    QCOMPARE(watch.showings, 1);
    QVERIFY(!watch.cancelledAt.isEmpty());
    QVERIFY(!watch.label->isVisible());
    QVERIFY(!view.findChild<QLabel*>(QStringLiteral("webConnectorWait"))->isVisible());
    QVERIFY2(failed(QStringLiteral("QuickBooks")), qPrintable(boxes.texts.join(QLatin1Char('|'))));
    QCOMPARE(dialogsOpened, 0);

    // Closing the main window during a wait ends the wait: nothing waits on, unseen.
    auto* label = view.statusBar()->findChild<QLabel*>(QStringLiteral("webConnectorWait"));
    QString closedAt;
    QTimer::singleShot(300, &view, [&] {
        closedAt = label->text();
        view.close();
    });
    view.findChild<QAction*>(QStringLiteral("SelectEstimate"))->trigger();
    QVERIFY(closedAt.startsWith(QStringLiteral("Waiting for ")));
    QCOMPARE(label->text(), closedAt);  // no wait went on after the close
}

int runForm3Tests(int argc, char** argv) {
    Form3Test suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "form3_test.moc"
