// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/importprefsdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "gui/dialogs.h"
#include "gui/qtstrings.h"

namespace dorvane::gui {

namespace {

// The entry a list shows again: -1 (none) only for an empty list.
int shownIndex(const imports::ImportPreferencesModel::Choice& choice) {
    if (choice.entries.empty()) {
        return -1;
    }
    return choice.selected < choice.entries.size() ? static_cast<int>(choice.selected) : 0;
}

void takeIndex(const QComboBox* combo, imports::ImportPreferencesModel::Choice& choice) {
    if (combo->currentIndex() >= 0) {
        choice.selected = static_cast<std::size_t>(combo->currentIndex());
    }
}

}  // namespace

ImportPrefsDialog::ImportPrefsDialog(imports::ImportPreferencesModel& model, QWidget* parent)
    : QDialog(parent), m_model(model) {
    setObjectName(QStringLiteral("Dialog3"));
    setWindowTitle(QStringLiteral("Import Preferences"));

    auto* caption = new QLabel(toQString(m_model.label1), this);
    caption->setObjectName(QStringLiteral("Label1"));
    caption->setTextFormat(Qt::PlainText);
    caption->setWordWrap(true);

    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_items = addChoice("itemlist", m_model.itemlist);
    m_itemGroups = addChoice("itemgrouplist", m_model.itemgrouplist);
    m_terms = addChoice("termlist", m_model.termlist);
    m_accounts = addChoice("Accountlist", m_model.Accountlist);
    form->addRow(QStringLiteral("&Item:"), m_items);
    form->addRow(QStringLiteral("Item &group:"), m_itemGroups);
    form->addRow(QStringLiteral("&Terms:"), m_terms);
    form->addRow(QStringLiteral("&Account:"), m_accounts);

    m_ignoreCustomer =
        new QCheckBox(QStringLiteral("Import Authorize.Net receipts &without a customer"), this);
    m_ignoreCustomer->setObjectName(QStringLiteral("IgnoreAuthNetCust"));
    m_ignoreCustomer->setChecked(m_model.IgnoreAuthNetCust);
    m_quotedFields = new QCheckBox(
        QStringLiteral("Read Authorize.Net downloads with &quoted fields (\"O'Brien, Inc.\")"),
        this);
    m_quotedFields->setObjectName(QStringLiteral("QuotedFields"));
    m_quotedFields->setChecked(m_model.QuotedFields);

    auto* body = new QVBoxLayout;
    body->addWidget(caption);
    body->addSpacing(6);
    body->addLayout(form);
    body->addWidget(m_ignoreCustomer);
    body->addWidget(m_quotedFields);
    layOutWithOkCancel(this, body);
}

QComboBox* ImportPrefsDialog::addChoice(const char* controlName,
                                        const imports::ImportPreferencesModel::Choice& choice) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(QString::fromUtf8(controlName));
    combo->setMinimumContentsLength(28);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const std::string& entry : choice.entries) {
        combo->addItem(toQString(entry));
    }
    combo->setCurrentIndex(shownIndex(choice));
    return combo;
}

void ImportPrefsDialog::accept() {
    takeIndex(m_items, m_model.itemlist);
    takeIndex(m_itemGroups, m_model.itemgrouplist);
    takeIndex(m_terms, m_model.termlist);
    takeIndex(m_accounts, m_model.Accountlist);
    m_model.IgnoreAuthNetCust = m_ignoreCustomer->isChecked();
    m_model.QuotedFields = m_quotedFields->isChecked();
    QDialog::accept();
}

}  // namespace dorvane::gui
