// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/gui.h"

#include <iostream>

#include <QApplication>

#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "shell/application.h"
#include "shell/programhome.h"

namespace dorvane::gui {

int runWindow(int argc, char** argv, const std::string& homeOption) {
    QApplication qtApp(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Dorvane"));
    QApplication::setApplicationVersion(QStringLiteral(DORVANE_VERSION));

    const shell::HomeReport home = shell::setUpProgramHome(homeOption);
    QtUiPort ui;
    shell::Application app(ui, shell::StartOptions{homeOption});
    registerDialogs(ui, app.settings());
    MainWindowView window(app);
    ui.setParentWidget(&window);
    window.show();
    app.window().startUp();
    // What preparing the program folder did shows in the status bar and on standard error.
    std::string notices;
    for (const std::string& line : home.notices) {
        std::cerr << "dorvane: " << line << '\n';
        notices += (notices.empty() ? "" : " ") + line;
    }
    if (!home.error.empty()) {
        std::cerr << "dorvane: " << home.error << '\n';
        notices += (notices.empty() ? "" : " ") + home.error;
    }
    if (!notices.empty()) {
        app.window().setStatusText(notices);
    }
    return QApplication::exec();
}

}  // namespace dorvane::gui
