// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the company information editor `Dialog2`: renders core's CompanyEditorModel.
//
// One text box per field of core's editor table, named by its control name, beside its label;
// boxes without a label of their own share the label above them. OK hands the typed values to
// the model, whose accept() decides: when a required field is empty it has said so and the
// dialog stays open. Cancel closes without touching the record.
#pragma once

#include <array>

#include <QDialog>

#include "company/companyeditor.h"

class QLineEdit;

namespace dorvane::gui {

class CompanyDialog final : public QDialog {
    Q_OBJECT

public:
    explicit CompanyDialog(company::CompanyEditorModel& model, QWidget* parent = nullptr);

    void accept() override;

private:
    void buildControls();

    company::CompanyEditorModel& m_model;
    std::array<QLineEdit*, company::kEditorFields.size()> m_edits{};
};

}  // namespace dorvane::gui
