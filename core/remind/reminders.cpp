// SPDX-License-Identifier: GPL-3.0-or-later
#include "remind/reminders.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>

#include "browser/documenttypes.h"
#include "browser/recipients.h"
#include "common/clock.h"
#include "common/files.h"
#include "common/text.h"
#include "company/companyinfo.h"
#include "mail/documentextras.h"
#include "mail/sendloop.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "remind/reminderlog.h"
#include "ui/uiport.h"

namespace dorvane::remind {
namespace {

constexpr const char* kStageNames[kStageCount] = {"friendly", "firm", "final"};
constexpr const char* kStageKeys[kStageCount] = {"Friendly", "Firm", "Final"};

// Whom a reminder greets: the customer's contact by name ("Ms. Ann Lee"), else the company's
// name, else the customer's name as QuickBooks lists it.
std::string greetingFor(const xml::Node& customer, const std::string& name) {
    if (!customer) {
        return name;
    }
    std::string person;
    for (const char* part : {"Salutation", "FirstName", "LastName"}) {
        const std::string value{text::trim(customer.valueOf(part))};
        if (!value.empty()) {
            person += (person.empty() ? "" : " ") + value;
        }
    }
    if (!customer.valueOf("FirstName").empty() || !customer.valueOf("LastName").empty()) {
        return person;
    }
    const std::string company{text::trim(customer.valueOf("CompanyName"))};
    return company.empty() ? name : company;
}

std::optional<std::chrono::sys_days> parseDate(std::string_view iso) {
    int y = 0;
    unsigned m = 0, d = 0;
    if (iso.size() != 10 || std::sscanf(std::string(iso).c_str(), "%4d-%2u-%2u", &y, &m, &d) != 3) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{y}, std::chrono::month{m},
                                           std::chrono::day{d}};
    if (!date.ok()) {
        return std::nullopt;
    }
    return std::chrono::sys_days(date);
}

const browser::DocumentType& invoiceType() {
    return *browser::findDocumentType("Invoice");
}

}  // namespace

const char* stageName(int stage) {
    return stage >= 1 && stage <= kStageCount ? kStageNames[stage - 1] : "";
}

int stageFor(int daysOverdue, const ReminderDays& days) {
    int stage = 0;
    for (int i = 0; i < kStageCount; ++i) {
        if (daysOverdue >= days[static_cast<std::size_t>(i)]) {
            stage = i + 1;
        }
    }
    return stage;
}

Reminders::Reminders(const platform::ProgramFolder& folder, platform::SettingsStore& settings,
                     qbgateway::Gateway& gateway, company::CompanyInfo& company,
                     mail::DocumentSender& documents, ui::UiPort& ui)
    : m_folder(folder),
      m_store(settings),
      m_gateway(gateway),
      m_company(company),
      m_documents(documents),
      m_ui(ui) {}

void Reminders::status(const std::string& text) const {
    if (m_onStatus) {
        m_onStatus(text);
    }
}

bool Reminders::stop(std::string problem) {
    m_problem = std::move(problem);
    status(m_problem);
    return false;
}

