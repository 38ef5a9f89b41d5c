// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the program's services, put together once and handed to the window or the CLI.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "batch/batchimport.h"
#include "browser/loaders.h"
#include "company/companyinfo.h"
#include "handheld/timetracksync.h"
#include "import/importwindow.h"
#include "mail/sendloop.h"
#include "qbgateway/defaultrecords.h"
#include "qbgateway/gateway.h"
#include "qbgateway/programfolder.h"
#include "shell/mainwindow.h"
#include "shell/settings.h"
#include "webupdate/webupdate.h"

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::shell {

struct StartOptions {
    // --home DIR; empty: $DORVANE_HOME, else $XDG_DATA_HOME/dorvane (~/.local/share/dorvane).
    std::string home;
};

// Which request processor the gateway uses: the embedded sandbox by default;
// DORVANE_PROCESSOR=responses:DIR answers from the response files in DIR instead (a test
// double that stands in for QuickBooks in tests and demos).
qbgateway::ProcessorFactory defaultProcessorFactory();

// Owns the program-wide services and wires the main window to them: start-up retrieves the
// company and makes sure of the default records, type selection and Refresh run the list
// loaders, and a switch of company file in QuickBooks reloads the company information.
class Application {
public:
    Application(ui::UiPort& ui, const StartOptions& options,
                qbgateway::ProcessorFactory factory = defaultProcessorFactory());

    ui::UiPort& ui() { return m_ui; }
    qbgateway::ProgramFolder& folder() { return m_folder; }
    qbgateway::Gateway& gateway() { return m_gateway; }
    SettingsStore& settings() { return m_settings; }
    MainWindow& window() { return m_window; }
    company::CompanyInfo& company() { return m_company; }
    qbgateway::DefaultRecords& defaultRecords() { return m_defaults; }
    browser::DocumentBrowser& browser() { return m_browser; }
    mail::DocumentSender& sender() { return m_sender; }
    imports::ImportWindow& importWindow() { return m_importWindow; }
    batch::BatchImport& batchImport() { return m_batchImport; }
    handheld::TimeTrackingSync& handheld() { return m_handheld; }
    webupdate::WebUpdater& webUpdater() { return m_webUpdater; }

private:
    ui::UiPort& m_ui;
    qbgateway::ProgramFolder m_folder;
    qbgateway::Gateway m_gateway;
    SettingsStore m_settings;
    MainWindow m_window;
    company::CompanyInfo m_company;
    qbgateway::DefaultRecords m_defaults;
    browser::DocumentBrowser m_browser;
    mail::DocumentSender m_sender;
    imports::ImportWindow m_importWindow;
    batch::BatchImport m_batchImport;
    webupdate::WebUpdater m_webUpdater;
    handheld::TimeTrackingSync m_handheld;
};

}  // namespace dorvane::shell
