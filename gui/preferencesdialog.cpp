// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/preferencesdialog.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <tuple>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "gui/dialogs.h"
#include "gui/qtstrings.h"

namespace dorvane::gui {

namespace {

using Model = mail::MailPreferencesModel;
using Control = mail::PreferenceControl;

// Which model value each control shows and sets. The option buttons stand for MailOption 0, 1
// and 2 in the order the control table lists them.
struct TextBinding {
    const char* control;
    std::string Model::*value;
};

struct CheckBinding {
    const char* control;
    bool Model::*value;
};

constexpr TextBinding kTextBindings[] = {
    {"smtpservertext", &Model::hostname}, {"SmtpUsername", &Model::user},
    {"SMTPPassword", &Model::password},   {"SMTPPort", &Model::port},
    {"testAdrText", &Model::testAddress}, {"bcctext", &Model::bccAddresses},
};

constexpr CheckBinding kCheckBindings[] = {
    {"tracecheck", &Model::trace},
    {"testEmailCheck", &Model::test},
    {"returnReceiptCheck", &Model::returnReceipt},
    {"bccCheck", &Model::bcc},
    {"alwayssendBCC", &Model::alwaysBcc},
    {"altEmailCheck", &Model::altEmail},
    {"EncryptCheck", &Model::encrypt},
    {"attachCheck", &Model::attachment},
};

bool isTextBox(const Control& control) {
    return control.kind == Control::Text || control.kind == Control::Password;
}

bool sameConnection(const webconnector::ConnectionPreferences& a,
                    const webconnector::ConnectionPreferences& b) {
    auto fields = [](const webconnector::ConnectionPreferences& p) {
        return std::tie(p.webConnector, p.port, p.host, p.certificate, p.key, p.waitSeconds,
                        p.userName, p.newPassword);
    };
    return fields(a) == fields(b);
}

QLineEdit* lineEdit(QWidget* parent, const char* name, const char* placeholder = "") {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QString::fromUtf8(name));
    edit->setPlaceholderText(QString::fromUtf8(placeholder));
    return edit;
}

// Names each label of `page` that has a buddy after it: "wcPortText" → "wcPortTextLabel".
void nameLabelsAfterBuddies(QWidget* page) {
    for (QLabel* label : page->findChildren<QLabel*>()) {
        if (label->buddy() != nullptr) {
            label->setObjectName(label->buddy()->objectName() + QStringLiteral("Label"));
        }
    }
}

QLabel* hint(QWidget* page, const char* name, const QString& text) {
    auto* label = new QLabel(text, page);
    label->setObjectName(QString::fromUtf8(name));
    label->setWordWrap(true);
    return label;
}

}  // namespace

PreferencesDialog::PreferencesDialog(mail::MailPreferencesModel& model,
                                     platform::SettingsStore& store,
                                     const platform::ProgramFolder* folder, QWidget* parent)
    : QDialog(parent), m_model(model), m_store(store) {
    setObjectName(QStringLiteral("Dialog"));
    setWindowTitle(QStringLiteral("Preferences"));

    m_pages = new QTabWidget(this);
    m_pages->setObjectName(QStringLiteral("preferencesTabs"));
    auto* mailPage = new QWidget(m_pages);
    mailPage->setObjectName(QStringLiteral("mailTab"));
    mailPage->setLayout(buildControls());
    m_pages->addTab(mailPage, QStringLiteral("Mail"));
    m_connectionPage = buildConnectionPage();
    m_pages->addTab(m_connectionPage, QStringLiteral("QuickBooks connection"));
    if (folder != nullptr) {
        m_documents.emplace(m_store, *folder);
        m_documentsPage = buildDocumentsPage();
        m_pages->addTab(m_documentsPage, QStringLiteral("Documents"));
    }
    auto* body = new QVBoxLayout;
    body->addWidget(m_pages);
    layOutWithOkCancel(this, body);

    showModel();
    m_connection = webconnector::ConnectionPreferences::load(m_store);
    showConnection();
}