PlanResult Reminders::plan(std::optional<ReminderDays> days) {
    m_plan.clear();
    m_problem.clear();
    m_store.reload();
    m_settings = platform::loadMailSettings(m_store);
    if (!days) {
        const std::string text = m_store.value("Reminders", "Days").value_or("");
        days = platform::parseDayList(text);
        if (!days) {
            stop("Reminders Days is '" + text +
                 "', not three increasing numbers of days: correct it with `dorvane settings set "
                 "Reminders Days 1,15,30` (or in the settings file)");
            return PlanResult::Refused;
        }
    }
    auto request = m_folder.readProgramFile(kOverdueRequestFile);
    if (!request) {
        stop("Dorvane cannot read the request " + m_folder.filePath(kOverdueRequestFile) + " (" +
             request.error().description + "); reinstall the program or restore the file");
        return PlanResult::Refused;
    }
    std::string query = std::move(request).value();
    if (m_settings.attachPdf == 0) {
        // The lines are wanted only for the invoices' PDF copies.
        query = text::replaceAll(query, "<IncludeLineItems>true</IncludeLineItems>", "");
    }
    status("Asking QuickBooks for open invoices ...");
    const std::string response = m_gateway.processRequest(query);
    auto answer = xml::Document::parse(response);
    if (response.empty() || !answer) {
        status("");
        m_problem = "QuickBooks could not be reached";
        return PlanResult::Unreachable;
    }
    if (Status judged = qbgateway::checkResponseStatus(response, &m_ui); !judged) {
        stop("QuickBooks refused the query of open invoices: " + judged.error().description);
        return PlanResult::Refused;
    }
    m_answer = std::move(answer).value();
    std::string logText;
    if (auto log = files::readAll(m_folder.filePath(kReminderLogFile))) {
        logText = std::move(log).value();
    } else if (log.error().code != ENOENT) {
        stop("Dorvane cannot read the reminder log " + m_folder.filePath(kReminderLogFile) + " (" +
             log.error().description + "), so it cannot tell what was reminded: make it readable");
        return PlanResult::Refused;
    }
    const ReminderLogIndex reminded(logText);
    const auto today = parseDate(clock::todayIso());
    browser::RecipientLookup recipients(m_folder, m_gateway, m_ui);
    recipients.indexListDocument(m_answer);

    std::map<std::string, xml::Node, std::less<>> customers;  // by full name
    for (xml::Node c : m_answer.selectAll("/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet")) {
        customers.emplace(c.valueOf("FullName"), c);
    }
    std::map<std::pair<std::string, int>, PlannedReminder> messages;  // by customer and stage
    for (xml::Node invoice : m_answer.selectAll("/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet")) {
        OverdueInvoice due;
        due.balance = invoice.valueOf("BalanceRemaining");
        due.txnId = invoice.valueOf("TxnID");
        due.txnDate = invoice.valueOf("TxnDate");
        due.dueDate = invoice.valueOf("DueDate");
        if (due.dueDate.empty()) {
            due.dueDate = due.txnDate;
        }
        const auto dueDay = parseDate(due.dueDate);
        if (text::toCents(due.balance) <= 0 || due.txnId.empty() || !dueDay || !today) {
            continue;
        }
        due.daysOverdue = static_cast<int>((*today - *dueDay).count());
        const int stage = stageFor(due.daysOverdue, *days);
        if (stage == 0 || reminded.reminded(due.txnId, stage)) {
            continue;
        }
        due.refNumber = invoice.valueOf("RefNumber");
        due.balance = text::centsText(text::toCents(due.balance));
        due.record = invoice;
        // A job's invoices go to its customer, in the customer's message.
        const std::string fullName = invoice.valueOf("CustomerRef/FullName");
        const std::string customer = fullName.substr(0, fullName.find(':'));
        if (fullName.size() > customer.size()) {
            due.job = fullName.substr(customer.size() + 1);
        }
        PlannedReminder& message = messages[{customer, stage}];
        if (message.invoices.empty()) {
            const auto found = customers.find(customer);
            const xml::Node record = found != customers.end() ? found->second : xml::Node();
            const std::string jobId = invoice.valueOf("CustomerRef/ListID");
            message.customerId = record ? record.valueOf("ListID") : jobId;
            message.customer = customer;
            message.greeting = greetingFor(record, customer);
            message.email = recipients.getCustomerEmail(message.customerId);
            if (message.email.empty() && message.customerId != jobId) {
                message.email = recipients.getCustomerEmail(jobId);
            }
            message.stage = stage;
        }
        message.invoices.push_back(std::move(due));
    }
    for (auto& [key, message] : messages) {
        long long total = 0;
        for (const OverdueInvoice& invoice : message.invoices) {
            total += text::toCents(invoice.balance);
        }
        message.total = text::centsText(total);
        m_plan.push_back(std::move(message));
    }
    status("");
    return PlanResult::Planned;
}

void Reminders::setChecked(std::size_t index, bool checked) {
    if (index < m_plan.size()) {
        m_plan[index].checked = checked;
    }
}

// What every message of a run is made with, read once.
struct Reminders::Rendering {
    std::string header;
    std::array<std::optional<xml::Stylesheet>, kStageCount> sheets;
    std::array<std::string, kStageCount> subjects;
    std::array<std::string, kStageCount> openings;
    std::optional<xml::Stylesheet> invoiceSheet;  // for the PDF copies
    std::string companyName;
    std::string companyCountry;
    pdf::PageSetup page;
};

