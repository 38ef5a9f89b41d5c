// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — core's UI port answered by Qt: message boxes, input and file boxes, the
// desktop, the busy pointer, and the dialogs core opens by name: the mail preferences `Dialog`
// over a settings file of its own and the company information editor `Dialog2`.
#include "gui/qtuiport.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCursor>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QGuiApplication>
#include <QInputDialog>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTabWidget>
#include <QUrl>

#include "company/companyeditor.h"
#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "guitestsupport.h"
#include "mail/documentextras.h"
#include "mail/preferences.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::test {

namespace {

class NamedModel final : public ui::DialogModel {
public:
    explicit NamedModel(std::string name) : m_name(std::move(name)) {}
    std::string_view dialogName() const override { return m_name; }

private:
    std::string m_name;
};

// Receives the desktop's "open this file" requests instead of the desktop.
class DesktopRecorder : public QObject {
    Q_OBJECT

public:
    QList<QUrl> urls;

public slots:
    void open(const QUrl& url) { urls << url; }
};

Qt::CursorShape overrideShape() {
    const QCursor* cursor = QGuiApplication::overrideCursor();
    return cursor == nullptr ? Qt::BitmapCursor : cursor->shape();  // Bitmap: none set
}

// Where each preference control's value is kept: section and key of the settings file.
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

// What a control shows when nothing is stored.
std::string defaultOf(const Place& place) {
    return !place.isText ? "0" : std::string(place.key) == "Port" ? "25" : "";
}

// What the control shows now, as the settings file would hold it.
std::string shownIn(QWidget* dialog, const Place& place) {
    const QString name = QString::fromUtf8(place.control);
    if (place.isText) {
        return dialog->findChild<QLineEdit*>(name)->text().toStdString();
    }
    return dialog->findChild<QCheckBox*>(name)->isChecked() ? "1" : "0";
}

// Every text box of a dialog in the order it was made, as "objectName=text".
QString boxesOf(QWidget* dialog) {
    QStringList out;
    for (auto* edit : dialog->findChildren<QLineEdit*>()) {
        out << edit->objectName() + QLatin1Char('=') + edit->text();
    }
    return out.join(QStringLiteral(", "));
}

constexpr const char* kCompanyFile = "C:\\Books\\Harbour Light.qbw";

// The legal address still holds an old address: OK makes it the address again.
constexpr const char* kRecord = R"(<CompanyInfo><CompanyRet>
    <FileName>C:\Books\Harbour Light.qbw</FileName>
    <CompanyName>Harbour Light Supplies</CompanyName>
    <LegalCompanyName>Harbour Light Supplies (old)</LegalCompanyName>
    <Address><Addr1>12 Harbour Road</Addr1><Addr2>Unit 4</Addr2><City>Portland</City>
      <State>ME</State><PostalCode>04101</PostalCode><Country>US</Country></Address>
    <LegalAddress><Addr1>1 Old Wharf</Addr1><Addr2></Addr2><City>Bath</City>
      <State>ME</State><PostalCode>04530</PostalCode><Country>US</Country></LegalAddress>
    <Phone>207-555-0100</Phone><Fax>207-555-0101</Fax><Email>office@harbourlight.example</Email>
    <CompanyWebSite>www.harbourlight.example</CompanyWebSite>
</CompanyRet></CompanyInfo>)";

}  // namespace

class QtUiPortTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void messageBoxShowsTheBoxAndAnswersTheButton();
    void inputAndFileBoxesAnswerWhatWasChosenOrNothing();
    void openWithDesktopHandsOverAFileUrl();
    void busyPointerNestsAndGivesWayToBoxes();
    void dialogsAreFoundByName();

    void preferencesControlsCarryTheirNames();
    void preferencesShowEachStoredValueInItsOwnControl();
    void preferencesOkWritesEveryKey();
    void preferencesOptionButtonsFollowMailOption();
    void preferencesCancelWritesNothing();
    void preferencesUnwritableStoreKeepsDialogOpen();
    void parameterMenuOpensWhatTheFileHoldsNow();
    void connectionPageShowsAndWritesTheStoredConnection();
    void connectionPageRefusesValuesThatMakeNoSense();
    void connectionPageSavesTheQwcFile();
    void documentsPageWritesOnlyWhatWasChanged();

    void companyOpensWithTheRecordInItsBoxes();
    void companyOkWritesAddressIntoBothPlacesAndOptionalsMayBeEmpty();
    void companyEmptyRequiredFieldKeepsDialogOpen();

