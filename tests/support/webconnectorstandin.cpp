// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/webconnectorstandin.h"

#include <cstdio>
#include <stdexcept>

#include <curl/curl.h>

#include "qbsandbox/sandbox.h"
#include "xml/xml.h"

namespace dorvane::test {
namespace {

struct Unreachable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

size_t collect(char* data, size_t size, size_t count, void* out) {
    static_cast<std::string*>(out)->append(data, size * count);
    return size * count;
}

std::string hresultText(std::int32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

constexpr const char* kHostCompanyPreferences =
    "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs>"
    "<HostQueryRs requestID=\"0\" statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status "
    "OK\"><HostRet><ProductName>QuickBooks Pro 2014</ProductName><MajorVersion>24</MajorVersion>"
    "<MinorVersion>0</MinorVersion><Country>US</Country><SupportedQBXMLVersion>13.0"
    "</SupportedQBXMLVersion></HostRet></HostQueryRs></QBXMLMsgsRs></QBXML>";

}  // namespace

WebConnectorStandIn::WebConnectorStandIn(Options options) : m_options(std::move(options)) {
    m_thread = std::thread([this] { run(); });
}

WebConnectorStandIn::~WebConnectorStandIn() {
    stop();
}

void WebConnectorStandIn::stop() {
    m_stop = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

WebConnectorStandIn::Counts WebConnectorStandIn::counts() const {
    std::lock_guard lock(m_mutex);
    return m_counts;
}

void WebConnectorStandIn::pause(std::chrono::milliseconds length) {
    const auto end = std::chrono::steady_clock::now() + length;
    while (!m_stop && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void WebConnectorStandIn::run() {
    while (!m_stop) {
        try {
            update();
        } catch (const Unreachable&) {
            std::lock_guard lock(m_mutex);
            ++m_counts.unreachable;
        }
        pause(m_options.every);
    }
}

std::pair<long, std::string> WebConnectorStandIn::post(const std::string& url,
                                                       const std::string& body,
                                                       const std::string& caFile,
                                                       const std::string& soapAction) {
    CURL* curl = curl_easy_init();
    std::string reply;
    curl_slist* headers = curl_slist_append(nullptr, "Content-Type: text/xml; charset=utf-8");
    if (!soapAction.empty()) {
        headers = curl_slist_append(headers, ("SOAPAction: \"" + soapAction + "\"").c_str());
    }
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &collect);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, 90L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    if (!caFile.empty()) {
        curl_easy_setopt(curl, CURLOPT_CAINFO, caFile.c_str());
    }
    long status = 0;
    if (curl_easy_perform(curl) == CURLE_OK) {
        curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(curl);
    return {status, reply};
}

std::string WebConnectorStandIn::envelope(
    const std::string& method, const std::vector<std::pair<std::string, std::string>>& params) {
    std::string body =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope "
        "xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\" "
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"><soap:Body><" +
        method + " xmlns=\"http://developer.intuit.com/\">";
    for (const auto& [name, value] : params) {
        body += "<" + name + ">" + xml::escapeText(value) + "</" + name + ">";
    }
    return body + "</" + method + "></soap:Body></soap:Envelope>";
}

std::vector<std::string> WebConnectorStandIn::results(const std::string& reply,
                                                      const std::string& method) {
    auto doc = xml::Document::parse(reply, {true, true});
    if (!doc) {
        return {};
    }
    const xml::Node result =
        doc->selectOne("//*[local-name()=$name]", {{"name", method + "Result"}});
    if (!result) {
        return {};
    }
    const std::vector<xml::Node> items = result.selectAll("*[local-name()='string']");
    if (items.empty()) {
        return {result.text()};
    }
    std::vector<std::string> out;
    for (const xml::Node& item : items) {
        out.push_back(item.text());
    }
    return out;
}

std::vector<std::string> WebConnectorStandIn::call(
    const std::string& method, const std::vector<std::pair<std::string, std::string>>& params) {
    auto [status, reply] = post(m_options.url, envelope(method, params), m_options.caFile,
                                std::string("http://developer.intuit.com/") + method);
    if (status != 200) {
        throw Unreachable(method + ": HTTP " + std::to_string(status));
    }
    return results(reply, method);
}

// Runs one request in the office's QuickBooks: the answer, or ("", HRESULT) when a step failed.
std::pair<std::string, std::string> WebConnectorStandIn::runInOffice(const std::string& request) {
    auto made = qbsandbox::processorFactory(m_options.office)();
    if (!made) {
        return {"", hresultText(made.error().code) + " " + made.error().description};
    }
    auto& qb = *made;
    if (auto s = qb->openConnection("", "Web Connector"); !s) {
        return {"", hresultText(s.error().code) + " " + s.error().description};
    }
    auto ticket = qb->beginSession("", qbgateway::FileMode::DoNotCare);
    if (!ticket) {
        return {"", hresultText(ticket.error().code) + " " + ticket.error().description};
    }
    auto answer = qb->processRequest(*ticket, request);
    (void)qb->endSession(*ticket);
    (void)qb->closeConnection();
    if (!answer) {
        return {"", hresultText(answer.error().code) + " " + answer.error().description};
    }
    return {*answer, ""};
}

void WebConnectorStandIn::update() {
    {
        std::lock_guard lock(m_mutex);
        ++m_counts.updates;
    }
    call("serverVersion", {});
    call("clientVersion", {{"strVersion", "2.3.0.36"}});
    const auto login = call("authenticate",
                            {{"strUserName", m_options.user}, {"strPassword", m_options.password}});
    if (login.size() < 2 || login[1] == "nvu" || login[1] == "none") {
        std::lock_guard lock(m_mutex);
        ++(login.size() >= 2 && login[1] == "none" ? m_counts.closed : m_counts.refusals);
        return;
    }
    const std::string ticket = login[0];
    {
        std::lock_guard lock(m_mutex);
        ++m_counts.logins;
    }
    auto close = [&] {
        const auto said = call("closeConnection", {{"ticket", ticket}});
        std::lock_guard lock(m_mutex);
        ++m_counts.closed;
        m_counts.lastClose = said.empty() ? "" : said[0];
    };
    if (m_options.mode == Mode::ConnectionError) {
        call("connectionError", {{"ticket", ticket},
                                 {"hresult", m_options.connectionError.first},
                                 {"message", m_options.connectionError.second}});
        close();
        return;
    }
    bool first = true;
    while (true) {
        {
            std::lock_guard lock(m_mutex);
            m_counts.polling = true;
        }
        const auto request =
            call("sendRequestXML", {{"ticket", ticket},
                                    {"strHCPResponse", first ? kHostCompanyPreferences : ""},
                                    {"strCompanyFileName", m_options.companyFile},
                                    {"qbXMLCountry", "US"},
                                    {"qbXMLMajorVers", "13"},
                                    {"qbXMLMinorVers", "0"}});
        first = false;
        {
            std::lock_guard lock(m_mutex);
            m_counts.polling = false;
        }
        if (request.empty() || request[0].empty()) {
            const auto said = call("getLastError", {{"ticket", ticket}});
            const std::string text = said.empty() ? "" : said[0];
            if (text == "NoOp" && !m_stop) {
                {
                    std::lock_guard lock(m_mutex);
                    ++m_counts.noOps;
                }
                pause(m_options.noOpPause);
                continue;
            }
            if (text != "NoOp") {
                std::lock_guard lock(m_mutex);
                m_counts.lastError = text;
            }
            close();
            return;
        }
        if (m_options.mode == Mode::Stall) {
            while (!m_stop) {
                pause(std::chrono::milliseconds(50));
            }
            return;
        }
        const auto [response, failure] = runInOffice(request[0]);
        const auto space = failure.find(' ');
        const auto percent = call("receiveResponseXML",
                                  {{"ticket", ticket},
                                   {"response", response},
                                   {"hresult", failure.empty() ? "" : failure.substr(0, space)},
                                   {"message", failure.empty() ? "" : failure.substr(space + 1)}});
        {
            std::lock_guard lock(m_mutex);
            ++m_counts.answered;
        }
        const int done = percent.empty() ? -1 : std::atoi(percent[0].c_str());
        if (done < 0) {
            const auto said = call("getLastError", {{"ticket", ticket}});
            std::lock_guard lock(m_mutex);
            m_counts.lastError = said.empty() ? "" : said[0];
        }
        if (done < 0 || done >= 100 || m_stop) {
            close();
            return;
        }
    }
}

}  // namespace dorvane::test