// Laid out in the table's order, two columns: a text box sits beside its label, and a text box
// that follows a check box sits beside that check box with its caption as the placeholder
// ("Send BCC to:" [enter your BCC email address]). Option buttons go into the frame before them.
QLayout* PreferencesDialog::buildControls() {
    auto* grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    grid->setColumnMinimumWidth(1, 240);
    m_options = new QButtonGroup(this);
    m_options->setObjectName(QStringLiteral("mailOptionGroup"));

    const std::span<const Control> controls(mail::kPreferenceControls);
    QGroupBox* frame = nullptr;
    int row = 0;
    int option = 0;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const Control& control = controls[i];
        const QString name = QString::fromUtf8(control.name);
        const QString caption = QString::fromUtf8(control.caption);
        const bool besideCheck = i > 0 && controls[i - 1].kind == Control::Check;
        const bool textFollows = i + 1 < controls.size() && isTextBox(controls[i + 1]);
        if (control.kind != Control::Option) {
            frame = nullptr;
        }
        switch (control.kind) {
            case Control::Text:
            case Control::Password: {
                auto* edit = new QLineEdit(this);
                edit->setObjectName(name);
                if (control.kind == Control::Password) {
                    edit->setEchoMode(QLineEdit::Password);
                }
                if (*control.hint != '\0') {
                    edit->setToolTip(QString::fromUtf8(control.hint));
                }
                if (besideCheck) {
                    edit->setPlaceholderText(caption);
                    grid->addWidget(edit, row - 1, 1);
                } else {
                    auto* label = new QLabel(caption, this);
                    label->setObjectName(name + QStringLiteral("Label"));
                    label->setBuddy(edit);
                    grid->addWidget(label, row, 0);
                    grid->addWidget(edit, row++, 1);
                }
                break;
            }
            case Control::Check: {
                auto* check = new QCheckBox(caption, this);
                check->setObjectName(name);
                grid->addWidget(check, row++, 0, 1, textFollows ? 1 : 2);
                break;
            }
            case Control::Frame: {
                frame = new QGroupBox(caption, this);
                frame->setObjectName(name);
                new QHBoxLayout(frame);
                grid->addWidget(frame, row++, 0, 1, 2);
                break;
            }
            case Control::Option: {
                auto* button = new QRadioButton(
                    caption, frame != nullptr ? static_cast<QWidget*>(frame) : this);
                button->setObjectName(name);
                m_options->addButton(button, option++);
                if (frame != nullptr) {
                    frame->layout()->addWidget(button);
                } else {
                    grid->addWidget(button, row++, 0, 1, 2);
                }
                break;
            }
        }
    }
    return grid;
}

// The QuickBooks connection: the embedded sandbox, or QuickBooks on the office's Windows PC
// through the Web Connector, which calls this program's service.
QWidget* PreferencesDialog::buildConnectionPage() {
    auto* page = new QWidget(m_pages);
    page->setObjectName(QStringLiteral("qbConnectionTab"));

    m_webConnector = new QCheckBox(
        QStringLiteral("Reach QuickBooks through the Web Connector (else the sandbox company)"),
        page);
    m_webConnector->setObjectName(QStringLiteral("wcEnabledCheck"));
    m_port = lineEdit(page, "wcPortText", platform::settingDefault(webconnector::kSection, "Port"));
    m_host = lineEdit(page, "wcHostText");
    m_host->setPlaceholderText(toQString(webconnector::thisHostName()));
    m_host->setToolTip(QStringLiteral("The name the Web Connector's PC reaches this computer by"));
    m_certificate = lineEdit(page, "wcCertificateText", "none: this computer only, plain HTTP");
    m_key = lineEdit(page, "wcKeyText", "none: this computer only, plain HTTP");
    m_wait = lineEdit(page, "wcWaitText",
                      platform::settingDefault(webconnector::kSection, "WaitSeconds"));
    m_wait->setToolTip(
        QStringLiteral("How long a request waits for the Web Connector before it fails"));
    m_user = lineEdit(page, "wcUserText");
    m_password = lineEdit(page, "wcPasswordText");
    m_password->setEchoMode(QLineEdit::Password);

    auto* form = new QFormLayout;
    form->addRow(m_webConnector);
    form->addRow(QStringLiteral("&Port:"), m_port);
    form->addRow(QStringLiteral("&Host:"), m_host);
    const std::tuple<const char*, const char*, QLineEdit*> files[] = {
        {"&Certificate:", "wcCertificateBrowse", m_certificate},
        {"&Key:", "wcKeyBrowse", m_key},
    };
    for (const auto& [caption, buttonName, edit] : files) {
        auto* browseButton = new QPushButton(QStringLiteral("..."), page);
        browseButton->setObjectName(QString::fromUtf8(buttonName));
        browseButton->setToolTip(QStringLiteral("Choose the file"));
        browseButton->setMaximumWidth(
            browseButton->fontMetrics().horizontalAdvance(browseButton->text()) + 24);
        const QString title = QString::fromUtf8(caption).remove(QLatin1Char('&')).chopped(1);
        connect(browseButton, &QPushButton::clicked, this,
                [this, edit, title] { browse(edit, title); });
        auto* row = new QHBoxLayout;
        row->addWidget(edit, 1);
        row->addWidget(browseButton);
        form->addRow(QString::fromUtf8(caption), row);
        qobject_cast<QLabel*>(form->labelForField(row))->setBuddy(edit);
    }
    form->addRow(QStringLiteral("&Wait (seconds):"), m_wait);
    form->addRow(QStringLiteral("&User name:"), m_user);
    form->addRow(QStringLiteral("Pass&word:"), m_password);
    nameLabelsAfterBuddies(page);

    auto* saveQwc = new QPushButton(QStringLiteral("Save .qwc file..."), page);
    saveQwc->setObjectName(QStringLiteral("wcSaveQwcButton"));
    saveQwc->setToolTip(QStringLiteral(
        "Saves this page, then the file to add to the Web Connector on the QuickBooks PC"));
    connect(saveQwc, &QPushButton::clicked, this, &PreferencesDialog::saveQwc);
    auto* qwcRow = new QHBoxLayout;
    qwcRow->addWidget(saveQwc);
    qwcRow->addStretch(1);
    form->addRow(qwcRow);

    auto* note = new QLabel(
        QStringLiteral("Dorvane chooses its connection when it starts: a changed connection takes "
                       "effect the next time Dorvane starts."),
        page);
    note->setObjectName(QStringLiteral("wcNoteLabel"));
    note->setWordWrap(true);
    form->addRow(note);

    page->setLayout(form);
    return page;
}

