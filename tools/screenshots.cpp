// SPDX-License-Identifier: GPL-3.0-or-later
// Draws the README's pictures from the real program: the main window on the sandbox's demo
// company, an invoice as its customer receives it, the import window with an invoice that a
// vendor sent, and the preferences' QuickBooks connection and Documents pages. Run through
// scripts/screenshots.sh.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTimer>

#include "gui/mainwindowview.h"
#include "gui/preferencesdialog.h"
#include "gui/qtuiport.h"
#include "mail/documentextras.h"
#include "platform/programhome.h"
#include "shell/application.h"
#include "webconnector/config.h"
#include "xml/xml.h"

namespace {

namespace fs = std::filesystem;
using namespace dorvane;

// Everything as the window does it, but the desktop is not asked to open anything and no box
// waits for a person.
class QuietUiPort : public ui::UiPort {
public:
    ui::Answer messageBox(std::string_view text, std::string_view, ui::Icon, ui::Buttons) override {
        std::cerr << "screenshots: the program said: " << text << '\n';
        return ui::Answer::Ok;
    }
    std::optional<std::string> inputBox(std::string_view, std::string_view,
                                        std::string_view preset) override {
        return std::string(preset);
    }
    std::optional<std::string> openFileDialog(std::string_view, std::string_view) override {
        return std::nullopt;
    }
    void openWithDesktop(std::string_view) override {}
    std::string clipboardText() override { return {}; }
    void beep() override {}
    void setBusy(bool busy) override { m_qt.setBusy(busy); }
    void yield() override { m_qt.yield(); }
    bool runDialog(ui::DialogModel&) override { return false; }

private:
    gui::QtUiPort m_qt;
};

bool save(QWidget& widget, const fs::path& file) {
    widget.show();
    QApplication::processEvents();
    if (!widget.grab().save(QString::fromStdString(file.string()))) {
        std::cerr << "screenshots: could not write " << file << '\n';
        return false;
    }
    std::cout << file.string() << '\n';
    return true;
}

// The exchange file of the demo company's first invoice, as if the vendor `sender` had mailed
// it: the document and the sending company's record through the attachment sheet.
bool writeExchangeFile(shell::Application& app, const std::string& sender, const fs::path& file) {
    const std::string answer = app.gateway().processRequest(
        "<?xml version=\"1.0\" ?>\r\n<?qbxml version=\"2.0\"?>\r\n<QBXML><QBXMLMsgsRq "
        "onError=\"stopOnError\"><InvoiceQueryRq><MaxReturned>1</MaxReturned><IncludeLineItems>"
        "true</IncludeLineItems></InvoiceQueryRq><CompanyQueryRq/></QBXMLMsgsRq></QBXML>");
    auto doc = xml::Document::parse(answer);
    if (!doc || !doc->selectOne("//InvoiceRet") || !doc->selectOne("//CompanyRet")) {
        std::cerr << "screenshots: the demo company answered no invoice\n";
        return false;
    }
    xml::Document exchange;
    exchange.setRoot(doc->selectOne("//InvoiceRet"));
    xml::Node company = exchange.root().appendChild(doc->selectOne("//CompanyRet"));
    company.firstChildElement("CompanyName").setText(sender);
    auto sheet = xml::Stylesheet::load(app.folder().filePath("attachment.xslt"));
    auto text = sheet ? sheet->transformNode(exchange.root()) : Result<std::string>(sheet.error());
    if (!text) {
        std::cerr << "screenshots: attachment.xslt: " << text.error().description << '\n';
        return false;
    }
    std::ofstream(file, std::ios::binary) << *text;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: dorvane_screenshots OUTPUT-FOLDER\n";
        return 64;
    }
    const fs::path out = fs::absolute(argv[1]);
    fs::create_directories(out);
    const fs::path scratch =
        fs::temp_directory_path() / ("dorvane-screenshots-" + std::to_string(::getpid()));
    // A new user on a fresh machine: own settings, own sandbox, the demo company.
    ::setenv("XDG_CONFIG_HOME", (scratch / "config").c_str(), 1);
    ::setenv("DORVANE_SANDBOX_DIR", (scratch / "sandbox").c_str(), 1);
    const std::string home = (scratch / "home").string();
    const platform::HomeReport prepared =
        platform::prepareProgramHome(home, platform::locateShippedFiles());
    if (!prepared.error.empty()) {
        std::cerr << "screenshots: " << prepared.error << '\n';
    }

