// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — the import window Form1 and the import preferences Dialog3 on real
// widgets, opened from the main window, over the sandbox's demo company.
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTreeWidget>

#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "guitestsupport.h"
#include "platform/programfolder.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::test {

namespace {

namespace fs = std::filesystem;

QString lf(std::string_view crlfText) {
    return QString::fromStdString(std::string(crlfText))
        .replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

}  // namespace

class Form1Test : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void importButtonOpensOneWindowWithItsControlsAndMenu();
    void invoiceIsMatchedPreviewedAndBookedAsABill();
    void salesReceiptOffersThePaymentAccounts();
    void pastedReceiptLetsThePersonNameTheCustomer();
    void dialog3StoresTheChosenEntriesOnOkOnly();
    void dialog4ChoosesTheWorkerOfTheSync();
    void batchImportShowsItsResultsInThePane();

private:
    // A fresh user's program folder, settings and QuickBooks (the demo company), and the main
    // window on `ui`.
    void startWith(ui::UiPort& ui);
    QWidget* form1() const { return m_view->findChild<QWidget*>(QStringLiteral("Form1")); }
    template <class T = QWidget>
    T* control(const char* name) const {
        QWidget* window = form1();
        return window ? window->findChild<T*>(QString::fromUtf8(name)) : nullptr;
    }
    void click(const char* button) { QTest::mouseClick(control(button), Qt::LeftButton); }
    void trigger(const char* entry) { control<QAction>(entry)->trigger(); }
    void openImportWindow() {
        QTest::mouseClick(m_view->findChild<QWidget*>(QStringLiteral("ImportBtn")), Qt::LeftButton);
    }
    void clickListItem(int row) {
        auto* list = control<QTreeWidget>("VendorListView");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->topLevelItem(row)).center());
    }
    // Writes the exchange file of the demo company's first document of `ret` (InvoiceRet,
    // SalesReceiptRet) as the mailing code attaches it, the sender's name set to `sender`.
    QString writeExchangeFile(const std::string& ret, const std::string& sender);
    imports::ImportWindow& core() { return m_app->importWindow(); }

    std::unique_ptr<TempDir> m_dir;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<shell::Application> m_app;
    std::unique_ptr<gui::MainWindowView> m_view;
};

void Form1Test::init() {
    m_dir = std::make_unique<TempDir>();
    const fs::path home = *m_dir / "home";
    fs::copy(programSource(), home, fs::copy_options::recursive);
    const fs::path sandbox = *m_dir / "sandbox";
    fs::create_directories(sandbox);
    copyDemoCompany(sandbox / "demo.dvq");
    QVERIFY(qbsandbox::writeState(sandbox, {true, sandbox / "demo.dvq"}));
    ::setenv("DORVANE_SANDBOX_DIR", sandbox.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (*m_dir / "config").c_str(), 1);
    m_ui = std::make_unique<ScriptedUi>();
}

