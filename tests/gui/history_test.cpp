// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — the History window: opened from the View menu, it lists the logs' events
// and filters them as a person types.
#include <filesystem>
#include <memory>

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>

#include "gui/mainwindowview.h"
#include "guitestsupport.h"
#include "platform/activitylog.h"
#include "shell/application.h"
#include "support/testsupport.h"

namespace dorvane::test {

class HistoryWindowTest : public QObject {
    Q_OBJECT

private slots:
    void opensFromTheMenuAndFilters();
};

void HistoryWindowTest::opensFromTheMenuAndFilters() {
    TempDir home;
    std::filesystem::copy(programSource() / "icons", home.path() / "icons");
    writeFile(
        home / "EmailsSent.log",
        "<Invoice><TxnID>T-1</TxnID><SentDate>2026-11-02 08:00:00</SentDate></Invoice>\r\n"
        "<Estimate><TxnID>T-2</TxnID><SentDate>2026-11-03 08:00:00</SentDate></Estimate>\r\n");
    writeFile(home / "Activity.log", platform::activityRecord({.event = "sent",
                                                               .type = "Invoice",
                                                               .txnId = "T-1",
                                                               .number = "1001",
                                                               .amount = "50.00",
                                                               .party = "Dunn & Co"}) +
                                         platform::activityRecord({.event = "import",
                                                                   .when = "2026-11-04 09:00:00",
                                                                   .kind = "Invoice",
                                                                   .type = "Bill",
                                                                   .number = "77",
                                                                   .party = "Union Hardware",
                                                                   .outcome = "booked"}));
    ScriptedUi ui;
    shell::Application app(ui, shell::StartOptions{home.path().string()}, noQuickBooks());
    gui::MainWindowView view(app);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    view.findChild<QAction*>(QStringLiteral("viewHistory"))->trigger();
    auto* history = view.findChild<QWidget*>(QStringLiteral("HistoryWindow"));
    QVERIFY(history && history->isVisible());
    auto* list = history->findChild<QTreeWidget*>(QStringLiteral("HistoryList"));
    auto* counts = history->findChild<QLabel*>(QStringLiteral("CountsLabel"));
    QCOMPARE(list->topLevelItemCount(), 3);
    QCOMPARE(list->headerItem()->text(5), QStringLiteral("Party"));
    QCOMPARE(list->topLevelItem(0)->text(3), QStringLiteral("1001"));
    QCOMPARE(list->topLevelItem(2)->text(2), QStringLiteral("Invoice → Bill"));
    QCOMPARE(counts->text(), QStringLiteral("3 events: 2 sent, 1 import"));

    auto* type = history->findChild<QComboBox*>(QStringLiteral("TypeFilter"));
    type->setCurrentText(QStringLiteral("estimate"));
    QCOMPARE(list->topLevelItemCount(), 1);
    QCOMPARE(list->topLevelItem(0)->text(0), QStringLiteral("2026-11-03 08:00:00"));
    type->setCurrentText(QString());

    auto* customer = history->findChild<QLineEdit*>(QStringLiteral("CustomerFilter"));
    typeInto(customer, QStringLiteral("union"));
    QTest::keyClick(customer, Qt::Key_Return);
    QCOMPARE(list->topLevelItemCount(), 1);
    QCOMPARE(counts->text(), QStringLiteral("1 event: 1 import (of 3)"));

    auto* since = history->findChild<QLineEdit*>(QStringLiteral("SinceFilter"));
    typeInto(since, QStringLiteral("4.11.2026"));
    QTest::keyClick(since, Qt::Key_Return);
    QCOMPARE(list->topLevelItemCount(), 1);
    QVERIFY(history->findChild<QLabel*>(QStringLiteral("StatusBar1Panel1"))
                ->text()
                .contains(QStringLiteral("YYYY-MM-DD")));
    typeInto(since, QStringLiteral("2026-11-05"));
    QTest::keyClick(since, Qt::Key_Return);
    QCOMPARE(list->topLevelItemCount(), 0);
}

int runHistoryWindowTests(int argc, char** argv) {
    HistoryWindowTest suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "history_test.moc"
