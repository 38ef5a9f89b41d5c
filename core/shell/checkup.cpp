// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/checkup.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "common/text.h"
#include "handheld/folderdevice.h"
#include "handheld/timetracksync.h"
#include "mail/mailer.h"
#include "mail/mxresolver.h"
#include "platform/programhome.h"
#include "platform/settings.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "webconnector/config.h"
#include "webupdate/httppost.h"
#include "webupdate/webupdate.h"

namespace dorvane::shell {
namespace fs = std::filesystem;

namespace {

// Whose mail exchanger direct delivery looks up when the company's address is not known.
constexpr const char* kWellKnownMailDomain = "gmail.com";

CheckResult ok(const char* component, std::string detail) {
    return {component, CheckState::Ok, std::move(detail), {}};
}

CheckResult problem(const char* component, std::string detail, std::string remedy) {
    return {component, CheckState::Problem, std::move(detail), std::move(remedy)};
}

CheckResult notConfigured(const char* component, std::string detail) {
    return {component, CheckState::NotConfigured, std::move(detail), {}};
}

// "a, b, c and 2 more".
std::string someOf(const std::vector<std::string>& names) {
    constexpr std::size_t kShown = 3;
    std::string out;
    for (std::size_t i = 0; i < names.size() && i < kShown; ++i) {
        out += (i ? ", " : "") + names[i];
    }
    if (names.size() > kShown) {
        out += " and " + std::to_string(names.size() - kShown) + " more";
    }
    return out;
}

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

// Why the folder cannot be written into, or "" when it can.
std::string notWritable(const fs::path& folder) {
    return ::access(folder.c_str(), W_OK | X_OK) == 0 ? std::string() : std::strerror(errno);
}

CheckResult checkProgramFolder(const fs::path& home, const fs::path& shipped) {
    constexpr const char* kName = "program folder";
    std::error_code ec;
    if (!fs::is_directory(home, ec)) {
        return problem(kName, home.string() + " is not there.",
                       "Start dorvane once (it creates the folder), or name another folder "
                       "with --home DIR or DORVANE_HOME=DIR.");
    }
    if (const std::string why = notWritable(home); !why.empty()) {
        return problem(kName, home.string() + " cannot be written (" + why + ").",
                       "chmod u+rwx " + quoted(home));
    }
    if (shipped.empty() || !fs::is_directory(shipped, ec)) {
        return problem(kName,
                       "The shipped templates and style sheets were not found" +
                           (shipped.empty() ? std::string() : " in " + shipped.string()) + ".",
                       "Install Dorvane again, or point DORVANE_SHARE_DIR at its share/dorvane "
                       "folder.");
    }
    const platform::HomeInspection found = platform::inspectProgramHome(home, shipped);
    if (!found.missing.empty()) {
        return problem(kName,
                       home.string() + " lacks " + std::to_string(found.missing.size()) +
                           " shipped files (" + someOf(found.missing) + ").",
                       "Start dorvane once: it copies in the shipped files a folder lacks.");
    }
    if (!found.newBeside.empty()) {
        const std::string& first = found.newBeside.front();
        return problem(kName,
                       "Your changed " + someOf(found.newBeside) +
                           " kept; this release's version is beside each as NAME.new.",
                       "Compare them: mv " + quoted(home / (first + ".new")) + " " +
                           quoted(home / first) +
                           " takes this release's version, deleting the .new file keeps yours.");
    }
    std::string detail = home.string() + ", with every shipped file";
    if (!found.changed.empty()) {
        detail += "; changed by you: " + someOf(found.changed);
    }
    return ok(kName, detail);
}

CheckResult checkSettings(const platform::SettingsStore& store) {
    constexpr const char* kName = "settings";
    const fs::path& file = store.file();
    struct stat st {};
    if (::stat(file.c_str(), &st) != 0) {
        return ok(kName, "nothing stored yet (" + file.string() + "): every value is its default");
    }
    if (::access(file.c_str(), R_OK) != 0) {
        return problem(kName, file.string() + " cannot be read (" + std::strerror(errno) + ").",
                       "chmod 600 " + quoted(file));
    }
    if ((st.st_mode & 077) != 0) {
        return problem(kName,
                       file.string() + " can be read by others, and it may hold the mail password.",
                       "chmod 600 " + quoted(file));
    }
    const auto entries = store.entries();
    std::vector<std::string> unknown;
    for (const auto& e : entries) {
        if (!platform::knownSetting(e.section, e.key)) {
            unknown.push_back(e.section + " " + e.key);
        }
    }
    for (const auto& e : entries) {
        const platform::KnownSetting* known = platform::knownSetting(e.section, e.key);
        // A hash is written by the program itself (webconnector user), never by hand.
        if (!unknown.empty() || !known || known->type == platform::SettingType::Hash) {
            continue;
        }
        if (const Status fits = platform::checkSetting(e.section, e.key, e.value); !fits) {
            return problem(kName, fits.error().description,
                           "dorvane settings set " + std::string(known->section) + " " +
                               known->key + " " +
                               (*known->defaultValue ? known->defaultValue : std::string("VALUE")));
        }
    }
    if (!unknown.empty()) {
        return problem(kName,
                       file.string() + " holds values Dorvane does not read: " + someOf(unknown) +
                           " (a misspelt key?).",
                       "Remove them from " + quoted(file) +
                           ", and set what was meant: dorvane settings set SECTION KEY VALUE");
    }
    return ok(kName, std::to_string(entries.size()) + " values in " + file.string() +
                         ", each known and fitting");
}

CheckResult checkQuickBooks(const CheckupSources& sources) {
    constexpr const char* kName = "QuickBooks";
    std::string folder;
    switch (webconnector::chosenConnection(sources.settings, &folder)) {
        case webconnector::Connection::ResponseFolder: {
            std::error_code ec;
            if (!fs::is_directory(folder, ec)) {
                return problem(kName,
                               "the answers are to come from " + folder + ", which is not there.",
                               "Unset DORVANE_PROCESSOR, or dorvane settings set QuickBooks "
                               "Connection sandbox");
            }
            return ok(kName, "answered from the response files in " + folder);
        }
        case webconnector::Connection::WebConnector: {
            const auto s = webconnector::ServiceSettings::load(sources.settings);
            if (s.userName.empty() || s.passwordHash.empty()) {
                return problem(kName,
                               "reached through the Web Connector, but no user is set "
                               "for it to log in as.",
                               "dorvane webconnector user NAME");
            }
            std::error_code ec;
            for (const std::string* file : {&s.certificate, &s.key}) {
                if (!file->empty() && !fs::is_regular_file(*file, ec)) {
                    return problem(
                        kName, "the Web Connector's certificate or key " + *file + " is not there.",
                        "dorvane settings set WebConnector Certificate FILE (and Key "
                        "FILE), or set both empty to serve this computer only.");
                }
            }
            const auto log =
                webconnector::summarizeLog(sources.programHome / webconnector::kLogFile);
            if (!log.lastConnected) {
                return problem(kName,
                               "reached through the Web Connector as user " + s.userName +
                                   ", which has never connected.",
                               "dorvane webconnector qwc, add Dorvane.qwc to the Web Connector on "
                               "the QuickBooks PC and press Update Selected there "
                               "(dorvane webconnector status tells more).");
            }
            return ok(kName, "through the Web Connector as user " + s.userName + "; last poll " +
                                 *log.lastConnected);
        }
        case webconnector::Connection::Sandbox:
            break;
    }
    const auto state = qbsandbox::readState(sources.sandboxFolder);
    if (!state) {
        return ok(kName, "the sandbox, whose demo company is created and opened on first use");
    }
    const std::string open =
        "dorvane sandbox open " + (state->last.empty() ? "FILE" : quoted(state->last));
    if (!state->running) {
        return problem(kName, "the sandbox QuickBooks is not running.", open);
    }
    if (state->company.empty()) {
        return problem(kName, "the sandbox QuickBooks has no company file open.", open);
    }
    std::error_code ec;
    if (!fs::is_regular_file(state->company, ec)) {
        return problem(
            kName, "the sandbox's open company file " + state->company.string() + " is not there.",
            "dorvane sandbox open FILE, or dorvane sandbox new FILE --demo");
    }
    return ok(kName, "the sandbox, company file " + state->company.string() + " open");
}

CheckResult checkSmtpServer(const platform::SettingsStore& store, int mailOption) {
    constexpr const char* kName = "SMTP server";
    constexpr const char* kChoose =
        "dorvane settings set Settings MailOption 0 (your SMTP server) or 2 (direct delivery)";
    if (mailOption == 1) {
        return problem(kName,
                       "Settings MailOption is 1 (Outlook), which this system does not have: "
                       "no mail goes out.",
                       kChoose);
    }
    if (mailOption == 2) {
        return notConfigured(kName, "not used: Settings MailOption is 2 (direct delivery)");
    }
    if (mailOption != 0) {
        return problem(kName,
                       "Settings MailOption is " + std::to_string(mailOption) +
                           ", which names no way of sending: no mail goes out.",
                       kChoose);
    }
    const std::string host(text::trim(store.get("SMTP", "Hostname")));
    if (host.empty()) {
        return notConfigured(kName,
                             "no server set, so no mail goes out: dorvane settings set "
                             "SMTP Hostname smtp.example.com");
    }
    const std::string port = store.value("SMTP", "Port").value_or("");
    const std::string user = store.get("SMTP", "User");
    const mail::SmtpProbe probe = mail::probeSmtpServer(host, port, user, store.get("SMTP", "Pwd"));
    if (probe.result != 0) {
        std::string remedy;
        switch (probe.result) {
            case mail::kResultCouldNotResolveHost:
                remedy = "dorvane settings set SMTP Hostname NAME (your provider's server name)";
                break;
            case mail::kResultCouldNotConnect:
                remedy =
                    "dorvane settings set SMTP Port PORT (often 587, or 465), or start the "
                    "server";
                break;
            case mail::kResultTlsRequired:
                remedy =
                    "dorvane settings set SMTP Port 465 (TLS from the start), or use a server "
                    "that offers STARTTLS";
                break;
            case mail::kResultLoginDenied:
                remedy = "dorvane settings set SMTP User NAME, and SMTP Pwd PASSWORD";
                break;
            default:
                remedy =
                    "dorvane settings set SMTP Hostname NAME (the name your provider gives, "
                    "which its certificate carries), or SMTP Port PORT";
        }
        return problem(kName, probe.problem, remedy);
    }
    std::string detail = host + " port " + std::string(text::trim(port)) + " answers";
    detail += probe.facts.tlsUsed      ? ", encrypted (TLS)"
              : probe.facts.tlsOffered ? ", TLS offered but not used"
                                       : ", unencrypted (the server offers no TLS)";
    if (user.empty()) {
        detail += ", no login set";
    } else if (probe.facts.loggedIn) {
        detail += ", login as " + user + " accepted";
    } else {
        detail += ", the server asks for no login (SMTP User is not used)";
    }
    return ok(kName, detail);
}

CheckResult checkDirectDelivery(const std::string& senderAddress, int mailOption) {
    constexpr const char* kName = "MX delivery";
    if (mailOption != 2) {
        return notConfigured(kName, "not used: Settings MailOption is " +
                                        std::to_string(mailOption) + " (2 delivers directly)");
    }
    const std::string sender = mail::bareAddress(senderAddress);
    const auto at = sender.rfind('@');
    const std::string domain = at != std::string::npos && at + 1 < sender.size()
                                   ? sender.substr(at + 1)
                                   : std::string(kWellKnownMailDomain);
    const mail::MxResolver resolver = mail::MxResolver::fromEnvironment();
    const std::string remedy =
        "Check this computer's network and DNS (/etc/resolv.conf), or send through your SMTP "
        "server: dorvane settings set Settings MailOption 0";
    const std::string exchanger = resolver.mailExchanger(domain);
    if (exchanger.empty()) {
        return problem(kName, "DNS named no mail exchanger for " + domain + ".", remedy);
    }
    if (mail::isAddressLiteral(exchanger)) {
        return ok(kName, "DNS answers: mail for " + domain + " goes to " + exchanger);
    }
    const auto addresses = resolver.addresses(exchanger);
    if (addresses.empty()) {
        return problem(kName,
                       "DNS named " + exchanger + " as the mail exchanger of " + domain +
                           " but gave no address for it.",
                       remedy);
    }
    return ok(kName, "DNS answers: mail for " + domain + " goes to " + exchanger + " (" +
                         addresses.front() + ")");
}

CheckResult checkHandheld(const platform::SettingsStore& store) {
    constexpr const char* kName = "handheld folder";
    const handheld::DeviceFolder folder = handheld::deviceFolder(store);
    if (folder.path.empty()) {
        return notConfigured(kName,
                             "none set; the handheld sync needs one: dorvane settings set "
                             "Handheld DeviceFolder DIR");
    }
    const std::string where = folder.path.string() + " (from " + folder.source + ")";
    const std::string choose = folder.source == handheld::kDeviceDirVariable
                                   ? std::string("DORVANE_DEVICE_DIR=DIR")
                                   : std::string("dorvane settings set Handheld DeviceFolder DIR");
    std::error_code ec;
    if (!fs::is_directory(folder.path, ec)) {
        return problem(kName, where + " is not there.",
                       "Connect and mount the handheld, or choose its folder: " + choose);
    }
    if (const std::string why = notWritable(folder.path); !why.empty()) {
        return problem(kName, where + " cannot be written (" + why + ").",
                       "Mount the handheld writable, or chmod u+rwx " + quoted(folder.path));
    }
    const auto file = handheld::FolderDevice(folder.path).localPath(handheld::kDeviceDataFile);
    if (!file || !fs::is_regular_file(*file, ec)) {
        return problem(kName, where + " has no Program Files/TimeTrack/data.xml.",
                       "dorvane handheld init (or start the time-tracking application on the "
                       "handheld once), or choose the handheld's own folder: " +
                           choose);
    }
    return ok(kName, where + ", with the handheld's data.xml");
}

CheckResult checkWebUpdate(const platform::SettingsStore& store) {
    constexpr const char* kName = "web update";
    const std::string url = webupdate::siteAddress(store);
    if (url.empty()) {
        return notConfigured(kName,
                             "no web site set; items are converted but not sent: dorvane "
                             "settings set Web UpdateURL https://www.example.com/items");
    }
    if (const Status fits = webupdate::checkSiteAddress(url); !fits) {
        return problem(kName, "Web UpdateURL " + fits.error().description + ".",
                       "dorvane settings set Web UpdateURL https://www.example.com/items");
    }
    return ok(kName, "items go to " + url);
}

CheckResult checkWindow() {
    constexpr const char* kName = "window";
    for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"}) {
        if (const char* value = std::getenv(variable); value && *value) {
            return ok(kName, std::string("a display to open on (") + variable + "=" + value + ")");
        }
    }
    return notConfigured(kName,
                         "no display: dorvane runs its commands, and lists this week's "
                         "invoices instead of opening the window");
}

}  // namespace

