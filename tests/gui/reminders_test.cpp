// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — the Reminders window opened from the main window's menu over a sandbox
// company with overdue invoices.
#include <memory>

#include <QAction>
#include <QPushButton>
#include <QTreeWidget>

#include "gui/mainwindowview.h"
#include "guitestsupport.h"
#include "qbsandbox/demo.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/overduecompany.h"
#include "support/testsupport.h"

namespace dorvane::test {

class RemindersWindowTest : public QObject {
    Q_OBJECT

private slots:
    void theMenuOpensTheListOfPlannedRemindersToTickAndPreview();
};

void RemindersWindowTest::theMenuOpensTheListOfPlannedRemindersToTickAndPreview() {
    TempDir home;
    ScopedEnvironment sandbox{"DORVANE_SANDBOX_DIR", (home / "sandbox").string()};
    ScopedEnvironment config{"XDG_CONFIG_HOME", (home / "cfg").string()};
    copyProgramFiles(home / "program");
    qbsandbox::createEmptyCompany(home / "co.dvq", "Harbor Lane Joinery");
    QVERIFY(qbsandbox::writeState(home / "sandbox", {true, home / "co.dvq"}));
    ScriptedUi ui;
    shell::Application app(ui, shell::StartOptions{(home / "program").string()});
    app.gateway().processRequest(overdueCompanyRequest());
    gui::MainWindowView view(app);
    view.show();
    view.startUp();

    view.findChild<QAction*>(QStringLiteral("remindersAction"))->trigger();
    auto* window = view.findChild<QWidget*>(QStringLiteral("RemindersWindow"));
    QVERIFY(window != nullptr && window->isVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("Overdue Reminders"));
    auto* list = window->findChild<QTreeWidget*>(QStringLiteral("ReminderList"));
    QStringList rows;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* item = list->topLevelItem(i);
        QStringList cells;
        for (int c = 0; c < list->columnCount(); ++c) {
            cells << item->text(c);
        }
        rows << (item->checkState(0) == Qt::Checked ? QStringLiteral("[x] ")
                                                    : QStringLiteral("[ ] ")) +
                    cells.join(QLatin1Char('|'));
    }
    QCOMPARE(rows,
             (QStringList{
                 QStringLiteral("[x] Able Co|1 friendly|501, 502|170.00|able@example.test|Ready"),
                 QStringLiteral("[x] Able Co|3 final|503|80.00|able@example.test|Ready"),
                 QStringLiteral("[x] Baker|2 firm|601, 604|70.00|baker@example.test|Ready"),
                 QStringLiteral("[ ] Carr|2 firm|701|70.00||No e-mail address")}));

    // A tick taken off leaves that message out of the preview.
    list->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    QVERIFY(!app.reminders().planned()[0].checked);
    QTest::mouseClick(window->findChild<QPushButton*>(QStringLiteral("ReminderPreviewBtn")),
                      Qt::LeftButton);
    QCOMPARE(ui.opened.size(), std::size_t{1});
    const std::string page = readFile(ui.opened[0]);
    QVERIFY(page.find("FINAL NOTICE") != std::string::npos);
    QVERIFY(page.find("PAYMENT REMINDER") == std::string::npos);
}

int runRemindersWindowTests(int argc, char** argv) {
    RemindersWindowTest suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "reminders_test.moc"
