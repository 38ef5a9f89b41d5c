// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/mainwindowview.h"

#include <algorithm>
#include <array>

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "browser/documenttypes.h"
#include "gui/historywindowview.h"
#include "gui/importwindowview.h"
#include "gui/qtstrings.h"
#include "gui/reminderswindowview.h"
#include "gui/webconnectorwait.h"
#include "gui/windowbinding.h"
#include "mail/preferences.h"
#include "platform/programfolder.h"
#include "shell/checkup.h"
#include "ui/uiport.h"
#include "webupdate/webupdate.h"

namespace dorvane::gui {

namespace {

struct RowIcon {
    const char* file;
    const char* meaning;  // the row's tool tip
};

constexpr std::array<RowIcon, 4> kRowIcons{{
    {"icons/1-invalid.png", "Email addres invalid or missing"},
    {"icons/2-alreadysent.png", "item already sent"},
    {"icons/3-ready.png", "ready to send"},
    {"icons/4-balanced.png", "balanced"},
}};

QString name(const char* controlName) {
    return QString::fromUtf8(controlName);
}

QAction* addEntry(QMenu* menu, const char* entryName, const char* caption) {
    QAction* action = menu->addAction(QString::fromUtf8(caption));
    action->setObjectName(QString::fromUtf8(entryName));
    return action;
}

QMenu* addMenu(QMenuBar* bar, const char* menuName, const char* caption) {
    QMenu* menu = bar->addMenu(QString::fromUtf8(caption));
    menu->setObjectName(QString::fromUtf8(menuName));
    menu->menuAction()->setObjectName(QString::fromUtf8(menuName) + QStringLiteral("Action"));
    return menu;
}

}  // namespace

MainWindowView::MainWindowView(shell::Application& app, QWidget* parent)
    : QMainWindow(parent), m_app(app) {
    setObjectName(QStringLiteral("Form3"));
    loadImageList();
    buildMenus();
    buildCentralWidget();

    auto* status = new QStatusBar(this);
    status->setObjectName(name(ui::kStatusBar));
    m_statusPanel = new QLabel(status);
    m_statusPanel->setObjectName(name(ui::kStatusBar) + QStringLiteral("Panel1"));
    m_statusPanel->setTextFormat(Qt::PlainText);
    status->addWidget(m_statusPanel, 1);
    m_progressBar = new QProgressBar(status);
    m_progressBar->setObjectName(name(shell::kProgressBar));
    m_progressBar->setRange(0, 100);
    m_progressBar->setMaximumWidth(200);
    status->addPermanentWidget(m_progressBar);
    setStatusBar(status);
    if (webconnector::Service* service = m_app.webConnector()) {
        m_webConnectorWait = new WebConnectorWait(
            *service, [this] { return m_commandRunning; }, this);
        m_webConnectorWait->addStatusBar(status);
    }

    const shell::WindowLayout& layout = m_app.window().layout();
    resize(layout.width > 0 ? layout.width : 820, layout.height > 0 ? layout.height : 560);

    m_binding =
        std::make_unique<WindowBinding>(m_app.window(), *this, *m_statusPanel,
                                        [this](std::string_view what) { modelChanged(what); });
    m_app.window().list().setObserver(this);
    renderAll();

    connect(this, &MainWindowView::importRequested, this,
            [this] { runCommand([this] { openImportWindow(); }); });
    connect(this, &MainWindowView::importPreferencesRequested, this,
            [this] { runCommand([this] { m_app.importWindow().showPreferences(); }); });
    connect(this, &MainWindowView::webItemsRequested, this, [this](const QString& entry) {
        runCommand([this, entry] {
            if (const webupdate::ItemKind* kind = webupdate::itemKindNamed(toStdString(entry))) {
                m_app.webUpdater().listItems(*kind);
            }
        });
    });
    connect(this, &MainWindowView::updateWebRequested, this,
            [this] { runCommand([this] { m_app.webUpdater().updateItems(); }); });
}

MainWindowView::~MainWindowView() {
    // QWidget's destructor still hides the children, and the list's header then reports its
    // sections resized: by then this view is gone, so nothing of it may hear that.
    m_listView->header()->disconnect(this);
    m_listView->disconnect(this);
    m_listSearch->disconnect(this);
    m_app.window().list().setObserver(nullptr);
}

QStringList MainWindowView::iconFiles() {
    QStringList files;
    for (const RowIcon& icon : kRowIcons) {
        files << QString::fromUtf8(icon.file);
    }
    return files;
}

void MainWindowView::loadImageList() {
    m_imageList.clear();
    for (const RowIcon& icon : kRowIcons) {
        m_imageList << QIcon(toQString(m_app.folder().filePath(icon.file)));
    }
}

void MainWindowView::buildMenus() {
    QMenuBar* bar = menuBar();

    QMenu* email = addMenu(bar, "Itemtype", "&E-Mail");
    for (const browser::DocumentType& entry : browser::kDocumentTypes) {
        const std::string type = entry.name;
        connect(addEntry(email, entry.menuEntry, entry.menuCaption), &QAction::triggered, this,
                [this, type] {
                    runCommand([this, type] { m_app.window().selectDocumentType(type); });
                });
    }
    email->addSeparator();
    connect(addEntry(email, "remindersAction", "Overdue &Reminders..."), &QAction::triggered, this,
            [this] { runCommand([this] { openRemindersWindow(); }); });

    QMenu* options = addMenu(bar, "Options", "&Preferences");
    connect(addEntry(options, "Parameter", "&Parameter"), &QAction::triggered, this,
            [this] { runCommand([this] { showPreferences(); }); });
    connect(addEntry(options, "Company", "&Get Company Info"), &QAction::triggered, this,
            [this] { runCommand([this] { m_app.company().retrieveCompanyInfo(); }); });
    connect(addEntry(options, "editcompanyinfo", "&Edit Company Info"), &QAction::triggered, this,
            [this] { runCommand([this] { m_app.company().editCompanyInfo(); }); });
    connect(addEntry(options, "importPref", "&Import Preferences"), &QAction::triggered, this,
            &MainWindowView::importPreferencesRequested);

    // The list's view: each entry is kept in the settings and loads the shown list again.
    QMenu* view = addMenu(bar, shell::kViewMenu, "&View");
    m_viewOpenBalances = addEntry(view, shell::kViewOpenBalances, "Numbers and open balances");
    m_viewUnpaidOnly = addEntry(view, shell::kViewUnpaidOnly, "Unpaid only");
    for (QAction* entry : {m_viewOpenBalances, m_viewUnpaidOnly}) {
        entry->setCheckable(true);
        connect(entry, &QAction::triggered, this, [this] {
            runCommand([this] {
                m_app.window().chooseListView({.openBalances = m_viewOpenBalances->isChecked(),
                                               .unpaidOnly = m_viewUnpaidOnly->isChecked()});
            });
            listViewChanged();  // a refused or busy command leaves the entries as they were
        });
    }
    view->addSeparator();
    connect(addEntry(view, "viewHistory", "&History..."), &QAction::triggered, this,
            [this] { runCommand([this] { openHistoryWindow(); }); });

    QMenu* web = addMenu(bar, "webupdate", "Web-Update");
    const std::array<std::pair<const char*, const char*>, 3> webEntries{{
        {"inventoryitems_update", "Inventory Items"},
        {"noninventoryitems_update", "Non Inventory Items"},
        {"serviceitems_update", "Service Items"},
    }};
    for (const auto& [entryName, caption] : webEntries) {
        const QString entry = QString::fromUtf8(entryName);
        connect(addEntry(web, entryName, caption), &QAction::triggered, this,
                [this, entry] { emit webItemsRequested(entry); });
    }

    QMenu* help = addMenu(bar, "HelpMenu", "&Help");
    connect(addEntry(help, "Help", "&Help"), &QAction::triggered, this,
            [this] { m_app.window().openHelp(); });
    connect(addEntry(help, "Checkup", "&Check-up"), &QAction::triggered, this, [this] {
        runCommand([this] {
            std::vector<shell::CheckResult> results;
            {
                const ui::BusyScope busy(m_app.ui());
                results = shell::runCheckup(m_app);
            }
            m_app.ui().messageBox(
                shell::checkupText(results), "Check-up",
                shell::checkupPassed(results) ? ui::Icon::Information : ui::Icon::Exclamation);
        });
    });
    connect(addEntry(help, "About", "&About"), &QAction::triggered, this,
            &MainWindowView::showAbout);
}

void MainWindowView::buildCentralWidget() {
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralWidget"));

    auto* timeframeLabel = new QLabel(QStringLiteral("Timeframe"), central);
    timeframeLabel->setObjectName(QStringLiteral("Label3"));
    m_timeframeCombo = new QComboBox(central);
    m_timeframeCombo->setObjectName(name(shell::kTimeframeCombo));
    m_timeframeCombo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    timeframeLabel->setBuddy(m_timeframeCombo);
    auto* refresh = new QPushButton(QStringLiteral("Refresh"), central);
    refresh->setObjectName(name(shell::kRefreshButton));

    m_companyLabel = new QLabel(central);
    m_companyLabel->setObjectName(name(shell::kCompanyLabel));
    m_companyLabel->setTextFormat(Qt::PlainText);
    m_companyLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_companyLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    m_listHeading = new QLabel(central);
    m_listHeading->setObjectName(name(shell::kListHeading));
    m_listHeading->setTextFormat(Qt::PlainText);
    QFont headingFont = m_listHeading->font();
    headingFont.setBold(true);
    m_listHeading->setFont(headingFont);
    m_listSearch = new QLineEdit(central);
    m_listSearch->setObjectName(name(shell::kListSearch));
    m_listSearch->setPlaceholderText(QStringLiteral("Search the list"));
    m_listSearch->setClearButtonEnabled(true);
    m_listSummary = new QLabel(central);
    m_listSummary->setObjectName(name(shell::kListSummary));
    m_listSummary->setTextFormat(Qt::PlainText);

    m_listView = new QTreeWidget(central);
    m_listView->setObjectName(name(shell::kListView));
    m_listView->setRootIsDecorated(false);
    m_listView->setItemsExpandable(false);
    m_listView->setUniformRowHeights(true);
    m_listView->setAllColumnsShowFocus(true);
    m_listView->setAlternatingRowColors(true);
    m_listView->setIconSize(QSize(16, 16));
    // Core sorts the list (as text); the view never reorders rows itself. Turning sorting off
    // also makes the header unclickable, so clicks are switched back on after it.
    m_listView->setSortingEnabled(false);
    m_listView->header()->setSectionsClickable(true);
    m_listView->header()->setStretchLastSection(true);

    m_previewCheck = new QCheckBox(QStringLiteral("preview"), central);
    m_previewCheck->setObjectName(name(shell::kPreviewCheck));
    auto* send = new QPushButton(QStringLiteral("Send Email"), central);
    send->setObjectName(name(shell::kSendButton));
    auto* importButton = new QPushButton(QStringLiteral("&Import"), central);
    importButton->setObjectName(name(shell::kImportButton));
    auto* updateWeb = new QPushButton(QStringLiteral("Update"), central);
    updateWeb->setObjectName(name(shell::kUpdateWebButton));

    auto* top = new QHBoxLayout;
    top->addWidget(timeframeLabel);
    top->addWidget(m_timeframeCombo);
    top->addWidget(refresh);
    top->addStretch(1);

    auto* heading = new QHBoxLayout;
    heading->addWidget(m_listHeading, 1);
    heading->addWidget(m_listSearch);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(importButton);
    bottom->addStretch(1);
    bottom->addWidget(m_previewCheck);
    bottom->addWidget(send);
    bottom->addWidget(updateWeb);

    auto* layout = new QVBoxLayout(central);
    layout->addLayout(top);
    layout->addWidget(m_companyLabel);
    layout->addLayout(heading);
    layout->addWidget(m_listView, 1);
    layout->addWidget(m_listSummary);
    layout->addLayout(bottom);
    setCentralWidget(central);

    connect(m_timeframeCombo, &QComboBox::activated, this,
            [this](int index) { m_app.window().selectTimeframe(index); });
    connect(refresh, &QPushButton::clicked, this,
            [this] { runCommand([this] { m_app.window().refresh(); }); });
    connect(send, &QPushButton::clicked, this,
            [this] { runCommand([this] { m_app.sender().sendSelectedDocuments(); }); });
    connect(m_previewCheck, &QCheckBox::toggled, this, [this](bool checked) {
        if (!m_rendering) {
            m_app.window().setPreviewChecked(checked);
        }
    });
    connect(importButton, &QPushButton::clicked, this, &MainWindowView::importRequested);
    connect(updateWeb, &QPushButton::clicked, this, &MainWindowView::updateWebRequested);
    connect(m_listView, &QTreeWidget::itemChanged, this, &MainWindowView::onItemChanged);
    connect(m_listView->header(), &QHeaderView::sectionClicked, this,
            &MainWindowView::onHeaderClicked);
    connect(m_listView->header(), &QHeaderView::sectionResized, this,
            [this](int column) { columnResized(column); });
    connect(m_listSearch, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_app.window().search(toStdString(text)); });
}

