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
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTreeWidget>

#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "guitestsupport.h"
#include "shell/application.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::test {

namespace {

class PaintCounter : public QObject {
public:
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            ++count;
        }
        return QObject::eventFilter(watched, event);
    }
};

struct Load {
    std::string type;
    std::string timeframe;
};

QStringList columnTexts(const QTreeWidget* tree, int column) {
    QStringList texts;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        texts << tree->topLevelItem(i)->text(column);
    }
    return texts;
}

QStringList coreColumnTexts(const shell::ListModel& list, int column) {
    QStringList texts;
    for (const shell::ListRow& row : list.rows()) {
        texts << QString::fromStdString(row.cells.at(static_cast<std::size_t>(column)));
    }
    return texts;
}

shell::ListRow listRow(bool checked, int icon, std::vector<std::string> cells) {
    std::string key = "TXN-" + (cells.empty() ? std::string() : cells.front());
    return {.checked = checked, .icon = icon, .cells = std::move(cells), .key = std::move(key)};
}

QStringList menuEntries(const QMenu* menu) {
    QStringList entries;
    for (const QAction* action : menu->actions()) {
        entries << action->objectName() + QStringLiteral("=") + action->text();
    }
    return entries;
}

}  // namespace

class Form3Test : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startUpHidesSendControlsAndLoadsNothing();
    void controlsCarryTheirNamesAndCaptions();
    void menusCarryTheirEntries();
    void typeEntrySelectsTypeAndShowsSendControls_data();
    void typeEntrySelectsTypeAndShowsSendControls();
    void refreshReloadsEveryTypeButTimesheetsByEntity_data();
    void refreshReloadsEveryTypeButTimesheetsByEntity();
    void timeframeChangeWaitsForRefresh();
    void headerClicksSortAsTextAscendingThenDescending();
    void rowsAddedToASortedListKeepCoreOrder();
    void checkBoxesFollowCoreBothWays();
    void rowsShowTheirStatusIcons();
    void statusCompanyAndControlStateFollowCore();
    void commandsReachTheirHooks_data();
    void commandsReachTheirHooks();
    void preferencesEntriesReachCore_data();
    void preferencesEntriesReachCore();
    void previewCheckBoxFollowsCoreBothWays();
    void progressBarFollowsCore();
    void sendEmailWithTimesheetsByEntityDoesNothing();
    void previewedSendRendersTheCheckedDocuments();
    void commandsWaitWhileOneRuns();
    void typeSelectionShowsTheBusyPointerAndKeepsPainting();
    void helpOpensThePageInTheProgramFolder();
    void aboutNamesProgramAndVersion();
    void screenshot();

private:
    QTreeWidget* listView() const {
        return m_view->findChild<QTreeWidget*>(QStringLiteral("ListView1"));
    }
    QWidget* control(const char* name) const {
        return m_view->findChild<QWidget*>(QString::fromUtf8(name));
    }
    QAction* menuEntry(const QString& name) const { return m_view->findChild<QAction*>(name); }
    shell::MainWindow& window() { return m_app->window(); }
    // A loader that records each call and fills the list through core, as the real ones do.
    void useRecordingLoader(std::vector<std::vector<std::string>> rows = {},
                            std::function<void()> during = {});
    void clickHeader(int section);

    std::unique_ptr<TempDir> m_home;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<shell::Application> m_app;
    std::unique_ptr<gui::MainWindowView> m_view;
    std::vector<Load> m_loads;
};

void Form3Test::init() {
    m_home = std::make_unique<TempDir>();
    std::filesystem::copy(programSource() / "icons", m_home->path() / "icons");
    m_ui = std::make_unique<ScriptedUi>();
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
         .loadList = [this, rows, during](const std::string& type, const std::string& timeframe) {
             m_loads.push_back({type, timeframe});
             shell::ListModel& list = window().list();
             list.clear();
             list.setColumns({{"Customer", 0}, {"Amount", 0}, {"Status", 0}});
             for (const auto& cells : rows) {
                 list.addRow(listRow(true, 3, cells));
             }
             if (during) {
                 during();
             }
         }});
}

void Form3Test::clickHeader(int section) {
    QHeaderView* header = listView()->header();
    const QPoint inside(header->sectionViewportPosition(section) + header->sectionSize(section) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, inside);
}