private:
    // Writes `ini` as the settings file (nothing: no file) and opens a store on it.
    void useSettings(const std::string& ini);
    // Opens the model's dialog through the UI port, lets `person` act on it, answers runDialog.
    bool run(ui::DialogModel& model, const std::function<void(QDialog*)>& person);
    bool openPreferences(const std::function<void(QDialog*)>& person) {
        mail::MailPreferencesModel model(*m_store);
        return run(model, person);
    }
    bool openCompany(const std::function<void(QDialog*)>& person) {
        company::CompanyEditorModel model(*m_ui, record(), kCompanyFile);
        return run(model, person);
    }
    // A value as the settings file on disk holds it now.
    std::string stored(const char* section, const char* key) const {
        return platform::SettingsStore(m_file).get(section, key);
    }
    xml::Node record() const { return m_document.selectOne("/CompanyInfo/CompanyRet"); }

    std::unique_ptr<TempDir> m_dir;
    std::filesystem::path m_file;
    std::unique_ptr<gui::QtUiPort> m_ui;
    std::unique_ptr<platform::SettingsStore> m_store;
    xml::Document m_document;
};

void QtUiPortTest::init() {
    m_dir = std::make_unique<TempDir>();
    m_file = m_dir->path() / "DV01.ini";
    m_ui = std::make_unique<gui::QtUiPort>();
    useSettings({});
    auto parsed = xml::Document::parse(kRecord);
    QVERIFY(parsed);
    m_document = std::move(*parsed);
}

void QtUiPortTest::cleanup() {
    m_ui.reset();
    m_store.reset();
    m_dir.reset();
}

void QtUiPortTest::useSettings(const std::string& ini) {
    std::error_code ignored;
    std::filesystem::remove(m_file, ignored);
    if (!ini.empty()) {
        writeFile(m_file, ini);
    }
    m_store = std::make_unique<platform::SettingsStore>(m_file);
    gui::registerDialogs(*m_ui, *m_store);
}

bool QtUiPortTest::run(ui::DialogModel& model, const std::function<void(QDialog*)>& person) {
    whenModal<QDialog>([person](QDialog* dialog) {
        person(dialog);
        if (dialog->isVisible()) {  // a failed check left it open
            dialog->reject();
        }
    });
    return m_ui->runDialog(model);
}

// ---- boxes, desktop, pointer ---------------------------------------------------------------

// Each button set: the icon and buttons shown, the answer of a pressed button, and the safe
// answer when the box is closed instead (Escape).
void QtUiPortTest::messageBoxShowsTheBoxAndAnswersTheButton() {
    using B = QMessageBox;
    using A = ui::Answer;
    using I = ui::Icon;
    using S = ui::Buttons;
    const std::tuple<I, S, B::Icon, B::StandardButtons, B::StandardButton, A, A> cases[] = {
        {I::None, S::Ok, B::NoIcon, B::Ok, B::Ok, A::Ok, A::Ok},
        {I::Information, S::OkCancel, B::Information, B::Ok | B::Cancel, B::Ok, A::Ok, A::Cancel},
        {I::Question, S::YesNo, B::Question, B::Yes | B::No, B::Yes, A::Yes, A::No},
        {I::Exclamation, S::YesNoCancel, B::Warning, B::Yes | B::No | B::Cancel, B::No, A::No,
         A::Cancel},
        {I::Critical, S::RetryCancel, B::Critical, B::Retry | B::Cancel, B::Retry, A::Retry,
         A::Cancel},
    };
    for (const auto& [icon, buttons, qtIcon, qtButtons, press, pressed, closed] : cases) {
        QString shown;  // icon, buttons, text format (plain: never markup), title, text
        whenModal<QMessageBox>([&shown, press = press](QMessageBox* box) {
            shown = QStringLiteral("%1 %2 %3 %4|%5")
                        .arg(int(box->icon()))
                        .arg(int(box->standardButtons()))
                        .arg(int(box->textFormat()))
                        .arg(box->windowTitle(), box->text());
            QTest::mouseClick(box->button(press), Qt::LeftButton);
        });
        QCOMPARE(m_ui->messageBox("Invoice 1042 <b>was</b> sent", "Dorvane", icon, buttons),
                 pressed);
        QCOMPARE(shown, QStringLiteral("%1 %2 %3 Dorvane|Invoice 1042 <b>was</b> sent")
                            .arg(int(qtIcon))
                            .arg(int(qtButtons))
                            .arg(int(Qt::PlainText)));
        whenModal<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(m_ui->messageBox("Continue?", "Dorvane", icon, buttons), closed);
    }
}

