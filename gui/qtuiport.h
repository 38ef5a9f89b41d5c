// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — core's UI port answered by Qt: message boxes, input boxes, file dialogs, the
// desktop, the clipboard, the busy pointer, the event loop and the modal dialogs.
//
// Modal dialogs are looked up by their model's dialogName(); each subsystem with a dialog
// registers a factory that shows its Qt dialog for the model and answers whether it was
// closed with OK. A dialog nobody registered answers false (as a cancelled one).
#pragma once

#include <functional>
#include <map>
#include <string>

#include <QPointer>
#include <QString>
#include <QWidget>

#include "ui/uiport.h"

namespace dorvane::gui {

class QtUiPort final : public ui::UiPort {
public:
    using DialogFactory = std::function<bool(QWidget* parent, ui::DialogModel& model)>;

    QtUiPort() = default;
    ~QtUiPort() override;
    QtUiPort(const QtUiPort&) = delete;
    QtUiPort& operator=(const QtUiPort&) = delete;

    // The window that owns the boxes and dialogs shown from here (none: top-level boxes).
    void setParentWidget(QWidget* parent) { m_parent = parent; }
    QWidget* parentWidget() const { return m_parent; }

    // Registers (or replaces) the dialog shown for models named `dialogName`.
    void registerDialog(const std::string& dialogName, DialogFactory factory);
    bool hasDialog(const std::string& dialogName) const;

    ui::Answer messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                          ui::Buttons buttons) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view preset) override;
    // `filter` in Qt's form ("Name (*.x);;Name2 (*.y)") or as "Name (*.x)|*.x|Name2|*.y;*.z".
    std::optional<std::string> openFileDialog(std::string_view title,
                                              std::string_view filter) override;
    void openWithDesktop(std::string_view path) override;
    std::string clipboardText() override;
    void beep() override;
    void setBusy(bool busy) override;
    void yield() override;
    bool runDialog(ui::DialogModel& model) override;

    int busyDepth() const { return m_busyDepth; }

private:
    QPointer<QWidget> m_parent;
    std::map<std::string, DialogFactory, std::less<>> m_dialogs;
    int m_busyDepth = 0;
    QString m_lastDirectory;
};

}  // namespace dorvane::gui