void Form3Test::startUpHidesSendControlsAndLoadsNothing() {
    QVERIFY(!control("Command1")->isVisible());
    QVERIFY(!control("Check1")->isVisible());
    QVERIFY(!control("UpdateWebBtn")->isVisible());
    QVERIFY(control("ImportBtn")->isVisible());
    QVERIFY(control("RefreshBtn")->isVisible());

    auto* combo = m_view->findChild<QComboBox*>(QStringLiteral("timeframecombo"));
    QVERIFY(combo);
    QStringList items;
    for (int i = 0; i < combo->count(); ++i) {
        items << combo->itemText(i);
    }
    QCOMPARE(items,
             (QStringList{QStringLiteral("ThisWeekToDate"), QStringLiteral("ThisMonthToDate"),
                          QStringLiteral("ThisFiscalQuarterToDate"),
                          QStringLiteral("ThisFiscalYearToDate"), QStringLiteral("LastWeek"),
                          QStringLiteral("LastMonth"), QStringLiteral("LastFiscalQuarter"),
                          QStringLiteral("LastFiscalYear"), QStringLiteral("ALL")}));
    QCOMPARE(combo->currentText(), QStringLiteral("ThisWeekToDate"));

    QCOMPARE(listView()->topLevelItemCount(), 0);
    QVERIFY(m_loads.empty());
    QCOMPARE(m_view->windowTitle(), QStringLiteral("Dorvane"));
}

void Form3Test::controlsCarryTheirNamesAndCaptions() {
    QCOMPARE(m_view->objectName(), QStringLiteral("Form3"));
    const std::vector<std::pair<const char*, const char*>> buttons{
        {"RefreshBtn", "Refresh"},
        {"Command1", "Send Email"},
        {"ImportBtn", "&Import"},
        {"UpdateWebBtn", "Update"},
    };
    for (const auto& [name, caption] : buttons) {
        auto* button = m_view->findChild<QPushButton*>(QString::fromUtf8(name));
        QVERIFY2(button, name);
        QCOMPARE(button->text(), QString::fromUtf8(caption));
    }
    auto* preview = m_view->findChild<QCheckBox*>(QStringLiteral("Check1"));
    QVERIFY(preview);
    QCOMPARE(preview->text(), QStringLiteral("preview"));
    auto* label3 = m_view->findChild<QLabel*>(QStringLiteral("Label3"));
    QVERIFY(label3);
    QCOMPARE(label3->text(), QStringLiteral("Timeframe"));
    QVERIFY(m_view->findChild<QLabel*>(QStringLiteral("Label1")));
    QVERIFY(listView());
    QVERIFY(!listView()->isSortingEnabled());
    auto* status = m_view->findChild<QStatusBar*>(QStringLiteral("StatusBar1"));
    QVERIFY(status);
    QCOMPARE(m_view->statusBar(), status);
}

void Form3Test::menusCarryTheirEntries() {
    QStringList menus;
    for (const QAction* action : m_view->menuBar()->actions()) {
        menus << action->menu()->objectName() + QStringLiteral("=") + action->text();
    }
    QCOMPARE(menus, (QStringList{
                        QStringLiteral("Itemtype=&E-Mail"), QStringLiteral("Options=&Preferences"),
                        QStringLiteral("webupdate=Web-Update"), QStringLiteral("HelpMenu=&Help")}));

    const auto menu = [this](const char* name) {
        return m_view->findChild<QMenu*>(QString::fromUtf8(name));
    };
    QCOMPARE(menuEntries(menu("Itemtype")),
             (QStringList{QStringLiteral("SelectInvoice=&Invoice"),
                          QStringLiteral("SelectEstimate=&Estimate"),
                          QStringLiteral("SelectCreditMemo=&Credit Memo"),
                          QStringLiteral("SelectReceipts=&Sales Receipt"),
                          QStringLiteral("SelectPO=&PurchaseOrder"),
                          QStringLiteral("selectTimesheetA=Timesheets/Entity"),
                          QStringLiteral("SelectTimesheets=Timesheets/Customer"),
                          QStringLiteral("SelectStatements=&Statements")}));
    QCOMPARE(menuEntries(menu("Options")),
             (QStringList{QStringLiteral("Parameter=&Parameter"),
                          QStringLiteral("Company=&Get Company Info"),
                          QStringLiteral("editcompanyinfo=&Edit Company Info"),
                          QStringLiteral("importPref=&Import Preferences")}));
    QCOMPARE(menuEntries(menu("webupdate")),
             (QStringList{QStringLiteral("inventoryitems_update=Inventory Items"),
                          QStringLiteral("noninventoryitems_update=Non Inventory Items"),
                          QStringLiteral("serviceitems_update=Service Items")}));
    QCOMPARE(menuEntries(menu("HelpMenu")),
             (QStringList{QStringLiteral("Help=&Help"), QStringLiteral("About=&About")}));
}

