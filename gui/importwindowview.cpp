// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/importwindowview.h"

#include <QAction>
#include <QComboBox>
#include <QFont>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include "batch/batchimport.h"
#include "gui/qtstrings.h"
#include "gui/qtuiport.h"
#include "gui/windowbinding.h"
#include "platform/programfolder.h"

namespace dorvane::gui {

using namespace imports;

namespace {

constexpr const char* kOpenInBrowser = "OpenInBrowserBtn";

struct MenuEntry {
    const char* name;
    const char* caption;
};

constexpr MenuEntry kOptionsEntries[] = {
    {kSelDVXImport, "&Open DVX File..."},
    {kSetPref, "Import &Preferences..."},
    {kCapAuthorize, "&Authorize.Net Receipt from Clipboard"},
    {kImpAuthNetBatch, "Authorize.Net &Batch..."},
    {kImpAuthNetBulk, "Authorize.Net B&ulk..."},
    {kSynchronizePDA, "&Synchronize Handheld"},
    {kInitPDA, "&Initialize New Handheld"},
};

QString name(const char* controlName) {
    return QString::fromUtf8(controlName);
}

// Core's texts break lines with CR LF; a label wants one line feed per line.
QString lines(std::string_view text) {
    QString shown = toQString(text);
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return shown;
}

// Boxes shown while one of this window's commands runs belong to this window.
class BoxesOver {
public:
    BoxesOver(ui::UiPort& ui, QWidget* owner) : m_ui(dynamic_cast<QtUiPort*>(&ui)) {
        if (m_ui != nullptr) {
            m_before = m_ui->parentWidget();
            m_ui->setParentWidget(owner);
        }
    }
    ~BoxesOver() {
        if (m_ui != nullptr) {
            m_ui->setParentWidget(m_before);
        }
    }
    BoxesOver(const BoxesOver&) = delete;
    BoxesOver& operator=(const BoxesOver&) = delete;

private:
    QtUiPort* m_ui;
    QPointer<QWidget> m_before;
};

}  // namespace

ImportWindowView::ImportWindowView(ImportWindow& window, QWidget* parent, CommandRunner runner)
    : QMainWindow(parent), m_window(window), m_runner(std::move(runner)) {
    setObjectName(name(kImportWindowName));  // a window of its own even with a parent
    buildMenu();
    buildCentralWidget();

    auto* status = new QStatusBar(this);
    status->setObjectName(name(kStatusBar));
    m_statusPanel = new QLabel(status);
    m_statusPanel->setObjectName(name(kStatusBar) + QStringLiteral("Panel1"));
    m_statusPanel->setTextFormat(Qt::PlainText);
    status->addWidget(m_statusPanel, 1);
    m_batchProgress = new QProgressBar(status);
    m_batchProgress->setObjectName(QStringLiteral("BatchProgress"));
    m_batchProgress->setRange(0, 100);
    m_batchProgress->setMaximumWidth(220);
    m_batchProgress->hide();
    status->addPermanentWidget(m_batchProgress);
    m_cancelBatch = new QPushButton(QStringLiteral("Cancel"), status);
    m_cancelBatch->setObjectName(QStringLiteral("CancelBatch"));
    m_cancelBatch->hide();
    status->addPermanentWidget(m_cancelBatch);
    setStatusBar(status);

    resize(900, 600);
    m_binding = std::make_unique<WindowBinding>(m_window, *this, *m_statusPanel,
                                                [this](std::string_view what) { changed(what); });
    renderAll();
}

ImportWindowView::~ImportWindowView() {
    if (m_batchImport != nullptr) {
        m_batchImport->onProgress({});
    }
}

void ImportWindowView::attachBatchImport(batch::BatchImport& batchImport) {
    m_batchImport = &batchImport;
    // Not a command: it must work while the run it stops lets the event loop run.
    connect(m_cancelBatch, &QPushButton::clicked, this, [this] {
        m_cancelBatch->setEnabled(false);
        m_batchImport->cancel();
    });
    batchImport.onProgress([this](int percent) {
        const bool running = percent >= 0;
        if (running) {
            m_batchProgress->setValue(percent);
        }
        if (m_batchProgress->isHidden() == running) {
            m_batchProgress->setVisible(running);
            m_cancelBatch->setVisible(running);
            m_cancelBatch->setEnabled(true);
        }
    });
}

void ImportWindowView::buildMenu() {
    QMenu* options = menuBar()->addMenu(QStringLiteral("&Options"));
    options->setObjectName(name(kOptionsMenu));
    options->menuAction()->setObjectName(name(kOptionsMenu) + QStringLiteral("Action"));
    for (const MenuEntry& entry : kOptionsEntries) {
        QAction* action = options->addAction(QString::fromUtf8(entry.caption));
        action->setObjectName(name(entry.name));
        const std::string entryName = entry.name;
        connect(action, &QAction::triggered, this, [this, entryName] {
            runCommand([this, entryName] { m_window.runMenuEntry(entryName); });
        });
        if (entry.name == std::string_view(kSetPref)) {
            options->addSeparator();
        }
    }
}

void ImportWindowView::buildCentralWidget() {
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralWidget"));

    m_list = new QTreeWidget(central);
    m_list->setObjectName(name(kVendorListView));
    m_list->setColumnCount(1);
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->setUniformRowHeights(true);
    m_list->setSortingEnabled(false);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->header()->setStretchLastSection(true);
    m_list->header()->setSectionsClickable(false);
    m_list->setMinimumWidth(220);

    auto* label2 = new QLabel(QStringLiteral("Customer &name:"), central);
    label2->setObjectName(name(kLabel2));
    m_nameText = new QLineEdit(central);
    m_nameText->setObjectName(name(kNameText));
    label2->setBuddy(m_nameText);
    auto* clear = new QPushButton(QStringLiteral("&Clear Selection"), central);
    clear->setObjectName(name(kClearSelBtn));
    clear->setToolTip(QStringLiteral("Choose nobody, so that the import creates a new one"));

    m_label1 = new QLabel(central);
    m_label1->setObjectName(name(kLabel1));
    m_label1->setTextFormat(Qt::PlainText);
    m_label1->setWordWrap(true);
    m_label1->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_label1->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* accountLabel = new QLabel(QStringLiteral("Payment &account:"), central);
    accountLabel->setObjectName(name(kSelAccountLabel));
    m_accounts = new QComboBox(central);
    m_accounts->setObjectName(name(kSelAccountCombo));
    m_accounts->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    accountLabel->setBuddy(m_accounts);

    m_pane = new QTextBrowser(central);
    m_pane->setObjectName(name(kWebBrowser));
    m_pane->setOpenLinks(false);
    m_pane->setSearchPaths({toQString(m_window.folder().path())});

    m_openInBrowser = new QPushButton(QStringLiteral("Open in &Browser"), central);
    m_openInBrowser->setObjectName(name(kOpenInBrowser));
    m_openInBrowser->setToolTip(QStringLiteral("Show the preview in the desktop's web browser"));
    auto* selectFile = new QPushButton(QStringLiteral("&Select File..."), central);
    selectFile->setObjectName(name(kSelItemBtn));
    auto* import = new QPushButton(QStringLiteral("&Import"), central);
    import->setObjectName(name(kAddItemBtn));
    import->setDefault(true);

    auto* nameRow = new QHBoxLayout;
    nameRow->addWidget(label2);
    nameRow->addWidget(m_nameText, 1);

    auto* left = new QVBoxLayout;
    left->addWidget(m_list, 1);
    left->addLayout(nameRow);
    left->addWidget(clear);

    auto* accountRow = new QHBoxLayout;
    accountRow->addWidget(accountLabel);
    accountRow->addWidget(m_accounts);
    accountRow->addStretch(1);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_openInBrowser);
    buttons->addStretch(1);
    buttons->addWidget(selectFile);
    buttons->addWidget(import);