// What is added to every mailed document: the PDF copy, the pay-now link and, per type, the
// sender's own subject and cover text.
QWidget* PreferencesDialog::buildDocumentsPage() {
    mail::DocumentOptionsModel& documents = *m_documents;
    auto* page = new QWidget(m_pages);
    page->setObjectName(QStringLiteral("documentsTab"));

    auto* pdf = new QCheckBox(QStringLiteral("Attach a PDF copy of every document"), page);
    pdf->setObjectName(QStringLiteral("pdfCheck"));
    pdf->setChecked(documents.attachPdf);
    connect(pdf, &QCheckBox::toggled, this, [&documents](bool on) { documents.attachPdf = on; });

    auto* pageSize = new QComboBox(page);
    pageSize->setObjectName(QStringLiteral("pageSizeCombo"));
    for (const platform::SettingChoice& choice : platform::kPageSizeChoices) {
        pageSize->addItem(QStringLiteral("%1: %2").arg(QString::fromUtf8(choice.value),
                                                       QString::fromUtf8(choice.meaning)));
    }
    pageSize->setCurrentIndex(documents.pageSizeIndex());
    connect(pageSize, &QComboBox::currentIndexChanged, this,
            [&documents](int index) { documents.choosePageSize(index); });

    auto* margin = new QSpinBox(page);
    margin->setObjectName(QStringLiteral("marginSpin"));
    margin->setRange(18, 144);
    margin->setValue(toQString(documents.marginPoints).toInt());
    connect(margin, &QSpinBox::valueChanged, this,
            [&documents](int points) { documents.marginPoints = std::to_string(points); });

    auto* payLink =
        lineEdit(page, "payLinkText", "https://pay.example.com/i/{number}?amount={balance}");
    payLink->setText(toQString(documents.payLink));
    connect(payLink, &QLineEdit::textEdited, this,
            [&documents](const QString& typed) { documents.payLink = toStdString(typed); });

    m_wordsType = new QComboBox(page);
    m_wordsType->setObjectName(QStringLiteral("wordsTypeCombo"));
    for (const std::string& type : mail::DocumentOptionsModel::typesWithWords()) {
        m_wordsType->addItem(toQString(type));
    }
    m_subject = lineEdit(page, "subjectText", "the program's own subject");
    m_cover = new QPlainTextEdit(page);
    m_cover->setObjectName(QStringLiteral("coverText"));
    m_cover->setPlaceholderText(QStringLiteral("the program's own text"));
    m_cover->setFixedHeight(m_cover->fontMetrics().lineSpacing() * 6);
    showWords();
    connect(m_wordsType, &QComboBox::currentIndexChanged, this, &PreferencesDialog::showWords);
    connect(m_subject, &QLineEdit::textEdited, this, [this](const QString& typed) {
        m_documents->words[toStdString(m_wordsType->currentText())].subject = toStdString(typed);
    });
    connect(m_cover, &QPlainTextEdit::textChanged, this, [this] {
        m_documents->words[toStdString(m_wordsType->currentText())].cover =
            toStdString(m_cover->toPlainText());
    });

    auto* form = new QFormLayout;
    form->addRow(pdf);
    form->addRow(QStringLiteral("Page &size:"), pageSize);
    form->addRow(QStringLiteral("&Margin (points):"), margin);
    form->addRow(QStringLiteral("&Pay-now link:"), payLink);
    form->addRow(hint(page, "payLinkHint",
                      QStringLiteral("Placeholders: %1. Only invoices and statements carry the "
                                     "link; empty: no link.")
                          .arg(QString::fromUtf8(mail::kLinkPlaceholders))));
    form->addRow(QStringLiteral("&Document:"), m_wordsType);
    form->addRow(QStringLiteral("S&ubject:"), m_subject);
    form->addRow(QStringLiteral("&Cover text:"), m_cover);
    form->addRow(hint(page, "wordsHint",
                      QStringLiteral("Placeholders: %1. An empty subject or cover text keeps the "
                                     "program's own.")
                          .arg(QString::fromUtf8(mail::kWordPlaceholders))));
    nameLabelsAfterBuddies(page);
    page->setLayout(form);
    return page;
}