void Form3Test::typeEntrySelectsTypeAndShowsSendControls_data() {
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("type");
    QTest::newRow("invoice") << "SelectInvoice"
                             << "Invoice";
    QTest::newRow("estimate") << "SelectEstimate"
                              << "Estimate";
    QTest::newRow("credit memo") << "SelectCreditMemo"
                                 << "CreditMemo";
    QTest::newRow("sales receipt") << "SelectReceipts"
                                   << "SalesReceipt";
    QTest::newRow("purchase order") << "SelectPO"
                                    << "PurchaseOrder";
    QTest::newRow("timesheets by entity") << "selectTimesheetA"
                                          << "TimesheetA";
    QTest::newRow("timesheets by customer") << "SelectTimesheets"
                                            << "Timesheet";
    QTest::newRow("statements") << "SelectStatements"
                                << "Statement";
}

void Form3Test::typeEntrySelectsTypeAndShowsSendControls() {
    QFETCH(QString, entry);
    QFETCH(QString, type);
    menuEntry(entry)->trigger();

    QCOMPARE(m_view->windowTitle(), QStringLiteral("Dorvane ") + type);
    QCOMPARE(m_loads.size(), std::size_t{1});
    QCOMPARE(QString::fromStdString(m_loads[0].type), type);
    QCOMPARE(m_loads[0].timeframe, std::string("ThisWeekToDate"));
    QVERIFY(control("Command1")->isVisible());
    QVERIFY(control("Check1")->isVisible());
    QVERIFY(!control("UpdateWebBtn")->isVisible());
    QVERIFY(control("ImportBtn")->isVisible());
    QCOMPARE(m_ui->busyDepth, 0);
}

void Form3Test::refreshReloadsEveryTypeButTimesheetsByEntity_data() {
    QTest::addColumn<QString>("entry");
    QTest::addColumn<int>("loads");
    QTest::newRow("invoice") << "SelectInvoice" << 2;
    QTest::newRow("estimate") << "SelectEstimate" << 2;
    QTest::newRow("credit memo") << "SelectCreditMemo" << 2;
    QTest::newRow("sales receipt") << "SelectReceipts" << 2;
    QTest::newRow("purchase order") << "SelectPO" << 2;
    QTest::newRow("timesheets by customer") << "SelectTimesheets" << 2;
    QTest::newRow("statements") << "SelectStatements" << 2;
    QTest::newRow("timesheets by entity") << "selectTimesheetA" << 1;
}

void Form3Test::refreshReloadsEveryTypeButTimesheetsByEntity() {
    QFETCH(QString, entry);
    QFETCH(int, loads);
    QTest::mouseClick(control("RefreshBtn"), Qt::LeftButton);
    QVERIFY2(m_loads.empty(), "Refresh before any type loads nothing");

    window().setStatusText("an old note");
    menuEntry(entry)->trigger();
    QTest::mouseClick(control("RefreshBtn"), Qt::LeftButton);

    QCOMPARE(static_cast<int>(m_loads.size()), loads);
    QCOMPARE(m_loads.back().type, m_loads.front().type);
    QCOMPARE(m_view->findChild<QLabel*>(QStringLiteral("StatusBar1Panel1"))->text(), QString());
    QCOMPARE(m_ui->busyDepth, 0);
}

void Form3Test::timeframeChangeWaitsForRefresh() {
    useRecordingLoader({{"Acme", "10.00", "ready"}, {"Bolt", "20.00", "ready"}});
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    QCOMPARE(listView()->topLevelItemCount(), 2);

    auto* combo = m_view->findChild<QComboBox*>(QStringLiteral("timeframecombo"));
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(combo->currentText(), QStringLiteral("ThisMonthToDate"));
    QCOMPARE(window().timeframe(), std::string("ThisMonthToDate"));
    QCOMPARE(m_loads.size(), std::size_t{1});
    QCOMPARE(listView()->topLevelItemCount(), 2);

    QTest::mouseClick(control("RefreshBtn"), Qt::LeftButton);
    QCOMPARE(m_loads.size(), std::size_t{2});
    QCOMPARE(m_loads.back().type, std::string("Invoice"));
    QCOMPARE(m_loads.back().timeframe, std::string("ThisMonthToDate"));
}