void Form1Test::startWith(ui::UiPort& ui) {
    m_app =
        std::make_unique<shell::Application>(ui, shell::StartOptions{(*m_dir / "home").string()});
    m_view = std::make_unique<gui::MainWindowView>(*m_app);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void Form1Test::cleanup() {
    m_view.reset();
    m_app.reset();
    m_ui.reset();
    m_dir.reset();
}

QString Form1Test::writeExchangeFile(const std::string& ret, const std::string& sender) {
    const std::string query = ret.substr(0, ret.size() - 3) + "QueryRq";
    const std::string answer = m_app->gateway().processRequest(
        "<?xml version=\"1.0\" ?>\r\n<?qbxml version=\"2.0\"?>\r\n<QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><" +
        query + "><MaxReturned>1</MaxReturned><IncludeLineItems>true</IncludeLineItems></" + query +
        "><CompanyQueryRq/></QBXMLMsgsRq></QBXML>");
    auto doc = xml::Document::parse(answer);
    if (!doc || !doc->selectOne("//" + ret) || !doc->selectOne("//CompanyRet")) {
        qWarning("no %s in the demo company: %s", ret.c_str(), answer.c_str());
        return {};
    }
    xml::Document file;
    file.setRoot(doc->selectOne("//" + ret));
    xml::Node company = file.root().appendChild(doc->selectOne("//CompanyRet"));
    company.firstChildElement("CompanyName").setText(sender);
    auto sheet = xml::Stylesheet::load(m_app->folder().filePath("attachment.xslt"));
    auto text = sheet ? sheet->transformNode(file.root()) : Result<std::string>(sheet.error());
    if (!text) {
        qWarning("attachment.xslt: %s", text.error().description.c_str());
        return {};
    }
    const fs::path path = *m_dir / (ret + ".dvx");
    writeFile(path, *text);
    return QString::fromStdString(path.string());
}

// Import opens Form1 as core opens it: named controls, the Options menu, most of the window
// hidden until a file is open. A second press raises the same window.
void Form1Test::importButtonOpensOneWindowWithItsControlsAndMenu() {
    startWith(*m_ui);
    QVERIFY(!form1());
    openImportWindow();
    QWidget* window = form1();
    QVERIFY(window && window->isVisible() && window->isWindow());
    QCOMPARE(window->windowTitle(), QStringLiteral("Dorvane - Select Invoice or Estimate"));

    QStringList shown;
    for (const char* name : {"VendorListView", "custorVendorNameText", "Label1", "Label2",
                             "SelAccountLabel", "Selaccountcombo", "WebBrowser1", "AddItemBtn",
                             "SelItemBtn", "ClearSelBtn", "StatusBar1"}) {
        QWidget* widget = control(name);
        QVERIFY2(widget, name);
        if (widget->isVisible()) {
            shown << QString::fromUtf8(name);
        }
    }
    QCOMPARE(shown.join(QLatin1Char(' ')),
             QStringLiteral("VendorListView Label1 SelItemBtn ClearSelBtn StatusBar1"));
    QVERIFY(qobject_cast<QTextBrowser*>(control("WebBrowser1")));
    QCOMPARE(static_cast<QMainWindow*>(window)->statusBar(), control<QStatusBar>("StatusBar1"));

    QStringList entries;
    auto* options = control<QMenu>("Options");
    QVERIFY(options);
    for (const QAction* action : options->actions()) {
        if (!action->isSeparator()) {
            entries << action->objectName();
        }
    }
    QCOMPARE(entries.join(QLatin1Char(' ')),
             QStringLiteral(
                 "SelDVXImport setPref capAuthorize ImpAuthNetBatch ImpAuthNetBulk SynchronizePDA "
                 "InitPDA"));
    // The entries later subsystems fill in reach them; the rest reach core. While one runs,
    // no other command of either window starts.
    QStringList ran;
    core().setServices({.impAuthNetBatch =
                            [&] {
                                ran << QStringLiteral("batch");
                                trigger("SynchronizePDA");
                                m_view->findChild<QAction*>(QStringLiteral("Parameter"))->trigger();
                            },
                        .impAuthNetBulk = [&] { ran << QStringLiteral("bulk"); },
                        .synchronizePDA = [&] { ran << QStringLiteral("pda"); },
                        .initializePDA = [&] { ran << QStringLiteral("init"); },
                        .importTimeTracking = {}});
    for (const char* entry : {"ImpAuthNetBatch", "ImpAuthNetBulk", "SynchronizePDA", "InitPDA"}) {
        trigger(entry);
    }
    QCOMPARE(ran.join(QLatin1Char(' ')), QStringLiteral("batch bulk pda init"));
    m_ui->files.push_back(std::nullopt);
    trigger("SelDVXImport");
    QVERIFY(m_ui->files.empty());
    trigger("setPref");
    QCOMPARE(m_ui->dialogsShown, std::vector<std::string>{"Dialog3"});

    core().setImportStatusText("Vendor added");
    QCOMPARE(control<QLabel>("StatusBar1Panel1")->text(), QStringLiteral("Vendor added"));
    window->close();
    openImportWindow();
    QCOMPARE(m_view->findChildren<QWidget*>(QStringLiteral("Form1")).size(), 1);
    QVERIFY(form1() == window && window->isVisible());
}

// The person's whole way through an invoice: open it, check the match and the preview, change
// the vendor and back, and import it as a bill.
void Form1Test::invoiceIsMatchedPreviewedAndBookedAsABill() {
    startWith(*m_ui);
    openImportWindow();
    const QString file = writeExchangeFile("InvoiceRet", "golden state");
    QVERIFY(!file.isEmpty());
    m_ui->files.push_back(file.toStdString());
    click("SelItemBtn");

    QCOMPARE(form1()->windowTitle(), QStringLiteral("Dorvane - Import Invoice as Bill"));
    auto* list = control<QTreeWidget>("VendorListView");
    QCOMPARE(list->headerItem()->text(0), QStringLiteral("Vendor"));
    const auto& vendors = core().counterparts().items;
    QVERIFY(vendors.size() > 5);
    QCOMPARE(list->topLevelItemCount(), static_cast<int>(vendors.size()));
    QStringList bold;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        QCOMPARE(list->topLevelItem(i)->text(0).toStdString(), vendors[std::size_t(i)]);
        if (list->topLevelItem(i)->font(0).bold()) {
            bold << list->topLevelItem(i)->text(0);
        }
    }
    QCOMPARE(bold, QStringList{QStringLiteral("Golden State Fuel")});
    const int matched = static_cast<int>(core().counterparts().selected.value_or(99));
    QCOMPARE(list->selectedItems(), QList<QTreeWidgetItem*>{list->topLevelItem(matched)});
    QCOMPARE(control<QLabel>("Label1")->text(),
             QStringLiteral("Vendor found\ngolden state\nIf you would like to change the vendor, "
                            "please select another one from the list"));

    auto* pane = control<QTextBrowser>("WebBrowser1");
    QVERIFY(pane->isVisible());
    const std::string refNumber =
        xml::Document::load(file.toStdString())->valueOf("/InvoiceRet/RefNumber");
    QVERIFY(!refNumber.empty());
    QVERIFY2(pane->toPlainText().contains(QString::fromStdString(refNumber)),
             qPrintable(pane->toPlainText()));
    QVERIFY(control("AddItemBtn")->isVisible() && control("AddItemBtn")->isEnabled());
    click("OpenInBrowserBtn");
    QCOMPARE(m_ui->opened, std::vector<std::string>{core().browserFile()});
    QVERIFY(core().browserFile().ends_with("viewitem.htm"));

    // Another vendor, none (the import would create one), and the match again.
    clickListItem(0);
    QCOMPARE(core().counterparts().selected, std::optional<std::size_t>(0));
    QCOMPARE(core().nameText(), vendors[0]);
    click("ClearSelBtn");
    QVERIFY(list->selectedItems().isEmpty());
    QVERIFY(!core().counterparts().selected);
    clickListItem(matched);
    QCOMPARE(core().counterparts().selected, std::optional<std::size_t>(matched));

    click("AddItemBtn");
    QCOMPARE(control<QLabel>("StatusBar1Panel1")->text(), QStringLiteral("Bill added"));
    QVERIFY2(pane->toPlainText().contains(QStringLiteral("Bill sucessfully added.")),
             qPrintable(pane->toPlainText()));
    QCOMPARE(form1()->windowTitle(), QStringLiteral("Dorvane - Select Invoice or Estimate"));
    QVERIFY(control("AddItemBtn")->isVisible() && !control("AddItemBtn")->isEnabled());
    QCOMPARE(control<QLabel>("Label1")->text(), QString());
    QVERIFY(m_ui->messages.empty());
    QCOMPARE(m_ui->busyDepth, 0);
}

