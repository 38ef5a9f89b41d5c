// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/employeedialog.h"

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

#include "gui/dialogs.h"
#include "gui/qtstrings.h"

namespace dorvane::gui {

EmployeeDialog::EmployeeDialog(handheld::EmployeeChoiceModel& model, QWidget* parent)
    : QDialog(parent), m_model(model) {
    setObjectName(QStringLiteral("Dialog4"));
    setWindowTitle(QStringLiteral("Synchronize Handheld"));

    auto* label = new QLabel(
        toQString(handheld::EmployeeChoiceModel::kLabel).remove(QLatin1Char('\r')).trimmed(), this);
    label->setObjectName(QStringLiteral("Label2"));
    label->setTextFormat(Qt::PlainText);

    m_combo = new QComboBox(this);
    m_combo->setObjectName(QStringLiteral("Combo1"));
    m_combo->setMinimumContentsLength(36);
    m_combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const std::string& entry : m_model.entries()) {
        m_combo->addItem(toQString(entry));
    }
    m_combo->setCurrentIndex(m_model.selected() ? static_cast<int>(*m_model.selected()) : -1);
    label->setBuddy(m_combo);

    auto* body = new QVBoxLayout;
    body->addWidget(label);
    body->addWidget(m_combo);
    layOutWithOkCancel(this, body);
}

void EmployeeDialog::accept() {
    const int index = m_combo->currentIndex();
    m_model.select(index >= 0 ? std::optional<std::size_t>(static_cast<std::size_t>(index))
                              : std::nullopt);
    QDialog::accept();
}

void EmployeeDialog::reject() {
    m_model.select(std::nullopt);
    QDialog::reject();
}

}  // namespace dorvane::gui