void Form3Test::headerClicksSortAsTextAscendingThenDescending() {
    useRecordingLoader(
        {{"Bolt", "9.00", "ready"}, {"Acme", "100.00", "ready"}, {"Crane", "25.50", "ready"}});
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    QCOMPARE(
        columnTexts(listView(), 1),
        (QStringList{QStringLiteral("9.00"), QStringLiteral("100.00"), QStringLiteral("25.50")}));

    clickHeader(1);
    const QStringList ascending{QStringLiteral("100.00"), QStringLiteral("25.50"),
                                QStringLiteral("9.00")};
    QCOMPARE(columnTexts(listView(), 1), ascending);
    QCOMPARE(columnTexts(listView(), 1), coreColumnTexts(window().list(), 1));
    QVERIFY(listView()->header()->isSortIndicatorShown());
    QCOMPARE(listView()->header()->sortIndicatorSection(), 1);
    QCOMPARE(listView()->header()->sortIndicatorOrder(), Qt::AscendingOrder);

    clickHeader(1);
    const QStringList descending{QStringLiteral("9.00"), QStringLiteral("25.50"),
                                 QStringLiteral("100.00")};
    QCOMPARE(columnTexts(listView(), 1), descending);
    QCOMPARE(
        columnTexts(listView(), 0),
        (QStringList{QStringLiteral("Bolt"), QStringLiteral("Crane"), QStringLiteral("Acme")}));
    QCOMPARE(listView()->header()->sortIndicatorOrder(), Qt::DescendingOrder);

    clickHeader(2);  // another column starts ascending again
    QCOMPARE(window().list().sortColumn(), 2);
    QCOMPARE(listView()->header()->sortIndicatorSection(), 2);
    QCOMPARE(listView()->header()->sortIndicatorOrder(), Qt::AscendingOrder);
    QVERIFY(!listView()->isSortingEnabled());
}

void Form3Test::rowsAddedToASortedListKeepCoreOrder() {
    useRecordingLoader({{"Bolt", "1", "a"}, {"Dyke", "2", "b"}, {"Acme", "3", "c"}});
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    clickHeader(0);
    clickHeader(0);
    QCOMPARE(window().list().sortColumn(), 0);

    shell::ListModel& list = window().list();
    list.addRow(listRow(false, 1, {"Crane", "4", "d"}));
    list.addRow(listRow(true, 2, {"Zed", "5", "e"}));
    QCOMPARE(listView()->topLevelItemCount(), list.rowCount());
    QCOMPARE(columnTexts(listView(), 0), coreColumnTexts(list, 0));
    QCOMPARE(columnTexts(listView(), 1), coreColumnTexts(list, 1));
    for (int i = 0; i < list.rowCount(); ++i) {
        QCOMPARE(listView()->topLevelItem(i)->checkState(0) == Qt::Checked, list.row(i).checked);
    }
}

void Form3Test::checkBoxesFollowCoreBothWays() {
    useRecordingLoader({{"Bolt", "1", "ready"}, {"Acme", "2", "ready"}, {"Crane", "3", "ready"}});
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    clickHeader(1);
    clickHeader(1);  // rows now Crane, Acme, Bolt: the view's row must map to core's row

    QTreeWidget* tree = listView();
    tree->setFocus();
    tree->setCurrentItem(tree->topLevelItem(1));
    QTest::keyClick(tree, Qt::Key_Space);
    QCOMPARE(tree->topLevelItem(1)->checkState(0), Qt::Unchecked);
    const shell::ListModel& list = window().list();
    QCOMPARE(list.row(1).cells[0], std::string("Acme"));
    QVERIFY(!list.row(1).checked);
    QVERIFY(list.row(0).checked);
    QVERIFY(list.row(2).checked);

    QTest::keyClick(tree, Qt::Key_Space);
    QVERIFY(list.row(1).checked);

    window().list().setChecked(2, false);
    QCOMPARE(tree->topLevelItem(2)->checkState(0), Qt::Unchecked);
    window().list().setCell(2, 2, "sent");
    QCOMPARE(tree->topLevelItem(2)->text(2), QStringLiteral("sent"));
}

