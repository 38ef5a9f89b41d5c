// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the import preferences dialog `Dialog3`: renders core's ImportPreferencesModel.
//
// The caption label, the four drop-down lists (the item, item group, terms and account every
// imported document is pointed at) and the check box for receipts without a customer, each
// named by its control name. OK copies the chosen entries and the check box back into the
// model and closes; core saves them. Cancel closes and leaves the model as it was.
#pragma once

#include <QDialog>

#include "import/assignment.h"

class QCheckBox;
class QComboBox;

namespace dorvane::gui {

class ImportPrefsDialog final : public QDialog {
    Q_OBJECT

public:
    explicit ImportPrefsDialog(imports::ImportPreferencesModel& model, QWidget* parent = nullptr);

    void accept() override;

private:
    QComboBox* addChoice(const char* controlName, const imports::ImportPreferencesModel::Choice&);

    imports::ImportPreferencesModel& m_model;
    QComboBox* m_items = nullptr;
    QComboBox* m_itemGroups = nullptr;
    QComboBox* m_terms = nullptr;
    QComboBox* m_accounts = nullptr;
    QCheckBox* m_ignoreCustomer = nullptr;
    QCheckBox* m_quotedFields = nullptr;
};

}  // namespace dorvane::gui
