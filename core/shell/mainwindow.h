// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the main window's logic: its state, its controls' state and its commands.
//
// The window owns the program-wide state that the list and mailing code share: the selected
// document type, the last list response and the sent-log text. A front end renders the
// caption, the controls' visibility, the list and the status text, and forwards the user's
// commands (type selection, Refresh, a column click, Help) here.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "browser/loaders.h"
#include "common/result.h"
#include "ui/documentwindow.h"
#include "ui/listmodel.h"
#include "ui/windowmodel.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
class SettingsStore;
}  // namespace dorvane::platform

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::shell {

// Control names of the main window.
inline constexpr const char* kListView = "ListView1";
inline constexpr const char* kTimeframeCombo = "timeframecombo";
inline constexpr const char* kRefreshButton = "RefreshBtn";
inline constexpr const char* kSendButton = "Command1";
inline constexpr const char* kPreviewCheck = "Check1";
inline constexpr const char* kImportButton = "ImportBtn";
inline constexpr const char* kUpdateWebButton = "UpdateWebBtn";
inline constexpr const char* kEditCompanyEntry = "editcompanyinfo";
// What shows the company text and the progress; changes of them come under these names.
inline constexpr const char* kCompanyLabel = "Label1";
inline constexpr const char* kProgressBar = "ProgressBar1";
// The "&View" menu's checkable entries; a change of the list's view comes under both names.
inline constexpr const char* kViewMenu = "ViewMenu";
inline constexpr const char* kViewOpenBalances = "viewOpenBalances";
inline constexpr const char* kViewUnpaidOnly = "viewUnpaidOnly";
// Above the list its heading and the search box, below it the counts and the ticked total; the
// heading and the counts change under their names.
inline constexpr const char* kListHeading = "listHeading";
inline constexpr const char* kListSearch = "listSearch";
inline constexpr const char* kListSummary = "listSummary";
// The controls whose state the window keeps.
inline constexpr const char* kMainWindowControls[] = {
    kListView,     kTimeframeCombo, kRefreshButton,   kSendButton,
    kPreviewCheck, kImportButton,   kUpdateWebButton, kEditCompanyEntry,
};
inline constexpr const char* kHelpFile = "\\DorvaneHelp.htm";

// The window's size and each document list's column widths, kept for the next start (the
// settings' "Window" section). A size of 0 is the one the window has at its first start; a type
// without widths gets the list's own.
struct WindowLayout {
    int width = 0;
    int height = 0;
    std::map<std::string, std::vector<int>, std::less<>> columns;  // by document type

    bool operator==(const WindowLayout&) const = default;
};
inline constexpr const char* kWindowSection = "Window";
WindowLayout windowLayoutSettings(const platform::SettingsStore& settings);
Status saveWindowLayout(platform::SettingsStore& settings, const WindowLayout& layout);

// What `send --only/--again` made of the rows it names.
struct ChosenRow {
    enum class Outcome {
        Ticked,      // goes as the list says
        Again,       // was sent before and goes again
        SentBefore,  // was sent before and stays (no --again)
        NoAddress,   // was sent before and has no address to go to again
        Unticked,    // the list does not send it (no address, balanced, ...)
    };
    std::string id;
    int row = -1;
    Outcome outcome = Outcome::Ticked;
};
struct RowChoice {
    std::vector<std::string> unknown;  // IDs that name no row; then nothing was changed
    std::vector<ChosenRow> rows;
};

// What the window does through other subsystems. Each is optional; an empty one does
// nothing.
struct MainWindowServices {
    // Start-up step 4: retrieve the company information.
    std::function<void()> loadCompanyInfo;
    // Start-up step 5: make sure the default account and item exist.
    std::function<void()> ensureDefaultRecords;
    // Runs the list loader of a document type with the selected timeframe.
    std::function<void(const std::string& documentType, const std::string& timeframe)> loadList;
    // Keeps the list's view for the next start (the settings' "View" section).
    std::function<Status(const browser::ListView& view)> saveListView;
    // Keeps the window's size and column widths for the next start.
    std::function<Status(const WindowLayout& layout)> saveLayout;
};

// Changes are told under the control names: kTimeframeCombo for the timeframes, kPreviewCheck
// for the preview, kCompanyLabel for the company text and kProgressBar for the progress.
class MainWindow final : public ui::DocumentWindow, public ui::WindowModel {
public:
    MainWindow(ui::UiPort& ui, const platform::ProgramFolder& folder);

    void setServices(MainWindowServices services) { m_services = std::move(services); }

    // Window load, steps in order: hide the send controls, set up the list, fill the
    // timeframe box, company information, default records. Loads no list.
    void startUp();

    // A type entry of the "&E-Mail" menu (browser::kDocumentTypes).
    void selectDocumentType(const std::string& type);
    // RefreshBtn.
    void refresh();
    // A ListView1 column-header click.
    void columnClicked(int column) { m_list.sortByColumn(column); }
    // How the lists show their documents (browser::ListView); the loaders read it.
    const browser::ListView& listView() const { return m_view; }
    // For this run only (the start-up's settings, the command line's options).
    void setListView(const browser::ListView& view);
    // The "&View" menu's entries: keep the choice and load the shown list again with it.
    void chooseListView(const browser::ListView& view);

    // The heading above the list: the shown documents and the timeframe they were listed for
    // ("Invoices — This Month To Date"); empty while no document list shows.
    std::string listHeading() const;
    // Below the list: its rows (of how many, while the search hides some), the ticked ones
    // and the total of their amounts (of their open balances with the view's column on); no
    // total for a list without amounts, nothing before the first list.
    std::string listSummary() const;
    // The search box: shows only the rows with a cell that contains `text` (any case); a
    // hidden row is never sent, and keeps its tick for when the search is cleared.
    void search(std::string text) { m_list.setFilter(std::move(text)); }
    // A click on a row's check box: ticking a document that was already sent asks whether to
    // send it again, and No leaves it unticked. Answers whether the row is ticked now.
    bool tickRow(int row, bool checked);
    // The row of a document of the shown list, named by its TxnID or number (a statement's or
    // timesheet's customer: its ListID or name); -1 for none.
    int rowOfDocument(std::string_view id) const;
    // Ticks what a send run mails: with `ids` only their rows (each by rowOfDocument), an
    // already-sent one only with `again`; without them and with `again` every already-sent row
    // too. An unknown ID changes nothing.
    RowChoice chooseRows(const std::vector<std::string>& ids, bool again);

    // The window's size and column widths as kept (the start-up's settings).
    const WindowLayout& layout() const { return m_layout; }
    void setLayout(WindowLayout layout) { m_layout = std::move(layout); }
    // The column widths kept for the document list on show; null for none.
    const std::vector<int>* columnWidths() const;
    // The person changed the shown document list's column widths.
    void keepColumnWidths(std::vector<int> widths);
    // The window closes at this size: keeps it and the column widths for the next start.
    void saveLayout(int width, int height);

    // Help: opens the help page with the desktop's program.
    void openHelp();

    // After a list load: the send controls show, the web-update button hides; the web item
    // update does the opposite.
    void showSendControls(bool show) override;

    void setCaption(std::string caption) override { WindowModel::setCaption(std::move(caption)); }
    const std::string& documentType() const override { return m_documentType; }
    void setStatusText(std::string text) override { WindowModel::setStatusText(std::move(text)); }
    const std::string& companyText() const override { return m_companyText; }
    void setCompanyText(std::string text) override;

    const std::vector<std::string>& timeframes() const { return m_timeframes; }
    int timeframeIndex() const { return m_timeframeIndex; }
    std::string timeframe() const;
    void selectTimeframe(int index);
    bool selectTimeframe(std::string_view name);

    // Check1, "preview": each run renders the checked documents into one page instead of
    // mailing them.
    bool previewChecked() const override { return m_preview; }
    void setPreviewChecked(bool checked);

    // The progress of a long run in percent, shown beside the status text; -1 hides it.
    int progress() const { return m_progress; }
    void setProgress(int percent) override;

    void setControlEnabled(const std::string& name, bool enabled) override {
        WindowModel::setControlEnabled(name, enabled);
    }

    ui::ListModel& list() override { return m_list; }
    const ui::ListModel& list() const { return m_list; }

    // The document of the last list response and the sent-log text, shared with the
    // recipient lookup and the send loop.
    xml::Document& listDocument() override { return m_listDocument; }
    std::string& sentLogText() override { return m_sentLogText; }

    ui::UiPort& ui() { return m_ui; }

private:
    void runLoader(const std::string& type);
    // The type of the document list on show; null while none shows (or the web update's items).
    const browser::DocumentType* shownType() const;
    // "Invoice 80 to Karen Kowalski": a row's document, as a question names it.
    std::string documentLabel(const browser::DocumentType& type, int row) const;

    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    MainWindowServices m_services;

    std::string m_documentType;
    std::string m_listTimeframe;    // of the list on show
    bool m_documentsShown = false;  // the list is the document type's, not the web update's
    WindowLayout m_layout;
    std::string m_companyText;
    std::vector<std::string> m_timeframes;
    int m_timeframeIndex = -1;
    bool m_preview = false;
    int m_progress = -1;
    browser::ListView m_view;
    ui::ListModel m_list;
    xml::Document m_listDocument;
    std::string m_sentLogText;
};

}  // namespace dorvane::shell
