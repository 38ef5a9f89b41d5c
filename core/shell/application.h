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
#include "history/historywindow.h"
#include "import/importwindow.h"
#include "mail/sendloop.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/defaultrecords.h"
#include "qbgateway/gateway.h"
#include "remind/reminders.h"
#include "remind/reminderswindow.h"
#include "shell/mainwindow.h"
#include "webconnector/service.h"
#include "webupdate/webupdate.h"

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::shell {

struct StartOptions {
    // --home DIR; empty: $DORVANE_HOME, else $XDG_DATA_HOME/dorvane (~/.local/share/dorvane).
    std::string home;
    // The window keeps a Web Connector's session open while it runs; a command lets it end.
    bool holdWebConnectorSession = false;
};

// Owns the program-wide services and wires the main window to them: start-up retrieves the
// company and makes sure of the default records, type selection and Refresh run the list
// loaders, and a switch of company file in QuickBooks reloads the company information.
class Application {
public:
    // Without a factory the connection is chosen as webconnector::chosenConnection says:
    // the embedded sandbox by default, QuickBooks through the Web Connector, or the response
    // files of a folder (DORVANE_PROCESSOR=responses:DIR, a test double).
    Application(ui::UiPort& ui, const StartOptions& options,
                qbgateway::ProcessorFactory factory = {});

    ui::UiPort& ui() { return m_ui; }
    platform::ProgramFolder& folder() { return m_folder; }
    qbgateway::Gateway& gateway() { return m_gateway; }
    platform::SettingsStore& settings() { return m_settings; }
    MainWindow& window() { return m_window; }
    company::CompanyInfo& company() { return m_company; }
    qbgateway::DefaultRecords& defaultRecords() { return m_defaults; }
    browser::DocumentBrowser& browser() { return m_browser; }
    mail::DocumentSender& sender() { return m_sender; }
    remind::Reminders& reminders() { return m_reminders; }
    remind::RemindersWindow& remindersWindow() { return m_remindersWindow; }
    imports::ImportSettingsSource& importSettings() { return m_importSettings; }
    imports::ImportWindow& importWindow() { return m_importWindow; }
    batch::BatchImport& batchImport() { return m_batchImport; }
    handheld::TimeTrackingSync& handheld() { return m_handheld; }
    webupdate::WebUpdater& webUpdater() { return m_webUpdater; }
    history::HistoryWindow& historyWindow() { return m_historyWindow; }
    // The Web Connector service when the connection goes through it, else null.
    webconnector::Service* webConnector() { return m_webConnector.get(); }

private:
    qbgateway::ProcessorFactory chooseProcessor(const StartOptions& options);

    ui::UiPort& m_ui;
    platform::ProgramFolder m_folder;
    platform::SettingsStore m_settings;
    std::unique_ptr<webconnector::Service> m_webConnector;
    qbgateway::Gateway m_gateway;
    MainWindow m_window;
    company::CompanyInfo m_company;
    qbgateway::DefaultRecords m_defaults;
    browser::DocumentBrowser m_browser;
    mail::DocumentSender m_sender;
    remind::Reminders m_reminders;
    remind::RemindersWindow m_remindersWindow;
    imports::ImportSettingsSource m_importSettings;
    imports::ImportWindow m_importWindow;
    batch::BatchImport m_batchImport;
    webupdate::WebUpdater m_webUpdater;
    handheld::TimeTrackingSync m_handheld;
    history::HistoryWindow m_historyWindow;
};

}  // namespace dorvane::shell