std::vector<CheckResult> runCheckup(const CheckupSources& sources) {
    const int mailOption = platform::loadMailSettings(sources.settings).mailOption;
    return {
        checkProgramFolder(sources.programHome, sources.shippedFiles),
        checkSettings(sources.settings),
        checkQuickBooks(sources),
        checkSmtpServer(sources.settings, mailOption),
        checkDirectDelivery(sources.senderAddress, mailOption),
        checkHandheld(sources.settings),
        checkWebUpdate(sources.settings),
        checkWindow(),
    };
}

std::vector<CheckResult> runCheckup(Application& app) {
    app.settings().reload();
    return runCheckup(CheckupSources{app.folder().path(), platform::locateShippedFiles(),
                                     app.settings(), qbsandbox::stateFolder(),
                                     app.company().senderAddress()});
}

std::string checkupText(const std::vector<CheckResult>& results) {
    std::string text;
    for (const CheckResult& r : results) {
        text += r.component;
        switch (r.state) {
            case CheckState::Ok:
                text += ": ok — " + r.detail;
                break;
            case CheckState::Problem:
                text += ": PROBLEM — " + r.detail + " To fix: " + r.remedy;
                break;
            case CheckState::NotConfigured:
                text += ": not configured — " + r.detail;
                break;
        }
        text += '\n';
    }
    return text;
}

bool checkupPassed(const std::vector<CheckResult>& results) {
    for (const CheckResult& r : results) {
        if (r.state == CheckState::Problem) {
            return false;
        }
    }
    return true;
}

}  // namespace dorvane::shell
