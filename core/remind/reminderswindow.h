// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Reminders window: the overdue reminders due now, tickable, previewed or sent.
//
// Opening the window plans the messages (remind::Reminders) and lists them, one row per
// customer and stage: customer, stage, invoice numbers, total, address, and what became of it.
// Preview renders the ticked ones into the preview page; Send asks, mails them and notes each
// row's outcome; a sent row loses its tick. The buttons are enabled only while there is a row.
#pragma once

#include <string>

#include "remind/reminders.h"
#include "ui/listmodel.h"
#include "ui/windowmodel.h"

namespace dorvane::remind {

// Control names of the window.
inline constexpr const char* kReminderList = "ReminderList";
inline constexpr const char* kReminderPreview = "ReminderPreviewBtn";
inline constexpr const char* kReminderSend = "ReminderSendBtn";
inline constexpr const char* kRemindersWindowControls[] = {kReminderList, kReminderPreview,
                                                           kReminderSend};

// The columns of the list, in order.
enum ReminderColumn {
    kCustomerColumn,
    kStageColumn,
    kInvoicesColumn,
    kTotalColumn,
    kAddressColumn,
    kStatusColumn
};

class RemindersWindow final : public ui::WindowModel {
public:
    explicit RemindersWindow(Reminders& reminders);

    // Plans the reminders afresh and lists them.
    void open();
    ui::ListModel& list() { return m_list; }
    // A tick set or cleared in the list.
    void check(int row, bool checked);
    void preview();
    void send();

private:
    // The plan index of a row (rows may be sorted).
    std::size_t planIndex(int row) const;
    int rowOf(std::size_t index) const;
    void enableButtons();

    Reminders& m_reminders;
    ui::ListModel m_list;
};

}  // namespace dorvane::remind