    auto* right = new QVBoxLayout;
    right->addWidget(m_label1);
    right->addLayout(accountRow);
    right->addWidget(m_pane, 1);
    right->addLayout(buttons);

    auto* layout = new QHBoxLayout(central);
    layout->addLayout(left, 1);
    layout->addLayout(right, 3);
    setCentralWidget(central);

    connect(m_list, &QTreeWidget::itemSelectionChanged, this,
            &ImportWindowView::onListSelectionChanged);
    connect(m_nameText, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (!m_rendering) {
            m_window.setNameText(toStdString(text));
        }
    });
    connect(m_accounts, &QComboBox::activated, this, [this](int index) {
        if (!m_rendering && index >= 0) {
            m_window.selectAccount(static_cast<std::size_t>(index));
        }
    });
    connect(clear, &QPushButton::clicked, this,
            [this] { runCommand([this] { m_window.clearSelection(); }); });
    connect(selectFile, &QPushButton::clicked, this,
            [this] { runCommand([this] { m_window.chooseFile(); }); });
    connect(import, &QPushButton::clicked, this,
            [this] { runCommand([this] { m_window.importSelectedDocument(); }); });
    connect(m_openInBrowser, &QPushButton::clicked, this, [this] {
        if (!m_window.browserFile().empty()) {
            m_window.ui().openWithDesktop(m_window.browserFile());
        }
    });
}

void ImportWindowView::renderAll() {
    m_binding->renderAll();
    renderList();
    renderAccounts();
    renderNameText();
    renderPane();
    m_label1->setText(lines(m_window.label1()));
}

void ImportWindowView::changed(std::string_view what) {
    const QScopedValueRollback rendering(m_rendering, true);
    if (what == kVendorListView) {
        renderList();
    } else if (what == kSelAccountCombo) {
        renderAccounts();
    } else if (what == kNameText) {
        renderNameText();
    } else if (what == kWebBrowser) {
        renderPane();
    } else if (what == kLabel1) {
        m_label1->setText(lines(m_window.label1()));
    }
}

