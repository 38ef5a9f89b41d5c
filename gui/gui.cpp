// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/gui.h"

#include <QApplication>

#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "shell/application.h"

namespace dorvane::gui {

int runWindow(int argc, char** argv, const std::string& home) {
    QApplication qtApp(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Dorvane"));
    QApplication::setApplicationVersion(QStringLiteral(DORVANE_VERSION));

    QtUiPort ui;
    shell::Application app(ui, shell::StartOptions{home});
    registerDialogs(ui, app.settings());
    MainWindowView window(app);
    ui.setParentWidget(&window);
    window.show();
    app.window().startUp();
    return QApplication::exec();
}

}  // namespace dorvane::gui
