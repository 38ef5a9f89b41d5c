// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/gateway.h"

#include <utility>

#include "common/files.h"
#include "common/memory.h"
#include "common/text.h"
#include "platform/programfolder.h"
#include "ui/uiport.h"
#include "xml/xml.h"

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

// One writer for the whole program, so that traces reach the files in the order of the
// exchanges; it finishes its work when the program ends.
memory::BackgroundQueue& traceWriter() {
    static memory::BackgroundQueue writer;
    return writer;
}

}  // namespace

Gateway::Gateway(const platform::ProgramFolder& folder, ui::UiPort& ui, ProcessorFactory factory)
    : m_folder(folder), m_ui(ui), m_factory(std::move(factory)) {}

Gateway::~Gateway() {
    waitForTraces();
}

std::string Gateway::processRequest(const std::string& request) {
    return exchange(request, false);
}

std::string Gateway::processCompanyRequest(const std::string& request) {
    return exchange(request, true);
}

std::string Gateway::exchange(const std::string& request, bool askCompanyFile) {
    waitForTraces();
    if (m_traceFailure) {
        // The last answer could not be traced: said now, as a failed write of the call
        // before would have been.
        m_ui.messageBox(failureMessage(*std::exchange(m_traceFailure, std::nullopt)));
    }
    try {
        // The request trace is written whether or not QuickBooks can be reached.
        // Traces are diagnostics, written over in place: a rename per request costs more than
        // a whole batch import's bookkeeping, and a trace cut short by a crash loses nothing.
        if (Status traced =
                m_folder.writeProgramFile(request, kRequestTrace, files::Durability::Scratch);
            !traced) {
            m_ui.messageBox(failureMessage(traced.error()));
            return {};
        }

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
        m_unreachable = false;
        if (askCompanyFile) {
            noteCompanyFile(companyFile);
        }
        if (xml::declaresInternalSubset(response)) {
            // QuickBooks never declares entities; an answer that does (through the Web
            // Connector it comes over the network) is not read anywhere.
            m_ui.messageBox(kDeclaredAnswerMessage);
            return {};
        }
        // A list answer runs to tens of megabytes: the worker writes its copy while the
        // caller goes on.
        traceWriter().post([this, path = m_folder.filePath(kResponseTrace), text = response] {
            Status written = files::writeAtomically(path, {text, "\r\n"}, std::nullopt,
                                                    files::Durability::Scratch);
            if (!written) {
                m_traceFailure = written.error();
            }
        });
        return response;
    } catch (const StepFailed& failed) {
        m_unreachable = true;
        if (static_cast<std::uint32_t>(failed.error.code) == kErrNoCompanyFile) {
            m_ui.messageBox(kNoCompanyMessage);
        } else {
            m_ui.messageBox(failureMessage(failed.error));
        }
    }
    return {};
}

void Gateway::waitForTraces() {
    traceWriter().wait();
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
