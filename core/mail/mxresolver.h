// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — DNS lookups of the mail layer: mail exchangers and host addresses.
//
// Answers come from the system's DNS configuration, or from the servers named in
// $DORVANE_DNS_SERVER ("127.0.0.1:15353", several separated by ","), which then answer every
// lookup of the mail layer. Lookups wait at most a few seconds; a failed lookup answers
// empty.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dorvane::mail {

inline constexpr const char* kDnsServerVariable = "DORVANE_DNS_SERVER";

class MxResolver final {
public:
    // `servers` in the form "host:port,host:port"; empty: the system's configuration.
    explicit MxResolver(std::string servers = {});
    // Uses $DORVANE_DNS_SERVER when set.
    static MxResolver fromEnvironment();

    // Whether lookups go to servers named by the program rather than the system's.
    bool hasServerOverride() const { return !m_servers.empty(); }

    // The host to deliver mail for `domain` to: the mail exchanger with the lowest
    // preference; when the domain has no MX record but an address, the domain itself
    // (RFC 5321 implicit MX); empty when there is none (also for a "null MX", RFC 7505). A
    // domain written as an address literal ("[192.0.2.1]") is that address.
    std::string mailExchanger(std::string_view domain) const;

    // The host's IPv4 and IPv6 addresses as text, in the order the server gave them.
    std::vector<std::string> addresses(std::string_view host) const;

private:
    std::string m_servers;
};

}  // namespace dorvane::mail
