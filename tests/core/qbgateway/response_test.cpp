// SPDX-License-Identifier: GPL-3.0-or-later
// Judging QuickBooks' answers.
#include "qbgateway/response.h"

#include <gtest/gtest.h>

#include "support/testsupport.h"

namespace dorvane::qbgateway {
namespace {

using test::ScriptedUi;

std::string answer(const std::string& code, const std::string& severity, const std::string& message,
                   const std::string& more = {}) {
    return "<?xml version=\"1.0\" ?>\n<QBXML>\n<QBXMLMsgsRs>\n<InvoiceQueryRs statusCode=\"" +
           code + "\" statusSeverity=\"" + severity + "\" statusMessage=\"" + message +
           "\"></InvoiceQueryRs>\n" + more + "</QBXMLMsgsRs>\n</QBXML>\n";
}

// The failure's message, or "" for success.
std::string failure(const Status& status) {
    return status ? std::string() : status.error().description;
}

TEST(CheckResponseStatus, StatusesAndTheirBoxes) {
    struct Case {
        std::string code, severity, message;
        std::string expected;
        std::string boxTitle;  // "" = no box
    };
    const std::vector<Case> cases = {
        {"0", "Info", "Status OK", "", ""},
        {"0", "Error", "odd but OK", "", ""},  // a zero code is success whatever the severity
        {"1", "Info", "A query request did not find a matching object in QuickBooks", "", ""},
        {"530", "Warning", "Field not supported", "", "Warning from QuickBooks"},
        // QuickBooks writes "Warn"; only "Warning" and "Error" are looked at.
        {"500", "Warn", "The query request has not been fully completed.", "", ""},
        {"3140", "Error", "There is an invalid reference to QuickBooks Customer \"X\".",
         "There is an invalid reference to QuickBooks Customer \"X\".", "Error from QuickBooks"},
        {"3100", "error", "lower-case severity", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code + "/" + c.severity);
        std::string message = c.message;
        std::string escaped;
        for (char ch : message) {
            escaped += ch == '"' ? std::string("&quot;") : std::string(1, ch);
        }
        ScriptedUi ui;
        EXPECT_EQ(failure(checkResponseStatus(answer(c.code, c.severity, escaped), &ui)),
                  c.expected);
        if (c.boxTitle.empty()) {
            EXPECT_TRUE(ui.messages.empty());
        } else {
            ASSERT_EQ(ui.messages.size(), 1u);
            EXPECT_EQ(ui.messages[0].title, c.boxTitle);
            EXPECT_EQ(ui.messages[0].text, c.message);
            EXPECT_EQ(ui.messages[0].icon, ui::Icon::Exclamation);
        }
        // Without messages the same answer comes back and nothing is shown.
        const Status quiet = checkResponseStatus(answer(c.code, c.severity, escaped), nullptr);
        EXPECT_EQ(failure(quiet), c.expected);
        if (!quiet) {
            EXPECT_EQ(quiet.error().code, std::stoi(c.code));
        }
    }
}

TEST(CheckResponseStatus, TextThatDoesNotLoad) {
    ScriptedUi ui;
    EXPECT_FALSE(isResponseOK("", ui));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text, "loadXML failed, reason: Document is empty");
    EXPECT_EQ(ui.messages[0].title, "Error");

    std::string err = failure(checkResponseStatus("<QBXML><QBXMLMsgsRs>", nullptr));
    EXPECT_EQ(err.rfind("loadXML failed, reason: ", 0), 0u);
    EXPECT_GT(err.size(), std::string("loadXML failed, reason: ").size());
}

TEST(CheckResponseStatus, OnlyTheFirstResponseElementIsJudged) {
    ScriptedUi ui;
    const std::string second =
        "<CustomerQueryRs statusCode=\"3120\" statusSeverity=\"Error\" statusMessage=\"bad\"/>\n";
    EXPECT_TRUE(isResponseOK(answer("0", "Info", "Status OK", second), ui));
    EXPECT_TRUE(ui.messages.empty());
}

TEST(CheckResponseStatus, AMissingAttributeIsAnError) {
    ScriptedUi ui;
    std::string err = failure(checkResponseStatus(
        "<?xml version=\"1.0\" ?><QBXML><QBXMLMsgsRs><InvoiceQueryRs statusCode=\"0\"/>"
        "</QBXMLMsgsRs></QBXML>",
        &ui));
    EXPECT_FALSE(err.empty());
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].title, "Error");
    EXPECT_FALSE(isResponseOK("<?xml version=\"1.0\" ?><QBXML/>", ui));
}

}  // namespace
}  // namespace dorvane::qbgateway
