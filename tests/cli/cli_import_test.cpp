// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane import` from a script: what it says it did, what answers a question it cannot ask,
// and what to set when the company lacks what the import preferences name.
#include <gtest/gtest.h>

#include "common/text.h"
#include "support/clirun.h"

namespace dorvane::test {
namespace {

// An exchange file of `root` (InvoiceRet, EstimateRet, SalesReceiptRet) with one line of 80.00.
std::string exchangeFile(const std::string& root, const std::string& number,
                         const std::string& sender, const std::string& date = "2026-11-02") {
    const std::string line = root.substr(0, root.size() - 3) + "LineRet";
    return "<?xml version=\"1.0\" ?><" + root + "><TxnDate>" + date + "</TxnDate><RefNumber>" +
           number + "</RefNumber><TermsRef><FullName>Net 15</FullName></TermsRef><" + line +
           "><ItemRef><FullName>Design</FullName></ItemRef><Desc>Plans</Desc><Quantity>2"
           "</Quantity><Rate>40.00</Rate><Amount>80.00</Amount></" +
           line + "><CompanyRet><CompanyName>" + sender + "</CompanyName></CompanyRet></" + root +
           ">";
}

struct Step {
    std::string args;
    int status;
    std::vector<std::string> lines;  // lines of the output, in order; the last one ends it
};

class CliImport : public Cli {
protected:
    // Runs the steps against the sandbox, each checked for its status and lines.
    void run(const std::vector<Step>& steps);
};

void CliImport::run(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        SCOPED_TRACE(step.args);
        EXPECT_EQ(dorvane(step.args, "sandbox"), step.status) << out << err;
        std::vector<std::string> lines = text::split(out, '\n');
        if (!lines.empty() && lines.back().empty()) {
            lines.pop_back();
        }
        std::size_t at = 0;
        for (const std::string& wanted : step.lines) {
            while (at < lines.size() && lines[at] != wanted) {
                ++at;
            }
            EXPECT_LT(at, lines.size()) << "no line '" << wanted << "' in\n" << out << err;
        }
        if (!step.lines.empty() && !lines.empty()) {
            EXPECT_EQ(lines.back(), step.lines.back());
        }
    }
}

// Whom it booked to (found, chosen or created) and what: the kind of document, its number, the
// paying account and the total; and a question it could not ask, with what answers it.
TEST_F(CliImport, SaysWhomItBookedToAndWhatItBooked) {
    copyProgram(".xslt");
    ASSERT_EQ(newDemo(), 0) << err;
    auto file = [&](const std::string& name, const std::string& text) {
        writeFile(home / name, text);
        return (home / name).string();
    };
    const std::string invoice = file("n1.dvx", exchangeFile("InvoiceRet", "N-1", "Newcomer Ltd"));
    const std::string second = file("n2.dvx", exchangeFile("InvoiceRet", "N-2", "Newcomer Ltd"));
    const std::string late =
        file("late.dvx", exchangeFile("InvoiceRet", "L-1", "Latecomer Ltd", "2026-02-30"));
    const std::string estimate = file("e.dvx", exchangeFile("EstimateRet", "E-1", "Union Hard"));
    const std::string check = file("s1.dvx", exchangeFile("SalesReceiptRet", "S-1", "Union Hard"));
    const std::string charge = file("s2.dvx", exchangeFile("SalesReceiptRet", "S-2", "Union Hard"));
    const std::string receipt =
        file("receipt.txt", readFile(dataDir() / "import" / "receipts" / "standard-crlf.txt"));
    const std::string stranger = file("stranger.txt",
                                      "Company : Stranger Things Ltd\r\nAmount : 5.00\r\n"
                                      "Transaction ID : 99\r\n");
    run({
        {"import " + invoice,
         1,
         {"Not imported: creating the vendor 'Newcomer Ltd' needs confirmation: add --yes, or "
          "name a vendor with --vendor"}},
        {"import " + invoice + " --vendor 'union hardware'",
         0,
         {"Vendor: Union Hardware (chosen with --vendor)",
          "Booked the bill N-1 from Union Hardware, total 80.00"}},
        {"--yes import " + second,
         0,
         {"Vendor: Newcomer Ltd (created)", "Booked the bill N-2 from Newcomer Ltd, total 80.00"}},
        {"import " + second,
         1,
         {"Vendor: Newcomer Ltd (found)",
          "Not imported: already in QuickBooks (--again books it again)"}},
        {"--yes import " + late,
         1,
         {"Vendor: Latecomer Ltd (created)",
          "Not imported: QuickBooks refused it; the vendor 'Latecomer Ltd' was created and "
          "stays in QuickBooks"}},
        {"import " + estimate,
         0,
         {"Vendor: Union Hardware (found for the sender Union Hard)",
          "Booked the purchase order E-1 from Union Hardware, total 80.00"}},
        {"import " + check + " --account checking",
         0,
         {"Vendor: Union Hardware (found for the sender Union Hard)",
          "Booked the check S-1 on Checking to Union Hardware, total 80.00"}},
        {"import " + charge + " --account 'Visa Card'",
         0,
         {"Booked the card charge S-2 on Visa Card to Union Hardware, total 80.00"}},
        {"import --receipt " + stranger,
         1,
         {"Not imported: creating the customer 'Stranger Things Ltd' needs confirmation: add "
          "--yes, or name a customer with --customer"}},
        {"--yes import --receipt " + receipt,
         0,
         {"Customer: Caf\xC3\xA9 Lumi\xC3\xA8re (created)",
          "Booked the sales receipt 2041 for Caf\xC3\xA9 Lumi\xC3\xA8re, total 185.40"}},
        {"import --receipt " + stranger + " --customer 'cafe'",
         1,
         {"Not imported: creating the customer 'cafe' needs confirmation: add --yes, or name "
          "a customer with --customer"}},
        {"import --receipt " + stranger + " --customer 'caf\xC3\xA9 lumi\xC3\xA8re'",
         0,
         {"Customer: Caf\xC3\xA9 Lumi\xC3\xA8re (named with --customer)",
          "Booked the sales receipt 41 for Caf\xC3\xA9 Lumi\xC3\xA8re, total 5.00"}},
    });
}

// In a company that lacks what the import preferences name, nothing is written (no vendor
// before a bill QuickBooks would refuse), and what to set is said. An account that cannot pay
// a sales receipt is named too.
TEST_F(CliImport, NamesWhatToSetBeforeWritingAnything) {
    copyProgram(".xslt");
    ASSERT_EQ(dorvane("sandbox new '" + (home / "new.dvq").string() + "'", "sandbox"), 0) << err;
    const std::string invoice = (home / "n.dvx").string();
    writeFile(invoice, exchangeFile("InvoiceRet", "N-1", "Newcomer Ltd"));
    const std::string imports = "--yes import " + invoice;
    run({
        {imports,
         1,
         {"QuickBooks has no item 'Uncategorized Expenses', which the import preference Item "
          "names: choose one with `dorvane settings set Import Item NAME`, or add it in "
          "QuickBooks",
          "Not imported: nothing was written to QuickBooks"}},
        {"settings set Import Item 'Uncategorized Item'", 0, {}},
        {"settings set Import Term 'Net 99'", 0, {}},
        {imports,
         1,
         {"QuickBooks has no terms 'Net 99', which the import preference Term names: choose one "
          "with `dorvane settings set Import Term NAME`, or add it in QuickBooks",
          "Not imported: nothing was written to QuickBooks"}},
    });
    writeFile(home / "req.xml",
              "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
              "onError=\"stopOnError\"><VendorQueryRq/></QBXMLMsgsRq></QBXML>");
    EXPECT_EQ(dorvane("request " + (home / "req.xml").string(), "sandbox"), 0) << err;
    EXPECT_EQ(out.find("<VendorRet>"), std::string::npos) << out;

    // The payment accounts as a changed template lists them: expense accounts pay nothing.
    writeFile(
        home / "program" / "BankAccountGetRq.xml",
        text::replaceAll(readFile(programSource() / "BankAccountGetRq.xml"),
                         "<AccountType>Bank</AccountType>", "<AccountType>Expense</AccountType>"));
    writeFile(home / "s.dvx", exchangeFile("SalesReceiptRet", "S-1", "Newcomer Ltd"));
    run({
        {"settings set Import Term 'Net 30'", 0, {}},
        {imports,
         0,
         {"Vendor: Newcomer Ltd (created)", "Booked the bill N-1 from Newcomer Ltd, total 80.00"}},
        {"import " + (home / "s.dvx").string(),
         1,
         {"The account 'Office Supplies' is of the type Expense; a sales receipt is paid "
          "from a Bank or CreditCard account: name a bank or credit-card account with --account",
          "Not imported: nothing was written to QuickBooks"}},
    });
}

}  // namespace
}  // namespace dorvane::test