// The items are rebuilt only when core's list differs from the one shown, so that a click
// (which changes the selection only) leaves the list scrolled where the person had it.
void ImportWindowView::renderList() {
    const QScopedValueRollback rendering(m_rendering, true);
    const QSignalBlocker blocker(m_list);
    const CounterpartList& list = m_window.counterparts();
    const int count = static_cast<int>(list.items.size());
    bool same = m_list->headerItem()->text(0) == toQString(list.columnHeader) &&
                m_list->topLevelItemCount() == count;
    for (int i = 0; same && i < count; ++i) {
        same = m_list->topLevelItem(i)->text(0) == toQString(list.items[std::size_t(i)]);
    }
    m_list->setUpdatesEnabled(false);
    if (!same) {
        m_list->clear();
        m_list->setHeaderLabels({toQString(list.columnHeader)});
        QList<QTreeWidgetItem*> items;
        items.reserve(count);
        for (const std::string& text : list.items) {
            items << new QTreeWidgetItem(QStringList{toQString(text)});
        }
        m_list->addTopLevelItems(items);
    }
    for (int i = 0; i < count; ++i) {
        QTreeWidgetItem* item = m_list->topLevelItem(i);
        QFont font = item->font(0);
        font.setBold(list.bold == static_cast<std::size_t>(i));
        item->setFont(0, font);
    }
    if (list.selected && *list.selected < list.items.size()) {
        QTreeWidgetItem* selected = m_list->topLevelItem(static_cast<int>(*list.selected));
        m_list->setCurrentItem(selected);
        selected->setSelected(true);
        m_list->scrollToItem(selected);
    } else {
        m_list->clearSelection();
        m_list->setCurrentItem(nullptr);
    }
    m_list->setEnabled(m_window.control(kVendorListView).enabled && list.enabled);
    m_list->setUpdatesEnabled(true);
}

void ImportWindowView::renderAccounts() {
    const QSignalBlocker blocker(m_accounts);
    QStringList names;
    for (const PaymentAccount& account : m_window.accounts()) {
        names << toQString(account.name);
    }
    QStringList shown;
    for (int i = 0; i < m_accounts->count(); ++i) {
        shown << m_accounts->itemText(i);
    }
    if (shown != names) {
        m_accounts->clear();
        m_accounts->addItems(names);
    }
    const auto selected = m_window.selectedAccount();
    m_accounts->setCurrentIndex(selected ? static_cast<int>(*selected) : -1);
}

void ImportWindowView::renderNameText() {
    const QSignalBlocker blocker(m_nameText);
    const QString text = toQString(m_window.nameText());
    if (m_nameText->text() != text) {  // typing must keep its cursor
        m_nameText->setText(text);
    }
}

void ImportWindowView::renderPane() {
    const std::string& file = m_window.browserFile();
    m_openInBrowser->setVisible(m_window.control(kWebBrowser).visible && !file.empty());
    const bool xmlFile = file.size() >= 4 && file.compare(file.size() - 4, 4, ".xml") == 0;
    if (xmlFile && !m_window.browserBody()) {
        m_pane->setPlainText(toQString(m_window.browserPage()));
        return;
    }
    // Relative addresses in the page (pictures, style sheets) are the program folder's files.
    m_pane->document()->setBaseUrl(
        QUrl::fromLocalFile(toQString(m_window.folder().path()) + QLatin1Char('/')));
    m_pane->setHtml(toQString(m_window.browserPage()));
}

void ImportWindowView::onListSelectionChanged() {
    if (m_rendering) {
        return;
    }
    const QList<QTreeWidgetItem*> chosen = m_list->selectedItems();
    const int row = chosen.isEmpty() ? -1 : m_list->indexOfTopLevelItem(chosen.front());
    const auto current = m_window.counterparts().selected;
    if (row < 0) {
        if (current) {
            runCommand([this] { m_window.clearSelection(); });
        }
    } else if (!current || *current != static_cast<std::size_t>(row)) {
        runCommand([this, row] { m_window.itemClicked(static_cast<std::size_t>(row)); });
    }
    // A choice core did not take (another command was running) is taken back.
    const auto taken = m_window.counterparts().selected;
    const bool agrees = row < 0 ? !taken : taken && *taken == static_cast<std::size_t>(row);
    if (!agrees) {
        renderList();
    }
}

void ImportWindowView::runCommand(const std::function<void()>& command) {
    auto guarded = [this, &command] {
        const BoxesOver boxes(m_window.ui(), this);
        command();
    };
    if (m_runner) {
        m_runner(guarded);
        return;
    }
    if (m_commandRunning) {
        return;
    }
    const QScopedValueRollback running(m_commandRunning, true);
    guarded();
}

}  // namespace dorvane::gui
