// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/preferencesdialog.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QRadioButton>
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

}  // namespace

PreferencesDialog::PreferencesDialog(mail::MailPreferencesModel& model, shell::SettingsStore& store,
                                     QWidget* parent)
    : QDialog(parent), m_model(model), m_store(store) {
    setObjectName(QStringLiteral("Dialog"));
    setWindowTitle(QStringLiteral("Mail Preferences"));
    buildControls();
    showModel();
}

// Laid out in the table's order, two columns: a text box sits beside its label, and a text box
// that follows a check box sits beside that check box with its caption as the placeholder
// ("Send BCC to:" [enter your BCC email address]). Option buttons go into the frame before them.
void PreferencesDialog::buildControls() {
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

    layOutWithOkCancel(this, grid);
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
    takeModel();
    const Status saved = m_model.save(m_store);
    if (!saved) {
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("Could not save the preferences in %1: %2")
                                 .arg(QString::fromStdString(m_store.file().string()),
                                      toQString(saved.error().description)));
        return;
    }
    QDialog::accept();
}

}  // namespace dorvane::gui
