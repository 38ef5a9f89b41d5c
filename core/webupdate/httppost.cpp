// SPDX-License-Identifier: GPL-3.0-or-later
#include "webupdate/httppost.h"

#include <mutex>

#include <curl/curl.h>

namespace dorvane::webupdate {
namespace {

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

struct HttpPoster::Impl {
    PostOptions options;
    CURL* handle = nullptr;
    curl_slist* headers = nullptr;
    char errorBuffer[CURL_ERROR_SIZE] = {};
};

HttpPoster::HttpPoster(PostOptions options) : m_impl(std::make_unique<Impl>()) {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_impl->options = std::move(options);
    m_impl->handle = curl_easy_init();
    m_impl->headers = curl_slist_append(nullptr, "Content-Type: application/json; charset=utf-8");
    if (!m_impl->options.bearerToken.empty()) {
        m_impl->headers = curl_slist_append(
            m_impl->headers, ("Authorization: Bearer " + m_impl->options.bearerToken).c_str());
    }
    CURL* h = m_impl->handle;
    if (!h) {
        return;
    }
    curl_easy_setopt(h, CURLOPT_URL, m_impl->options.url.c_str());
    curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(h, CURLOPT_HTTPHEADER, m_impl->headers);
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT, m_impl->options.connectTimeoutSeconds);
    curl_easy_setopt(h, CURLOPT_TIMEOUT, m_impl->options.timeoutSeconds);
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, discardBody);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, m_impl->errorBuffer);
    curl_easy_setopt(h, CURLOPT_USERAGENT, "Dorvane/" DORVANE_VERSION);
}

HttpPoster::~HttpPoster() {
    if (m_impl->handle) {
        curl_easy_cleanup(m_impl->handle);
    }
    curl_slist_free_all(m_impl->headers);
}

Result<long> HttpPoster::post(std::string_view json) {
    CURL* h = m_impl->handle;
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