// The chosen type's words; what was typed for the type before stays in the model.
void PreferencesDialog::showWords() {
    const mail::OwnWords& words = m_documents->words[toStdString(m_wordsType->currentText())];
    m_subject->setText(toQString(words.subject));
    const QSignalBlocker quiet(m_cover);  // showing is not editing
    m_cover->setPlainText(toQString(words.cover));
}

// A broken words file is said once, over the open dialog; OK then writes the page's words
// over it.
void PreferencesDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (m_documents && !m_documents->loadProblem.empty() && !m_loadProblemShown) {
        m_loadProblemShown = true;
        QTimer::singleShot(0, this, [this] {
            m_pages->setCurrentWidget(m_documentsPage);
            QMessageBox::warning(
                this, windowTitle(),
                QStringLiteral("The own subjects and cover texts could not be read: %1\n\nThe "
                               "Documents page shows none; OK writes the ones you enter there "
                               "over the file.")
                    .arg(toQString(m_documents->loadProblem)));
        });
    }
}

bool PreferencesDialog::documentsAcceptable() {
    if (!m_documents) {
        return true;
    }
    const std::string problem = m_documents->problem();
    if (problem.empty()) {
        return true;
    }
    m_pages->setCurrentWidget(m_documentsPage);
    QMessageBox::warning(this, windowTitle(), toQString(problem));
    return false;
}

bool PreferencesDialog::saveDocuments() {
    if (!m_documents) {
        return true;
    }
    if (const Status saved = m_documents->save(m_store); !saved) {
        m_pages->setCurrentWidget(m_documentsPage);
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("Could not save the Documents page: %1")
                                 .arg(toQString(saved.error().description)));
        return false;
    }
    return true;
}

void PreferencesDialog::browse(QLineEdit* edit, const QString& title) {
    const QString current = edit->text().trimmed();
    QFileDialog dialog(this, title,
                       current.isEmpty() ? QDir::homePath() : QFileInfo(current).absolutePath(),
                       QStringLiteral("PEM files (*.pem *.crt *.key);;All files (*)"));
    dialog.setObjectName(QStringLiteral("wcBrowseDialog"));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
        edit->setText(dialog.selectedFiles().front());
    }
}

