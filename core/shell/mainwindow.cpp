// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/mainwindow.h"

#include <algorithm>

#include "browser/documenttypes.h"
#include "common/text.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/templates.h"
#include "ui/uiport.h"

namespace dorvane::shell {
namespace {

constexpr const char* kWidthKey = "Width";
constexpr const char* kHeightKey = "Height";
constexpr const char* kColumnsKey = "Columns";
// Widths beyond these are not a layout anybody made.
constexpr int kMostPixels = 10000;
constexpr std::size_t kMostColumns = 16;

// "ThisMonthToDate" as words: "This Month To Date"; "ALL" as "All".
std::string timeframeWords(const std::string& name) {
    if (name == "ALL") {
        return "All";
    }
    std::string out;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (i > 0 && name[i] >= 'A' && name[i] <= 'Z' && name[i - 1] >= 'a' && name[i - 1] <= 'z') {
            out += ' ';
        }
        out += name[i];
    }
    return out;
}

std::string counted(int n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

}  // namespace

WindowLayout windowLayoutSettings(const platform::SettingsStore& settings) {
    WindowLayout layout;
    auto pixels = [](long n) { return n > 0 && n <= kMostPixels ? static_cast<int>(n) : 0; };
    layout.width = pixels(settings.intValue(kWindowSection, kWidthKey));
    layout.height = pixels(settings.intValue(kWindowSection, kHeightKey));
    // "Invoice:90,120,200;Statement:60,80"; what is not a known type's widths is passed over.
    for (const std::string& entry : text::split(settings.get(kWindowSection, kColumnsKey), ';')) {
        const std::size_t colon = entry.find(':');
        if (colon == std::string::npos || !browser::findDocumentType(entry.substr(0, colon))) {
            continue;
        }
        std::vector<int> widths;
        for (const std::string& w : text::split(entry.substr(colon + 1), ',')) {
            const auto n = text::toInt16(w);
            if (!n || pixels(*n) == 0 || widths.size() == kMostColumns) {
                widths.clear();
                break;
            }
            widths.push_back(*n);
        }
        if (!widths.empty()) {
            layout.columns[entry.substr(0, colon)] = std::move(widths);
        }
    }
    return layout;
}

Status saveWindowLayout(platform::SettingsStore& settings, const WindowLayout& layout) {
    std::string columns;
    for (const auto& [type, widths] : layout.columns) {
        columns += (columns.empty() ? "" : ";") + type + ":";
        for (std::size_t i = 0; i < widths.size(); ++i) {
            columns += (i > 0 ? "," : "") + std::to_string(widths[i]);
        }
    }
    return settings.setAll(kWindowSection, {{kWidthKey, std::to_string(layout.width)},
                                            {kHeightKey, std::to_string(layout.height)},
                                            {kColumnsKey, columns}});
}

MainWindow::MainWindow(ui::UiPort& ui, const platform::ProgramFolder& folder)
    : WindowModel(kMainWindowControls, "Dorvane"), m_ui(ui), m_folder(folder) {}

void MainWindow::startUp() {
    setControlVisible(kUpdateWebButton, false);
    setControlVisible(kSendButton, false);
    setControlVisible(kPreviewCheck, false);
    setControlVisible(kImportButton, true);

    m_list.clear();

    m_timeframes.assign(qbgateway::kTimeframes.begin(), qbgateway::kTimeframes.end());
    selectTimeframe(0);

    if (m_services.loadCompanyInfo) {
        m_services.loadCompanyInfo();
    }
    if (m_services.ensureDefaultRecords) {
        m_services.ensureDefaultRecords();
    }
}

void MainWindow::selectDocumentType(const std::string& type) {
    m_documentType = type;
    m_documentsShown = true;
    setCaption("Dorvane " + type);
    {
        ui::BusyScope busy(m_ui);
        runLoader(type);
    }
    showSendControls(true);
}

void MainWindow::refresh() {
    setStatusText({});
    ui::BusyScope busy(m_ui);
    // A type that is not refreshable is reloaded by picking its menu entry again.
    const browser::DocumentType* type = browser::findDocumentType(m_documentType);
    if (type && type->refreshable) {
        runLoader(m_documentType);
    }
}

void MainWindow::setListView(const browser::ListView& view) {
    if (view != m_view) {
        m_view = view;
        notify(kViewOpenBalances);
        notify(kViewUnpaidOnly);
    }
}

void MainWindow::chooseListView(const browser::ListView& view) {
    if (view == m_view) {
        return;
    }
    if (m_services.saveListView) {
        if (Status saved = m_services.saveListView(view); !saved) {
            m_ui.messageBox(
                "The view was not kept for the next start: " + saved.error().description + ".");
        }
    }
    setListView(view);
    // The shown document list again, as its menu entry would load it (not the web update's
    // items, which hide the send controls).
    if (!m_documentType.empty() && control(kSendButton).visible) {
        ui::BusyScope busy(m_ui);
        runLoader(m_documentType);
    }
}

const browser::DocumentType* MainWindow::shownType() const {
    if (m_documentType.empty() || !m_documentsShown) {
        return nullptr;
    }
    return browser::findDocumentType(m_documentType);
}

std::string MainWindow::listHeading() const {
    const browser::DocumentType* type = shownType();
    return type ? std::string(type->title) + " — " + timeframeWords(m_listTimeframe)
                : std::string();
}

std::string MainWindow::listSummary() const {
    if (m_list.columns().empty()) {
        return {};
    }
    // The amount of each ticked row, or what is open of it with the view's column on.
    const browser::DocumentType* type = shownType();
    std::size_t amount = type ? type->cells.amount : browser::kNoCell;
    const char* sum = "ticked total";
    if (amount != browser::kNoCell && m_view.extraColumns() &&
        type->openBalance != browser::OpenBalance::None) {
        amount = browser::columnCount(*type) + 1;
        sum = "ticked open balance";
    }
    int ticked = 0;
    long long cents = 0;
    for (const ui::ListRow& row : m_list.rows()) {
        if (!row.checked || row.hidden) {
            continue;
        }
        ++ticked;
        if (amount < row.cells.size()) {
            cents += text::toCents(row.cells[amount]);
        }
    }
    const int rows = m_list.rowCount();
    const int shown = m_list.shownCount();
    std::string text =
        shown == rows ? counted(rows, "row", "rows")
                      : std::to_string(shown) + " of " + counted(rows, "row", "rows") + " shown";
    text += " · " + std::to_string(ticked) + " ticked";
    if (amount != browser::kNoCell) {
        text += std::string(" · ") + sum + " " + text::centsText(cents, true);
    }
    return text;
}

std::string MainWindow::documentLabel(const browser::DocumentType& type, int row) const {
    const ui::ListRow& r = m_list.row(row);
    std::string number;
    for (const xml::Node record : m_listDocument.selectAll(type.recordPath)) {
        if (record.valueOf("TxnID") == r.key) {
            number = record.valueOf("RefNumber");
            break;
        }
    }
    const std::size_t name = type.cells.name;
    return std::string(type.name) + (number.empty() ? "" : " " + number) +
           (name < r.cells.size() && !r.cells[name].empty() ? " to " + r.cells[name] : "");
}

bool MainWindow::tickRow(int row, bool checked) {
    if (row < 0 || row >= m_list.rowCount()) {
        return false;
    }
    const browser::DocumentType* type = shownType();
    if (checked && !m_list.row(row).checked && type &&
        browser::rowStatus(*type, m_list.row(row)) == browser::kAlreadySent &&
        m_ui.messageBox(documentLabel(*type, row) + " was already sent. Send it again?",
                        ui::kProgramTitle, ui::Icon::Question,
                        ui::Buttons::YesNo) != ui::Answer::Yes) {
        return false;
    }
    m_list.setChecked(row, checked);
    return checked;
}

int MainWindow::rowOfDocument(std::string_view id) const {
    const browser::DocumentType* type = browser::findDocumentType(m_documentType);
    if (!type) {
        return -1;
    }
    std::string key(id);
    if (type->shape == browser::ListShape::Transactions) {
        for (const xml::Node record : m_listDocument.selectAll(type->recordPath)) {
            if (record.valueOf("RefNumber") == id) {
                key = record.valueOf("TxnID");
                break;
            }
        }
    }
    for (int r = 0; r < m_list.rowCount(); ++r) {
        const ui::ListRow& row = m_list.row(r);
        auto cell = [&](std::size_t i) { return i < row.cells.size() ? row.cells[i] : ""; };
        if (cell(type->cells.key) == key || cell(type->cells.name) == id) {
            return r;
        }
    }
    return -1;
}

RowChoice MainWindow::chooseRows(const std::vector<std::string>& ids, bool again) {
    RowChoice choice;
    for (const std::string& id : ids) {
        const int row = rowOfDocument(id);
        if (row < 0) {
            choice.unknown.push_back(id);
        } else if (std::none_of(choice.rows.begin(), choice.rows.end(),
                                [row](const ChosenRow& c) { return c.row == row; })) {
            choice.rows.push_back({id, row});
        }
    }
    if (!choice.unknown.empty()) {
        return choice;
    }
    const browser::DocumentType* type = browser::findDocumentType(m_documentType);
    auto sentBefore = [&](int row) {
        return type && browser::rowStatus(*type, m_list.row(row)) == browser::kAlreadySent;
    };
    if (ids.empty()) {
        for (int r = 0; again && r < m_list.rowCount(); ++r) {
            if (sentBefore(r)) {
                choice.rows.push_back({m_list.row(r).key, r});
            }
        }
    } else {
        for (int r = 0; r < m_list.rowCount(); ++r) {
            if (std::none_of(choice.rows.begin(), choice.rows.end(),
                             [r](const ChosenRow& c) { return c.row == r; })) {
                m_list.setChecked(r, false);
            }
        }
    }
    for (ChosenRow& c : choice.rows) {
        const ui::ListRow& row = m_list.row(c.row);
        if (!sentBefore(c.row)) {
            c.outcome = row.checked ? ChosenRow::Outcome::Ticked : ChosenRow::Outcome::Unticked;
        } else if (!again) {
            c.outcome = ChosenRow::Outcome::SentBefore;
        } else if (type->cells.email >= row.cells.size() || row.cells[type->cells.email].empty()) {
            c.outcome = ChosenRow::Outcome::NoAddress;
        } else {
            c.outcome = ChosenRow::Outcome::Again;
            m_list.setChecked(c.row, true);
        }
    }
    return choice;
}

const std::vector<int>* MainWindow::columnWidths() const {
    const browser::DocumentType* type = shownType();
    if (!type) {
        return nullptr;
    }
    auto found = m_layout.columns.find(std::string_view(type->name));
    return found == m_layout.columns.end() ? nullptr : &found->second;
}

void MainWindow::keepColumnWidths(std::vector<int> widths) {
    if (const browser::DocumentType* type = shownType()) {
        widths.resize(std::min(widths.size(), kMostColumns));
        m_layout.columns[type->name] = std::move(widths);
    }
}

void MainWindow::saveLayout(int width, int height) {
    m_layout.width = width;
    m_layout.height = height;
    if (m_services.saveLayout) {
        if (Status saved = m_services.saveLayout(m_layout); !saved) {
            m_ui.messageBox(
                "The window's size and column widths were not kept for the next "
                "start: " +
                saved.error().description + ".");
        }
    }
}

void MainWindow::openHelp() {
    m_ui.openWithDesktop(m_folder.filePath(kHelpFile));
}

void MainWindow::showSendControls(bool show) {
    setControlVisible(kSendButton, show);
    setControlVisible(kPreviewCheck, show);
    setControlVisible(kUpdateWebButton, !show);
    m_documentsShown = show;
    notify(kListHeading);
}

void MainWindow::setCompanyText(std::string text) {
    m_companyText = std::move(text);
    notify(kCompanyLabel);
}

std::string MainWindow::timeframe() const {
    if (m_timeframeIndex < 0 || m_timeframeIndex >= static_cast<int>(m_timeframes.size())) {
        return {};
    }
    return m_timeframes[static_cast<std::size_t>(m_timeframeIndex)];
}

void MainWindow::selectTimeframe(int index) {
    if (index < 0 || index >= static_cast<int>(m_timeframes.size()) || index == m_timeframeIndex) {
        return;
    }
    m_timeframeIndex = index;
    notify(kTimeframeCombo);
}

bool MainWindow::selectTimeframe(std::string_view name) {
    for (std::size_t i = 0; i < m_timeframes.size(); ++i) {
        if (m_timeframes[i] == name) {
            selectTimeframe(static_cast<int>(i));
            return true;
        }
    }
    return false;
}

void MainWindow::setPreviewChecked(bool checked) {
    if (checked != m_preview) {
        m_preview = checked;
        notify(kPreviewCheck);
    }
}

void MainWindow::setProgress(int percent) {
    if (percent != m_progress) {
        m_progress = percent;
        notify(kProgressBar);
    }
}

void MainWindow::runLoader(const std::string& type) {
    m_listTimeframe = timeframe();
    notify(kListHeading);
    if (m_services.loadList) {
        m_services.loadList(type, timeframe());
    }
}

}  // namespace dorvane::shell