void Form3Test::rowsShowTheirStatusIcons() {
    const QList<QIcon>& images = m_view->imageList();
    QCOMPARE(images.size(), 4);
    for (const QIcon& icon : images) {
        QVERIFY(!icon.isNull());
    }
    for (const QString& file : gui::MainWindowView::iconFiles()) {
        const QImage shipped(
            QString::fromStdString((programSource() / file.toStdString()).string()));
        QVERIFY2(!shipped.isNull(), qPrintable(file));
        QCOMPARE(shipped.size(), QSize(16, 16));
    }

    shell::ListModel& list = window().list();
    list.setColumns({{"Customer", 120}, {"Status", 0}});
    for (int icon = 0; icon <= 4; ++icon) {
        list.addRow(listRow(false, icon, {"row " + std::to_string(icon), "status"}));
    }
    QTreeWidget* tree = listView();
    QVERIFY(tree->topLevelItem(0)->icon(0).isNull());
    for (int icon = 1; icon <= 4; ++icon) {
        QCOMPARE(tree->topLevelItem(icon)->icon(0).cacheKey(), images.at(icon - 1).cacheKey());
    }
    QCOMPARE(tree->topLevelItem(1)->toolTip(0), QStringLiteral("Email addres invalid or missing"));
    QCOMPARE(tree->topLevelItem(2)->toolTip(0), QStringLiteral("item already sent"));
    QCOMPARE(tree->columnWidth(0), 120);

    list.setIcon(0, 2);
    QCOMPARE(tree->topLevelItem(0)->icon(0).cacheKey(), images.at(1).cacheKey());
}

void Form3Test::statusCompanyAndControlStateFollowCore() {
    window().setStatusText("Loading invoice 3 of 12");
    QCOMPARE(m_view->findChild<QLabel*>(QStringLiteral("StatusBar1Panel1"))->text(),
             QStringLiteral("Loading invoice 3 of 12"));

    window().setCompanyText("Acme Supplies\n12 Harbour Road\nPortland");
    QCOMPARE(m_view->findChild<QLabel*>(QStringLiteral("Label1"))->text(),
             QStringLiteral("Acme Supplies\n12 Harbour Road\nPortland"));

    window().setControlEnabled("RefreshBtn", false);
    QVERIFY(!control("RefreshBtn")->isEnabled());
    window().setControlEnabled("SelectInvoice", false);
    QVERIFY(!menuEntry(QStringLiteral("SelectInvoice"))->isEnabled());
    window().setControlVisible("webupdate", false);
    window().setControlVisible("webupdate", true);
    auto* webMenu = m_view->findChild<QMenu*>(QStringLiteral("webupdate"));
    QVERIFY(webMenu->menuAction()->isVisible());
    QVERIFY2(!webMenu->isVisible(), "showing a menu entry must not pop the menu up");
    window().showSendControls(false);
    QVERIFY(!control("Command1")->isVisible());
    QVERIFY(!control("Check1")->isVisible());
    QVERIFY(control("UpdateWebBtn")->isVisible());

    QVERIFY(window().selectTimeframe(std::string_view("LastMonth")));
    QCOMPARE(m_view->findChild<QComboBox*>(QStringLiteral("timeframecombo"))->currentText(),
             QStringLiteral("LastMonth"));
}

void Form3Test::commandsReachTheirHooks_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<QByteArray>("hook");
    QTest::addColumn<QString>("argument");
    const QByteArray webItems =
        QMetaMethod::fromSignal(&gui::MainWindowView::webItemsRequested).methodSignature();
    QTest::newRow("import") << "ImportBtn" << QByteArray("importRequested()") << QString();
    QTest::newRow("update") << "UpdateWebBtn" << QByteArray("updateWebRequested()") << QString();
    QTest::newRow("import preferences")
        << "importPref" << QByteArray("importPreferencesRequested()") << QString();
    for (const char* name :
         {"inventoryitems_update", "noninventoryitems_update", "serviceitems_update"}) {
        QTest::newRow(name) << name << webItems << QString::fromUtf8(name);
    }
}

void Form3Test::commandsReachTheirHooks() {
    QFETCH(QString, control);
    QFETCH(QByteArray, hook);
    QFETCH(QString, argument);

    window().showSendControls(control != QStringLiteral("UpdateWebBtn"));
    std::vector<std::pair<QByteArray, std::unique_ptr<QSignalSpy>>> spies;
    const QMetaObject* meta = m_view->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.methodType() == QMetaMethod::Signal) {
            spies.emplace_back(method.methodSignature(),
                               std::make_unique<QSignalSpy>(m_view.get(), method));
        }
    }
    QVERIFY(spies.size() >= 4);

    if (auto* button = m_view->findChild<QPushButton*>(control)) {
        QTest::mouseClick(button, Qt::LeftButton);
    } else {
        QAction* action = menuEntry(control);
        QVERIFY(action);
        action->trigger();
    }

    for (const auto& [signature, spy] : spies) {
        QCOMPARE(spy->count(), signature == hook ? 1 : 0);
        if (signature == hook && !argument.isEmpty()) {
            QCOMPARE(spy->at(0).at(0).toString(), argument);
        }
    }
    QVERIFY(m_loads.empty());
}