void Form1Test::salesReceiptOffersThePaymentAccounts() {
    startWith(*m_ui);
    openImportWindow();
    const QString file = writeExchangeFile("SalesReceiptRet", "Harbor Lane Landscaping");
    QVERIFY(!file.isEmpty());
    m_ui->files.push_back(file.toStdString());
    trigger("SelDVXImport");

    QCOMPARE(form1()->windowTitle(), QStringLiteral("Dorvane - Import Sales Receipt as Charge"));
    QCOMPARE(control<QLabel>("Label1")->text(), lf(core().label1()));
    QVERIFY(control<QLabel>("Label1")->text().startsWith(QStringLiteral("Vendor \n")));
    auto* combo = control<QComboBox>("Selaccountcombo");
    QVERIFY(combo->isVisible() && control("SelAccountLabel")->isVisible());
    QStringList accounts;
    for (const auto& account : core().accounts()) {
        accounts << QString::fromStdString(account.name);
    }
    QVERIFY(accounts.size() > 1);
    QStringList shown;
    for (int i = 0; i < combo->count(); ++i) {
        shown << combo->itemText(i);
    }
    QCOMPARE(shown, accounts);
    QCOMPARE(combo->currentIndex(), 0);
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(core().selectedAccount(), std::optional<std::size_t>(1));
    core().selectAccount(0);
    QCOMPARE(combo->currentIndex(), 0);
}

