// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the preferences dialog `Dialog`: the mail preferences (core's
// MailPreferencesModel) on its first page, the QuickBooks connection on its second and, given
// the program folder, what is added to a mailed document (core's DocumentOptionsModel) on a
// third, "Documents".
//
// The mail controls are built from core's control table, each with its control name as
// objectName. Opening shows the model and the stored connection; OK copies the controls back
// into the model and writes it to the settings store, once, then the connection when it was
// changed, then the Documents page's changes; Cancel (or Escape) closes and writes nothing.
// When the store cannot be written, or a connection or Documents value makes no sense, the
// dialog says so and stays open (a wrong Documents value is found before anything is written).
//
// The connection page also saves the .qwc file to add to the Web Connector. The program
// chooses its connection when it starts, so a changed one takes effect at the next start.
#pragma once

#include <optional>

#include <QDialog>

#include "mail/preferences.h"
#include "platform/settings.h"
#include "webconnector/config.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLayout;
class QLineEdit;
class QPlainTextEdit;
class QTabWidget;
class QWidget;

namespace dorvane::gui {

class PreferencesDialog final : public QDialog {
    Q_OBJECT

public:
    // Without a program folder there is no Documents page.
    PreferencesDialog(mail::MailPreferencesModel& model, platform::SettingsStore& store,
                      const platform::ProgramFolder* folder = nullptr, QWidget* parent = nullptr);

    void accept() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QLayout* buildControls();
    QWidget* buildConnectionPage();
    // Its controls write into m_documents as the person edits them, so an untouched page
    // changes nothing.
    QWidget* buildDocumentsPage();
    void showWords();
    // False (having said why, on the page) when the Documents page holds a wrong value.
    bool documentsAcceptable();
    bool saveDocuments();
    void showModel();
    void takeModel();
    void showConnection();
    webconnector::ConnectionPreferences shownConnection() const;
    // Writes the connection page when it differs from what is stored; false (having said
    // why) when it could not.
    bool saveConnection();
    void saveQwc();
    void browse(QLineEdit* edit, const QString& title);

    mail::MailPreferencesModel& m_model;
    platform::SettingsStore& m_store;
    QButtonGroup* m_options = nullptr;
    QTabWidget* m_pages = nullptr;
    QWidget* m_connectionPage = nullptr;
    webconnector::ConnectionPreferences m_connection;  // as stored
    QCheckBox* m_webConnector = nullptr;
    QLineEdit* m_port = nullptr;
    QLineEdit* m_host = nullptr;
    QLineEdit* m_certificate = nullptr;
    QLineEdit* m_key = nullptr;
    QLineEdit* m_wait = nullptr;
    QLineEdit* m_user = nullptr;
    QLineEdit* m_password = nullptr;
    std::optional<mail::DocumentOptionsModel> m_documents;
    QWidget* m_documentsPage = nullptr;
    QComboBox* m_wordsType = nullptr;
    QLineEdit* m_subject = nullptr;
    QPlainTextEdit* m_cover = nullptr;
    bool m_loadProblemShown = false;
};

}  // namespace dorvane::gui