void Form3Test::preferencesEntriesReachCore_data() {
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("dialog");
    QTest::addColumn<QString>("message");
    QTest::newRow("Parameter") << "Parameter"
                               << "Dialog" << QString();
    QTest::newRow("Get Company Info") << "Company" << QString() << "Could not access Quickbooks";
    QTest::newRow("Edit Company Info") << "editcompanyinfo"
                                       << "Dialog2" << QString();
}

void Form3Test::preferencesEntriesReachCore() {
    QFETCH(QString, entry);
    QFETCH(QString, dialog);
    QFETCH(QString, message);
    std::filesystem::copy(programSource() / "companyinfo.xml", m_home->path() / "companyinfo.xml");

    menuEntry(entry)->trigger();

    std::vector<std::string> dialogs;
    if (!dialog.isEmpty()) {
        dialogs.push_back(dialog.toStdString());
    }
    QCOMPARE(m_ui->dialogsShown, dialogs);
    const std::vector<std::string> shown = m_ui->texts();
    QString all;
    for (const std::string& text : shown) {
        all += QString::fromStdString(text) + QStringLiteral(" | ");
    }
    QVERIFY2(message.isEmpty() == shown.empty(), qPrintable(all));
    QVERIFY2(message.isEmpty() || QString::fromStdString(shown.back()) == message, qPrintable(all));
    QVERIFY(m_loads.empty());
}

void Form3Test::previewCheckBoxFollowsCoreBothWays() {
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    auto* preview = m_view->findChild<QCheckBox*>(QStringLiteral("Check1"));
    QVERIFY(!preview->isChecked());
    QVERIFY(!window().previewChecked());

    QTest::mouseClick(preview, Qt::LeftButton, {}, QPoint(8, preview->height() / 2));
    QVERIFY(preview->isChecked());
    QVERIFY(window().previewChecked());
    QTest::mouseClick(preview, Qt::LeftButton, {}, QPoint(8, preview->height() / 2));
    QVERIFY(!window().previewChecked());

    window().setPreviewChecked(true);
    QVERIFY(preview->isChecked());
    window().setPreviewChecked(false);
    QVERIFY(!preview->isChecked());
}

void Form3Test::progressBarFollowsCore() {
    auto* bar = m_view->findChild<QProgressBar*>(QStringLiteral("ProgressBar1"));
    QVERIFY(bar);
    QCOMPARE(bar->parentWidget(), static_cast<QWidget*>(m_view->statusBar()));
    QVERIFY(!bar->isVisible());

    window().setProgress(0);
    QVERIFY(bar->isVisible());
    QCOMPARE(bar->value(), 0);
    window().setProgress(40);
    QCOMPARE(bar->value(), 40);
    window().setProgress(100);
    QCOMPARE(bar->value(), 100);
    QVERIFY(bar->isVisible());
    window().setProgress(-1);
    QVERIFY(!bar->isVisible());
}

// Timesheets listed by entity are not sent: the run clears the status and leaves every row.
void Form3Test::sendEmailWithTimesheetsByEntityDoesNothing() {
    useRecordingLoader({{"Dyke Landscaping", "6.5", "ready"}, {"Elm Street Cafe", "2", "ready"}});
    menuEntry(QStringLiteral("selectTimesheetA"))->trigger();
    window().setStatusText("an old note");

    QTest::mouseClick(control("Command1"), Qt::LeftButton);

    QCOMPARE(window().statusText(), std::string());
    QCOMPARE(listView()->topLevelItemCount(), 2);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(window().list().row(i).checked);
        QCOMPARE(listView()->topLevelItem(i)->checkState(0), Qt::Checked);
    }
    QVERIFY(m_ui->messages.empty());
    QVERIFY(m_ui->opened.empty());
    QCOMPARE(m_ui->busyDepth, 0);
    QCOMPARE(m_loads.size(), std::size_t{1});
}

