// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/gui.h"

#include <iostream>
#include <string>
#include <vector>

#include <QApplication>

#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "platform/programhome.h"
#include "shell/application.h"
#include "webconnector/service.h"

namespace dorvane::gui {

int runWindow(int argc, char** argv, const std::string& homeOption) {
    QApplication qtApp(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Dorvane"));
    QApplication::setApplicationVersion(QStringLiteral(DORVANE_VERSION));

    const platform::HomeReport home = platform::setUpProgramHome(homeOption);
    QtUiPort ui;
    // The window keeps the Web Connector's session open while it runs.
    shell::Application app(ui, shell::StartOptions{homeOption, true});
    registerDialogs(ui, app.settings(), &app.folder());
    MainWindowView window(app);
    ui.setParentWidget(&window);
    window.show();

    // What preparing the program folder did, and where the Web Connector reaches this
    // program, show on standard error and in the status bar.
    std::vector<std::string> notices = home.notices;
    if (!home.error.empty()) {
        notices.push_back(home.error);
    }
    if (webconnector::Service* service = app.webConnector()) {
        // Listening before the first request lets the Web Connector connect while start-up
        // waits for it.
        const Status started = service->start();
        notices.push_back(started ? service->notice() : started.error().description);
    }
    std::string statusText;
    for (const std::string& line : notices) {
        std::cerr << "dorvane: " << line << '\n';
        statusText += (statusText.empty() ? "" : " ") + line;
    }
    window.startUp();
    if (!window.isVisible()) {
        return 0;  // closed while start-up waited for QuickBooks
    }
    if (!statusText.empty()) {
        app.window().setStatusText(statusText);
    }
    return QApplication::exec();
}

}  // namespace dorvane::gui