// A receipt from the clipboard: the person may pick or type the customer, unless the settings
// import receipts without one.
void Form1Test::pastedReceiptLetsThePersonNameTheCustomer() {
    startWith(*m_ui);
    openImportWindow();
    m_ui->clipboard =
        "Invoice Number : 1234\r\nDate/Time: 12-Mar-2026 10:15:22 AM\r\n"
        "========= CUSTOMER BILLING INFORMATION =========\r\nCompany : Zebulon Rakes\r\n"
        "========= ORDER INFORMATION =========\r\nTotal : $12.50\r\n";
    trigger("capAuthorize");
    QCOMPARE(form1()->windowTitle(),
             QStringLiteral("Dorvane - Import Authorize.Net receipt as SalesReceipt"));
    auto* list = control<QTreeWidget>("VendorListView");
    QCOMPARE(list->headerItem()->text(0), QStringLiteral("Customer"));
    QVERIFY(list->isEnabled());
    auto* name = control<QLineEdit>("custorVendorNameText");
    QVERIFY(name->isVisible() && control("Label2")->isVisible());
    QCOMPARE(name->text(), QStringLiteral("Zebulon Rakes"));
    QCOMPARE(control<QLabel>("Label1")->text(),
             QStringLiteral("Customer Zebulon Rakesnot found\nPlease select one from the list "
                            "or change the name.You also may leave the name field blank."));
    typeInto(name, QStringLiteral("Zebulon & Sons"));
    QCOMPARE(QString::fromStdString(core().nameText()), QStringLiteral("Zebulon & Sons"));
    clickListItem(1);
    QCOMPARE(name->text().toStdString(), core().counterparts().items[1]);

    QVERIFY(m_app->settings().set("Import", "IgnoreAuthNetCust", "1"));
    openImportWindow();  // reads the import settings again
    trigger("capAuthorize");
    QVERIFY(!list->isEnabled());
    QVERIFY(!name->isVisible() && !control("Label2")->isVisible());
    QCOMPARE(control<QLabel>("Label1")->text(), QString());
}

// With the Qt port: the file dialog offers the exchange-file filters, and Dialog3 (from the
// main window's menu and from Form1's) shows the demo company's lists and the settings; OK
// stores the chosen entries, Cancel nothing.
// An Authorize.Net download from the Options menu: its results page replaces the pane, the
// progress bar and Cancel are gone once the run ended; a second run adds nothing.
void Form1Test::batchImportShowsItsResultsInThePane() {
    startWith(*m_ui);
    openImportWindow();
    auto* pane = control<QTextBrowser>("WebBrowser1");
    for (const char* expected : {"added.", "ignored. Already imported."}) {
        m_ui->files.push_back((dataDir() / "batch" / "expanded-latin1.csv").string());
        trigger("ImpAuthNetBatch");
        QVERIFY(pane->isVisible());
        const QString page = pane->toPlainText();
        QVERIFY2(page.contains(QStringLiteral("Batch Import Results")), qPrintable(page));
        QVERIFY2(page.contains(QString::fromUtf8(expected)), qPrintable(page));
        QVERIFY(!control<QProgressBar>("BatchProgress")->isVisible());
        QVERIFY(!control<QWidget>("CancelBatch")->isVisible());
    }
}