bool Reminders::prepare(Rendering& r) {
    m_problem.clear();
    m_store.reload();
    m_settings = platform::loadMailSettings(m_store);
    if (Status link = m_settings.payLink.empty()
                          ? Status()
                          : platform::checkSetting("Documents", "PayLink", m_settings.payLink);
        !link) {
        return stop("Dorvane will not put the pay-now link into the reminders (" +
                    link.error().description +
                    "): correct Documents PayLink, or empty it to remind without the link");
    }
    auto loadSheet = [this](const char* name, std::optional<xml::Stylesheet>& into) {
        auto sheet = xml::Stylesheet::load(m_folder.filePath(name));
        if (!sheet) {
            return stop("Dorvane cannot use the style sheet " + m_folder.filePath(name) + " (" +
                        sheet.error().description +
                        "): correct it, or delete it to get the program's own back at the next "
                        "start");
        }
        into.emplace(std::move(sheet).value());
        return true;
    };
    for (int i = 0; i < kStageCount; ++i) {
        const std::string sheet = std::string("reminder-") + kStageNames[i] + ".xslt";
        if (!loadSheet(sheet.c_str(), r.sheets[static_cast<std::size_t>(i)])) {
            return false;
        }
        const std::string key = kStageKeys[i];
        r.subjects[static_cast<std::size_t>(i)] =
            m_store.value("Reminders", key + "Subject").value_or("");
        r.openings[static_cast<std::size_t>(i)] =
            m_store.value("Reminders", key + "Text").value_or("");
    }
    if (m_settings.attachPdf != 0 && !loadSheet(invoiceType().styleSheet, r.invoiceSheet)) {
        return false;
    }
    r.header = m_documents.companyHeaderHtml();
    xml::Node company = m_company.companyNode();
    r.companyName = company.valueOf("CompanyName");
    r.companyCountry = company.valueOf("Address/Country");
    r.page = mail::pageSetup(m_settings, r.companyCountry);
    return true;
}

Result<std::string> Reminders::render(const Rendering& r, const PlannedReminder& message,
                                      bool forMail, std::string& subject,
                                      mail::MessageExtras& extras) {
    const std::size_t stage = static_cast<std::size_t>(message.stage - 1);
    xml::Document doc = xml::Document::withRoot("Reminder");
    xml::Node root = doc.root();
    root.appendElement("Stage", std::to_string(message.stage));
    root.appendElement("StageName", stageName(message.stage));
    root.appendElement("Opening", r.openings[stage]);
    root.appendElement("Today", clock::todayIso());
    root.appendElement("CompanyName", r.companyName);
    xml::Node customer = root.appendElement("Customer");
    customer.appendElement("Name", message.customer);
    customer.appendElement("Greeting", message.greeting);
    customer.appendElement("Email", message.email);
    std::string numbers;
    std::string currency;
    for (const OverdueInvoice& invoice : message.invoices) {
        const mail::DocumentFacts facts =
            mail::documentFacts(invoiceType(), invoice.record, r.companyName, r.companyCountry);
        currency = facts.currency;
        numbers += (numbers.empty() ? "" : ", ") + invoice.refNumber;
        xml::Node row = root.appendElement("Invoice");
        row.appendElement("TxnID", invoice.txnId);
        row.appendElement("RefNumber", invoice.refNumber);
        row.appendElement("Job", invoice.job);
        row.appendElement("TxnDate", invoice.txnDate);
        row.appendElement("DueDate", invoice.dueDate);
        row.appendElement("DaysOverdue", std::to_string(invoice.daysOverdue));
        row.appendElement("BalanceRemaining", invoice.balance);
        const std::string pay = m_settings.payLink.empty()
                                    ? std::string()
                                    : mail::fillPlaceholders(m_settings.payLink, facts, true);
        row.appendElement("PayLink", pay);
        if (!forMail || !r.invoiceSheet) {
            continue;
        }
        // The invoice's PDF copy, as a send run attaches it.
        auto html = r.invoiceSheet->transformNode(invoice.record);
        if (!html) {
            return Error{html.error().code,
                         "invoice " + invoice.refNumber +
                             " could not be rendered: " + html.error().description};
        }
        const std::string page =
            (pay.empty() ? std::string() : mail::payButtonHtml(pay)) + r.header + *html;
        const std::string name = mail::pdfFileName(invoiceType(), facts);
        auto pdf = mail::pdfAttachment(page, r.page, name, name);
        if (!pdf) {
            return Error{pdf.error().code, "the PDF copy of invoice " + invoice.refNumber +
                                               " could not be made: " + pdf.error().description};
        }
        extras.files.push_back(std::move(pdf).value());
    }
    root.appendElement("Total", message.total);
    root.appendElement("Currency", currency);
    if (forMail) {
        mail::DocumentFacts facts;
        facts.number = numbers;
        facts.customer = message.customer;
        facts.company = r.companyName;
        facts.balance = message.total;
        facts.total = message.total;
        facts.currency = currency;
        facts.date = clock::todayIso();
        facts.dueDate = message.invoices.front().dueDate;
        subject = mail::fillPlaceholders(r.subjects[stage], facts);
    }
    auto html = r.sheets[stage]->transformNode(root);
    if (!html) {
        return Error{html.error().code,
                     std::string("the ") + stageName(message.stage) +
                         " reminder could not be rendered: " + html.error().description};
    }
    return r.header + *html;
}

