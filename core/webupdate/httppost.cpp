// SPDX-License-Identifier: GPL-3.0-or-later
#include "webupdate/httppost.h"

#include <memory>
#include <mutex>

#include <curl/curl.h>

namespace dorvane::webupdate {
namespace {

struct CurlEasyCleanup {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct CurlSlistFree {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
struct CurlUrlCleanup {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using CurlPtr = std::unique_ptr<CURL, CurlEasyCleanup>;
using UrlPtr = std::unique_ptr<CURLU, CurlUrlCleanup>;
using SlistPtr = std::unique_ptr<curl_slist, CurlSlistFree>;

// Adds a line at the end of the list; false when it could not, the list left as it was.
bool appendLine(SlistPtr& list, const std::string& line) {
    curl_slist* grown = curl_slist_append(list.get(), line.c_str());
    if (!grown) {
        return false;
    }
    list.release();  // the same list, grown; or a new one when it was empty
    list.reset(grown);
    return true;
}

size_t discardBody(char*, size_t size, size_t count, void*) {
    return size * count;
}

std::string plainWords(CURLcode code, const std::string& url, const char* detail) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return "the web site's host in " + url + " was not found";
        case CURLE_COULDNT_CONNECT:
            return "the web site " + url + " refused the connection";
        case CURLE_OPERATION_TIMEDOUT:
            return "the web site " + url + " did not answer in time";
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
            return "the web site's certificate is not trusted (" + url + ")";
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return "the web site address is not an http or https address: " + url;
        default:
            return std::string("posting to ") + url +
                   " failed: " + (detail && *detail ? detail : curl_easy_strerror(code));
    }
}

}  // namespace

Status checkSiteAddress(std::string_view url) {
    const std::string text(url);
    auto refuse = [&text](const std::string& why) {
        return Status(Error{0, "\"" + text + "\" " + why});
    };
    if (text.find_first_of(" \t\r\n") != std::string::npos) {
        return refuse("holds a blank; an address has none (write a blank as %20)");
    }
    UrlPtr parsed(curl_url());
    if (!parsed) {
        return refuse("could not be read");
    }
    if (curl_url_set(parsed.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) {
        return refuse("is not a web address such as https://www.example.com/items");
    }
    char* scheme = nullptr;
    std::string schemeText;
    if (curl_url_get(parsed.get(), CURLUPART_SCHEME, &scheme, 0) == CURLUE_OK) {
        schemeText = scheme;
        curl_free(scheme);
    }
    if (schemeText != "http" && schemeText != "https") {
        return refuse("is no http or https address");
    }
    return Ok{};
}

struct HttpPoster::Impl {
    PostOptions options;
    SlistPtr headers;  // outlives the handle that points at it
    CurlPtr handle;
    char errorBuffer[CURL_ERROR_SIZE] = {};
};

HttpPoster::HttpPoster(PostOptions options) : m_impl(std::make_unique<Impl>()) {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_impl->options = std::move(options);
    bool headers = appendLine(m_impl->headers, "Content-Type: application/json; charset=utf-8");
    if (headers && !m_impl->options.bearerToken.empty()) {
        headers =
            appendLine(m_impl->headers, "Authorization: Bearer " + m_impl->options.bearerToken);
    }
    if (!headers) {
        return;  // without its headers the post is not set up
    }
    m_impl->handle.reset(curl_easy_init());
    CURL* h = m_impl->handle.get();
    if (!h) {
        return;
    }
    curl_easy_setopt(h, CURLOPT_URL, m_impl->options.url.c_str());
    curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(h, CURLOPT_HTTPHEADER, m_impl->headers.get());
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT, m_impl->options.connectTimeoutSeconds);
    curl_easy_setopt(h, CURLOPT_TIMEOUT, m_impl->options.timeoutSeconds);
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, discardBody);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, m_impl->errorBuffer);
    curl_easy_setopt(h, CURLOPT_USERAGENT, "Dorvane/" DORVANE_VERSION);
}

HttpPoster::~HttpPoster() = default;

Result<long> HttpPoster::post(std::string_view json) {
    CURL* h = m_impl->handle.get();
    if (!h) {
        return Error{CURLE_FAILED_INIT, "the web connection could not be set up"};
    }
    m_impl->errorBuffer[0] = '\0';
    curl_easy_setopt(h, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(json.size()));
    curl_easy_setopt(h, CURLOPT_POSTFIELDS, json.data());
    const CURLcode code = curl_easy_perform(h);
    if (code != CURLE_OK) {
        return Error{static_cast<int>(code),
                     plainWords(code, m_impl->options.url, m_impl->errorBuffer)};
    }
    long status = 0;
    curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

}  // namespace dorvane::webupdate
