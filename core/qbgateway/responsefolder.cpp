// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/responsefolder.h"

#include <regex>

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
    Result<std::string> processRequest(const std::string&, const std::string& request) override {
        if (auto f = failure("ProcessRequest"); !f) {
            return f.error();
        }
        // The first request element after the message element names the answer.
        static const std::regex requestElement(R"(<([A-Za-z0-9]+)Rq[\s>/])");
        std::filesystem::path file = m_folder / "default.xml";
        auto messages = request.find("<QBXMLMsgsRq");
        if (messages != std::string::npos) {
            std::smatch m;
            auto from = request.cbegin() + static_cast<std::ptrdiff_t>(messages + 1);
            if (std::regex_search(from, request.cend(), m, requestElement)) {
                auto named = m_folder / (m[1].str() + "Rs.xml");
                if (std::filesystem::exists(named)) {
                    file = named;
                }
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