void QtUiPortTest::inputAndFileBoxesAnswerWhatWasChosenOrNothing() {
    QString shown;
    whenModal<QInputDialog>([&](QInputDialog* dialog) {
        shown = dialog->windowTitle() + QStringLiteral("|") + dialog->labelText() +
                QStringLiteral("|") + dialog->textValue();
        dialog->findChild<QLineEdit*>()->setText(QStringLiteral("Müller & Söhne"));
        dialog->accept();
    });
    const auto typed = m_ui->inputBox("Customer name", "New customer", "Mueller");
    QCOMPARE(shown, QStringLiteral("New customer|Customer name|Mueller"));
    QCOMPARE(QString::fromStdString(typed.value_or("")), QStringLiteral("Müller & Söhne"));
    whenModal<QInputDialog>([](QInputDialog* dialog) { dialog->reject(); });
    QVERIFY(!m_ui->inputBox("Customer name", "New customer", "Mueller").has_value());

    TempDir dir;
    writeFile(dir / "march.dvx", "<InvoiceRet/>");
    const QString chosen = QString::fromStdString((dir / "march.dvx").string());
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
        shown = dialog->windowTitle() + QStringLiteral("|") +
                dialog->nameFilters().join(QLatin1Char(';'));
        dialog->selectFile(chosen);
        static_cast<QDialog*>(dialog)->accept();  // as the Open button does
    });
    const auto path = m_ui->openFileDialog("Open exchange file", "Exchange file (*.dvx)");
    QCOMPARE(shown, QStringLiteral("Open exchange file|Exchange file (*.dvx)"));
    QCOMPARE(QString::fromStdString(path.value_or("")), chosen);
    // The next one starts where the last file was chosen.
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
        shown = dialog->directory().absolutePath();
        dialog->reject();
    });
    QVERIFY(!m_ui->openFileDialog("Open exchange file", "Exchange file (*.dvx)"));
    QCOMPARE(shown, QString::fromStdString(dir.path().string()));
}

void QtUiPortTest::openWithDesktopHandsOverAFileUrl() {
    DesktopRecorder desktop;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &desktop, "open");
    m_ui->openWithDesktop("/opt/dorvane/Dorvane Help#1.htm");
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(desktop.urls.size(), 1);
    QCOMPARE(desktop.urls[0].toLocalFile(), QStringLiteral("/opt/dorvane/Dorvane Help#1.htm"));
}

void QtUiPortTest::busyPointerNestsAndGivesWayToBoxes() {
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    m_ui->setBusy(true);
    m_ui->setBusy(true);
    QCOMPARE(overrideShape(), Qt::WaitCursor);

    Qt::CursorShape duringBox = Qt::BitmapCursor;
    whenModal<QMessageBox>([&](QMessageBox* box) {
        duringBox = overrideShape();
        box->accept();
    });
    (void)m_ui->messageBox("Could not send", "Dorvane", ui::Icon::Critical, ui::Buttons::Ok);
    QCOMPARE(duringBox, Qt::ArrowCursor);
    QCOMPARE(overrideShape(), Qt::WaitCursor);

    m_ui->setBusy(false);
    QCOMPARE(overrideShape(), Qt::WaitCursor);
    m_ui->setBusy(false);
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    m_ui->setBusy(false);  // one too many does not pop someone else's pointer
    QGuiApplication::setOverrideCursor(QCursor(Qt::CrossCursor));
    m_ui->setBusy(false);
    QCOMPARE(overrideShape(), Qt::CrossCursor);
    QGuiApplication::restoreOverrideCursor();
}

void QtUiPortTest::dialogsAreFoundByName() {
    QWidget owner;
    m_ui->setParentWidget(&owner);
    QWidget* parentSeen = nullptr;
    m_ui->registerDialog("Dialog2", [&parentSeen](QWidget* parent, ui::DialogModel&) {
        parentSeen = parent;
        return true;
    });
    NamedModel company("Dialog2");
    NamedModel unknown("Dialog9");
    QVERIFY(m_ui->runDialog(company) && !m_ui->runDialog(unknown));
    QCOMPARE(parentSeen, &owner);
    m_ui->setParentWidget(nullptr);
}

// ---- mail preferences ----------------------------------------------------------------------

// The mail page and the QuickBooks connection page; the passwords are not shown, and the mail
// options are one group.
void QtUiPortTest::preferencesControlsCarryTheirNames() {
    QString shown;
    openPreferences([&shown](QDialog* dialog) {
        auto* tabs = dialog->findChild<QTabWidget*>(QStringLiteral("preferencesTabs"));
        QStringList pages;
        for (int i = 0; i < tabs->count(); ++i) {
            pages << tabs->widget(i)->objectName();
        }
        shown =
            QStringLiteral("%1 %2 %3 %4 %5")
                .arg(dialog->objectName(), pages.join(QLatin1Char(',')),
                     QString::number(
                         dialog->findChild<QLineEdit*>(QStringLiteral("SMTPPassword"))->echoMode()),
                     QString::number(dialog->findChild<QLineEdit*>(QStringLiteral("wcPasswordText"))
                                         ->echoMode()),
                     dialog->findChild<QRadioButton*>()->parent()->objectName());
    });
    QCOMPARE(
        shown,
        QStringLiteral("Dialog mailTab,qbConnectionTab %1 %1 Frame1").arg(QLineEdit::Password));
}

