// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/companydialog.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "gui/dialogs.h"
#include "gui/qtstrings.h"

namespace dorvane::gui {

namespace {

// Boxes without a label join the row before them; the second address line gets a row of its
// own under the first.
constexpr const char* kSharedRow[] = {"State", "Zip"};

bool sharesRow(const char* control) {
    return std::any_of(std::begin(kSharedRow), std::end(kSharedRow),
                       [control](const char* name) { return std::strcmp(name, control) == 0; });
}

// How much of a shared row each box takes: a state code is short, a city is not.
int rowStretch(const char* control) {
    if (std::strcmp(control, "State") == 0) {
        return 1;
    }
    if (std::strcmp(control, "Zip") == 0) {
        return 2;
    }
    return 4;
}

}  // namespace

CompanyDialog::CompanyDialog(company::CompanyEditorModel& model, QWidget* parent)
    : QDialog(parent), m_model(model) {
    setObjectName(QStringLiteral("Dialog2"));
    setWindowTitle(QStringLiteral("Company Information"));
    buildControls();
    for (std::size_t i = 0; i < m_edits.size(); ++i) {
        m_edits[i]->setText(toQString(m_model.values[i]));
    }
}

void CompanyDialog::buildControls() {
    auto* grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    grid->setColumnMinimumWidth(1, 320);
    int row = -1;
    QHBoxLayout* rowLayout = nullptr;
    for (std::size_t i = 0; i < company::kEditorFields.size(); ++i) {
        const company::EditorField& field = company::kEditorFields[i];
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QString::fromUtf8(field.control));
        m_edits[i] = edit;
        if (*field.label != '\0' || !sharesRow(field.control) || rowLayout == nullptr) {
            rowLayout = new QHBoxLayout;
            grid->addLayout(rowLayout, ++row, 1);
            if (*field.label != '\0') {
                auto* label = new QLabel(QString::fromUtf8(field.label), this);
                label->setObjectName(QString::fromUtf8(field.control) + QStringLiteral("Label"));
                label->setBuddy(edit);
                grid->addWidget(label, row, 0);
            }
        }
        rowLayout->addWidget(edit, rowStretch(field.control));
    }

    layOutWithOkCancel(this, grid);
}

void CompanyDialog::accept() {
    for (std::size_t i = 0; i < m_edits.size(); ++i) {
        m_model.values[i] = toStdString(m_edits[i]->text());
    }
    if (m_model.accept()) {
        QDialog::accept();
    }
}

}  // namespace dorvane::gui
