// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — posting a document to the company's web site.
//
// One HTTP connection for a whole run: the poster keeps its libcurl handle, so libcurl reuses
// the connection from one item to the next. HTTPS certificates are checked; a stalled site
// ends the post after the timeout.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::webupdate {

struct PostOptions {
    std::string url;
    std::string bearerToken;  // sent as "Authorization: Bearer …" when not empty
    long connectTimeoutSeconds = 15;
    long timeoutSeconds = 30;
};

// Whether `url` is an address the poster can post to: http or https, with a host. Fails with
// the reason in plain words.
Status checkSiteAddress(std::string_view url);

class HttpPoster {
public:
    explicit HttpPoster(PostOptions options);
    ~HttpPoster();
    HttpPoster(const HttpPoster&) = delete;
    HttpPoster& operator=(const HttpPoster&) = delete;

    // Posts `json`; answers the HTTP status the site gave, or an error in plain words when no
    // answer came (host not found, connection refused, certificate not trusted, timeout).
    Result<long> post(std::string_view json);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace dorvane::webupdate
