// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/historywindowview.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "browser/documenttypes.h"
#include "gui/qtstrings.h"
#include "gui/windowbinding.h"

namespace dorvane::gui {

using namespace history;

namespace {

QString name(const char* controlName) {
    return QString::fromUtf8(controlName);
}

QLineEdit* filterEdit(QWidget* parent, const char* control, const QString& placeholder) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name(control));
    edit->setPlaceholderText(placeholder);
    edit->setClearButtonEnabled(true);
    return edit;
}

}  // namespace

HistoryWindowView::HistoryWindowView(HistoryWindow& window, QWidget* parent)
    : QMainWindow(parent), m_window(window) {
    setObjectName(QStringLiteral("HistoryWindow"));
    setWindowFlag(Qt::Window);
    resize(900, 480);

    auto* central = new QWidget(this);
    auto* filters = new QHBoxLayout;
    m_type = new QComboBox(central);
    m_type->setObjectName(name(kTypeFilter));
    m_type->setEditable(true);
    m_type->addItem(QString());
    for (const std::string_view event :
         {"sent", "test", "reminder", "import", "receipt", "batch"}) {
        m_type->addItem(toQString(event));
    }
    for (const browser::DocumentType& type : browser::kDocumentTypes) {
        if (type.sentLog) {
            m_type->addItem(QString::fromUtf8(type.name));
        }
    }
    m_since = filterEdit(central, kSinceFilter, QStringLiteral("YYYY-MM-DD"));
    m_until = filterEdit(central, kUntilFilter, QStringLiteral("YYYY-MM-DD"));
    m_customer = filterEdit(central, kCustomerFilter, QStringLiteral("a part of the name"));
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("&Type:"), m_type);
    form->addRow(QStringLiteral("&Customer or vendor:"), m_customer);
    auto* dates = new QFormLayout;
    dates->addRow(QStringLiteral("&Since:"), m_since);
    dates->addRow(QStringLiteral("&Until:"), m_until);
    filters->addLayout(form, 2);
    filters->addLayout(dates, 1);

    m_list = new QTreeWidget(central);
    m_list->setObjectName(name(kHistoryList));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->header()->setStretchLastSection(true);

    m_counts = new QLabel(central);
    m_counts->setObjectName(name(kCountsLabel));

    auto* layout = new QVBoxLayout(central);
    layout->addLayout(filters);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_counts);
    setCentralWidget(central);

    m_statusPanel = new QLabel(this);
    m_statusPanel->setObjectName(QStringLiteral("StatusBar1Panel1"));
    statusBar()->addWidget(m_statusPanel, 1);

    connect(m_type, &QComboBox::currentTextChanged, this, [this] { applyFilter(); });
    for (QLineEdit* edit : {m_since, m_until, m_customer}) {
        connect(edit, &QLineEdit::editingFinished, this, [this] { applyFilter(); });
    }
    m_binding = std::make_unique<WindowBinding>(m_window, *this, *m_statusPanel,
                                                [this](std::string_view what) { changed(what); });
    m_binding->renderAll();
    renderList();
}

HistoryWindowView::~HistoryWindowView() = default;

void HistoryWindowView::reloadAndShow() {
    m_window.reload();  // the list comes with the counts' change
    show();
    raise();
    activateWindow();
}

void HistoryWindowView::changed(std::string_view what) {
    if (what == kCountsLabel) {
        renderList();
    }
}

void HistoryWindowView::renderList() {
    const ui::ListModel& list = m_window.list();
    m_list->setUpdatesEnabled(false);
    resetListColumns(*m_list, list);
    QList<QTreeWidgetItem*> items;
    items.reserve(list.rowCount());
    for (const ui::ListRow& row : list.rows()) {
        QStringList cells;
        for (const std::string& cell : row.cells) {
            cells << toQString(cell);
        }
        items << new QTreeWidgetItem(cells);
    }
    m_list->addTopLevelItems(items);
    m_list->setUpdatesEnabled(true);
    m_counts->setText(toQString(m_window.countsText()));
}

void HistoryWindowView::applyFilter() {
    m_window.setFilter({.type = toStdString(m_type->currentText()),
                        .since = toStdString(m_since->text().trimmed()),
                        .until = toStdString(m_until->text().trimmed()),
                        .customer = toStdString(m_customer->text())});
}

}  // namespace dorvane::gui
