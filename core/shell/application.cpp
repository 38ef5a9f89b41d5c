// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/application.h"

#include <cstdlib>
#include <string_view>

#include "handheld/folderdevice.h"
#include "platform/programhome.h"
#include "qbgateway/responsefolder.h"
#include "qbsandbox/sandbox.h"

namespace dorvane::shell {

qbgateway::ProcessorFactory Application::chooseProcessor(const StartOptions& options) {
    std::string folder;
    switch (webconnector::chosenConnection(m_settings, &folder)) {
        case webconnector::Connection::ResponseFolder:
            return qbgateway::responseFolderFactory(folder);
        case webconnector::Connection::WebConnector: {
            webconnector::ServiceOptions service;
            service.settings = webconnector::ServiceSettings::load(m_settings);
            service.logFile = m_folder.filePath(webconnector::kLogFile);
            service.holdSession = options.holdWebConnectorSession;
            m_webConnector = std::make_unique<webconnector::Service>(std::move(service));
            // A front end that can show the wait replaces this; without one the event loop
            // still runs while the Web Connector is awaited.
            m_webConnector->setWaitHook([&ui = m_ui](const webconnector::WaitProgress&) {
                ui.yield();
                return true;
            });
            return m_webConnector->processorFactory();
        }
        case webconnector::Connection::Sandbox:
            break;
    }
    return qbsandbox::processorFactory();
}

Application::Application(ui::UiPort& ui, const StartOptions& options,
                         qbgateway::ProcessorFactory factory)
    : m_ui(ui),
      m_folder(platform::locateProgramHome(options.home)),
      m_settings(platform::SettingsStore::forUser()),
      m_gateway(m_folder, ui, factory ? std::move(factory) : chooseProcessor(options)),
      m_window(ui, m_folder),
      m_company(ui, m_folder, m_gateway, m_window),
      m_defaults(m_folder, m_gateway, ui),
      m_browser(m_window, m_gateway, m_folder, m_company, ui),
      m_sender(m_window, m_folder, m_settings, m_company, ui),
      m_reminders(m_folder, m_settings, m_gateway, m_company, m_sender, ui),
      m_remindersWindow(m_reminders),
      m_importSettings(m_settings),
      m_importWindow(ui, m_folder, m_gateway, m_importSettings, m_defaults),
      m_batchImport(m_importWindow, ui, m_folder, m_gateway, m_importSettings),
      m_webUpdater(m_window, m_folder, m_gateway, m_settings, ui),
      m_handheld(ui, m_folder, m_gateway, m_importWindow,
                 handheld::folderDeviceFactory(m_settings)),
      m_historyWindow(m_folder) {
    MainWindowServices services;
    services.loadCompanyInfo = [this] { m_company.retrieveCompanyInfo(); };
    services.ensureDefaultRecords = [this] { m_defaults.ensureDefaultRecords(); };
    services.loadList = [this](const std::string& type, const std::string& timeframe) {
        m_browser.loadList(type, timeframe, m_window.listView());
    };
    services.saveListView = [this](const browser::ListView& view) {
        return m_settings.setAll(browser::kViewSection,
                                 {{browser::kOpenBalancesKey, view.openBalances ? "1" : "0"},
                                  {browser::kUnpaidOnlyKey, view.unpaidOnly ? "1" : "0"}});
    };
    services.saveLayout = [this](const WindowLayout& layout) {
        return saveWindowLayout(m_settings, layout);
    };
    m_window.setServices(std::move(services));
    m_window.setListView(browser::listViewSettings(m_settings));
    m_window.setLayout(windowLayoutSettings(m_settings));
    m_gateway.onCompanyFileChanged([this] { m_company.retrieveCompanyInfo(); });

    imports::ImportWindowServices importServices;
    importServices.impAuthNetBatch = [this] { m_batchImport.impAuthNetBatch(); };
    importServices.impAuthNetBulk = [this] { m_batchImport.impAuthNetBulk(); };
    importServices.synchronizePDA = [this] { m_handheld.synchronizePDA(); };
    importServices.importTimeTracking = [this] { m_handheld.importTimeTracking(); };
    importServices.initializePDA = [this] {
        m_settings.reload();
        const auto written = handheld::writeEmptyHandheldFile(handheld::deviceFolder(m_settings));
        m_ui.messageBox(
            written ? "Wrote an empty " + written->string() +
                          ". \"Synchronize Handheld\" now hands it the lists."
                    : "The handheld file was not written: " + written.error().description + ".",
            ui::kProgramTitle, written ? ui::Icon::Information : ui::Icon::Exclamation);
    };
    // Without its handheld the sync cannot go on: the program ends, as a front end may decide
    // otherwise through m_handheld.setEndApplication.
    m_handheld.setEndApplication([] { std::exit(2); });
    m_importWindow.setServices(std::move(importServices));
}

}  // namespace dorvane::shell
