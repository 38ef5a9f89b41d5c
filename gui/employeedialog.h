// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the employee choice `Dialog4` of the handheld sync: renders core's
// EmployeeChoiceModel.
//
// Label2 asks the worker for their name; the drop-down list Combo1 offers QuickBooks'
// employees as "Name / ListID", with the one core preselects shown (none: the list shows
// nothing until a choice is made). OK hands the chosen entry back to the model and closes;
// Cancel closes and the model keeps no choice.
#pragma once

#include <QDialog>

#include "handheld/timetracksync.h"

class QComboBox;

namespace dorvane::gui {

class EmployeeDialog final : public QDialog {
    Q_OBJECT

public:
    explicit EmployeeDialog(handheld::EmployeeChoiceModel& model, QWidget* parent = nullptr);

    void accept() override;
    void reject() override;

private:
    handheld::EmployeeChoiceModel& m_model;
    QComboBox* m_combo = nullptr;
};

}  // namespace dorvane::gui