bool Reminders::preview() {
    Rendering rendering;
    if (!prepare(rendering)) {
        return false;
    }
    std::string pages;
    int count = 0;
    for (const PlannedReminder& message : m_plan) {
        if (!message.checked) {
            continue;
        }
        std::string subject;
        mail::MessageExtras extras;
        auto page = render(rendering, message, false, subject, extras);
        if (!page) {
            return stop("Nothing previewed: " + page.error().description);
        }
        pages += "<DIV style='page-break-after:always'>" + *page + "</div>";
        ++count;
    }
    m_documents.showPreview(pages);
    status(std::to_string(count) + (count == 1 ? " reminder" : " reminders") + " previewed");
    return true;
}

bool Reminders::send(bool ask) {
    m_problem.clear();
    int ticked = 0;
    for (const PlannedReminder& message : m_plan) {
        ticked += message.checked ? 1 : 0;
    }
    if (ticked == 0) {
        status("No reminder to send");
        return true;
    }
    if (ask &&
        m_ui.messageBox(
            "Send " + std::to_string(ticked) + (ticked == 1 ? " reminder" : " reminders") + " now?",
            ui::kProgramTitle, ui::Icon::Question, ui::Buttons::YesNo) != ui::Answer::Yes) {
        m_problem = "sending was not confirmed";
        status("No reminder sent");
        return false;
    }
    Rendering rendering;
    if (!prepare(rendering)) {
        return false;
    }
    const std::string logPath = m_folder.filePath(kReminderLogFile);
    if (Status writable = m_folder.appendProgramFile("", kReminderLogFile); !writable) {
        const std::string why = "Dorvane cannot write the reminder log " + logPath + " (" +
                                writable.error().description +
                                "), so nothing was sent: a reminder mailed now could not be "
                                "noted and would go out again. Make the file writable and send "
                                "again.";
        m_ui.messageBox(why);
        return stop(why);
    }
    const ui::BusyScope busy(m_ui);
    const mail::MailContext context{
        m_ui, m_folder, [this](const std::string& text) { status(text); }, m_settings, false};
    m_mailer.openMailTransport(context, m_store);
    const bool testMode = m_settings.test == 1 && !m_settings.emailAdr.empty();
    bool stopped = false;
    for (std::size_t i = 0; i < m_plan.size() && !stopped; ++i) {
        const PlannedReminder& message = m_plan[i];
        if (!message.checked) {
            continue;
        }
        ReminderOutcome outcome;
        outcome.index = i;
        outcome.recipient = testMode ? m_settings.emailAdr : message.email;
        std::string subject;
        mail::MessageExtras extras;
        if (message.email.empty()) {
            outcome.recipient.clear();
            outcome.why = "QuickBooks has no e-mail address for " + message.customer +
                          ": enter one for the customer in QuickBooks";
        } else if (auto page = render(rendering, message, true, subject, extras); !page) {
            outcome.why = page.error().description;
        } else {
            std::string whyNot;
            outcome.sent = m_mailer.deliver(context, m_company.senderAddress(), outcome.recipient,
                                            subject, *page, "", extras, whyNot);
            outcome.test = outcome.sent && testMode;
            if (!outcome.sent) {
                outcome.why = !whyNot.empty() ? whyNot : m_mailer.lastFailure();
            }
        }
        if (outcome.sent) {
            // Every invoice of the message on file in one write, before the next message.
            std::string records;
            const std::string when = reminderDateText();
            for (const OverdueInvoice& invoice : message.invoices) {
                records += reminderRecord({invoice.txnId, message.stage, invoice.refNumber,
                                           message.customer, invoice.txnDate, invoice.dueDate,
                                           invoice.balance, outcome.recipient, when, outcome.test});
            }
            if (Status noted = m_folder.appendProgramFile(records, kReminderLogFile); !noted) {
                stopped = true;
                const std::string why =
                    std::string("The ") + stageName(message.stage) + " reminder to " +
                    message.customer +
                    " was sent, but Dorvane could not note it in the reminder log " + logPath +
                    " (" + noted.error().description +
                    ").\r\nSending was stopped so that no invoice is reminded twice: the "
                    "reminders after it were not sent. Make the file writable before you send "
                    "again, and take this customer's invoices out of the next run by hand.";
                m_ui.messageBox(why);
                m_problem = why;
            }
        }
        if (m_onMessage) {
            m_onMessage(outcome);
        }
        m_ui.yield();
    }
    m_mailer.disconnect();
    if (stopped) {
        status("Sending stopped: the reminder log could not be written");
        return false;
    }
    status("Reminders sent");
    return true;
}

}  // namespace dorvane::remind