// With the Qt port: the handheld sync asks for the worker in Dialog4 (QuickBooks' employees);
// Cancel writes and transfers nothing, OK hands the handheld the lists after its file came
// back.
void Form1Test::dialog4ChoosesTheWorkerOfTheSync() {
    gui::QtUiPort ui;
    startWith(ui);
    gui::registerDialogs(ui, m_app->settings());
    ui.setParentWidget(m_view.get());
    MessageBoxRecorder boxes;
    const fs::path device = *m_dir / "device";
    const fs::path onDevice = device / "Program Files" / "TimeTrack" / "data.xml";
    fs::create_directories(onDevice.parent_path());
    fs::copy_file(dataDir() / "handheld" / "data.xml", onDevice);
    const std::string before = readFile(onDevice);
    ::setenv("DORVANE_DEVICE_DIR", device.c_str(), 1);
    openImportWindow();

    QStringList seen;
    whenModal<QDialog>([&](QDialog* dialog) {
        const auto* combo = dialog->findChild<QComboBox*>(QStringLiteral("Combo1"));
        seen << dialog->objectName() + QLatin1Char('|') +
                    QString::number(combo != nullptr && combo->count() > 0);
        dialog->reject();
    });
    trigger("SynchronizePDA");
    QCOMPARE(seen, QStringList{QStringLiteral("Dialog4|1")});
    QVERIFY(!fs::exists(*m_dir / "home" / "dataout.xml"));
    QCOMPARE(readFile(onDevice), before);

    whenModal<QDialog>([&](QDialog* dialog) {
        dialog->findChild<QComboBox*>(QStringLiteral("Combo1"))->setCurrentIndex(0);
        dialog->accept();
    });
    trigger("SynchronizePDA");
    ::unsetenv("DORVANE_DEVICE_DIR");
    QCOMPARE(readFile(*m_dir / "home" / "dataFromPDA.xml").substr(0, 40), before.substr(0, 40));
    QCOMPARE(readFile(onDevice), readFile(*m_dir / "home" / "dataout.xml"));
    QCOMPARE(core().caption(), std::string("Dorvane - Import Time Tracking from PDA"));
}

