// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — a real HTTP server on loopback (tests/support/http_server.py) that records
// what was posted to it, and can refuse, stall or redirect chosen requests.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/mailservers.h"
#include "support/testsupport.h"

namespace dorvane::test {

struct HttpRequestRecord {
    std::string connection;  // the client's port: equal for requests over one connection
    std::string method;
    std::string path;
    int status = 0;
    std::string contentType;
    std::string authorization;
    std::string body;
};

struct HttpServerOptions {
    std::vector<int> fail;   // requests (from 1) answered 500
    std::vector<int> stall;  // requests answered only after stallSeconds
    double stallSeconds = 5;
    std::vector<int> redirect;  // requests answered 302 to a page that stores nothing
};

class HttpTestServer {
public:
    explicit HttpTestServer(HttpServerOptions options = {});
    std::string url(const std::string& path = "/items") const;
    std::vector<HttpRequestRecord> requests() const;

private:
    TempDir m_dir;
    std::unique_ptr<ServerProcess> m_process;
};

}  // namespace dorvane::test