// "preview" ticked in the window: Send Email renders the checked invoices of the list into one
// page and opens it, showing its progress meanwhile; nothing is mailed or unchecked.
void Form3Test::previewedSendRendersTheCheckedDocuments() {
    std::filesystem::copy(programSource(), m_home->path(),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    const std::string response = R"(<?xml version="1.0"?>
<QBXML><QBXMLMsgsRs><InvoiceQueryRs statusCode="0">
  <InvoiceRet><TxnID>TXN-1</TxnID><TxnDate>2026-11-16</TxnDate><RefNumber>1042</RefNumber>
    <CustomerRef><FullName>Acme Builders</FullName></CustomerRef></InvoiceRet>
  <InvoiceRet><TxnID>TXN-2</TxnID><TxnDate>2026-11-16</TxnDate><RefNumber>1043</RefNumber>
    <CustomerRef><FullName>Bolt and Nut</FullName></CustomerRef></InvoiceRet>
  <InvoiceRet><TxnID>TXN-3</TxnID><TxnDate>2026-11-17</TxnDate><RefNumber>1044</RefNumber>
    <CustomerRef><FullName>Crane Rentals</FullName></CustomerRef></InvoiceRet>
</InvoiceQueryRs></QBXMLMsgsRs></QBXML>)";
    window().setServices(
        {.loadCompanyInfo = {},
         .ensureDefaultRecords = {},
         .loadList = [this, &response](const std::string&, const std::string&) {
             auto parsed = xml::Document::parse(response);
             QVERIFY(parsed);
             window().listDocument() = std::move(*parsed);
             shell::ListModel& list = window().list();
             list.clear();
             list.setColumns({{"Date", 0},
                              {"Invoice ID", 0},
                              {"Customer:Job", 0},
                              {"Balance", 0},
                              {"EMail", 0},
                              {"Status", 0}});
             const char* customers[] = {"Acme Builders", "Bolt and Nut", "Crane Rentals"};
             for (int i = 0; i < 3; ++i) {
                 list.addRow(listRow(i != 1, 3,
                                     {"2026-11-16", "TXN-" + std::to_string(i + 1), customers[i],
                                      "10.00", "ap@example.com", "Ready to send"}));
             }
         }});
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    auto* preview = m_view->findChild<QCheckBox*>(QStringLiteral("Check1"));
    QTest::mouseClick(preview, Qt::LeftButton, {}, QPoint(8, preview->height() / 2));

    auto* bar = m_view->findChild<QProgressBar*>(QStringLiteral("ProgressBar1"));
    QList<int> shownProgress;
    connect(bar, &QProgressBar::valueChanged, this, [&shownProgress, bar, this](int value) {
        if (bar->isVisibleTo(m_view.get())) {
            shownProgress << value;
        }
    });
    QTest::mouseClick(control("Command1"), Qt::LeftButton);

    QCOMPARE(m_ui->opened.size(), std::size_t{1});
    QCOMPARE(std::filesystem::path(m_ui->opened[0]), m_home->path() / "preview.htm");
    const std::string page = readFile(m_home->path() / "preview.htm");
    QVERIFY2(page.find("1042") != std::string::npos, page.c_str());
    QVERIFY(page.find("1044") != std::string::npos);
    QVERIFY(page.find("1043") == std::string::npos);
    QVERIFY(!shownProgress.isEmpty());
    QCOMPARE(shownProgress.back(), 100);
    QVERIFY(!bar->isVisible());
    QVERIFY(window().list().row(0).checked);
    QVERIFY(window().list().row(2).checked);
    QVERIFY(m_ui->messages.empty());
    QCOMPARE(m_ui->busyDepth, 0);
}

// Core lets the event loop run during a long job; a command given meanwhile is not started
// inside it.
void Form3Test::commandsWaitWhileOneRuns() {
    bool nested = false;
    useRecordingLoader({{"Acme", "1", "ready"}}, [this, &nested] {
        if (nested) {
            return;
        }
        nested = true;
        menuEntry(QStringLiteral("SelectEstimate"))->trigger();
        QTest::mouseClick(control("RefreshBtn"), Qt::LeftButton);
        menuEntry(QStringLiteral("Parameter"))->trigger();
    });
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    QCOMPARE(m_loads.size(), std::size_t{1});
    QVERIFY(m_ui->dialogsShown.empty());
    QCOMPARE(m_view->windowTitle(), QStringLiteral("Dorvane Invoice"));

    menuEntry(QStringLiteral("SelectEstimate"))->trigger();
    QCOMPARE(m_loads.size(), std::size_t{2});
    QCOMPARE(m_loads.back().type, std::string("Estimate"));
}

