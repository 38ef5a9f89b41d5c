// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — never twice by accident: whether QuickBooks has a converted document already, and
// whether it is to be booked again.
#pragma once

#include <string>
#include <string_view>

namespace dorvane::qbgateway {
class Gateway;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::imports {

// The question asked before a document already booked is booked again.
inline constexpr const char* kAlreadyInQuickBooks = "This document is already in QuickBooks: ";

// What an import does when the document seems to be in QuickBooks already.
enum class DuplicatePolicy {
    Ask,     // ask the person (the window)
    Refuse,  // never book it again (the command line without --again)
    Allow,   // book it again without asking (--again)
};

// Whether to book again what `question` describes: as the policy says, or as the person answers.
bool confirmAgain(ui::UiPort& ui, DuplicatePolicy policy, const std::string& question);

struct DuplicateQuery {
    enum class Result {
        NotBooked,    // QuickBooks has no such document, or the request has nothing to know it by
        Booked,       // it has; `question` describes the one it has
        Unreachable,  // the query got no answer
        Refused,      // the query was refused (the box said why)
    };
    Result result = Result::NotBooked;
    std::string question;
};

// A bill, purchase order, check or charge counts as booked when QuickBooks has one of the same
// kind with the same reference number from the same vendor (names compared in any case).
// `request` is the converted add request, without the prolog.
DuplicateQuery queryBooked(qbgateway::Gateway& gateway, ui::UiPort& ui, std::string_view request);

}  // namespace dorvane::imports