// One key at a time, so that a control showing another control's value is caught.
void QtUiPortTest::preferencesShowEachStoredValueInItsOwnControl() {
    for (const Place& place : kPlaces) {
        const std::string value = place.isText ? std::string("value of ") + place.control : "1";
        useSettings("[" + std::string(place.section) + "]\n" + place.key + "=" + value + "\n");
        openPreferences([&](QDialog* dialog) {
            for (const Place& other : kPlaces) {
                QCOMPARE(shownIn(dialog, other), &other == &place ? value : defaultOf(other));
            }
        });
    }
}

void QtUiPortTest::preferencesOkWritesEveryKey() {
    useSettings("[SMTP]\nTrace=1\n[Settings]\nEncrypt=1\nBCCAdr=old@example.com\n");
    std::map<std::string, std::string> expected;
    const bool accepted = openPreferences([&](QDialog* dialog) {
        for (const Place& place : kPlaces) {
            const QString name = QString::fromUtf8(place.control);
            if (place.isText) {
                const QString typed =
                    QString::fromUtf8(place.key) + QStringLiteral(";x=1@b.example");
                typeInto(dialog->findChild<QLineEdit*>(name), typed);
                expected[place.key] = typed.toStdString();
            } else {
                expected[place.key] = shownIn(dialog, place) == "1" ? "0" : "1";
                tick(dialog->findChild<QCheckBox*>(name));
            }
        }
        tick(dialog->findChild<QRadioButton*>(QStringLiteral("directdeliveryoption")));
        press(dialog, "OKButton");
    });

    QVERIFY(accepted);
    for (const Place& place : kPlaces) {
        QCOMPARE(stored(place.section, place.key), expected[place.key]);
    }
    QCOMPARE(expected["Trace"], std::string("0"));  // was on
    // The connection page, untouched, wrote nothing.
    QCOMPARE(stored("QuickBooks", "Connection") + stored("WebConnector", "Port"), std::string());
    QCOMPARE(stored("Settings", "MailOption"), std::string("2"));
    // The store the program reads from has them too, without reading the file again.
    QCOMPARE(m_store->get("SMTP", "Pwd"), expected["Pwd"]);
}

// A stored value other than 0, 1 or 2 opens with no button set; OK then keeps it.
void QtUiPortTest::preferencesOptionButtonsFollowMailOption() {
    const std::pair<const char*, const char*> cases[] = {
        {"", "useSMTPOption"},
        {"0", "useSMTPOption"},
        {"1", "useOutlookOption"},
        {"2", "directdeliveryoption"},
        {"7", ""},
        {"-1", ""},
    };
    for (const auto& [value, checked] : cases) {
        useSettings(*value ? "[Settings]\nMailOption=" + std::string(value) + "\n"
                           : std::string("[SMTP]\nHostname=mail.example.com\n"));
        QStringList set;
        const bool accepted = openPreferences([&set](QDialog* dialog) {
            for (auto* option : dialog->findChildren<QRadioButton*>()) {
                if (option->isChecked()) {
                    set << option->objectName();
                }
            }
            press(dialog, "OKButton");
        });
        QVERIFY(accepted);
        QCOMPARE(set.join(QLatin1Char(',')), QString::fromUtf8(checked));
        QCOMPARE(stored("Settings", "MailOption"), std::string(*value ? value : "0"));
    }
}

void QtUiPortTest::preferencesCancelWritesNothing() {
    const std::string before = "[SMTP]\nHostname=mail.example.com\n; kept as written\n";
    for (const bool fileExists : {true, false}) {
        useSettings(fileExists ? before : std::string());
        const bool accepted = openPreferences([](QDialog* dialog) {
            typeInto(dialog->findChild<QLineEdit*>(QStringLiteral("smtpservertext")),
                     QStringLiteral("other.example.com"));
            tick(dialog->findChild<QAbstractButton*>(QStringLiteral("attachCheck")));
            press(dialog, "CancelButton");
        });
        QVERIFY(!accepted);
        QCOMPARE(std::filesystem::exists(m_file), fileExists);
        QCOMPARE(fileExists ? readFile(m_file) : before, before);
    }
}

void QtUiPortTest::preferencesUnwritableStoreKeepsDialogOpen() {
    writeFile(m_dir->path() / "not-a-folder", "x");
    m_file = m_dir->path() / "not-a-folder" / "DV01.ini";
    useSettings({});
    MessageBoxRecorder boxes;
    bool stayedOpen = false;
    const bool accepted = openPreferences([&](QDialog* dialog) {
        press(dialog, "OKButton");
        stayedOpen = dialog->isVisible();
    });
    QVERIFY(stayedOpen);
    QVERIFY(!accepted);
    QCOMPARE(boxes.texts.size(), 1);
    QVERIFY2(boxes.texts[0].startsWith(QStringLiteral("Could not save the preferences in ")) &&
                 boxes.texts[0].contains(QStringLiteral("DV01.ini")),
             qPrintable(boxes.texts[0]));
    QCOMPARE(boxes.owners[0], QStringLiteral("Dialog"));
}

