// SPDX-License-Identifier: GPL-3.0-or-later
#include "remind/reminderswindow.h"

#include <cstdlib>

namespace dorvane::remind {
namespace {

constexpr const char* kReady = "Ready";
constexpr const char* kNoAddress = "No e-mail address";

std::string stageText(int stage) {
    return std::to_string(stage) + " " + stageName(stage);
}

std::string invoiceNumbers(const PlannedReminder& message) {
    std::string numbers;
    for (const OverdueInvoice& invoice : message.invoices) {
        numbers += (numbers.empty() ? "" : ", ") + invoice.refNumber;
    }
    return numbers;
}

}  // namespace

RemindersWindow::RemindersWindow(Reminders& reminders)
    : ui::WindowModel(kRemindersWindowControls, "Overdue Reminders"), m_reminders(reminders) {
    m_list.setColumns({{"Customer", 0, 0.25},
                       {"Stage", 0, 0.1},
                       {"Invoices", 0, 0.15},
                       {"Total", 0, 0.1},
                       {"Address", 0, 0.2},
                       {"Status", 0, 0.2}});
    enableButtons();
}

void RemindersWindow::enableButtons() {
    const bool rows = m_list.rowCount() > 0;
    setControlEnabled(kReminderPreview, rows);
    setControlEnabled(kReminderSend, rows);
}

void RemindersWindow::open() {
    m_reminders.onStatus([this](const std::string& text) { setStatusText(text); });
    const PlanResult result = m_reminders.plan();
    std::vector<ui::ListRow> rows;
    const auto& plan = m_reminders.planned();
    for (std::size_t i = 0; i < plan.size(); ++i) {
        const PlannedReminder& message = plan[i];
        ui::ListRow row;
        row.checked = !message.email.empty();
        row.cells = {message.customer,        stageText(message.stage),
                     invoiceNumbers(message), message.total,
                     message.email,           message.email.empty() ? kNoAddress : kReady};
        row.key = std::to_string(i);
        m_reminders.setChecked(i, row.checked);
        rows.push_back(std::move(row));
    }
    m_list.setRows(std::move(rows));
    enableButtons();
    switch (result) {
        case PlanResult::Planned:
            setStatusText(plan.empty()
                              ? "No invoice is due for a reminder"
                              : std::to_string(plan.size()) +
                                    (plan.size() == 1 ? " reminder due" : " reminders due"));
            break;
        case PlanResult::Unreachable:
            setStatusText("QuickBooks could not be reached");
            break;
        case PlanResult::Refused:
            setStatusText(m_reminders.problem());
            break;
    }
}

std::size_t RemindersWindow::planIndex(int row) const {
    return static_cast<std::size_t>(std::strtoul(m_list.row(row).key.c_str(), nullptr, 10));
}

int RemindersWindow::rowOf(std::size_t index) const {
    for (int r = 0; r < m_list.rowCount(); ++r) {
        if (planIndex(r) == index) {
            return r;
        }
    }
    return -1;
}

void RemindersWindow::check(int row, bool checked) {
    if (row < 0 || row >= m_list.rowCount()) {
        return;
    }
    m_list.setChecked(row, checked);
    m_reminders.setChecked(planIndex(row), checked);
}

void RemindersWindow::preview() {
    m_reminders.onStatus([this](const std::string& text) { setStatusText(text); });
    m_reminders.preview();
}

void RemindersWindow::send() {
    m_reminders.onStatus([this](const std::string& text) { setStatusText(text); });
    m_reminders.onMessage([this](const ReminderOutcome& o) {
        const int row = rowOf(o.index);
        if (row < 0) {
            return;
        }
        if (o.sent) {
            check(row, false);
        }
        m_list.setCell(row, kStatusColumn,
                       o.test   ? "Sent to the test address " + o.recipient
                       : o.sent ? std::string("Sent")
                                : "Not sent: " + o.why);
    });
    m_reminders.send(true);
    m_reminders.onMessage({});
}

}  // namespace dorvane::remind