void MainWindowView::renderAll() {
    m_binding->renderAll();
    companyTextChanged();
    timeframeChanged();
    previewChanged();
    progressChanged();
    listViewChanged();
    headingChanged();
    listReset();
}

void MainWindowView::modelChanged(std::string_view what) {
    if (what == shell::kCompanyLabel) {
        companyTextChanged();
    } else if (what == shell::kTimeframeCombo) {
        timeframeChanged();
    } else if (what == shell::kPreviewCheck) {
        previewChanged();
    } else if (what == shell::kProgressBar) {
        progressChanged();
    } else if (what == shell::kViewOpenBalances || what == shell::kViewUnpaidOnly) {
        listViewChanged();
    } else if (what == shell::kListHeading) {
        headingChanged();
    }
}

void MainWindowView::companyTextChanged() {
    m_companyLabel->setText(toQString(m_app.window().companyText()));
}

void MainWindowView::timeframeChanged() {
    const shell::MainWindow& window = m_app.window();
    QStringList names;
    for (const std::string& timeframe : window.timeframes()) {
        names << toQString(timeframe);
    }
    const QSignalBlocker blocker(m_timeframeCombo);
    QStringList shown;
    for (int i = 0; i < m_timeframeCombo->count(); ++i) {
        shown << m_timeframeCombo->itemText(i);
    }
    if (shown != names) {
        m_timeframeCombo->clear();
        m_timeframeCombo->addItems(names);
    }
    m_timeframeCombo->setCurrentIndex(window.timeframeIndex());
}