// With the Qt UI port: the hourglass while a list loads, and the window keeps painting when
// the loader lets the event loop run.
void Form3Test::typeSelectionShowsTheBusyPointerAndKeepsPainting() {
    gui::QtUiPort ui;
    shell::Application app(ui, shell::StartOptions{m_home->path().string()}, noQuickBooks());
    gui::MainWindowView view(app);
    ui.setParentWidget(&view);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* panel = view.findChild<QLabel*>(QStringLiteral("StatusBar1Panel1"));

    PaintCounter paints;
    panel->installEventFilter(&paints);
    Qt::CursorShape during = Qt::ArrowCursor;
    int paintsBeforeYield = -1;
    app.window().setServices({.loadCompanyInfo = {},
                              .ensureDefaultRecords = {},
                              .loadList = [&](const std::string&, const std::string&) {
                                  const QCursor* cursor = QGuiApplication::overrideCursor();
                                  during = cursor == nullptr ? Qt::ArrowCursor : cursor->shape();
                                  app.window().setStatusText("parsing information ... 100 of 300");
                                  paintsBeforeYield = paints.count;
                                  ui.yield();
                              }});
    view.findChild<QAction*>(QStringLiteral("SelectInvoice"))->trigger();
    ui.setParentWidget(nullptr);

    QCOMPARE(during, Qt::WaitCursor);
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    QVERIFY2(paints.count > paintsBeforeYield, "the status text was not painted while loading");
}

void Form3Test::helpOpensThePageInTheProgramFolder() {
    menuEntry(QStringLiteral("Help"))->trigger();
    QCOMPARE(m_ui->opened.size(), std::size_t{1});
    QCOMPARE(std::filesystem::path(m_ui->opened[0]),
             std::filesystem::path(m_home->path() / "DorvaneHelp.htm"));

    const std::string page = readFile(programSource() / "DorvaneHelp.htm");
    QVERIFY(page.find("<title>") != std::string::npos);
    QVERIFY(page.find("Email addres invalid or missing") != std::string::npos);
    QVERIFY(page.find("<script") == std::string::npos);
}

void Form3Test::aboutNamesProgramAndVersion() {
    QString shown;
    whenModal<QMessageBox>([&shown](QMessageBox* box) {
        shown = box->windowTitle() + QStringLiteral("|") + box->text();
        box->accept();
    });
    menuEntry(QStringLiteral("About"))->trigger();
    QVERIFY(shown.startsWith(QStringLiteral("About Dorvane|")));
    QVERIFY(shown.contains(QStringLiteral(DORVANE_VERSION)));
}

void Form3Test::screenshot() {
    const QString file = screenshotFile(QStringLiteral("Form3"));
    if (file.isEmpty()) {
        QSKIP("DORVANE_SCREENSHOTS not set");
    }
    window().setCompanyText("Harbour Light Supplies Inc.\n12 Harbour Road, Portland, ME 04101");
    useRecordingLoader({});
    menuEntry(QStringLiteral("SelectInvoice"))->trigger();
    // As the invoice list lays itself out: six columns, each a sixth of the list's width.
    shell::ListModel& list = window().list();
    const int sixth = listView()->viewport()->width() / 6;
    list.setColumns({{"Date", sixth},
                     {"Invoice ID", sixth},
                     {"Customer:Job", sixth},
                     {"Balance", sixth},
                     {"EMail", sixth},
                     {"Status", sixth}});
    const std::vector<std::pair<int, std::vector<std::string>>> rows{
        {3,
         {"2026-11-16", "1F4-1763280011", "Acme Builders", "1250.00", "ap@acme.example",
          "Ready to send"}},
        {2,
         {"2026-11-16", "1F5-1763280122", "Bolt & Nut Co.", "89.90", "office@bolt.example",
          "Already sent"}},
        {1,
         {"2026-11-17", "1F6-1763366533", "Crane Rentals:Depot", "4100.00", "",
          "Missing Email address"}},
        {3,
         {"2026-11-17", "1F7-1763366644", "Dyke Landscaping", "312.45", "dyke@example.com",
          "Ready to send"}},
        {3,
         {"2026-11-18", "1F8-1763452955", "Elm Street Cafe", "57.00", "cafe@elm.example",
          "Ready to send"}},
    };
    for (const auto& [icon, cells] : rows) {
        list.addRow(listRow(icon == 3, icon, cells));
    }
    window().setStatusText("5 invoices loaded");
    window().setProgress(60);
    QTest::qWait(50);
    QVERIFY(m_view->grab().save(file));
}

int runForm3Tests(int argc, char** argv) {
    Form3Test suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "form3_test.moc"
