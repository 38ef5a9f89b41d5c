// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include "company/companyeditor.h"
#include "gui/companydialog.h"
#include "gui/employeedialog.h"
#include "gui/importprefsdialog.h"
#include "gui/preferencesdialog.h"
#include "gui/qtuiport.h"
#include "import/assignment.h"
#include "mail/preferences.h"

namespace dorvane::gui {

void layOutWithOkCancel(QDialog* dialog, QLayout* body) {
    auto* buttons = new QDialogButtonBox(dialog);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("OKButton"));
    ok->setDefault(true);
    QPushButton* cancel =
        buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("CancelButton"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);

    auto* layout = new QVBoxLayout(dialog);
    layout->addLayout(body);
    layout->addStretch(1);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

namespace {

// While a dialog is open, the boxes core shows for it (e.g. "All fields are required !") sit
// on the dialog rather than on the window behind it.
class BoxesOn {
public:
    BoxesOn(QtUiPort& ui, QWidget* owner) : m_ui(ui), m_before(ui.parentWidget()) {
        m_ui.setParentWidget(owner);
    }
    ~BoxesOn() { m_ui.setParentWidget(m_before); }
    BoxesOn(const BoxesOn&) = delete;
    BoxesOn& operator=(const BoxesOn&) = delete;

private:
    QtUiPort& m_ui;
    QPointer<QWidget> m_before;
};

}  // namespace

void registerDialogs(QtUiPort& ui, platform::SettingsStore& settings,
                     const platform::ProgramFolder* folder) {
    ui.registerDialog("Dialog", [&ui, &settings, folder](QWidget* parent, ui::DialogModel& model) {
        auto* preferences = dynamic_cast<mail::MailPreferencesModel*>(&model);
        if (preferences == nullptr) {
            return false;
        }
        PreferencesDialog dialog(*preferences, settings, folder, parent);
        const BoxesOn boxes(ui, &dialog);
        return dialog.exec() == QDialog::Accepted;
    });
    ui.registerDialog("Dialog2", [&ui](QWidget* parent, ui::DialogModel& model) {
        auto* editor = dynamic_cast<company::CompanyEditorModel*>(&model);
        if (editor == nullptr) {
            return false;
        }
        CompanyDialog dialog(*editor, parent);
        const BoxesOn boxes(ui, &dialog);
        return dialog.exec() == QDialog::Accepted;
    });
    ui.registerDialog("Dialog3", [&ui](QWidget* parent, ui::DialogModel& model) {
        auto* preferences = dynamic_cast<imports::ImportPreferencesModel*>(&model);
        if (preferences == nullptr) {
            return false;
        }
        ImportPrefsDialog dialog(*preferences, parent);
        const BoxesOn boxes(ui, &dialog);
        return dialog.exec() == QDialog::Accepted;
    });
    ui.registerDialog("Dialog4", [&ui](QWidget* parent, ui::DialogModel& model) {
        auto* choice = dynamic_cast<handheld::EmployeeChoiceModel*>(&model);
        if (choice == nullptr) {
            return false;
        }
        EmployeeDialog dialog(*choice, parent);
        const BoxesOn boxes(ui, &dialog);
        return dialog.exec() == QDialog::Accepted;
    });
}

}  // namespace dorvane::gui
