// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/qtuiport.h"

#include <QApplication>
#include <QClipboard>
#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QUrl>

#include "gui/qtstrings.h"

namespace dorvane::gui {

namespace {

QMessageBox::Icon toQtIcon(ui::Icon icon) {
    switch (icon) {
        case ui::Icon::Information:
            return QMessageBox::Information;
        case ui::Icon::Exclamation:
            return QMessageBox::Warning;
        case ui::Icon::Critical:
            return QMessageBox::Critical;
        case ui::Icon::Question:
            return QMessageBox::Question;
        case ui::Icon::None:
            break;
    }
    return QMessageBox::NoIcon;
}

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton;  // the first, as the desktop's boxes have it
    QMessageBox::StandardButton escapeButton;   // what closing the box counts as
};

ButtonSet toQtButtons(ui::Buttons buttons) {
    switch (buttons) {
        case ui::Buttons::OkCancel:
            return {QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok, QMessageBox::Cancel};
        case ui::Buttons::YesNo:
            return {QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes, QMessageBox::No};
        case ui::Buttons::YesNoCancel:
            return {QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes,
                    QMessageBox::Cancel};
        case ui::Buttons::RetryCancel:
            return {QMessageBox::Retry | QMessageBox::Cancel, QMessageBox::Retry,
                    QMessageBox::Cancel};
        case ui::Buttons::Ok:
            break;
    }
    return {QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok};
}

ui::Answer toAnswer(QMessageBox::StandardButton button) {
    switch (button) {
        case QMessageBox::Ok:
            return ui::Answer::Ok;
        case QMessageBox::Yes:
            return ui::Answer::Yes;
        case QMessageBox::No:
            return ui::Answer::No;
        case QMessageBox::Retry:
            return ui::Answer::Retry;
        default:
            return ui::Answer::Cancel;
    }
}

// A person answering a box during a long job gets the normal pointer over it; the busy
// pointer comes back when the box closes.
class NormalPointer {
public:
    explicit NormalPointer(bool busy) : m_active(busy) {
        if (m_active) {
            QGuiApplication::setOverrideCursor(QCursor(Qt::ArrowCursor));
        }
    }
    ~NormalPointer() {
        if (m_active) {
            QGuiApplication::restoreOverrideCursor();
        }
    }
    NormalPointer(const NormalPointer&) = delete;
    NormalPointer& operator=(const NormalPointer&) = delete;

private:
    bool m_active;
};

// The file dialog's filter in Qt's form ("Name (*.x);;Name2 (*.y *.z)"). Core may give it in
// the classic "Name (*.x)|*.x|Name2|*.y;*.z" form: pairs of a name and its patterns, split by
// "|", patterns split by ";". Qt shows the patterns in brackets after the name, so a name that
// repeats them in brackets already loses that part.
QString qtFileFilter(std::string_view filter) {
    const QString text = toQString(filter);
    if (!text.contains(QLatin1Char('|'))) {
        return text;
    }
    const QStringList parts = text.split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString label = parts.at(i).trimmed();
        const qsizetype bracket = label.lastIndexOf(QLatin1Char('('));
        if (label.endsWith(QLatin1Char(')')) && bracket > 0) {
            label = label.left(bracket).trimmed();
        }
        QString patterns = parts.at(i + 1);
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        filters << label + QStringLiteral(" (") + patterns.simplified() + QLatin1Char(')');
    }
    return filters.join(QStringLiteral(";;"));
}

}  // namespace

QtUiPort::~QtUiPort() {
    for (; m_busyDepth > 0; --m_busyDepth) {
        QGuiApplication::restoreOverrideCursor();
    }
}

void QtUiPort::registerDialog(const std::string& dialogName, DialogFactory factory) {
    m_dialogs[dialogName] = std::move(factory);
}

bool QtUiPort::hasDialog(const std::string& dialogName) const {
    return m_dialogs.find(dialogName) != m_dialogs.end();
}

ui::Answer QtUiPort::messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                                ui::Buttons buttons) {
    const ButtonSet set = toQtButtons(buttons);
    QMessageBox box(toQtIcon(icon), toQString(title), toQString(text), set.buttons, m_parent);
    box.setObjectName(QStringLiteral("messageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(set.defaultButton);
    box.setEscapeButton(set.escapeButton);
    NormalPointer pointer(m_busyDepth > 0);
    box.exec();
    QAbstractButton* clicked = box.clickedButton();
    if (clicked == nullptr) {
        return toAnswer(set.escapeButton);
    }
    return toAnswer(box.standardButton(clicked));
}

std::optional<std::string> QtUiPort::inputBox(std::string_view prompt, std::string_view title,
                                              std::string_view preset) {
    QInputDialog dialog(m_parent);
    dialog.setObjectName(QStringLiteral("inputBox"));
    dialog.setInputMode(QInputDialog::TextInput);
    dialog.setWindowTitle(toQString(title));
    dialog.setLabelText(toQString(prompt));
    dialog.setTextValue(toQString(preset));
    NormalPointer pointer(m_busyDepth > 0);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return toStdString(dialog.textValue());
}

std::optional<std::string> QtUiPort::openFileDialog(std::string_view title,
                                                    std::string_view filter) {
    QFileDialog dialog(m_parent, toQString(title), m_lastDirectory, qtFileFilter(filter));
    dialog.setObjectName(QStringLiteral("openFileDialog"));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    NormalPointer pointer(m_busyDepth > 0);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    const QStringList chosen = dialog.selectedFiles();
    if (chosen.isEmpty() || chosen.front().isEmpty()) {
        return std::nullopt;
    }
    m_lastDirectory = QFileInfo(chosen.front()).absolutePath();
    return toStdString(chosen.front());
}

void QtUiPort::openWithDesktop(std::string_view path) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(toQString(path)));
}

std::string QtUiPort::clipboardText() {
    const QClipboard* clipboard = QGuiApplication::clipboard();
    return clipboard == nullptr ? std::string() : toStdString(clipboard->text());
}

void QtUiPort::beep() {
    QApplication::beep();
}

void QtUiPort::setBusy(bool busy) {
    if (busy) {
        if (m_busyDepth++ == 0) {
            QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
        }
    } else if (m_busyDepth > 0) {
        if (--m_busyDepth == 0) {
            QGuiApplication::restoreOverrideCursor();
        }
    }
}

void QtUiPort::yield() {
    QCoreApplication::processEvents();
}

bool QtUiPort::runDialog(ui::DialogModel& model) {
    const auto found = m_dialogs.find(model.dialogName());
    if (found == m_dialogs.end() || !found->second) {
        return false;
    }
    NormalPointer pointer(m_busyDepth > 0);
    return found->second(m_parent, model);
}

}  // namespace dorvane::gui
