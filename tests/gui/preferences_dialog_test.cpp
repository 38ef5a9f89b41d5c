// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — the mail preferences dialog `Dialog` over a settings file of its own.
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "guitestsupport.h"
#include "mail/preferences.h"
#include "shell/application.h"
#include "shell/settings.h"
#include "support/testsupport.h"

namespace dorvane::test {

namespace {

// Where each control's value is kept: section and key of the settings file.
struct Place {
    const char* control;
    const char* section;
    const char* key;
    bool isText;
};

constexpr Place kPlaces[] = {
    {"smtpservertext", "SMTP", "Hostname", true},
    {"SmtpUsername", "SMTP", "User", true},
    {"SMTPPassword", "SMTP", "Pwd", true},
    {"SMTPPort", "SMTP", "Port", true},
    {"testAdrText", "Settings", "EmailAdr", true},
    {"bcctext", "Settings", "BCCAdr", true},
    {"tracecheck", "SMTP", "Trace", false},
    {"testEmailCheck", "Settings", "Test", false},
    {"returnReceiptCheck", "Settings", "ReturnReceipt", false},
    {"bccCheck", "Settings", "BCC", false},
    {"alwayssendBCC", "Settings", "alwaysBCC", false},
    {"altEmailCheck", "Settings", "altEmail", false},
    {"EncryptCheck", "Settings", "Encrypt", false},
    {"attachCheck", "Settings", "Attachment", false},
};

const Place& placeOf(const QString& control) {
    for (const Place& place : kPlaces) {
        if (control == QString::fromUtf8(place.control)) {
            return place;
        }
    }
    qFatal("no such control");
}

// What a control shows when nothing is stored.
std::string defaultOf(const Place& place) {
    if (!place.isText) {
        return "0";
    }
    return std::string(place.key) == "Port" ? "25" : "";
}

QLabel* labelOf(QWidget* dialog, QWidget* buddy) {
    for (QLabel* label : dialog->findChildren<QLabel*>()) {
        if (label->buddy() == buddy) {
            return label;
        }
    }
    return nullptr;
}

bool sameRow(const QWidget* a, const QWidget* b) {
    const QRect ra(a->mapToGlobal(QPoint(0, 0)), a->size());
    const QRect rb(b->mapToGlobal(QPoint(0, 0)), b->size());
    return ra.center().y() >= rb.top() && ra.center().y() <= rb.bottom();
}

// Clicks a check box or option button on its indicator, as a person does.
void tick(QAbstractButton* button) {
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

void typeInto(QLineEdit* edit, const QString& text) {
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

void press(QDialog* dialog, const char* button) {
    QTest::mouseClick(dialog->findChild<QPushButton*>(QString::fromUtf8(button)), Qt::LeftButton);
}

}  // namespace

class PreferencesDialogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void controlsCarryTheirNamesAndCaptions();
    void storedValueShowsInItsOwnControl_data();
    void storedValueShowsInItsOwnControl();
    void controlFeedsItsOwnKey_data();
    void controlFeedsItsOwnKey();
    void optionButtonFollowsMailOption_data();
    void optionButtonFollowsMailOption();
    void okWritesEveryKey();
    void cancelWritesNothing_data();
    void cancelWritesNothing();
    void unwritableStoreKeepsDialogOpen();
    void parameterMenuEditsTheUserSettings();
    void screenshot();

private:
    // Writes `ini` as the settings file (nothing: no file) and opens a store on it.
    void useSettings(const std::string& ini);
    // Opens the dialog through the UI port, lets `person` act on it, answers runDialog.
    bool openDialog(const std::function<void(QDialog*)>& person);
    // A value as the file on disk holds it now.
    std::string stored(const char* section, const char* key) const {
        return shell::SettingsStore(m_file).get(section, key);
    }

    std::unique_ptr<TempDir> m_dir;
    std::filesystem::path m_file;
    std::unique_ptr<gui::QtUiPort> m_ui;
    std::unique_ptr<shell::SettingsStore> m_store;
};

void PreferencesDialogTest::init() {
    m_dir = std::make_unique<TempDir>();
    m_file = m_dir->path() / "DV01.ini";
    m_ui = std::make_unique<gui::QtUiPort>();
}

void PreferencesDialogTest::cleanup() {
    m_ui.reset();
    m_store.reset();
    m_dir.reset();
}

void PreferencesDialogTest::useSettings(const std::string& ini) {
    if (!ini.empty()) {
        writeFile(m_file, ini);
    }
    m_store = std::make_unique<shell::SettingsStore>(m_file);
    gui::registerDialogs(*m_ui, *m_store);
}

bool PreferencesDialogTest::openDialog(const std::function<void(QDialog*)>& person) {
    whenModal<QDialog>([person](QDialog* dialog) {
        person(dialog);
        if (dialog->isVisible()) {  // a failed check left it open
            dialog->reject();
        }
    });
    mail::MailPreferencesModel model(*m_store);
    return m_ui->runDialog(model);
}

void PreferencesDialogTest::controlsCarryTheirNamesAndCaptions() {
    useSettings({});
    openDialog([](QDialog* dialog) {
        QCOMPARE(dialog->objectName(), QStringLiteral("Dialog"));
        const auto edit = [dialog](const char* name) {
            return dialog->findChild<QLineEdit*>(QString::fromUtf8(name));
        };
        const std::pair<const char*, const char*> labelled[] = {
            {"smtpservertext", "SMTP Server Name"},
            {"SmtpUsername", "SMTP User Name"},
            {"SMTPPassword", "SMTP Password"},
            {"SMTPPort", "SMTP Port"},
        };
        for (const auto& [name, caption] : labelled) {
            QVERIFY2(edit(name) && edit(name)->isVisible(), name);
            QLabel* label = labelOf(dialog, edit(name));
            QVERIFY2(label && label->isVisible(), name);
            QCOMPARE(label->text(), QString::fromUtf8(caption));
            QVERIFY(sameRow(edit(name), label));
            QCOMPARE(edit(name)->echoMode(),
                     std::string(name) == "SMTPPassword" ? QLineEdit::Password : QLineEdit::Normal);
        }

        const std::pair<const char*, const char*> checks[] = {
            {"tracecheck", "Trace"},
            {"testEmailCheck", "Test Email"},
            {"returnReceiptCheck", "RequestDeliveryReceipts"},
            {"bccCheck", "Send BCC to:"},
            {"alwayssendBCC", "Always send BCC"},
            {"altEmailCheck", "Choose Alternate Email Address"},
            {"EncryptCheck", "Encrypt with Digital Envelope"},
            {"attachCheck", "SendXMLAttachments"},
        };
        for (const auto& [name, caption] : checks) {
            auto* check = dialog->findChild<QCheckBox*>(QString::fromUtf8(name));
            QVERIFY2(check && check->isVisible(), name);
            QCOMPARE(check->text(), QString::fromUtf8(caption));
        }

        // The two address boxes sit beside their check boxes, their captions as hints.
        QLineEdit* testAddress = edit("testAdrText");
        QVERIFY(testAddress && testAddress->isVisible());
        QCOMPARE(testAddress->placeholderText(), QStringLiteral("enter your test email address"));
        QVERIFY(
            sameRow(testAddress, dialog->findChild<QCheckBox*>(QStringLiteral("testEmailCheck"))));
        QLineEdit* bcc = edit("bcctext");
        QVERIFY(bcc && bcc->isVisible());
        QCOMPARE(bcc->placeholderText(), QStringLiteral("enter your BCC email address"));
        QCOMPARE(bcc->toolTip(), QStringLiteral("BCC addresses separated with ;"));
        QVERIFY(sameRow(bcc, dialog->findChild<QCheckBox*>(QStringLiteral("bccCheck"))));

        auto* frame = dialog->findChild<QGroupBox*>(QStringLiteral("Frame1"));
        QVERIFY(frame && frame->isVisible());
        QCOMPARE(frame->title(), QStringLiteral("Mail Options"));
        const std::pair<const char*, const char*> options[] = {
            {"useSMTPOption", "use SMTP"},
            {"useOutlookOption", "use Outlook"},
            {"directdeliveryoption", "direct delivery"},
        };
        for (const auto& [name, caption] : options) {
            auto* option = dialog->findChild<QRadioButton*>(QString::fromUtf8(name));
            QVERIFY2(option && option->isVisible(), name);
            QCOMPARE(option->text(), QString::fromUtf8(caption));
            QCOMPARE(option->parentWidget(), frame);
        }

        auto* ok = dialog->findChild<QPushButton*>(QStringLiteral("OKButton"));
        auto* cancel = dialog->findChild<QPushButton*>(QStringLiteral("CancelButton"));
        QVERIFY(ok && cancel);
        QCOMPARE(ok->text(), QStringLiteral("OK"));
        QCOMPARE(cancel->text(), QStringLiteral("Cancel"));
        QVERIFY(ok->isDefault());
        dialog->reject();
    });
}

void PreferencesDialogTest::storedValueShowsInItsOwnControl_data() {
    QTest::addColumn<QString>("control");
    for (const Place& place : kPlaces) {
        QTest::newRow(place.control) << QString::fromUtf8(place.control);
    }
}

void PreferencesDialogTest::storedValueShowsInItsOwnControl() {
    QFETCH(QString, control);
    const Place& place = placeOf(control);
    const std::string value = place.isText ? "value of " + control.toStdString() : "1";
    useSettings("[" + std::string(place.section) + "]\n" + place.key + "=" + value + "\n");

    openDialog([&](QDialog* dialog) {
        for (const Place& other : kPlaces) {
            const std::string expected = &other == &place ? value : defaultOf(other);
            const QString name = QString::fromUtf8(other.control);
            if (other.isText) {
                QCOMPARE(dialog->findChild<QLineEdit*>(name)->text(),
                         QString::fromStdString(expected));
            } else {
                QCOMPARE(dialog->findChild<QCheckBox*>(name)->isChecked(), expected == "1");
            }
        }
        dialog->reject();
    });
}

void PreferencesDialogTest::controlFeedsItsOwnKey_data() {
    storedValueShowsInItsOwnControl_data();
}

void PreferencesDialogTest::controlFeedsItsOwnKey() {
    QFETCH(QString, control);
    const Place& place = placeOf(control);
    useSettings({});
    const std::string value = place.isText ? "typed into " + control.toStdString() : "1";

    const bool accepted = openDialog([&](QDialog* dialog) {
        if (place.isText) {
            typeInto(dialog->findChild<QLineEdit*>(control), QString::fromStdString(value));
        } else {
            tick(dialog->findChild<QCheckBox*>(control));
        }
        press(dialog, "OKButton");
    });

    QVERIFY(accepted);
    for (const Place& other : kPlaces) {
        QCOMPARE(stored(other.section, other.key), &other == &place ? value : defaultOf(other));
    }
}

void PreferencesDialogTest::optionButtonFollowsMailOption_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("checked");  // empty: none
    QTest::newRow("nothing stored") << QString() << "useSMTPOption";
    QTest::newRow("0") << "0"
                       << "useSMTPOption";
    QTest::newRow("1") << "1"
                       << "useOutlookOption";
    QTest::newRow("2") << "2"
                       << "directdeliveryoption";
    QTest::newRow("7") << "7" << QString();
    QTest::newRow("-1") << "-1" << QString();
}

// With no button set, OK leaves the stored MailOption as it was.
void PreferencesDialogTest::optionButtonFollowsMailOption() {
    QFETCH(QString, stored);
    QFETCH(QString, checked);
    useSettings(stored.isEmpty() ? std::string("[SMTP]\nHostname=mail.example.com\n")
                                 : "[Settings]\nMailOption=" + stored.toStdString() + "\n");

    const bool accepted = openDialog([&](QDialog* dialog) {
        QStringList set;
        for (auto* option : dialog->findChild<QGroupBox*>(QStringLiteral("Frame1"))
                                ->findChildren<QRadioButton*>()) {
            if (option->isChecked()) {
                set << option->objectName();
            }
        }
        QCOMPARE(set, checked.isEmpty() ? QStringList() : QStringList{checked});
        press(dialog, "OKButton");
    });

    QVERIFY(accepted);
    const std::string expected = stored.isEmpty() ? "0" : stored.toStdString();
    QCOMPARE(this->stored("Settings", "MailOption"), expected);
}

void PreferencesDialogTest::okWritesEveryKey() {
    useSettings(
        "[SMTP]\nHostname=old.example.com\nTrace=1\n"
        "[Settings]\nMailOption=7\nEncrypt=1\nBCCAdr=old@example.com\n");

    const bool accepted = openDialog([](QDialog* dialog) {
        const auto edit = [dialog](const char* name) {
            return dialog->findChild<QLineEdit*>(QString::fromUtf8(name));
        };
        const auto check = [dialog](const char* name) {
            return dialog->findChild<QAbstractButton*>(QString::fromUtf8(name));
        };
        typeInto(edit("smtpservertext"), QStringLiteral("smtp.harbourlight.example"));
        typeInto(edit("SmtpUsername"), QStringLiteral("billing@harbourlight.example"));
        typeInto(edit("SMTPPassword"), QStringLiteral("pa;ss=word"));
        typeInto(edit("SMTPPort"), QStringLiteral("587"));
        tick(check("tracecheck"));  // was on
        tick(check("testEmailCheck"));
        typeInto(edit("testAdrText"), QStringLiteral("me@harbourlight.example"));
        tick(check("directdeliveryoption"));
        tick(check("returnReceiptCheck"));
        tick(check("bccCheck"));
        typeInto(edit("bcctext"), QStringLiteral("a@example.com;b@example.com"));
        tick(check("alwayssendBCC"));
        tick(check("altEmailCheck"));
        tick(check("EncryptCheck"));  // was on
        tick(check("attachCheck"));
        QCOMPARE(edit("SMTPPassword")->displayText().contains(QStringLiteral("pa;ss")), false);
        press(dialog, "OKButton");
    });

    QVERIFY(accepted);
    QCOMPARE(stored("SMTP", "Hostname"), std::string("smtp.harbourlight.example"));
    QCOMPARE(stored("SMTP", "User"), std::string("billing@harbourlight.example"));
    QCOMPARE(stored("SMTP", "Pwd"), std::string("pa;ss=word"));
    QCOMPARE(stored("SMTP", "Port"), std::string("587"));
    QCOMPARE(stored("SMTP", "Trace"), std::string("0"));
    QCOMPARE(stored("Settings", "Test"), std::string("1"));
    QCOMPARE(stored("Settings", "EmailAdr"), std::string("me@harbourlight.example"));
    QCOMPARE(stored("Settings", "MailOption"), std::string("2"));
    QCOMPARE(stored("Settings", "Attachment"), std::string("1"));
    QCOMPARE(stored("Settings", "ReturnReceipt"), std::string("1"));
    QCOMPARE(stored("Settings", "BCC"), std::string("1"));
    QCOMPARE(stored("Settings", "altEmail"), std::string("1"));
    QCOMPARE(stored("Settings", "alwaysBCC"), std::string("1"));
    QCOMPARE(stored("Settings", "BCCAdr"), std::string("a@example.com;b@example.com"));
    QCOMPARE(stored("Settings", "Encrypt"), std::string("0"));
    // The store the program reads from has them too, without reading the file again.
    QCOMPARE(m_store->get("SMTP", "Port"), std::string("587"));
}

void PreferencesDialogTest::cancelWritesNothing_data() {
    QTest::addColumn<bool>("fileExists");
    QTest::addColumn<QString>("how");
    QTest::newRow("Cancel button") << true << "CancelButton";
    QTest::newRow("Escape key") << true << "Escape";
    QTest::newRow("Cancel button, no file yet") << false << "CancelButton";
}

void PreferencesDialogTest::cancelWritesNothing() {
    QFETCH(bool, fileExists);
    QFETCH(QString, how);
    const std::string before =
        "[SMTP]\nHostname=mail.example.com\n; kept as written\n[Settings]\nMailOption=1\n";
    useSettings(fileExists ? before : std::string());

    const bool accepted = openDialog([&](QDialog* dialog) {
        typeInto(dialog->findChild<QLineEdit*>(QStringLiteral("smtpservertext")),
                 QStringLiteral("other.example.com"));
        tick(dialog->findChild<QAbstractButton*>(QStringLiteral("directdeliveryoption")));
        tick(dialog->findChild<QAbstractButton*>(QStringLiteral("attachCheck")));
        if (how == QStringLiteral("Escape")) {
            QTest::keyClick(dialog, Qt::Key_Escape);
        } else {
            press(dialog, "CancelButton");
        }
    });

    QVERIFY(!accepted);
    QCOMPARE(std::filesystem::exists(m_file), fileExists);
    if (fileExists) {
        QCOMPARE(readFile(m_file), before);
    }
    QCOMPARE(m_store->get("SMTP", "Hostname"), std::string(fileExists ? "mail.example.com" : ""));
}

void PreferencesDialogTest::unwritableStoreKeepsDialogOpen() {
    writeFile(m_dir->path() / "not-a-folder", "x");
    m_file = m_dir->path() / "not-a-folder" / "DV01.ini";
    useSettings({});

    MessageBoxRecorder boxes;
    bool stayedOpen = false;
    const bool accepted = openDialog([&](QDialog* dialog) {
        press(dialog, "OKButton");
        stayedOpen = dialog->isVisible();
        press(dialog, "CancelButton");
    });

    QVERIFY(stayedOpen);
    QVERIFY(!accepted);
    QCOMPARE(boxes.texts.size(), 1);
    QVERIFY2(boxes.texts[0].startsWith(QStringLiteral("Could not save the preferences in ")),
             qPrintable(boxes.texts[0]));
    QVERIFY(boxes.texts[0].contains(QStringLiteral("DV01.ini")));
    QCOMPARE(boxes.owners[0], QStringLiteral("Dialog"));
}

// Preferences > Parameter opens the dialog over the window with what the user's settings file
// holds now; OK writes it, Cancel does not.
void PreferencesDialogTest::parameterMenuEditsTheUserSettings() {
    const ScopedEnv config("XDG_CONFIG_HOME", QByteArray::fromStdString(m_dir->path().string()));
    const std::filesystem::path userFile = m_dir->path() / "dorvane" / "DV01.ini";
    std::filesystem::create_directories(userFile.parent_path());
    writeFile(userFile, "[SMTP]\nHostname=first.example.com\n");

    TempDir home;
    shell::Application app(*m_ui, shell::StartOptions{home.path().string()}, noQuickBooks());
    gui::registerDialogs(*m_ui, app.settings());
    gui::MainWindowView view(app);
    m_ui->setParentWidget(&view);
    view.show();
    QAction* parameter = view.findChild<QAction*>(QStringLiteral("Parameter"));
    QVERIFY(parameter);

    // Written by another copy of the program while this one runs.
    writeFile(userFile, "[SMTP]\nHostname=second.example.com\n");
    QString shown;
    QWidget* owner = nullptr;
    whenModal<QDialog>([&](QDialog* dialog) {
        shown = dialog->findChild<QLineEdit*>(QStringLiteral("smtpservertext"))->text();
        owner = dialog->parentWidget();
        typeInto(dialog->findChild<QLineEdit*>(QStringLiteral("SMTPPort")), QStringLiteral("2525"));
        press(dialog, "OKButton");
    });
    parameter->trigger();
    QCOMPARE(shown, QStringLiteral("second.example.com"));
    QCOMPARE(owner, static_cast<QWidget*>(&view));
    QCOMPARE(shell::SettingsStore(userFile).get("SMTP", "Port"), std::string("2525"));
    QCOMPARE(app.settings().get("SMTP", "Port"), std::string("2525"));

    const std::string afterOk = readFile(userFile);
    whenModal<QDialog>([](QDialog* dialog) {
        typeInto(dialog->findChild<QLineEdit*>(QStringLiteral("SMTPPort")), QStringLiteral("25"));
        press(dialog, "CancelButton");
    });
    parameter->trigger();
    QCOMPARE(readFile(userFile), afterOk);
    m_ui->setParentWidget(nullptr);
}

void PreferencesDialogTest::screenshot() {
    const QString file = screenshotFile(QStringLiteral("Dialog"));
    if (file.isEmpty()) {
        QSKIP("DORVANE_SCREENSHOTS not set");
    }
    useSettings(
        "[SMTP]\nHostname=smtp.harbourlight.example\nUser=billing\nPwd=secret\nPort=587\n"
        "[Settings]\nTest=1\nEmailAdr=me@harbourlight.example\nMailOption=0\nBCC=1\n");
    openDialog([&file](QDialog* dialog) {
        QTest::qWait(50);
        QVERIFY(dialog->grab().save(file));
        dialog->reject();
    });
}

int runPreferencesDialogTests(int argc, char** argv) {
    PreferencesDialogTest suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "preferences_dialog_test.moc"
