// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — overdue reminders: which open invoices are past which reminder stage, one
// message per customer and stage, previewed or mailed and noted in the reminder log.
//
// A plan asks QuickBooks for the open invoices ("OverdueInvoiceGetRq.xml": unpaid ones of any
// date, whatever the main window's timeframe) and their customers' addresses. An invoice
// with something still open is at stage i when its days past the due date reach the i-th of
// the three days (Reminders Days, or the run's own): 1 friendly, 2 firm, 3 final. It is left
// out when the log shows that stage (or a later one) went out for it; an invoice that skipped a
// stage gets only the one it is at. A customer's invoices of one stage make one message,
// rendered by that stage's style sheet ("reminder-friendly.xslt", "reminder-firm.xslt",
// "reminder-final.xslt") below the company header, with each invoice's PDF copy and pay-now
// link when the document options ask for them.
//
// A run mails the ticked messages through the transport the mail settings name. The moment the
// server accepted one, the records of all its invoices are appended to "Reminders.log" in one
// write, before the next message: a run killed at any point never reminds an invoice twice at
// one stage. A log that cannot be written stops the run there. Test mode sends every message
// to the test address and notes it as a test, which reminds nobody.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/result.h"
#include "mail/mailer.h"
#include "platform/settings.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class Gateway;
}

namespace dorvane::company {
class CompanyInfo;
}

namespace dorvane::mail {
class DocumentSender;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::remind {

inline constexpr const char* kOverdueRequestFile = "OverdueInvoiceGetRq.xml";
inline constexpr int kStageCount = 3;
// The days past due of stages 1 to 3.
using ReminderDays = std::array<int, kStageCount>;

// "friendly", "firm", "final"; "" for no stage.
const char* stageName(int stage);
// The stage `daysOverdue` reaches with `days`; 0 before the first.
int stageFor(int daysOverdue, const ReminderDays& days);

struct OverdueInvoice {
    std::string txnId;
    std::string refNumber;
    std::string txnDate;
    std::string dueDate;  // the invoice's date when it names none
    int daysOverdue = 0;
    std::string balance;  // BalanceRemaining, two decimals
    std::string job;      // the customer's job the invoice is for; empty: the customer's own
    xml::Node record;     // the InvoiceRet in the plan's answer
};

// One message: a customer's overdue invoices of one stage, those of the customer's jobs
// included.
struct PlannedReminder {
    std::string customerId;
    std::string customer;  // the customer's name, without a job
    std::string greeting;  // whom "Dear ..." names: the contact's name, else the customer's
    std::string email;     // empty: QuickBooks has no address for the customer
    int stage = 0;
    std::vector<OverdueInvoice> invoices;
    std::string total;  // two decimals
    bool checked = true;
};

// What became of one ticked message of a run.
struct ReminderOutcome {
    std::size_t index = 0;  // in the plan
    std::string recipient;
    bool sent = false;
    bool test = false;  // went to the test address only
    std::string why;    // why it did not go out
};

enum class PlanResult {
    Planned,      // the plan may be empty
    Refused,      // the settings or the program folder stop it; problem() says why
    Unreachable,  // QuickBooks gave no answer (it said so through the UI port)
};

class Reminders {
public:
    Reminders(const platform::ProgramFolder& folder, platform::SettingsStore& settings,
              qbgateway::Gateway& gateway, company::CompanyInfo& company,
              mail::DocumentSender& documents, ui::UiPort& ui);

    // The messages due now; `days` stands in for Reminders Days. Ticks every message.
    PlanResult plan(std::optional<ReminderDays> days = std::nullopt);
    const std::vector<PlannedReminder>& planned() const { return m_plan; }
    void setChecked(std::size_t index, bool checked);
    // Why the last plan, preview or run stopped, for people; empty when it did not.
    const std::string& problem() const { return m_problem; }

    // Renders the ticked messages into the preview page and opens it; sends and notes nothing.
    // False when it stopped (problem() says why).
    bool preview();

    // With `ask`, first asks the person whether to send the ticked messages. Then mails them,
    // calling the handler after each; false when the run did not start or stopped half-way
    // (problem() says why; a "no" to the question is no problem).
    bool send(bool ask);
    void onMessage(std::function<void(const ReminderOutcome&)> handler) {
        m_onMessage = std::move(handler);
    }
    // Where the run's progress goes (the window's status line).
    void onStatus(std::function<void(const std::string&)> handler) {
        m_onStatus = std::move(handler);
    }
    // The mail settings of the last run or preview.
    const platform::MailSettings& mailSettings() const { return m_settings; }

private:
    struct Rendering;
    // Reads the settings a run needs and the stage sheets; false (problem set) when it cannot.
    bool prepare(Rendering& rendering);
    // The page of one message; the attachments and subject with `forMail`.
    Result<std::string> render(const Rendering& rendering, const PlannedReminder& message,
                               bool forMail, std::string& subject, mail::MessageExtras& extras);
    void status(const std::string& text) const;
    bool stop(std::string problem);

    const platform::ProgramFolder& m_folder;
    platform::SettingsStore& m_store;
    qbgateway::Gateway& m_gateway;
    company::CompanyInfo& m_company;
    mail::DocumentSender& m_documents;
    ui::UiPort& m_ui;
    mail::Mailer m_mailer;
    platform::MailSettings m_settings;
    xml::Document m_answer;
    std::vector<PlannedReminder> m_plan;
    std::string m_problem;
    std::function<void(const ReminderOutcome&)> m_onMessage;
    std::function<void(const std::string&)> m_onStatus;
};

}  // namespace dorvane::remind