void MainWindowView::previewChanged() {
    const QScopedValueRollback rendering(m_rendering, true);
    m_previewCheck->setChecked(m_app.window().previewChecked());
}

void MainWindowView::listViewChanged() {
    const browser::ListView& view = m_app.window().listView();
    m_viewOpenBalances->setChecked(view.openBalances);
    m_viewUnpaidOnly->setChecked(view.unpaidOnly);
}

void MainWindowView::headingChanged() {
    m_listHeading->setText(toQString(m_app.window().listHeading()));
}

void MainWindowView::scheduleSummary() {
    if (!m_summaryPending) {
        m_summaryPending = true;
        QTimer::singleShot(0, this, [this] {
            m_summaryPending = false;
            m_listSummary->setText(toQString(m_app.window().listSummary()));
        });
    }
}

void MainWindowView::progressChanged() {
    const int percent = m_app.window().progress();
    if (percent >= 0) {
        m_progressBar->setValue(std::min(percent, 100));
    }
    m_progressBar->setVisible(percent >= 0);
}

void MainWindowView::listReset() {
    ++m_resets;
    const ui::ListModel& list = m_app.window().list();
    const QScopedValueRollback rendering(m_rendering, true);
    m_listView->setUpdatesEnabled(false);
    resetListColumns(*m_listView, list);

    QList<QTreeWidgetItem*> items;
    items.reserve(list.rowCount());
    for (const ui::ListRow& row : list.rows()) {
        auto* item = new QTreeWidgetItem;
        renderRow(item, row);
        items << item;
    }
    m_listView->addTopLevelItems(items);
    for (int i = 0; i < list.rowCount(); ++i) {
        if (list.row(i).hidden) {
            items[i]->setHidden(true);
        }
    }
    fitColumns();
    scheduleSummary();

    QHeaderView* header = m_listView->header();
    header->setSortIndicatorShown(list.sorted());
    if (list.sorted()) {
        header->setSortIndicator(list.sortColumn(), list.sortOrder() == ui::SortOrder::Ascending
                                                        ? Qt::AscendingOrder
                                                        : Qt::DescendingOrder);
    }
    m_listView->setUpdatesEnabled(true);
}