// Preferences > Parameter opens the dialog with what the user's settings file holds now
// (another copy of the program may have written it), and OK writes that file.
void QtUiPortTest::parameterMenuOpensWhatTheFileHoldsNow() {
    ScopedEnvironment config("XDG_CONFIG_HOME", m_dir->path().string());
    const std::filesystem::path userFile = m_dir->path() / "dorvane" / "DV01.ini";
    std::filesystem::create_directories(userFile.parent_path());
    writeFile(userFile, "[SMTP]\nHostname=first.example.com\n");
    TempDir home;
    shell::Application app(*m_ui, shell::StartOptions{home.path().string()}, noQuickBooks());
    gui::registerDialogs(*m_ui, app.settings());
    gui::MainWindowView view(app);

    writeFile(userFile, "[SMTP]\nHostname=second.example.com\n");
    QString shown;
    whenModal<QDialog>([&shown](QDialog* dialog) {
        shown = dialog->findChild<QLineEdit*>(QStringLiteral("smtpservertext"))->text();
        typeInto(dialog->findChild<QLineEdit*>(QStringLiteral("SMTPPort")), QStringLiteral("2525"));
        press(dialog, "OKButton");
    });
    view.findChild<QAction*>(QStringLiteral("Parameter"))->trigger();
    QCOMPARE(shown, QStringLiteral("second.example.com"));
    QCOMPARE(platform::SettingsStore(userFile).get("SMTP", "Port"), std::string("2525"));
}

// ---- the QuickBooks connection page --------------------------------------------------------

namespace {

constexpr const char* kConnectionBoxes[] = {"wcPortText",    "wcHostText", "wcCertificateText",
                                            "wcKeyText",     "wcWaitText", "wcUserText",
                                            "wcPasswordText"};

QWidget* showConnectionPage(QDialog* dialog) {
    auto* tabs = dialog->findChild<QTabWidget*>(QStringLiteral("preferencesTabs"));
    QWidget* page = dialog->findChild<QWidget*>(QStringLiteral("qbConnectionTab"));
    tabs->setCurrentWidget(page);
    return page;
}

QLineEdit* box(QWidget* dialog, const char* name) {
    return dialog->findChild<QLineEdit*>(QString::fromUtf8(name));
}

// What the page shows: the connection, each box, and what the password box says when empty.
QString connectionShown(QDialog* dialog) {
    QStringList out;
    out << (dialog->findChild<QCheckBox*>(QStringLiteral("wcEnabledCheck"))->isChecked()
                ? QStringLiteral("webconnector")
                : QStringLiteral("sandbox"));
    for (const char* name : kConnectionBoxes) {
        out << QString::fromUtf8(name) + QLatin1Char('=') + box(dialog, name)->text();
    }
    out << box(dialog, "wcPasswordText")->placeholderText();
    return out.join(QStringLiteral(", "));
}

}  // namespace

// Fresh, the page shows the defaults; OK writes what was typed, the password only as a salted
// hash; opened again it shows what was written, and OK with the password box left empty keeps
// the stored hash.
void QtUiPortTest::connectionPageShowsAndWritesTheStoredConnection() {
    const QString password = QStringLiteral("Harbour&Light 7");
    QString fresh;
    bool accepted = openPreferences([&](QDialog* dialog) {
        fresh = connectionShown(dialog);
        showConnectionPage(dialog);
        tick(dialog->findChild<QCheckBox*>(QStringLiteral("wcEnabledCheck")));
        const std::pair<const char*, const char*> typed[] = {
            {"wcPortText", "9443"},
            {"wcHostText", "books.example.com"},
            {"wcCertificateText", "/etc/dorvane/books.pem"},
            {"wcKeyText", "/etc/dorvane/books.key"},
            {"wcWaitText", "45"},
            {"wcUserText", "office"},
        };
        for (const auto& [name, text] : typed) {
            typeInto(box(dialog, name), QString::fromUtf8(text));
        }
        typeInto(box(dialog, "wcPasswordText"), password);
        press(dialog, "OKButton");
    });
    QVERIFY(accepted);
    QCOMPARE(fresh, QStringLiteral("sandbox, wcPortText=8438, wcHostText=, wcCertificateText=, "
                                   "wcKeyText=, wcWaitText=120, wcUserText=, wcPasswordText=, "
                                   "the Web Connector user's password"));
    const std::pair<const char*, const char*> written[] = {
        {"Port", "9443"},       {"Host", "books.example.com"},
        {"WaitSeconds", "45"},  {"Certificate", "/etc/dorvane/books.pem"},
        {"UserName", "office"}, {"Key", "/etc/dorvane/books.key"},
    };
    for (const auto& [key, value] : written) {
        QCOMPARE(stored("WebConnector", key), std::string(value));
    }
    QCOMPARE(stored("QuickBooks", "Connection"), std::string("webconnector"));
    const std::string hash = stored("WebConnector", "PasswordHash");
    QVERIFY2(hash.starts_with("$y$"), hash.c_str());
    QVERIFY(readFile(m_file).find(password.toStdString()) == std::string::npos);

    QString again;
    accepted = openPreferences([&again](QDialog* dialog) {
        again = connectionShown(dialog);
        press(dialog, "OKButton");
    });
    QVERIFY(accepted);
    QCOMPARE(again, QStringLiteral("webconnector, wcPortText=9443, wcHostText=books.example.com, "
                                   "wcCertificateText=/etc/dorvane/books.pem, "
                                   "wcKeyText=/etc/dorvane/books.key, wcWaitText=45, "
                                   "wcUserText=office, wcPasswordText=, "
                                   "empty keeps the stored password"));
    QCOMPARE(stored("WebConnector", "PasswordHash"), hash);
}

