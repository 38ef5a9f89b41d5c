// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the one way to QuickBooks: one request in, one response out.
//
// Each call makes a new request processor, opens a connection and a session, sends the one
// request, ends the session and closes the connection. Nothing stays open between calls.
// The request is traced to "QBXMLReq.txt" before anything else; the response to
// "QBXMLResult.txt" only when every step succeeded, by a worker thread while the caller reads
// the response (the next exchange, and the end of the program, wait for it). A failed step ends the
// call at once (no EndSession, no CloseConnection), shows the failure in a message box and answers
// "".
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "qbgateway/requestprocessor.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::qbgateway {

inline constexpr const char* kApplicationName = "Dorvane";
inline constexpr const char* kNoCompanyMessage =
    "Please open Quickbooks and select the appropriate Company file";
inline constexpr const char* kDeclaredAnswerMessage =
    "QuickBooks' answer declares entities or elements of its own, which QuickBooks never "
    "does; Dorvane did not use it. Check which program answers in QuickBooks' place.";

class Gateway {
public:
    Gateway(const platform::ProgramFolder& folder, ui::UiPort& ui, ProcessorFactory factory);
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

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

    // Whether the last exchange failed to reach QuickBooks (a step of the exchange failed).
    bool unreachable() const { return m_unreachable; }

    // The message a failed step shows.
    static std::string failureMessage(const Error& error);

    // Returns when the response trace of the last exchange is on file. Each exchange waits
    // for it before it writes its own request trace, and so does the end of the program.
    void waitForTraces();

private:
    std::string exchange(const std::string& request, bool askCompanyFile);

    const platform::ProgramFolder& m_folder;
    ui::UiPort& m_ui;
    ProcessorFactory m_factory;
    std::string m_currentCompanyFile;
    std::function<void()> m_companyChanged;
    bool m_unreachable = false;
    // Written by the trace writer, reported by the next exchange.
    std::optional<Error> m_traceFailure;
};

}  // namespace dorvane::qbgateway