    QApplication qtApp(argc, argv);
    int status = 0;
    {
        QuietUiPort ui;
        shell::Application app(ui, shell::StartOptions{home});
        gui::MainWindowView window(app);
        window.resize(900, 520);
        window.show();
        app.window().startUp();
        app.window().selectTimeframe(std::string_view("ThisMonthToDate"));
        app.window().selectDocumentType("Invoice");
        if (!save(window, out / "main-window.png")) {
            status = 1;
        }

        // The first checked invoice, rendered as it is mailed (the preview is the same page).
        auto& list = app.window().list();
        for (int i = 0; i < list.rowCount(); ++i) {
            list.setChecked(i, i == 0);
        }
        app.window().setPreviewChecked(true);
        app.sender().sendSelectedDocuments();
        QTextBrowser page;
        page.setSearchPaths({QString::fromStdString(home)});
        page.setSource(QUrl::fromLocalFile(QString::fromStdString(home + "/preview.htm")));
        page.resize(760, 900);
        if (!save(page, out / "mailed-invoice.png")) {
            status = 1;
        }

        // An invoice from a vendor, opened in the import window and matched to the vendor.
        window.findChild<QPushButton*>(QStringLiteral("ImportBtn"))->click();
        auto* importWindow = window.findChild<QWidget*>(QStringLiteral("Form1"));
        const fs::path exchange = scratch / "bay-area-nursery.dvx";
        if (importWindow == nullptr || !writeExchangeFile(app, "Bay Area Nursery", exchange)) {
            status = 1;
        } else {
            app.importWindow().openExchangeFile(exchange.string());
            importWindow->resize(1000, 640);
            if (!save(*importWindow, out / "import-window.png")) {
                status = 1;
            }
        }

        // The overdue reminders the demo company has due, as the E-Mail menu opens them.
        if (auto* action = window.findChild<QAction*>(QStringLiteral("remindersAction"))) {
            action->trigger();
        }
        if (auto* reminders = window.findChild<QWidget*>(QStringLiteral("RemindersWindow"))) {
            reminders->resize(900, 420);
            if (!save(*reminders, out / "reminders-window.png")) {
                status = 1;
            }
            reminders->close();
        } else {
            status = 1;
        }

        // The preferences' QuickBooks connection page, filled in as an office fills it in.
        platform::SettingsStore& store = app.settings();
        const Status user = webconnector::setUser(store, "office", "office password");
        const Status entries =
            store.setEntries({{"QuickBooks", "Connection", "webconnector"},
                              {"WebConnector", "Host", "books.harbourlight.example"},
                              {"WebConnector", "Certificate", "/etc/dorvane/books.pem"},
                              {"WebConnector", "Key", "/etc/dorvane/books.key"}});
        if (!user || !entries) {
            status = 1;
        }
        // The documents page: a PDF copy, a pay-now link and the invoice's own words.
        mail::DocumentTexts texts;
        texts.setWords("Invoice", {"Invoice {number} from {company}",
                                   "Dear {customer},\n\nplease find invoice {number} of {date} "
                                   "attached. It is due on {duedate}.\n\nThank you!"});
        const std::vector<platform::SettingsStore::Change> documentSettings = {
            {"Documents", "AttachPdf", "1"},
            {"Documents", "PayLink", "https://pay.example.com/i/{number}?amount={balance}"}};
        const Status wordsSaved = texts.save(app.folder());
        const Status documentsSet = store.setEntries(documentSettings);
        if (!wordsSaved || !documentsSet) {
            status = 1;
        }
        mail::MailPreferencesModel preferences(store);
        gui::PreferencesDialog dialog(preferences, store, &app.folder());
        auto* tabs = dialog.findChild<QTabWidget*>(QStringLiteral("preferencesTabs"));
        auto* connection = dialog.findChild<QWidget*>(QStringLiteral("qbConnectionTab"));
        auto* documents = dialog.findChild<QWidget*>(QStringLiteral("documentsTab"));
        if (tabs == nullptr || connection == nullptr || documents == nullptr) {
            status = 1;
        } else {
            tabs->setCurrentWidget(connection);
            if (!save(dialog, out / "preferences-quickbooks.png")) {
                status = 1;
            }
            tabs->setCurrentWidget(documents);
            if (!save(dialog, out / "preferences-documents.png")) {
                status = 1;
            }
        }
    }
    fs::remove_all(scratch);
    return status;
}