void Form1Test::dialog3StoresTheChosenEntriesOnOkOnly() {
    gui::QtUiPort ui;
    startWith(ui);
    gui::registerDialogs(ui, m_app->settings());
    ui.setParentWidget(m_view.get());
    MessageBoxRecorder boxes;

    openImportWindow();
    QString offered;
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
        offered = dialog->windowTitle() + QLatin1Char('|') +
                  dialog->nameFilters().join(QLatin1Char('|')) + QLatin1Char('|') +
                  dialog->parentWidget()->objectName();
        dialog->reject();
    });
    trigger("SelDVXImport");
    QCOMPARE(offered,
             QStringLiteral("Select DVX file|Dorvane (*.dvx)|XML (*.xml)|All files (*.*)|Form1"));

    const xml::Document& lists = m_app->defaultRecords().itemList();
    QStringList seen;
    whenModal<QDialog>([&](QDialog* dialog) {
        seen << dialog->objectName() + QLatin1Char('|') +
                    dialog->findChild<QLabel*>(QStringLiteral("Label1"))->text();
        // the lists as the demo company has them, the stored (here: default) entries chosen
        const struct {
            const char* combo;
            const char* path;
        } choices[] = {{"itemlist", "//ItemQueryRs/*/FullName"},
                       {"itemgrouplist", "//ItemGroupQueryRs/*/Name"},
                       {"termlist", "//TermsQueryRs/*/Name"},
                       {"Accountlist", "//AccountRet"}};
        for (const auto& c : choices) {
            auto* combo = dialog->findChild<QComboBox*>(QString::fromUtf8(c.combo));
            seen << QString::fromUtf8(c.combo) + QLatin1Char('=') +
                        QString::number(combo->count() ==
                                        static_cast<int>(lists.selectAll(c.path).size())) +
                        QLatin1Char(' ') + combo->currentText();
        }
        dialog->findChild<QComboBox*>(QStringLiteral("termlist"))->setCurrentIndex(1);
        dialog->findChild<QComboBox*>(QStringLiteral("Accountlist"))->setCurrentIndex(0);
        tick(dialog->findChild<QCheckBox*>(QStringLiteral("IgnoreAuthNetCust")));
        press(dialog, "OKButton");
    });
    m_view->findChild<QAction*>(QStringLiteral("importPref"))->trigger();
    QCOMPARE(seen.join(QStringLiteral("; ")),
             QStringLiteral("Dialog3|Please select your preferences for item assignment; "
                            "itemlist=1 Uncategorized Expenses; "
                            "itemgrouplist=1 Uncategorized Expense Group; termlist=1 Net 30; "
                            "Accountlist=1 [Expense] Uncategorized Expenses"));
    QVERIFY(boxes.texts.isEmpty());

    platform::SettingsStore stored = platform::SettingsStore::forUser();
    const std::string term = lists.selectAll("//TermsQueryRs/*/Name").at(1).text();
    const xml::Node firstAccount = lists.selectOne("//AccountRet");
    const std::string account =
        "[" + firstAccount.valueOf("AccountType") + "] " + firstAccount.valueOf("FullName");
    QCOMPARE(stored.get("Import", "Term"), term);
    QCOMPARE(stored.get("Import", "Account"), account);
    QCOMPARE(stored.get("Import", "Item"), std::string("Uncategorized Expenses"));
    QCOMPARE(stored.get("Import", "IgnoreAuthNetCust"), std::string("1"));
    QCOMPARE(core().importSettings().importTermsName, term);
    QVERIFY(core().importSettings().ignoreAuthNetCustomer);

    // Opened again from Form1: the stored entries are chosen; Cancel keeps them.
    seen.clear();
    whenModal<QDialog>([&](QDialog* dialog) {
        seen << dialog->findChild<QComboBox*>(QStringLiteral("termlist"))->currentText() +
                    QLatin1Char('|') +
                    dialog->findChild<QComboBox*>(QStringLiteral("Accountlist"))->currentText() +
                    QLatin1Char('|') +
                    QString::number(
                        dialog->findChild<QCheckBox*>(QStringLiteral("IgnoreAuthNetCust"))
                            ->isChecked());
        dialog->findChild<QComboBox*>(QStringLiteral("itemlist"))->setCurrentIndex(0);
        tick(dialog->findChild<QCheckBox*>(QStringLiteral("IgnoreAuthNetCust")));
        press(dialog, "CancelButton");
    });
    trigger("setPref");
    QCOMPARE(seen, QStringList{QString::fromStdString(term + "|" + account + "|1")});
    stored.reload();
    QCOMPARE(stored.get("Import", "Item"), std::string("Uncategorized Expenses"));
    QCOMPARE(stored.get("Import", "IgnoreAuthNetCust"), std::string("1"));
    QVERIFY(boxes.texts.isEmpty());
}

int runForm1Tests(int argc, char** argv) {
    Form1Test suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#ifdef DORVANE_FORM1_TEST_MAIN
int main(int argc, char** argv) {
    QApplication app(argc, argv);
    return dorvane::test::runForm1Tests(argc, argv) == 0 ? 0 : 1;
}
#endif

#include "form1_test.moc"
