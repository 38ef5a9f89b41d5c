// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the main window `Form3`: renders core's MainWindow and forwards commands to it.
//
// Every control carries its control name as objectName. The window keeps no state of its
// own: caption, visibility, the timeframe box, the preview check box, company and status
// texts, the progress bar, the document list with its heading and counts all come from core
// through its observers. The search box's text, a check box clicked, the column widths the
// person drags and the size the window closes with go to core.
// Type selection, Refresh, Send Email, the preferences dialog and the company menus call core.
// While one of these runs (core lets the event loop run during long jobs, so the window stays
// painted), further commands are ignored rather than started inside it; the import window
// shares that guard. Import opens the import window (one, kept until the window closes, raised
// when open already) and Import Preferences shows the import preferences; both are also
// signals. Update and the web-update menu are signals only: nothing happens until someone
// connects to them. With the Web Connector connection, a wait for it shows in this window's
// status bar and the import window's, with a Cancel (see WebConnectorWait).
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include <QList>
#include <QMainWindow>

#include "shell/application.h"
#include "shell/mainwindow.h"
#include "ui/listmodel.h"

class QAction;
class QCheckBox;
class QComboBox;
class QIcon;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace dorvane::gui {

class HistoryWindowView;
class ImportWindowView;
class RemindersWindowView;
class WebConnectorWait;

class WindowBinding;

class MainWindowView final : public QMainWindow, private ui::ListObserver {
    Q_OBJECT

public:
    explicit MainWindowView(shell::Application& app, QWidget* parent = nullptr);
    ~MainWindowView() override;

    shell::Application& application() { return m_app; }

    // Core's start-up (company information, default records), run as a command: nothing else
    // starts while it waits for QuickBooks.
    void startUp();

    // `ImageList1`: the row icons 1..4, as loaded from the program folder.
    const QList<QIcon>& imageList() const { return m_imageList; }
    // The file names of the row icons below the program folder, index 0 = icon 1.
    static QStringList iconFiles();

protected:
    // Keeps the window's size and the lists' column widths for the next start.
    void closeEvent(QCloseEvent* event) override;

signals:
    void importRequested();             // ImportBtn
    void updateWebRequested();          // UpdateWebBtn
    void importPreferencesRequested();  // Preferences > Import Preferences
    // A Web-Update entry, named by its control name (e.g. "serviceitems_update").
    void webItemsRequested(const QString& entryName);

private:
    void buildMenus();
    void buildCentralWidget();
    void loadImageList();
    void renderAll();

    // What core's window shows besides the caption, the status text and the controls' state.
    void modelChanged(std::string_view what);
    void companyTextChanged();
    void timeframeChanged();
    void previewChanged();
    void progressChanged();
    void listViewChanged();
    void headingChanged();
    // The counts under the list, brought up to date once the event loop runs.
    void scheduleSummary();

    // ui::ListObserver
    void listReset() override;
    void rowAdded(int row) override;
    void rowChanged(int row) override;

    void renderRow(QTreeWidgetItem* item, const ui::ListRow& row);
    void fitColumns();
    void columnResized(int column);
    void scheduleColumnFit();
    void onItemChanged(QTreeWidgetItem* item, int column);
    void onHeaderClicked(int column);
    void showAbout();
    // Runs a command in core unless one is already running.
    void runCommand(const std::function<void()>& command);
    void showPreferences();
    void openImportWindow();
    void openRemindersWindow();
    void openHistoryWindow();

    shell::Application& m_app;
    std::unique_ptr<WindowBinding> m_binding;
    QList<QIcon> m_imageList;
    QTreeWidget* m_listView = nullptr;
    QComboBox* m_timeframeCombo = nullptr;
    QLabel* m_companyLabel = nullptr;
    QLabel* m_statusPanel = nullptr;
    QLabel* m_listHeading = nullptr;
    QLineEdit* m_listSearch = nullptr;
    QLabel* m_listSummary = nullptr;
    QCheckBox* m_previewCheck = nullptr;
    QProgressBar* m_progressBar = nullptr;
    QAction* m_viewOpenBalances = nullptr;
    QAction* m_viewUnpaidOnly = nullptr;
    ImportWindowView* m_importView = nullptr;        // Form1, made on first use
    RemindersWindowView* m_remindersView = nullptr;  // made on first use
    HistoryWindowView* m_historyView = nullptr;      // made on first use
    bool m_rendering = false;       // set while core's state is copied into the widgets
    bool m_commandRunning = false;  // set while a command runs in core
    int m_resets = 0;
    bool m_fitPending = false;
    bool m_fitting = false;  // set while the window itself sizes the columns
    bool m_summaryPending = false;
    // The wait for the Web Connector in the status bars; only with that connection.
    WebConnectorWait* m_webConnectorWait = nullptr;
};

}  // namespace dorvane::gui
