// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the mail preferences dialog `Dialog`: renders core's MailPreferencesModel.
//
// The controls are built from core's control table, each with its control name as objectName.
// Opening shows the model; OK copies the controls back into the model and writes it to the
// settings store, once; Cancel (or Escape) closes and writes nothing. When the store cannot be
// written the dialog says so and stays open.
#pragma once

#include <QDialog>

#include "mail/preferences.h"
#include "shell/settings.h"

class QButtonGroup;

namespace dorvane::gui {

class PreferencesDialog final : public QDialog {
    Q_OBJECT

public:
    PreferencesDialog(mail::MailPreferencesModel& model, shell::SettingsStore& store,
                      QWidget* parent = nullptr);

    void accept() override;

private:
    void buildControls();
    void showModel();
    void takeModel();

    mail::MailPreferencesModel& m_model;
    shell::SettingsStore& m_store;
    QButtonGroup* m_options = nullptr;
};

}  // namespace dorvane::gui