void MainWindowView::rowAdded(int row) {
    const ui::ListModel& list = m_app.window().list();
    if (row < 0 || row >= list.rowCount() ||
        m_listView->topLevelItemCount() != list.rowCount() - 1) {
        listReset();
        return;
    }
    const QScopedValueRollback rendering(m_rendering, true);
    auto* item = new QTreeWidgetItem;
    renderRow(item, list.row(row));
    m_listView->insertTopLevelItem(row, item);
    item->setHidden(list.row(row).hidden);
    scheduleColumnFit();
    scheduleSummary();
}

// Columns take the share of the list's width or the width core gives them, else their
// contents' width; the first column, which also holds the check box and the icon, is never
// narrower than its contents. While a loader adds rows one by one this happens once whenever
// the event loop runs, not once per row. Widths the person gave a document list's columns (kept
// in core, for the next start too) win; the last column takes the rest of the width.
void MainWindowView::fitColumns() {
    m_fitPending = false;
    const QScopedValueRollback fitting(m_fitting, true);
    const auto& columns = m_app.window().list().columns();
    for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
        const auto& column = columns[static_cast<std::size_t>(i)];
        const int width = column.share > 0
                              ? static_cast<int>(m_listView->viewport()->width() * column.share)
                              : column.width;
        if (width <= 0 || i == 0) {
            m_listView->resizeColumnToContents(i);
        }
        if (width > 0) {
            m_listView->setColumnWidth(i, std::max(width, i == 0 ? m_listView->columnWidth(0) : 0));
        }
    }
    if (const std::vector<int>* kept = m_app.window().columnWidths()) {
        for (int i = 0; i + 1 < m_listView->columnCount() && i < static_cast<int>(kept->size());
             ++i) {
            m_listView->setColumnWidth(i, (*kept)[static_cast<std::size_t>(i)]);
        }
    }
}