// A value that makes no sense: OK says why over the dialog, which stays open on the connection
// page, and nothing of the connection is written.
void QtUiPortTest::connectionPageRefusesValuesThatMakeNoSense() {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"wcPortText", "84x8", "The port must be a number from 1 to 65535."},
        {"wcPortText", "70000", "The port must be a number from 1 to 65535."},
        {"wcWaitText", "0", "The wait must be a number of seconds from 1 to 86400."},
        {"wcKeyText", "/etc/dorvane/books.key",
         "Give both the certificate and its key, or neither."},
        {"wcUserText", "office", "Give the Web Connector user a password."},
    };
    for (const auto& [name, value, sentence] : cases) {
        useSettings({});
        MessageBoxRecorder boxes;
        QString after;
        const bool accepted = openPreferences([&](QDialog* dialog) {
            showConnectionPage(dialog);
            typeInto(box(dialog, name), QString::fromUtf8(value));
            dialog->findChild<QTabWidget*>()->setCurrentIndex(0);
            press(dialog, "OKButton");
            after = dialog->isVisible()
                        ? dialog->findChild<QTabWidget*>()->currentWidget()->objectName()
                        : QStringLiteral("closed");
        });
        QVERIFY(!accepted);
        QCOMPARE(after, QStringLiteral("qbConnectionTab"));
        QCOMPARE(boxes.texts, QStringList{QString::fromUtf8(sentence)});
        QCOMPARE(boxes.owners, QStringList{QStringLiteral("Dialog")});
        QVERIFY(readFile(m_file).find("[WebConnector]") == std::string::npos &&
                readFile(m_file).find("Connection") == std::string::npos);
    }
}

// Save .qwc file saves the page first (the file names its user and address), then writes
// where the person says; without a user, or where it cannot be written, it says so.
void QtUiPortTest::connectionPageSavesTheQwcFile() {
    TempDir out;
    MessageBoxRecorder boxes;
    QString proposed;
    QString passwordAfter;
    openPreferences([&](QDialog* dialog) {
        showConnectionPage(dialog);
        press(dialog, "wcSaveQwcButton");  // no user yet
        typeInto(box(dialog, "wcPortText"), QStringLiteral("9443"));
        typeInto(box(dialog, "wcUserText"), QStringLiteral("office"));
        typeInto(box(dialog, "wcPasswordText"), QStringLiteral("secret"));
        for (const char* file : {"office.qwc", "missing/office.qwc"}) {
            const QString chosen = QString::fromStdString((out / file).string());
            whenModal<QFileDialog>([&proposed, chosen](QFileDialog* fileDialog) {
                proposed = QFileInfo(fileDialog->selectedFiles().value(0)).fileName();
                fileDialog->selectFile(chosen);
                static_cast<QDialog*>(fileDialog)->accept();
            });
            press(dialog, "wcSaveQwcButton");
        }
        passwordAfter = box(dialog, "wcPasswordText")->text();
        press(dialog, "CancelButton");
    });
    QCOMPARE(proposed, QStringLiteral("Dorvane.qwc"));
    QCOMPARE(boxes.texts.size(), 2);
    QCOMPARE(boxes.texts[0], QStringLiteral("Enter the Web Connector user's name and password "
                                            "first: the .qwc file names that user."));
    QVERIFY2(boxes.texts[1].startsWith(QStringLiteral("Could not save ")) &&
                 boxes.texts[1].contains(QStringLiteral("missing/office.qwc")),
             qPrintable(boxes.texts[1]));
    const std::string qwc = readFile(out / "office.qwc");
    QVERIFY2(qwc.find("<UserName>office</UserName>") != std::string::npos &&
                 qwc.find(":9443/qbwc</AppURL>") != std::string::npos,
             qwc.c_str());
    // The page was saved before the file, and Cancel afterwards does not take it back.
    QVERIFY(stored("WebConnector", "PasswordHash").starts_with("$y$"));
    QCOMPARE(stored("WebConnector", "Port"), std::string("9443"));
    QCOMPARE(passwordAfter, QString());
}

