// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/mainwindow.h"

#include "browser/documenttypes.h"
#include "platform/programfolder.h"
#include "qbgateway/templates.h"
#include "ui/uiport.h"

namespace dorvane::shell {

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

void MainWindow::openHelp() {
    m_ui.openWithDesktop(m_folder.filePath(kHelpFile));
}

void MainWindow::showSendControls(bool show) {
    setControlVisible(kSendButton, show);
    setControlVisible(kPreviewCheck, show);
    setControlVisible(kUpdateWebButton, !show);
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
    if (m_services.loadList) {
        m_services.loadList(type, timeframe());
    }
}

}  // namespace dorvane::shell
