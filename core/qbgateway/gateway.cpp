// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/gateway.h"

#include "common/text.h"
#include "qbgateway/programfolder.h"
#include "ui/uiport.h"

namespace dorvane::qbgateway {
namespace {

constexpr const char* kRequestTrace = "QBXMLReq.txt";
constexpr const char* kResponseTrace = "QBXMLResult.txt";

// Unwraps a step's result; a failed step leaves the call through StepFailed.
struct StepFailed {
    Error error;
};

void check(const Status& s) {
    if (!s) {
        throw StepFailed{s.error()};
    }
}

template <class T>
T take(Result<T>&& r) {
    if (!r) {
        throw StepFailed{r.error()};
    }
    return std::move(r).value();
}

}  // namespace

Gateway::Gateway(const ProgramFolder& folder, ui::UiPort& ui, ProcessorFactory factory)
    : m_folder(folder), m_ui(ui), m_factory(std::move(factory)) {}

std::string Gateway::processRequest(const std::string& request) {
    return exchange(request, false);
}

std::string Gateway::processCompanyRequest(const std::string& request) {
    return exchange(request, true);
}

std::string Gateway::exchange(const std::string& request, bool askCompanyFile) {
    try {
        // The request trace is written whether or not QuickBooks can be reached.
        // Traces only need to be whole, not to outlive a power cut: no flush to the disk.
        m_folder.writeProgramFile(request, kRequestTrace, files::Durability::Replaced);

        std::unique_ptr<RequestProcessor> processor = take(m_factory());
        check(processor->openConnection("", kApplicationName));
        const std::string ticket = take(processor->beginSession("", FileMode::DoNotCare));
        std::string companyFile;
        if (askCompanyFile) {
            companyFile = take(processor->getCurrentCompanyFileName(ticket));
        }
        std::string response = take(processor->processRequest(ticket, request));
        check(processor->endSession(ticket));
        check(processor->closeConnection());
        if (askCompanyFile) {
            noteCompanyFile(companyFile);
        }
        m_folder.writeProgramFile(response, kResponseTrace, files::Durability::Replaced);
        return response;
    } catch (const StepFailed& failed) {
        if (static_cast<std::uint32_t>(failed.error.code) == kErrNoCompanyFile) {
            m_ui.messageBox(kNoCompanyMessage);
        } else {
            m_ui.messageBox(failureMessage(failed.error));
        }
    } catch (const FileWriteError& e) {
        m_ui.messageBox(failureMessage(Error{e.code(), e.description()}));
    }
    return {};
}

void Gateway::noteCompanyFile(const std::string& fileName) {
    if (fileName == m_currentCompanyFile) {
        return;
    }
    const std::string previous = m_currentCompanyFile;
    m_currentCompanyFile = fileName;
    if (!previous.empty() && m_companyChanged) {
        m_companyChanged();
    }
}

std::string Gateway::failureMessage(const Error& error) {
    return "QuickBooks Access Error\r\n" + error.description + "(" +
           text::signedDecimal(static_cast<std::uint32_t>(error.code)) + ")";
}

}  // namespace dorvane::qbgateway