// ---- the Documents page --------------------------------------------------------------------

// A broken words file is said once and overwritten; untouched, the page writes no Documents
// key and no words file; a pay link without a scheme is
// refused before anything is written; what was typed for a type stays while another type is
// shown, and OK writes the settings and the words.
void QtUiPortTest::documentsPageWritesOnlyWhatWasChanged() {
    const platform::ProgramFolder folder(m_dir->path());
    const std::filesystem::path wordsFile = m_dir->path() / mail::kDocumentTextsFile;
    auto openDocuments = [&](const std::function<void(QDialog*, QWidget*)>& person) {
        gui::registerDialogs(*m_ui, *m_store, &folder);
        return openPreferences([&person](QDialog* dialog) {
            auto* page = dialog->findChild<QWidget*>(QStringLiteral("documentsTab"));
            dialog->findChild<QTabWidget*>()->setCurrentWidget(page);
            person(dialog, page);
        });
    };
    const auto typeCombo = [](QWidget* page) {
        return page->findChild<QComboBox*>(QStringLiteral("wordsTypeCombo"));
    };
    const auto showType = [&typeCombo](QWidget* page, const char* type) {
        typeCombo(page)->setCurrentIndex(typeCombo(page)->findText(QString::fromUtf8(type)));
    };

    // A broken words file is said once as the dialog opens; OK writes the page's words over it.
    writeFile(wordsFile, "<DocumentTexts><Document");
    QStringList said;
    whenModal<QMessageBox>([&said](QMessageBox* box) {  // before the dialog's own answer
        said << box->text();
        box->accept();
    });
    QVERIFY(openDocuments([](QDialog* dialog, QWidget* page) {
        typeInto(box(page, "subjectText"), QStringLiteral("Invoice {number}"));
        press(dialog, "OKButton");
    }));
    QCOMPARE(said.size(), 1);
    QVERIFY2(said[0].startsWith(QStringLiteral("The own subjects and cover texts could not be "
                                               "read: ")),
             qPrintable(said[0]));
    QCOMPARE(mail::DocumentTexts::load(folder)->words("Invoice").subject,
             std::string("Invoice {number}"));
    std::filesystem::remove(wordsFile);

    useSettings({});
    QVERIFY(openDocuments([](QDialog* dialog, QWidget*) { press(dialog, "OKButton"); }));
    QVERIFY(readFile(m_file).find("Documents") == std::string::npos);
    QVERIFY(!std::filesystem::exists(wordsFile));

    useSettings({});
    MessageBoxRecorder boxes;
    bool stayedOpen = false;
    QVERIFY(!openDocuments([&stayedOpen](QDialog* dialog, QWidget* page) {
        tick(page->findChild<QCheckBox*>(QStringLiteral("pdfCheck")));
        typeInto(box(page, "payLinkText"), QStringLiteral("pay.example.com/{number}"));
        typeInto(box(page, "subjectText"), QStringLiteral("Invoice {number}"));
        press(dialog, "OKButton");
        stayedOpen = dialog->isVisible();
    }));
    QVERIFY(stayedOpen);
    QCOMPARE(boxes.texts.size(), 1);
    QVERIFY2(boxes.texts[0].contains(QStringLiteral("PayLink")), qPrintable(boxes.texts[0]));
    QVERIFY(!std::filesystem::exists(m_file) && !std::filesystem::exists(wordsFile));

    const QString link = QStringLiteral("https://pay.example.com/i/{number}?amount={balance}");
    QStringList shown;  // the Invoice words after another type was shown, then the other's
    QVERIFY(openDocuments([&](QDialog* dialog, QWidget* page) {
        tick(page->findChild<QCheckBox*>(QStringLiteral("pdfCheck")));
        page->findChild<QComboBox*>(QStringLiteral("pageSizeCombo"))->setCurrentIndex(2);
        typeInto(box(page, "payLinkText"), link);
        auto* cover = page->findChild<QPlainTextEdit*>(QStringLiteral("coverText"));
        showType(page, "Invoice");
        typeInto(box(page, "subjectText"), QStringLiteral("Invoice {number} from {company}"));
        QTest::keyClicks(cover, QStringLiteral("Thank you."));
        showType(page, "Estimate");
        shown << box(page, "subjectText")->text() + cover->toPlainText();
        typeInto(box(page, "subjectText"), QStringLiteral("Your estimate"));
        showType(page, "Invoice");
        shown << box(page, "subjectText")->text() + QLatin1Char('|') + cover->toPlainText();
        press(dialog, "OKButton");
    }));
    QCOMPARE(shown, (QStringList{QString(), QStringLiteral("Invoice {number} from {company}|"
                                                           "Thank you.")}));
    QCOMPARE(stored("Documents", "AttachPdf") + "|" + stored("Documents", "PageSize") + "|" +
                 stored("Documents", "PayLink") + "|" + stored("Documents", "MarginPoints"),
             "1|A4|" + link.toStdString() + "|");
    auto texts = mail::DocumentTexts::load(folder);
    QVERIFY(texts);
    const mail::OwnWords invoice = texts->words("Invoice");
    QCOMPARE(invoice.subject + "|" + invoice.cover + "|" + texts->words("Estimate").subject,
             std::string("Invoice {number} from {company}|Thank you.|Your estimate"));
}

