// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the import window `Form1`: renders core's ImportWindow and forwards commands to it.
//
// Every control carries its control name as objectName; caption, visibility, the counterpart
// list, the payment accounts, the labels, the pane and the status text all come from core,
// which names the control that changed. Rendering never calls back into core. While a command
// runs (core lets the event loop run while QuickBooks works), further commands are ignored
// rather than started inside it; the main window hands in its own guard so that the two
// windows never start work inside each other.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include <QMainWindow>

#include "import/importwindow.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTextBrowser;
class QTreeWidget;

namespace dorvane::batch {
class BatchImport;
}

namespace dorvane::gui {

class WindowBinding;

class ImportWindowView final : public QMainWindow {
    Q_OBJECT

public:
    // Runs a command unless one is running already.
    using CommandRunner = std::function<void(const std::function<void()>&)>;

    // Without `runner` the window guards its own commands.
    explicit ImportWindowView(imports::ImportWindow& window, QWidget* parent = nullptr,
                              CommandRunner runner = {});
    ~ImportWindowView() override;

    // Shows the progress of the Authorize.Net batch and bulk imports in the status bar, with a
    // Cancel that stops a run after the transaction under way.
    void attachBatchImport(batch::BatchImport& batchImport);

private:
    void buildMenu();
    void buildCentralWidget();
    void renderAll();
    void changed(std::string_view what);

    void renderList();
    void renderAccounts();
    void renderNameText();
    void renderPane();
    void onListSelectionChanged();
    void runCommand(const std::function<void()>& command);

    imports::ImportWindow& m_window;
    CommandRunner m_runner;
    std::unique_ptr<WindowBinding> m_binding;
    QTreeWidget* m_list = nullptr;
    QLineEdit* m_nameText = nullptr;
    QLabel* m_label1 = nullptr;
    QComboBox* m_accounts = nullptr;
    QTextBrowser* m_pane = nullptr;
    QPushButton* m_openInBrowser = nullptr;
    QLabel* m_statusPanel = nullptr;
    QProgressBar* m_batchProgress = nullptr;
    QPushButton* m_cancelBatch = nullptr;
    batch::BatchImport* m_batchImport = nullptr;
    bool m_rendering = false;
    bool m_commandRunning = false;
};

}  // namespace dorvane::gui
