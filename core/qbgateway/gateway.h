// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the one way to QuickBooks: one request in, one response out.
//
// Each call makes a new request processor, opens a connection and a session, sends the one
// request, ends the session and closes the connection. Nothing stays open between calls.
// The request is traced to "QBXMLReq.txt" before anything else; the response to
// "QBXMLResult.txt" only when every step succeeded. A failed step ends the call at once
// (no EndSession, no CloseConnection), shows the failure in a message box and answers "".
#pragma once

#include <functional>
#include <string>

#include "qbgateway/requestprocessor.h"

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::qbgateway {

class ProgramFolder;

inline constexpr const char* kApplicationName = "Dorvane";
inline constexpr const char* kNoCompanyMessage =
    "Please open Quickbooks and select the appropriate Company file";

class Gateway {
public:
    Gateway(const ProgramFolder& folder, ui::UiPort& ui, ProcessorFactory factory);

    std::string processRequest(const std::string& request);
    // As processRequest, and also asks which company file is open and notes it.
    std::string processCompanyRequest(const std::string& request);

    // Records the open company file. When it differs from the last one seen, and that one was
    // not empty, the company-file-changed handler runs (the main window reloads its company
    // information there).
    void noteCompanyFile(const std::string& fileName);
    const std::string& currentCompanyFile() const { return m_currentCompanyFile; }
    void onCompanyFileChanged(std::function<void()> handler) {
        m_companyChanged = std::move(handler);
    }

    // The message a failed step shows.
    static std::string failureMessage(const Error& error);

private:
    std::string exchange(const std::string& request, bool askCompanyFile);

    const ProgramFolder& m_folder;
    ui::UiPort& m_ui;
    ProcessorFactory m_factory;
    std::string m_currentCompanyFile;
    std::function<void()> m_companyChanged;
};

}  // namespace dorvane::qbgateway
