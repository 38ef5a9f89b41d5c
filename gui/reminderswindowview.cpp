// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/reminderswindowview.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "gui/qtstrings.h"
#include "gui/windowbinding.h"

namespace dorvane::gui {

RemindersWindowView::RemindersWindowView(remind::RemindersWindow& window, QWidget* parent,
                                         CommandRunner runner)
    : QMainWindow(parent), m_window(window), m_runner(std::move(runner)) {
    setObjectName(QStringLiteral("RemindersWindow"));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    m_list = new QTreeWidget(central);
    m_list->setObjectName(QString::fromUtf8(remind::kReminderList));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    layout->addWidget(m_list);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* preview = new QPushButton(QStringLiteral("&Preview"), central);
    preview->setObjectName(QString::fromUtf8(remind::kReminderPreview));
    auto* send = new QPushButton(QStringLiteral("&Send"), central);
    send->setObjectName(QString::fromUtf8(remind::kReminderSend));
    buttons->addWidget(preview);
    buttons->addWidget(send);
    layout->addLayout(buttons);
    setCentralWidget(central);

    auto* status = new QStatusBar(this);
    status->setObjectName(QString::fromUtf8(ui::kStatusBar));
    m_statusPanel = new QLabel(status);
    m_statusPanel->setTextFormat(Qt::PlainText);
    status->addWidget(m_statusPanel, 1);
    setStatusBar(status);
    resize(760, 360);

    m_binding =
        std::make_unique<WindowBinding>(m_window, *this, *m_statusPanel, [](std::string_view) {});
    m_binding->renderAll();
    m_window.list().setObserver(this);
    listReset();

    connect(m_list, &QTreeWidget::itemChanged, this, &RemindersWindowView::onItemChanged);
    connect(preview, &QPushButton::clicked, this,
            [this] { m_runner([this] { m_window.preview(); }); });
    connect(send, &QPushButton::clicked, this, [this] { m_runner([this] { m_window.send(); }); });
}

RemindersWindowView::~RemindersWindowView() {
    m_window.list().setObserver(nullptr);
}

void RemindersWindowView::listReset() {
    const ui::ListModel& list = m_window.list();
    const QScopedValueRollback rendering(m_rendering, true);
    resetListColumns(*m_list, list);
    for (const ui::ListRow& row : list.rows()) {
        auto* item = new QTreeWidgetItem(m_list);
        renderRow(item, row);
    }
    m_list->header()->resizeSections(QHeaderView::ResizeToContents);
}

void RemindersWindowView::rowChanged(int row) {
    QTreeWidgetItem* item = m_list->topLevelItem(row);
    if (item == nullptr || row >= m_window.list().rowCount()) {
        listReset();
        return;
    }
    const QScopedValueRollback rendering(m_rendering, true);
    renderRow(item, m_window.list().row(row));
}

void RemindersWindowView::renderRow(QTreeWidgetItem* item, const ui::ListRow& row) {
    for (int i = 0; i < m_list->columnCount() && i < static_cast<int>(row.cells.size()); ++i) {
        item->setText(i, toQString(row.cells[static_cast<std::size_t>(i)]));
    }
    item->setCheckState(0, row.checked ? Qt::Checked : Qt::Unchecked);
}

void RemindersWindowView::onItemChanged(QTreeWidgetItem* item, int column) {
    if (m_rendering || column != 0) {
        return;
    }
    const int row = m_list->indexOfTopLevelItem(item);
    const bool checked = item->checkState(0) == Qt::Checked;
    if (row >= 0 && row < m_window.list().rowCount() &&
        m_window.list().row(row).checked != checked) {
        m_window.check(row, checked);
    }
}

}  // namespace dorvane::gui