void PreferencesDialog::showConnection() {
    m_webConnector->setChecked(m_connection.webConnector);
    m_port->setText(toQString(m_connection.port));
    m_host->setText(toQString(m_connection.host));
    m_certificate->setText(toQString(m_connection.certificate));
    m_key->setText(toQString(m_connection.key));
    m_wait->setText(toQString(m_connection.waitSeconds));
    m_user->setText(toQString(m_connection.userName));
    m_password->clear();
    const bool stored = !m_store.get(webconnector::kSection, "PasswordHash").empty();
    m_password->setPlaceholderText(stored ? QStringLiteral("empty keeps the stored password")
                                          : QStringLiteral("the Web Connector user's password"));
}

webconnector::ConnectionPreferences PreferencesDialog::shownConnection() const {
    webconnector::ConnectionPreferences shown;
    shown.webConnector = m_webConnector->isChecked();
    shown.port = toStdString(m_port->text());
    shown.host = toStdString(m_host->text());
    shown.certificate = toStdString(m_certificate->text());
    shown.key = toStdString(m_key->text());
    shown.waitSeconds = toStdString(m_wait->text());
    shown.userName = toStdString(m_user->text());
    shown.newPassword = toStdString(m_password->text());
    return shown;
}

bool PreferencesDialog::saveConnection() {
    const webconnector::ConnectionPreferences shown = shownConnection();
    if (sameConnection(shown, m_connection)) {
        return true;
    }
    if (const Status saved = shown.save(m_store); !saved) {
        m_pages->setCurrentWidget(m_connectionPage);
        QMessageBox::warning(this, windowTitle(), toQString(saved.error().description));
        return false;
    }
    m_connection = webconnector::ConnectionPreferences::load(m_store);
    showConnection();
    return true;
}

// The .qwc names the user and the service's address as stored, so the page is saved first.
void PreferencesDialog::saveQwc() {
    if (!saveConnection()) {
        return;
    }
    if (m_connection.userName.empty()) {
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("Enter the Web Connector user's name and password "
                                            "first: the .qwc file names that user."));
        return;
    }
    QFileDialog dialog(this, QStringLiteral("Save .qwc file"),
                       QDir::home().filePath(QStringLiteral("Dorvane.qwc")),
                       QStringLiteral("Web Connector files (*.qwc)"));
    dialog.setObjectName(QStringLiteral("wcQwcDialog"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("qwc"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return;
    }
    const QString file = dialog.selectedFiles().front();
    if (const Status written = webconnector::writeQwc(m_store, toStdString(file)); !written) {
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("Could not save %1: %2")
                                 .arg(file, toQString(written.error().description)));
    }
}

void PreferencesDialog::showModel() {
    for (const TextBinding& binding : kTextBindings) {
        if (auto* edit = findChild<QLineEdit*>(QString::fromUtf8(binding.control))) {
            edit->setText(toQString(m_model.*binding.value));
        }
    }
    for (const CheckBinding& binding : kCheckBindings) {
        if (auto* check = findChild<QCheckBox*>(QString::fromUtf8(binding.control))) {
            check->setChecked(m_model.*binding.value);
        }
    }
    // An exclusive group always keeps one button set; a stored value other than 0, 1 or 2
    // opens with none set, so the group lets go while they are cleared.
    m_options->setExclusive(false);
    for (QAbstractButton* button : m_options->buttons()) {
        button->setChecked(m_model.mailOption && m_options->id(button) == *m_model.mailOption);
    }
    m_options->setExclusive(true);
}

void PreferencesDialog::takeModel() {
    for (const TextBinding& binding : kTextBindings) {
        if (auto* edit = findChild<QLineEdit*>(QString::fromUtf8(binding.control))) {
            m_model.*binding.value = toStdString(edit->text());
        }
    }
    for (const CheckBinding& binding : kCheckBindings) {
        if (auto* check = findChild<QCheckBox*>(QString::fromUtf8(binding.control))) {
            m_model.*binding.value = check->isChecked();
        }
    }
    const int option = m_options->checkedId();
    m_model.mailOption = option >= 0 ? std::optional<int>(option) : std::nullopt;
}

void PreferencesDialog::accept() {
    if (!documentsAcceptable()) {
        return;
    }
    takeModel();
    const Status saved = m_model.save(m_store);
    if (!saved) {
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("Could not save the preferences in %1: %2")
                                 .arg(QString::fromStdString(m_store.file().string()),
                                      toQString(saved.error().description)));
        return;
    }
    if (!saveConnection() || !saveDocuments()) {
        return;
    }
    QDialog::accept();
}

}  // namespace dorvane::gui