void MainWindowView::columnResized(int column) {
    const int last = m_listView->columnCount() - 1;
    if (m_fitting || m_rendering || column >= last) {
        return;
    }
    std::vector<int> widths;
    for (int i = 0; i < last; ++i) {
        widths.push_back(m_listView->columnWidth(i));
    }
    m_app.window().keepColumnWidths(std::move(widths));
}

void MainWindowView::scheduleColumnFit() {
    if (!m_fitPending) {
        m_fitPending = true;
        QTimer::singleShot(0, this, &MainWindowView::fitColumns);
    }
}

void MainWindowView::rowChanged(int row) {
    const ui::ListModel& list = m_app.window().list();
    QTreeWidgetItem* item = m_listView->topLevelItem(row);
    if (item == nullptr || row >= list.rowCount()) {
        listReset();
        return;
    }
    const QScopedValueRollback rendering(m_rendering, true);
    renderRow(item, list.row(row));
    item->setHidden(list.row(row).hidden);
    scheduleSummary();
}

void MainWindowView::renderRow(QTreeWidgetItem* item, const ui::ListRow& row) {
    const int columns = std::max(1, m_listView->columnCount());
    for (int i = 0; i < columns && i < static_cast<int>(row.cells.size()); ++i) {
        item->setText(i, toQString(row.cells[static_cast<std::size_t>(i)]));
    }
    item->setCheckState(0, row.checked ? Qt::Checked : Qt::Unchecked);
    const bool hasIcon = row.icon >= 1 && row.icon <= m_imageList.size();
    item->setIcon(0, hasIcon ? m_imageList.at(row.icon - 1) : QIcon());
    item->setToolTip(
        0, hasIcon ? QString::fromUtf8(kRowIcons[static_cast<std::size_t>(row.icon - 1)].meaning)
                   : QString());
}

