// SPDX-License-Identifier: GPL-3.0-or-later
// Messages as a whole: versions, parse and schema faults, onError, requestID.
#include "qbsandbox/engine.h"
#include "qbsandbox/schema.h"
#include "sandboxfixture.h"

namespace dorvane::test {
namespace {

class RequestsTest : public SandboxTest {
protected:
    void SetUp() override {
        SandboxTest::SetUp();
        useEmptyCompany();
    }

    Error failure(const std::string& text) {
        auto answer = exchange(text);
        EXPECT_FALSE(answer) << (answer ? *answer : "");
        return answer ? Error{} : answer.error();
    }

    std::string sdkLog() { return readFile(folder() / "qbsdklog.txt"); }
};

constexpr std::uint32_t kParse = 0x80040400;
constexpr const char* kParseText =
    "QuickBooks found an error when parsing the provided XML text stream.";

TEST_F(RequestsTest, MalformedOrMisplacedElementsFailTheWholeCall) {
    struct Case {
        std::string text;
        std::string logged;
    };
    const Case cases[] = {
        {"<?xml version=\"1.0\" ?><?qbxml version=\"13.0\"?><QBXML><QBXMLMsgsRq "
         "onError=\"stopOnError\">"
         "<CustomerQueryRq>",
         "not well-formed"},
        {message("<CustomerQueryRq><Bogus>1</Bogus></CustomerQueryRq>"),
         "\"Bogus\" is not allowed"},
        {message("<CustomerQueryRq><ActiveStatus>All</ActiveStatus><MaxReturned>5</MaxReturned></"
                 "CustomerQueryRq>"),
         "\"MaxReturned\" is out of order"},
        {message("<CustomerQueryRq><ListID>80000001-1</ListID><MaxReturned>5</MaxReturned></"
                 "CustomerQueryRq>"),
         "cannot be combined"},
        {message("<InvoiceQueryRq><TxnDateRangeFilter><DateMacro>Someday</DateMacro></"
                 "TxnDateRangeFilter>"
                 "</InvoiceQueryRq>"),
         "\"Someday\" is not a valid value"},
        {message("<FrobnicateRq/>"), "\"FrobnicateRq\""},
        {message("<CustomerQueryRq><MaxReturned>5</MaxReturned></CustomerQueryRq>", "13.0",
                 "sometimes"),
         "onError"},
    };
    for (const auto& c : cases) {
        Error e = failure(c.text);
        EXPECT_EQ(static_cast<std::uint32_t>(e.code), kParse) << c.text;
        EXPECT_EQ(e.description, kParseText);
        EXPECT_NE(sdkLog().find(c.logged), std::string::npos) << c.logged << "\n" << sdkLog();
    }
}

TEST_F(RequestsTest, VersionsComeFromTheInstructionOrTheDoctype) {
    const std::string body =
        "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><CompanyQueryRq/></QBXMLMsgsRq></QBXML>";
    for (const std::string prolog :
         {"<?xml version=\"1.0\"?><?qbxml version='2.0'?>",
          "<?xml version=\"1.0\"?><!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' "
          "'http://developer.intuit.com'>",
          "<?xml version=\"1.0\"?><!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 2.0//EN' >",
          "<?xml version=\"1.0\"?><!DOCTYPE QBXML PUBLIC \"-//INTUIT//DTD QBXML QBD 1.0//EN\" "
          "\"http://developer.intuit.com/\">",
          "<?xml version=\"1.0\"?>\n<?qbxml\tversion = \"2.0\" ?>"}) {
        auto answer = exchange(prolog + body);
        ASSERT_TRUE(answer) << prolog << " " << answer.error().description;
        EXPECT_NE(answer->find("<CompanyName>Test Company</CompanyName>"), std::string::npos);
        // IsSampleCompany arrived with 3.0.
        EXPECT_EQ(answer->find("IsSampleCompany"), std::string::npos);
    }
    for (const std::string prolog :
         {"<?xml version=\"1.0\"?><?qbxml version=\"14.0\"?>",
          "<?xml version=\"1.0\"?><?qbxml version=\"CA3.0\"?>", "<?xml version=\"1.0\"?>"}) {
        Error e = failure(prolog + body);
        EXPECT_EQ(static_cast<std::uint32_t>(e.code), 0x80040423u) << prolog;
        EXPECT_EQ(e.description,
                  "The version of QBXML that was requested is not supported or is unknown.");
    }
}

TEST_F(RequestsTest, ElementsNewerThanTheAnnouncedVersionAreUnknown) {
    const std::string query =
        "<InvoiceQueryRq><TxnDateRangeFilter><DateMacro>ThisMonth</DateMacro>"
        "</TxnDateRangeFilter></InvoiceQueryRq>";
    EXPECT_EQ(static_cast<std::uint32_t>(failure(message(query, "2.0")).code), kParse);
    EXPECT_EQ(status(ask(query, "3.0")),
              "1 Info A query request did not find a matching object in QuickBooks");
    const std::string ret =
        "<CustomerQueryRq><IncludeRetElement>Name</IncludeRetElement></CustomerQueryRq>";
    EXPECT_EQ(static_cast<std::uint32_t>(failure(message(ret, "3.0")).code), kParse);
}

TEST_F(RequestsTest, OnErrorStopsOrContinuesAfterAFailedRequest) {
    const std::string body =
        "<CustomerAddRq "
        "requestID=\"a\"><CustomerAdd><Name>X</Name><TermsRef><FullName>Nope</FullName>"
        "</TermsRef></CustomerAdd></CustomerAddRq><CompanyQueryRq requestID=\"b\"/>";
    auto stopped = ask(body, "13.0", "stopOnError");
    EXPECT_EQ(stopped.selectAll("/QBXML/QBXMLMsgsRs/*").size(), 1u);
    EXPECT_EQ(status(stopped),
              "3140 Error There is an invalid reference to QuickBooks Terms \"Nope\".");
    auto continued = ask(body, "13.0", "continueOnError");
    ASSERT_EQ(continued.selectAll("/QBXML/QBXMLMsgsRs/*").size(), 2u);
    EXPECT_EQ(continued.selectOne("//CompanyQueryRs").attribute("requestID"), "b");
    EXPECT_EQ(status(continued, 2), "0 Info Status OK");
    // Nothing of the failed add was saved.
    EXPECT_EQ(status(ask("<CustomerQueryRq><FullName>X</FullName></CustomerQueryRq>")).substr(0, 8),
              "500 Warn");
}

// A short message of many whole-list queries would ask for gigabytes: past kMaxAnswerBytes the
// answer takes no further request, and the SDK log says where it stopped.
TEST_F(RequestsTest, AnAnswerStopsGrowingAtItsLimit) {
    useDemo();
    std::string body;
    for (int i = 0; i < 5000; ++i) {
        body += "<InvoiceQueryRq><IncludeLineItems>true</IncludeLineItems></InvoiceQueryRq>";
    }
    auto answer = exchange(message(body, "13.0", "continueOnError"));
    ASSERT_TRUE(answer);
    EXPECT_GT(answer->size(), qbsandbox::kMaxAnswerBytes);
    EXPECT_LT(answer->size(), qbsandbox::kMaxAnswerBytes * 2);
    const auto answered = xml::Document::parse(*answer)->selectAll("//InvoiceQueryRs").size();
    EXPECT_LT(answered, 5000u);
    EXPECT_NE(sdkLog().find("after request " + std::to_string(answered) +
                            " of 5000; the rest were not processed"),
              std::string::npos);
}

TEST_F(RequestsTest, AnswersAreWrittenAsQuickBooksWritesThem) {
    auto answer = exchange(message(
        "<CustomerQueryRq requestID=\"7\"><NameFilter><MatchCriterion>StartsWith</MatchCriterion>"
        "<Name>zz</Name></NameFilter></CustomerQueryRq><CompanyQueryRq/>"));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->substr(0, 52), "<?xml version=\"1.0\" ?>\n<QBXML>\n<QBXMLMsgsRs>\n<Custom");
    EXPECT_NE(
        answer->find(
            "<CustomerQueryRs requestID=\"7\" statusCode=\"1\" statusSeverity=\"Info\" "
            "statusMessage=\"A query request did not find a matching object in QuickBooks\" />\n"),
        std::string::npos);
    EXPECT_NE(answer->find("<CompanyQueryRs statusCode=\"0\" statusSeverity=\"Info\" "
                           "statusMessage=\"Status OK\">\n"
                           "<CompanyRet>\n<IsSampleCompany>false</IsSampleCompany>\n"),
              std::string::npos);
}

TEST_F(RequestsTest, ValueErrorsAnswerWithTheirStatusCodes) {
    struct Case {
        std::string request;
        std::string status;
    };
    const Case cases[] = {
        {"<CustomerQueryRq requestID=\"" + std::string(51, 'x') + "\"/>", "1060 Error"},
        {"<CustomerQueryRq><ListID>nonsense</ListID></CustomerQueryRq>",
         "3000 Error The given object ID \"nonsense\" in the field \"ListID\" is invalid."},
        {"<InvoiceQueryRq><TxnDateRangeFilter><FromTxnDate>2026-02-30</FromTxnDate></"
         "TxnDateRangeFilter></InvoiceQueryRq>",
         "3020 Error There was an error when converting the date value \"2026-02-30\" in the field "
         "\"FromTxnDate\"."},
        {"<InvoiceQueryRq><IncludeLineItems>maybe</IncludeLineItems></InvoiceQueryRq>",
         "3010 Error"},
        {"<AccountAddRq><AccountAdd><Name>Cash</Name></AccountAdd></AccountAddRq>",
         "3150 Error There is a missing element: \"AccountType\"."},
        {"<AccountAddRq><AccountAdd><Name>" + std::string(32, 'n') +
             "</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>",
         "3070 Error"},
        // Lengths count letters: 31 of them fit, however many bytes they take.
        {"<AccountAddRq><AccountAdd><Name>Kasse Gr\xc3\xbc" + std::string(22, 'n') +
             "</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>",
         "0 Info"},
        {"<CheckAddRq><CheckAdd><AccountRef><FullName>Checking</FullName></"
         "AccountRef><ExpenseLineAdd><Amount>1.234</Amount>"
         "</ExpenseLineAdd></CheckAdd></CheckAddRq>",
         "3040 Error"},
        {"<InvoiceQueryRq><TxnDateRangeFilter><FromTxnDate>2026-05-01</"
         "FromTxnDate><ToTxnDate>2026-04-01</ToTxnDate>"
         "</TxnDateRangeFilter></InvoiceQueryRq>",
         "3030 Error"},
    };
    for (const auto& c : cases) {
        std::string s = status(ask(c.request));
        EXPECT_EQ(s.substr(0, c.status.size()), c.status) << c.request;
    }
}

TEST_F(RequestsTest, UntrustedTextNeverCrashesTheProcessor) {
    const std::string inputs[] = {
        "",
        "<",
        "\xff\xfe<QBXML/>",
        "<?qbxml version=\"13.0\"?><QBXML/>",
        "<?qbxml version=\"13.0\"?><!DOCTYPE QBXML [<!ENTITY a \"aaaa\">]><QBXML>&a;</QBXML>",
        message("<InvoiceAddRq><InvoiceAdd><CustomerRef><ListID>1-1</ListID></CustomerRef></"
                "InvoiceAdd></InvoiceAddRq>"),
        message("<TxnDelRq><TxnDelType>Invoice</TxnDelType><TxnID>FFFFFFFFFFFFFFFF-99999999999</"
                "TxnID></TxnDelRq>"),
        message(std::string(2000, ' ') +
                "<CustomerQueryRq><MaxReturned>999999999999</MaxReturned></CustomerQueryRq>"),
        // Prologs of any length are read without recursion.
        "<?qbxml version=\"" + std::string(200000, '1') + "\"?><QBXML/>",
        "<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD " + std::string(200000, '1') +
            "//EN'><QBXML/>",
        "<!DOCTYPE QBXML PUBLIC '" + std::string(200000, 'x') + "' '" + std::string(200000, 'y') +
            "'><QBXML/>",
    };
    for (const auto& input : inputs) {
        auto answer = exchange(input);
        if (answer) {
            EXPECT_EQ(answer->rfind("<?xml version=\"1.0\" ?>", 0), 0u);
        } else {
            EXPECT_FALSE(answer.error().description.empty());
        }
    }
}

}  // namespace
}  // namespace dorvane::test
