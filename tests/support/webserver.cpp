// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/webserver.h"

#include <cstdlib>

#include "xml/xml.h"

namespace dorvane::test {

HttpTestServer::HttpTestServer(HttpServerOptions options) {
    std::vector<std::string> args = {"--record", (m_dir / "http.record").string(),
                                     "--stall-seconds", std::to_string(options.stallSeconds)};
    for (int n : options.fail) {
        args.insert(args.end(), {"--fail", std::to_string(n)});
    }
    for (int n : options.redirect) {
        args.insert(args.end(), {"--redirect", std::to_string(n)});
    }
    for (int n : options.stall) {
        args.insert(args.end(), {"--stall", std::to_string(n)});
    }
    m_process =
        std::make_unique<ServerProcess>("http_server.py", std::move(args), m_dir / "http.log");
}

std::string HttpTestServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(m_process->port()) + path;
}

std::vector<HttpRequestRecord> HttpTestServer::requests() const {
    std::vector<HttpRequestRecord> out;
    auto doc = xml::Document::parse("<record>" + readFile(m_dir / "http.record") + "</record>");
    if (!doc) {
        return out;
    }
    for (const xml::Node& r : doc->root().childElements()) {
        out.push_back({r.attribute("connection"), r.attribute("method"), r.attribute("path"),
                       std::atoi(r.attribute("status").c_str()), r.attribute("content_type"),
                       r.attribute("authorization"), r.text()});
    }
    return out;
}

}  // namespace dorvane::test