void MainWindowView::onItemChanged(QTreeWidgetItem* item, int column) {
    if (m_rendering || column != 0) {
        return;
    }
    ui::ListModel& list = m_app.window().list();
    const int row = m_listView->indexOfTopLevelItem(item);
    if (row < 0 || row >= list.rowCount()) {
        return;
    }
    // Core may refuse the tick (a document sent before, not to be sent again): the box then
    // shows core's state again.
    const bool checked = item->checkState(0) == Qt::Checked;
    if (list.row(row).checked != checked && m_app.window().tickRow(row, checked) != checked) {
        rowChanged(row);
    }
}

void MainWindowView::onHeaderClicked(int column) {
    runCommand([this, column] {
        const int resetsBefore = m_resets;
        m_app.window().columnClicked(column);
        if (m_resets == resetsBefore) {
            listReset();  // the order changed even if nobody said so
        }
    });
}

void MainWindowView::closeEvent(QCloseEvent* event) {
    const QSize size = isMaximized() || isFullScreen() ? normalGeometry().size() : this->size();
    m_app.window().saveLayout(size.width(), size.height());
    QMainWindow::closeEvent(event);
}

void MainWindowView::runCommand(const std::function<void()>& command) {
    if (m_commandRunning) {
        return;
    }
    const QScopedValueRollback running(m_commandRunning, true);
    command();
    if (m_webConnectorWait != nullptr) {
        m_webConnectorWait->commandEnded();
    }
}

void MainWindowView::startUp() {
    runCommand([this] { m_app.window().startUp(); });
}

// The dialog writes the preferences itself when closed with OK (see registerDialogs), so the
// next "Send Email" uses them; Cancel leaves the store as it was.
void MainWindowView::showPreferences() {
    m_app.settings().reload();
    mail::MailPreferencesModel model(m_app.settings());
    m_app.ui().runDialog(model);
}

// Import settings are read afresh each time; the window keeps its document, lists and pane.
void MainWindowView::openImportWindow() {
    m_app.importWindow().open();
    if (m_importView == nullptr) {
        m_importView = new ImportWindowView(
            m_app.importWindow(), this,
            [this](const std::function<void()>& command) { runCommand(command); });
        m_importView->attachBatchImport(m_app.batchImport());
        if (m_webConnectorWait != nullptr) {
            m_webConnectorWait->addStatusBar(m_importView->statusBar());
        }
    }
    m_importView->show();
    m_importView->raise();
    m_importView->activateWindow();
}

// The window is made once and kept; each opening plans the reminders afresh.
void MainWindowView::openRemindersWindow() {
    if (m_remindersView == nullptr) {
        m_remindersView = new RemindersWindowView(
            m_app.remindersWindow(), this,
            [this](const std::function<void()>& command) { runCommand(command); });
    }
    m_remindersView->show();
    m_remindersView->raise();
    m_remindersView->activateWindow();
    m_app.remindersWindow().open();
}

void MainWindowView::openHistoryWindow() {
    if (m_historyView == nullptr) {
        m_historyView = new HistoryWindowView(m_app.historyWindow(), this);
    }
    m_historyView->reloadAndShow();
}

void MainWindowView::showAbout() {
    const QString title = toQString(ui::kProgramTitle);
    QMessageBox::about(
        this, QStringLiteral("About %1").arg(title),
        QStringLiteral("<h3>%1</h3><p>Version %2</p>"
                       "<p>E-mails QuickBooks invoices, estimates, statements and other documents "
                       "to customers and vendors, and imports received documents back into "
                       "QuickBooks.</p>")
            .arg(title, QStringLiteral(DORVANE_VERSION)));
}

}  // namespace dorvane::gui