// ---- company information -------------------------------------------------------------------

void QtUiPortTest::companyOpensWithTheRecordInItsBoxes() {
    QString values;
    openCompany([&values](QDialog* dialog) { values = boxesOf(dialog); });
    QCOMPARE(values, QStringLiteral("CompanyName=Harbour Light Supplies, Addr1=12 Harbour Road, "
                                    "Addr2=Unit 4, City=Portland, State=ME, Zip=04101, "
                                    "Country=US, Phone=207-555-0100, Fax=207-555-0101, "
                                    "Email=office@harbourlight.example, "
                                    "Website=www.harbourlight.example"));
}

void QtUiPortTest::companyOkWritesAddressIntoBothPlacesAndOptionalsMayBeEmpty() {
    MessageBoxRecorder boxes;
    const bool accepted = openCompany([](QDialog* dialog) {
        const auto box = [dialog](const char* name) {
            return dialog->findChild<QLineEdit*>(QString::fromUtf8(name));
        };
        typeInto(box("CompanyName"), QStringLiteral("Harbour Light Ltd"));
        typeInto(box("City"), QStringLiteral("Bangor"));
        typeInto(box("Zip"), QStringLiteral("04401"));
        for (const char* optional : {"Addr2", "Fax", "Website"}) {
            typeInto(box(optional), QString());
        }
        press(dialog, "OKButton");
    });

    QVERIFY(accepted);
    QCOMPARE(boxes.texts, QStringList());
    const xml::Node r = record();
    QCOMPARE(r.valueOf("FileName"), std::string(kCompanyFile));
    QCOMPARE(r.valueOf("LegalCompanyName"), std::string("Harbour Light Ltd"));
    QCOMPARE(r.valueOf("Address/City") + r.valueOf("Address/PostalCode"),
             std::string("Bangor04401"));
    QCOMPARE(r.valueOf("Address/Addr2") + r.valueOf("Fax") + r.valueOf("CompanyWebSite"),
             std::string());
    for (const char* part : {"Addr1", "Addr2", "City", "State", "PostalCode", "Country"}) {
        QCOMPARE(r.valueOf(std::string("LegalAddress/") + part),
                 r.valueOf(std::string("Address/") + part));
    }
}

// Each required box in turn is emptied: OK says so over the dialog, which stays open with the
// record untouched; filled in again, OK goes through.
void QtUiPortTest::companyEmptyRequiredFieldKeepsDialogOpen() {
    const std::string before = record().xml();
    MessageBoxRecorder boxes;
    QStringList refused;
    const bool accepted = openCompany([&](QDialog* dialog) {
        for (const char* name :
             {"CompanyName", "Addr1", "City", "State", "Zip", "Country", "Phone", "Email"}) {
            auto* edit = dialog->findChild<QLineEdit*>(QString::fromUtf8(name));
            const QString kept = edit->text();
            typeInto(edit, QString());
            press(dialog, "OKButton");
            if (dialog->isVisible() && record().xml() == before) {
                refused << QString::fromUtf8(name);
            }
            typeInto(edit, kept);
        }
        typeInto(dialog->findChild<QLineEdit*>(QStringLiteral("Fax")), QStringLiteral("0199"));
        press(dialog, "OKButton");
    });

    QCOMPARE(refused.join(QLatin1Char(' ')),
             QStringLiteral("CompanyName Addr1 City State Zip Country Phone Email"));
    QCOMPARE(boxes.texts, QStringList(8, QStringLiteral("All fields are required !")));
    QCOMPARE(boxes.owners, QStringList(8, QStringLiteral("Dialog2")));
    QVERIFY(accepted);
    QCOMPARE(record().valueOf("Fax"), std::string("0199"));
}

int runQtUiPortTests(int argc, char** argv) {
    QtUiPortTest suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "qtuiport_test.moc"
