// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/responsefolder.h"

#include <cctype>
#include <string>
#include <string_view>

#include "common/files.h"
#include "common/text.h"

namespace dorvane::qbgateway {
namespace {

class ResponseFolderProcessor final : public RequestProcessor {
public:
    explicit ResponseFolderProcessor(std::filesystem::path folder) : m_folder(std::move(folder)) {
        auto failures = files::readAll(m_folder / "failures.txt");
        if (failures) {
            for (const std::string& line : text::split(*failures, '\n')) {
                std::string_view l = text::trim(line);
                auto sp1 = l.find(' ');
                if (sp1 == std::string_view::npos) {
                    continue;
                }
                auto rest = text::trim(l.substr(sp1 + 1));
                auto sp2 = rest.find(' ');
                std::string code(rest.substr(0, sp2));
                std::string description(sp2 == std::string_view::npos
                                            ? std::string_view()
                                            : text::trim(rest.substr(sp2 + 1)));
                m_failures.push_back({std::string(l.substr(0, sp1)),
                                      static_cast<std::uint32_t>(std::stoul(code, nullptr, 0)),
                                      description});
            }
        }
    }

    Status openConnection(const std::string&, const std::string&) override {
        return failure("OpenConnection");
    }
    Result<std::string> beginSession(const std::string&, FileMode) override {
        if (auto f = failure("BeginSession"); !f) {
            return f.error();
        }
        return std::string("ticket-1");
    }
    Result<std::string> getCurrentCompanyFileName(const std::string&) override {
        if (auto f = failure("GetCurrentCompanyFileName"); !f) {
            return f.error();
        }
        auto name = files::readAll(m_folder / "companyfile.txt");
        return name ? std::string(text::trim(*name)) : (m_folder / "company.qbw").string();
    }
    // The first request element after the message element names the answer: "<NameRq"
    // followed by a blank, ">" or "/". Read in one pass: a request carries outside text.
    static std::string requestName(std::string_view request) {
        const auto messages = request.find("<QBXMLMsgsRq");
        if (messages == std::string_view::npos) {
            return {};
        }
        for (auto at = request.find('<', messages + 1); at != std::string_view::npos;
             at = request.find('<', at + 1)) {
            auto end = at + 1;
            while (end < request.size() && std::isalnum(static_cast<unsigned char>(request[end]))) {
                ++end;
            }
            const bool followed =
                end < request.size() && (std::isspace(static_cast<unsigned char>(request[end])) ||
                                         request[end] == '>' || request[end] == '/');
            if (followed && end - at > 3 && request.substr(end - 2, 2) == "Rq") {
                return std::string(request.substr(at + 1, end - at - 3));
            }
        }
        return {};
    }

    Result<std::string> processRequest(const std::string&, const std::string& request) override {
        if (auto f = failure("ProcessRequest"); !f) {
            return f.error();
        }
        std::filesystem::path file = m_folder / "default.xml";
        if (const std::string name = requestName(request); !name.empty()) {
            auto named = m_folder / (name + "Rs.xml");
            if (std::filesystem::exists(named)) {
                file = named;
            }
        }
        auto text = files::readAll(file);
        if (!text) {
            return processorError(kErrParse,
                                  "QuickBooks found an error when parsing the "
                                  "provided XML text stream.");
        }
        return std::move(text).value();
    }
    Status endSession(const std::string&) override { return failure("EndSession"); }
    Status closeConnection() override { return failure("CloseConnection"); }

private:
    struct Failure {
        std::string operation;
        std::uint32_t code;
        std::string description;
    };

    Status failure(const std::string& operation) const {
        for (const auto& f : m_failures) {
            if (f.operation == operation) {
                return processorError(f.code, f.description);
            }
        }
        return {};
    }

    std::filesystem::path m_folder;
    std::vector<Failure> m_failures;
};

}  // namespace

ProcessorFactory responseFolderFactory(std::filesystem::path folder) {
    return [folder]() -> Result<std::unique_ptr<RequestProcessor>> {
        return std::unique_ptr<RequestProcessor>(new ResponseFolderProcessor(folder));
    };
}

}  // namespace dorvane::qbgateway
