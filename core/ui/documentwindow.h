// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — what the list loaders, the send run and the company lookup see of the window that
// shows a document list.
//
// They fill its list, keep the list's answer and the sent-log text in it, and report through
// its status bar; nothing else of the window is theirs. The main window implements it; tests
// may implement it with no window at all.
#pragma once

#include <string>

#include "ui/listmodel.h"
#include "xml/xml.h"

namespace dorvane::ui {

class DocumentWindow {
public:
    virtual ~DocumentWindow() = default;

    virtual void setStatusText(std::string text) = 0;
    virtual const std::string& companyText() const = 0;
    virtual void setCompanyText(std::string text) = 0;
    // The progress of a long run in percent; -1 hides it.
    virtual void setProgress(int percent) = 0;
    virtual void setControlEnabled(const std::string& name, bool enabled) = 0;
    virtual void setCaption(std::string /*caption*/) {}
    // Document lists show the send controls; the web item update shows its update button
    // instead.
    virtual void showSendControls(bool /*show*/) {}

    // The document type whose list is shown, and whether a send run previews instead of
    // mailing.
    virtual const std::string& documentType() const = 0;
    virtual bool previewChecked() const = 0;

    virtual ListModel& list() = 0;
    // The last list response, kept for the recipient lookup and the send run.
    virtual xml::Document& listDocument() = 0;
    // The sent log's text as read at the last list load, extended by each send.
    virtual std::string& sentLogText() = 0;
};

}  // namespace dorvane::ui
