// SPDX-License-Identifier: GPL-3.0-or-later
// The conversion and creation sheets, proved through two sandbox companies: company A books
// an invoice, an estimate and a sales receipt and writes their exchange files as the mailing
// code does; company B creates the sender as a vendor and books the counter-documents.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "../qbsandbox/sandboxfixture.h"
#include "../render/rendersupport.h"
#include "import/receipt.h"

namespace dorvane::test {
namespace {

// The prolog the import puts in front of every converted message.
constexpr const char* kProlog =
    "<?xml version=\"1.0\" ?>\r\n"
    "<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' 'http://developer.intuit.com'>\r\n";

// Names and texts that must arrive as they left.
const std::string kSender = "J\xC3\xB6rg's G\xC3\xA4rten & <S\xC3\xB6hne> \"Ltd\"";
const std::string kDesc = "B\xC3\xA4ume & <Str\xC3\xA4ucher> \"Premium\"\nzweite Zeile";
const std::string kMemo = "Fr\xC3\xBChjahr & Sommer <2026>";

// QuickBooks wants every other character as a character reference.
bool ascii(const std::string& s) {
    return std::all_of(s.begin(), s.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string escape(const std::string& s) {
    return xml::escapeText(s);
}

// The lines every source document carries: a rated line with a decimal quantity, a taxable
// line, a subtotal line and an item group.
std::string sourceLines(const std::string& line, const std::string& group) {
    auto ref = [](const char* tag, const char* name) {
        return std::string("<") + tag + "><FullName>" + name + "</FullName></" + tag + ">";
    };
    return "<" + line + ">" + ref("ItemRef", "Design") + "<Desc>" + escape(kDesc) +
           "</Desc><Quantity>2.5</Quantity><Rate>85.00</Rate>" + ref("SalesTaxCodeRef", "Non") +
           "</" + line + "><" + line + ">" + ref("ItemRef", "Plants") +
           "<Desc>Roses</Desc><Quantity>3</Quantity><Rate>12.25</Rate>" +
           ref("SalesTaxCodeRef", "Tax") + "</" + line + "><" + line + ">" +
           ref("ItemRef", "Subtotal") + "</" + line + "><" + line + "><Desc>Thank you!</Desc></" +
           line + "><" + group + ">" + ref("ItemGroupRef", "Spring Package") +
           "<Quantity>2</Quantity></" + group + ">";
}

struct Conversion {
    const char* label;
    const char* ret;        // the source document's Ret element
    const char* sheet;      // conversion sheet
    const char* account;    // payment account of a check or charge
    bool accountByRewrite;  // the account put in afterwards, as the import's rewrite does
    const char* target;     // the Ret element in the add response
    const char* payee;      // the vendor's reference in it
    const char* line;       // its item line and item-group line
    const char* groupLine;
    const char* price;  // where a line's rate lands
    const char* total;
    const char* extraNumber;  // the source's reference number that goes into the memo
};

const Conversion kConversions[] = {
    {"invoice to bill", "InvoiceRet", "BillFromInvoice.xslt", "", false, "BillRet",
     "VendorRef/FullName", "ItemLineRet", "ItemGroupLineRet", "Cost", "AmountDue", "PONumber"},
    {"estimate to purchase order", "EstimateRet", "POFromEstimate.xslt", "", false,
     "PurchaseOrderRet", "VendorRef/FullName", "PurchaseOrderLineRet", "PurchaseOrderLineGroupRet",
     "Rate", "TotalAmount", "PONumber"},
    {"sales receipt to check", "SalesReceiptRet", "CheckFromSalesReceipt.xslt", "Checking", false,
     "CheckRet", "PayeeEntityRef/FullName", "ItemLineRet", "ItemGroupLineRet", "Cost", "Amount",
     "CheckNumber"},
    {"sales receipt to card charge", "SalesReceiptRet", "CRChargeFromSalesReceipt.xslt",
     "Visa Card", true, "CreditCardChargeRet", "PayeeEntityRef/FullName", "ItemLineRet",
     "ItemGroupLineRet", "Cost", "Amount", "CheckNumber"},
};

class ImportSheets : public SandboxTest {
protected:
    static std::string transform(const std::string& name, xml::Node node,
                                 const xml::Variables& params = {}) {
        auto sheet = xml::Stylesheet::load(programSource() / name);
        EXPECT_TRUE(sheet) << name << ": " << (sheet ? "" : sheet.error().description);
        if (!sheet) {
            return {};
        }
        auto out = sheet->transformNode(node, params);
        EXPECT_TRUE(out) << name << ": " << (out ? "" : out.error().description);
        return out ? *out : std::string();
    }

    // Books the three source documents in company A and answers their exchange files, read
    // back as the receiver reads them.
    std::vector<xml::Document> exchangeFiles() {
        useDemo();
        const std::string header =
            "<CustomerRef><FullName>Kuehn Landscaping</FullName></CustomerRef>"
            "<TxnDate>2026-11-02</TxnDate>";
        xml::Document added = ask(
            "<CustomerAddRq><CustomerAdd><Name>Kuehn Landscaping</Name><BillAddress>"
            "<Addr1>Kuehn Landscaping</Addr1><Addr2>12 Elm Street</Addr2><City>Fresno</City>"
            "<State>CA</State><PostalCode>93650</PostalCode></BillAddress></CustomerAdd>"
            "</CustomerAddRq>"
            "<InvoiceAddRq><InvoiceAdd>" +
                header +
                "<RefNumber>A-1001</RefNumber><PONumber>PO-77</PONumber><TermsRef><FullName>Net 30"
                "</FullName></TermsRef><DueDate>2026-12-02</DueDate><ItemSalesTaxRef><FullName>"
                "State Tax</FullName></ItemSalesTaxRef><Memo>" +
                escape(kMemo) + "</Memo>" + sourceLines("InvoiceLineAdd", "InvoiceLineGroupAdd") +
                "</InvoiceAdd></InvoiceAddRq>"
                "<EstimateAddRq><EstimateAdd>" +
                header +
                "<RefNumber>E-2002</RefNumber><PONumber>PO-78</PONumber><TermsRef><FullName>Net 30"
                "</FullName></TermsRef><ItemSalesTaxRef><FullName>State Tax</FullName>"
                "</ItemSalesTaxRef><Memo>" +
                escape(kMemo) + "</Memo>" + sourceLines("EstimateLineAdd", "EstimateLineGroupAdd") +
                "</EstimateAdd></EstimateAddRq>"
                "<SalesReceiptAddRq><SalesReceiptAdd>" +
                header +
                "<RefNumber>S-3003</RefNumber><CheckNumber>5521</CheckNumber><ItemSalesTaxRef>"
                "<FullName>State Tax</FullName></ItemSalesTaxRef><Memo>" +
                escape(kMemo) + "</Memo>" +
                sourceLines("SalesReceiptLineAdd", "SalesReceiptLineGroupAdd") +
                "</SalesReceiptAdd></SalesReceiptAddRq>",
            "2.0");
        for (int n = 1; n <= 4; ++n) {
            EXPECT_EQ(status(added, n), "0 Info Status OK") << m_lastText;
        }
        xml::Document answer = ask(
            "<InvoiceQueryRq><RefNumber>A-1001</RefNumber><IncludeLineItems>true</IncludeLineItems>"
            "</InvoiceQueryRq><EstimateQueryRq><RefNumber>E-2002</RefNumber><IncludeLineItems>true"
            "</IncludeLineItems></EstimateQueryRq><SalesReceiptQueryRq><RefNumber>S-3003"
            "</RefNumber><IncludeLineItems>true</IncludeLineItems></SalesReceiptQueryRq>"
            "<CompanyQueryRq/>",
            "2.0");
        xml::Node company = answer.selectOne("//CompanyRet");
        EXPECT_TRUE(company) << m_lastText;
        std::vector<xml::Document> files;
        for (const char* ret : {"InvoiceRet", "EstimateRet", "SalesReceiptRet"}) {
            // as the mailing code builds the attachment, from a sender of a difficult name
            xml::Document copy;
            copy.setRoot(answer.selectOne(std::string("//") + ret));
            for (xml::Node id : copy.selectAll("//ListID")) {
                id.setText("ignore");
            }
            xml::Node sent = copy.root().appendChild(company);
            sent.firstChildElement("CompanyName").setText(kSender);
            auto file = xml::Document::parse(transform("attachment.xslt", copy.root()));
            EXPECT_TRUE(file) << ret;
            files.push_back(file ? std::move(*file) : xml::Document::withRoot(ret));
        }
        return files;
    }

    // Company B: a copy of the demo company of its own.
    void useCompanyB() {
        const auto b = folder() / "b.dvq";
        copyDemoCompany(b);
        ASSERT_TRUE(qbsandbox::writeState(folder(), {true, b}));
    }

    // The demo company as the program's start-up leaves it: with the catch-all account and
    // item that a receipt's line names.
    void useDemoAfterStartUp() {
        useDemo();
        for (const char* start : {"AccountAddRq.xml", "ItemAddRq.xml"}) {
            auto answer = exchange(readFile(programSource() / start));
            ASSERT_TRUE(answer);
            auto doc = xml::Document::parse(*answer);
            ASSERT_TRUE(doc);
            const std::string code = doc->selectOne("//QBXMLMsgsRs/*").attribute("statusCode");
            EXPECT_TRUE(code == "0" || code == "3100") << *answer;  // added, or already there
        }
    }

    // Sends a converted message with the import's prolog; answers the parsed response.
    xml::Document send(const std::string& body) {
        EXPECT_EQ(body.find("<?xml"), std::string::npos) << "the sheet wrote a prolog";
        auto answer = exchange(kProlog + body);
        EXPECT_TRUE(answer) << (answer ? "" : answer.error().description) << "\n"
                            << body << "\n"
                            << readFile(folder() / "qbsdklog.txt");
        auto doc = xml::Document::parse(answer ? *answer : "<QBXML/>");
        m_lastText = answer ? *answer : "";
        return doc ? std::move(*doc) : xml::Document::withRoot("QBXML");
    }
};

double number(const std::string& text) {
    return text.empty() ? 0.0 : std::strtod(text.c_str(), nullptr);
}

TEST_F(ImportSheets, ExchangeFilesBecomeTheCounterDocumentsInTheReceiversCompany) {
    std::vector<xml::Document> files = exchangeFiles();
    ASSERT_EQ(files.size(), 3u);
    const xml::Document& invoiceFile = files[0];
    useCompanyB();

    // The sender becomes a vendor; both creation sheets write the same request.
    const std::string vendorAdd = transform("VendorFromInvoice.xslt", invoiceFile.root());
    EXPECT_EQ(transform("VendorFromEstimate.xslt", files[1].root()), vendorAdd);
    EXPECT_TRUE(ascii(vendorAdd)) << vendorAdd;
    xml::Document vendor = send(vendorAdd);
    ASSERT_EQ(status(vendor), "0 Info Status OK") << vendorAdd << "\n" << m_lastText;
    xml::Node vendorRet = vendor.selectOne("//VendorRet");
    EXPECT_EQ(vendorRet.valueOf("Name"), kSender);
    EXPECT_EQ(vendorRet.valueOf("CompanyName"), kSender);
    xml::Node sender = invoiceFile.selectOne("//CompanyRet");
    EXPECT_EQ(vendorRet.valueOf("VendorAddress/Addr1"), sender.valueOf("Address/Addr1"));
    EXPECT_EQ(vendorRet.valueOf("VendorAddress/City"), sender.valueOf("Address/City"));
    EXPECT_EQ(vendorRet.valueOf("Phone"), sender.valueOf("Phone"));

    // A vendor name holds 41 letters: the vendor and the documents booked to it agree on them.
    {
        xml::Document longName = invoiceFile.clone();
        longName.selectOne("//CompanyRet/CompanyName")
            .setText("Northern California Landscape Supply Cooperative");
        auto vendorName =
            xml::Document::parse(transform("VendorFromInvoice.xslt", longName.root()));
        auto bill = xml::Document::parse(transform("BillFromInvoice.xslt", longName.root()));
        ASSERT_TRUE(vendorName && bill);
        EXPECT_EQ(vendorName->valueOf("//VendorAdd/Name"),
                  "Northern California Landscape Supply Coop");
        EXPECT_EQ(bill->valueOf("//VendorRef/FullName"), vendorName->valueOf("//VendorAdd/Name"));
    }

    for (const Conversion& c : kConversions) {
        SCOPED_TRACE(c.label);
        const xml::Document& file = std::string(c.ret) == "InvoiceRet"    ? files[0]
                                    : std::string(c.ret) == "EstimateRet" ? files[1]
                                                                          : files[2];
        xml::Node source = file.root();
        ASSERT_EQ(source.name(), c.ret);

        std::string body = transform(
            c.sheet, source,
            c.accountByRewrite ? xml::Variables{} : xml::Variables{{"account", c.account}});
        EXPECT_TRUE(ascii(body)) << body;
        if (c.accountByRewrite) {
            // the first account reference is the paying account
            auto parsed = xml::Document::parse(body);
            ASSERT_TRUE(parsed);
            xml::Node first = parsed->selectOne("//AccountRef/FullName");
            ASSERT_TRUE(first) << body;
            EXPECT_EQ(first.parent().parent().name().find("Add"),
                      first.parent().parent().name().size() - 3);
            first.setText(c.account);
            body = parsed->toString(false);
        }
        xml::Document answer = send(body);
        ASSERT_EQ(status(answer), "0 Info Status OK") << body << "\n" << m_lastText;
        xml::Node added = answer.selectOne(std::string("//") + c.target);
        ASSERT_TRUE(added) << m_lastText;

        EXPECT_EQ(added.valueOf(c.payee), kSender);
        EXPECT_EQ(added.valueOf("TxnDate"), source.valueOf("TxnDate"));
        EXPECT_EQ(added.valueOf("RefNumber"), source.valueOf("RefNumber"));
        const std::string memo = added.valueOf("Memo");
        EXPECT_NE(memo.find(kMemo), std::string::npos) << memo;
        EXPECT_NE(memo.find(source.valueOf(c.extraNumber)), std::string::npos) << memo;
        if (*c.account) {
            EXPECT_EQ(added.valueOf("AccountRef/FullName"), c.account);
        } else {
            EXPECT_EQ(added.valueOf("TermsRef/FullName"), source.valueOf("TermsRef/FullName"));
        }
        EXPECT_EQ(added.valueOf("DueDate"), source.valueOf("DueDate"));
        // addresses: the sender's on the purchase order and the check, the receiver's ship-to
        const std::string targetName = c.target;
        if (targetName == "PurchaseOrderRet") {
            EXPECT_EQ(added.valueOf("VendorAddress/Addr1"), sender.valueOf("Address/Addr1"));
            EXPECT_EQ(added.valueOf("ShipAddress/Addr2"), "12 Elm Street");
        } else if (targetName == "CheckRet") {
            EXPECT_EQ(added.valueOf("Address/City"), sender.valueOf("Address/City"));
        }

        // Line for line: items, descriptions, quantities, rates and amounts; the subtotal
        // stays a subtotal, the group stays a group; the tax comes last.
        std::vector<xml::Node> from = source.selectAll("*[contains(name(), 'Line')]");
        std::vector<xml::Node> to = added.selectAll(std::string(c.line) + " | " + c.groupLine);
        ASSERT_EQ(to.size(), from.size() + 1) << m_lastText;
        double groupDifference = 0;
        for (std::size_t i = 0; i < from.size(); ++i) {
            SCOPED_TRACE(i);
            if (from[i].name().find("Group") != std::string::npos) {
                ASSERT_EQ(to[i].name(), c.groupLine);
                EXPECT_EQ(to[i].valueOf("ItemGroupRef/FullName"),
                          from[i].valueOf("ItemGroupRef/FullName"));
                EXPECT_EQ(number(to[i].valueOf("Quantity")), number(from[i].valueOf("Quantity")));
                groupDifference +=
                    number(to[i].valueOf("TotalAmount")) - number(from[i].valueOf("TotalAmount"));
                continue;
            }
            ASSERT_EQ(to[i].name(), c.line);
            EXPECT_EQ(to[i].valueOf("ItemRef/FullName"), from[i].valueOf("ItemRef/FullName"));
            EXPECT_EQ(to[i].valueOf("Desc"), from[i].valueOf("Desc"));
            EXPECT_EQ(number(to[i].valueOf("Quantity")), number(from[i].valueOf("Quantity")));
            EXPECT_EQ(number(to[i].valueOf(c.price)), number(from[i].valueOf("Rate")));
            EXPECT_EQ(to[i].valueOf("Amount"), from[i].valueOf("Amount"));
        }
        EXPECT_EQ(to.back().valueOf("ItemRef/FullName"), "State Tax");
        EXPECT_EQ(to.back().valueOf("Amount"), source.valueOf("SalesTaxTotal"));
        const double sourceTotal =
            number(source.valueOf("Subtotal")) + number(source.valueOf("SalesTaxTotal"));
        EXPECT_GT(number(source.valueOf("SalesTaxTotal")), 0);
        EXPECT_NEAR(number(added.valueOf(c.total)), sourceTotal + groupDifference, 0.001)
            << m_lastText;
    }
}

// The preview pages: who sent what, its lines and its total, as the bookkeeper checks them.
TEST_F(ImportSheets, PreviewsShowSenderDocumentLinesAndTotal) {
    std::vector<xml::Document> files = exchangeFiles();
    ASSERT_EQ(files.size(), 3u);
    const struct {
        const char* sheet;
        const char* kind;
        const char* bookedAs;
    } previews[] = {{"importinvoice.xslt", "Invoice", "bill"},
                    {"importestimate.xslt", "Estimate", "purchase order"},
                    {"importsalesreceipt.xslt", "Sales Receipt", "credit-card charge"}};
    for (std::size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(previews[i].sheet);
        xml::Node root = files[i].root();
        const std::string html = transform(previews[i].sheet, root);
        // written as viewitem.htm: it must not look like XML
        EXPECT_EQ(html.find_first_not_of(" \r\n"), html.find("<html>")) << html.substr(0, 80);
        EXPECT_TRUE(ascii(html));
        const std::string text = render::test::decodeEntities(html);
        EXPECT_NE(text.find(std::string(previews[i].kind) + " " + root.valueOf("RefNumber")),
                  std::string::npos);
        EXPECT_NE(text.find(kSender), std::string::npos);
        EXPECT_NE(text.find(previews[i].bookedAs), std::string::npos);
        EXPECT_NE(text.find("5 lines, total <b>944.18</b>"), std::string::npos);
        for (const char* item : {"Design", "Plants", "Spring Package", "B\xC3\xA4ume & <Str"}) {
            EXPECT_NE(text.find(item), std::string::npos) << item;
        }
        EXPECT_NE(text.find("1250 Harbor Lane"), std::string::npos);
    }
}

// An Authorize.Net receipt: its payer becomes a customer, and its preview shows every line.
TEST_F(ImportSheets, ReceiptPayerBecomesACustomerAndThePreviewShowsTheReceipt) {
    useDemo();
    auto receipt = xml::Document::load(dataDir() / "import" / "receipt.xml");
    ASSERT_TRUE(receipt);
    const std::string payer = "Zo\xC3\xAB's Caf\xC3\xA9 & <Bistro>";

    const std::string body = transform("CustomerFromAuthorize.xslt", receipt->root());
    EXPECT_TRUE(ascii(body)) << body;
    xml::Document answer = send(body);
    ASSERT_EQ(status(answer), "0 Info Status OK") << body << "\n" << m_lastText;
    xml::Node customer = answer.selectOne("//CustomerRet");
    EXPECT_EQ(customer.valueOf("Name"), payer);
    EXPECT_EQ(customer.valueOf("CompanyName"), payer);
    EXPECT_EQ(customer.valueOf("FirstName"), "Zo\xC3\xAB");
    EXPECT_EQ(customer.valueOf("LastName"), "M\xC3\xBCller-Smith");
    EXPECT_EQ(customer.valueOf("BillAddress/Addr1"), payer);
    EXPECT_EQ(customer.valueOf("BillAddress/Addr2"), "44 Market Street");
    EXPECT_EQ(customer.valueOf("BillAddress/PostalCode"), "93650");
    EXPECT_EQ(customer.valueOf("ShipAddress/Addr1"), "7 Dock Road");
    EXPECT_EQ(customer.valueOf("ShipAddress/City"), "Oakland");
    EXPECT_EQ(customer.valueOf("Phone"), "559-555-0199");
    EXPECT_EQ(customer.valueOf("Email"), "zoe@example.com");

    const std::string html = transform("importAuthorizeNet.xslt", receipt->root());
    EXPECT_EQ(html.find_first_not_of(" \r\n"), html.find("<html>"));
    const std::string text = render::test::decodeEntities(html);
    for (const std::string& shown : {payer, std::string("40012345"), std::string("$12.50"),
                                     std::string("12-Mar-2003"), std::string("7 Dock Road")}) {
        EXPECT_NE(text.find(shown), std::string::npos) << shown;
    }
}

// The receipt sheets' expectations: a field of the booked sales receipt and its value ("" for
// a field it must not have).
struct ReceiptField {
    const char* path;
    std::string value;
};

struct ReceiptBooking {
    const char* receipt;  // a receipt's text under import/receipts, or the document receipt.xml
    const char* sheet;
    bool createCustomer;  // the payer is added first, as the import does for a new customer
    std::vector<ReceiptField> fields;
    std::vector<std::string> memo;  // pieces the memo holds
};

const std::string kCafe = "Caf\xC3\xA9 Lumi\xC3\xA8re";
const std::string kBistro = "Zo\xC3\xAB's Caf\xC3\xA9 & <Bistro>";
const std::string kWhitfield = "Whitfield Ashcombe Interior Architecture Partners";

const ReceiptBooking kReceiptBookings[] = {
    {"standard-crlf.txt",
     "SReceiptFromAuthorize.xslt",
     true,
     {{"CustomerRef/FullName", kCafe},
      {"TxnDate", "2003-04-07"},
      {"RefNumber", "2041"},
      {"TotalAmount", "185.40"},
      {"BillAddress/Addr1", kCafe},
      {"BillAddress/Addr2", "Zo\xC3\xAB Bront\xC3\xAB"},
      {"BillAddress/Addr3", "12 Rue des \xC3\x94rmes"},
      {"BillAddress/City",
       "Montr\xC3\xA9"
       "al"},
      {"BillAddress/State", "QC"},
      {"BillAddress/PostalCode", "H2X 1Y4"},
      {"BillAddress/Country", "Canada"},
      {"ShipAddress/Addr1", kCafe},
      {"SalesReceiptLineRet/Desc", "Framed print, 40x50 cm"},
      {"SalesReceiptLineRet/Amount", "185.40"}},
     {"Authorize.Net transaction 2147483790", "auth 0A7B3C", "Visa xxxx4242", "P.O. 55",
      "tax 24.18", "freight 12.00"}},
    {"standard-crlf.txt",
     "SReceiptFromAuthorizewoCust.xslt",
     false,
     {{"CustomerRef/FullName", ""},
      {"TxnDate", "2003-04-07"},
      {"TotalAmount", "185.40"},
      {"BillAddress/Addr1", kCafe}},
     {"2147483790"}},
    // Names with markup characters, as QuickBooks has them once the user picked the customer.
    {"",
     "SReceiptFromAuthorize.xslt",
     true,
     {{"CustomerRef/FullName", kBistro},
      {"TxnDate", "2003-03-12"},
      {"RefNumber", "1234"},
      {"TotalAmount", "12.50"},
      {"BillAddress/Addr1", kBistro},
      {"BillAddress/Addr2", "Zo\xC3\xAB M\xC3\xBCller-Smith"},
      {"ShipAddress/Addr1", "Zo\xC3\xAB M\xC3\xBCller-Smith"},
      {"ShipAddress/Addr2", "7 Dock Road"},
      {"ShipAddress/City", "Oakland"}},
     {"40012345"}},
    // A person without a company, LF lines, a one-digit day, thousands in the amount, empty
    // shipping fields.
    {"personal-lf.txt",
     "SReceiptFromAuthorizewoCust.xslt",
     false,
     {{"CustomerRef/FullName", ""},
      {"TxnDate", "2003-03-01"},
      {"TotalAmount", "1234.50"},
      {"BillAddress/Addr1", "Dana O'Neill"},
      {"BillAddress/Addr2", "88 Laurel Hollow Rd"},
      {"BillAddress/PostalCode", "28801"},
      {"ShipAddress/Addr1", ""},
      {"SalesReceiptLineRet/Desc", "Two-person tent, footprint and stakes"}},
     {"Authorize.Net transaction 1000245871, auth 09PQ7Z, MasterCard"}},
    // Longer than QuickBooks' fields: the customer, the invoice number, the street.
    {"invoice-number-crlf.txt",
     "SReceiptFromAuthorize.xslt",
     true,
     {{"CustomerRef/FullName", kWhitfield.substr(0, 41)},
      {"TxnDate", "2003-03-14"},
      {"RefNumber", "INV-2003-00"},
      {"TotalAmount", "2045.00"},
      {"BillAddress/Addr2", "Margaret Whitfield-Ashcombe"},
      {"BillAddress/Addr3", "1200 Northeast Broadway Street, Suite 145"},
      {"BillAddress/PostalCode", "97232-1450"},
      {"BillAddress/Country", "United States of America"},
      {"ShipAddress/Addr1", "Pearl District Loft"},
      {"ShipAddress/Addr2", "Tom Reyes"},
      {"ShipAddress/Addr3", "610 NW Davis St"}},
     {"2147490012", "invoice INV-2003-000123", "freight 45.00"}},
};

// Authorize.Net receipts, pasted as their merchants receive them, become sales receipts in
// the demo company: with the payer as customer, or with none.
TEST_F(ImportSheets, ReceiptsBecomeSalesReceiptsWithAndWithoutTheCustomer) {
    useDemoAfterStartUp();

    for (const ReceiptBooking& b : kReceiptBookings) {
        SCOPED_TRACE(std::string(b.receipt) + " " + b.sheet);
        auto receipt = *b.receipt ? xml::Document::parse(imports::receiptToXml(
                                        readFile(dataDir() / "import" / "receipts" / b.receipt)))
                                  : xml::Document::load(dataDir() / "import" / "receipt.xml");
        ASSERT_TRUE(receipt);
        if (b.createCustomer) {
            const std::string customer = transform("CustomerFromAuthorize.xslt", receipt->root());
            xml::Document added = send(customer);
            ASSERT_EQ(status(added), "0 Info Status OK") << customer << "\n" << m_lastText;
        }
        const std::string body = transform(b.sheet, receipt->root());
        EXPECT_TRUE(ascii(body)) << body;
        xml::Document answer = send(body);
        ASSERT_EQ(status(answer), "0 Info Status OK") << body << "\n" << m_lastText;
        xml::Node booked = answer.selectOne("//SalesReceiptRet");
        ASSERT_TRUE(booked) << m_lastText;
        for (const ReceiptField& f : b.fields) {
            EXPECT_EQ(booked.valueOf(f.path), f.value) << f.path << "\n" << body;
        }
        EXPECT_EQ(booked.selectAll("SalesReceiptLineRet").size(), 1u);
        EXPECT_EQ(booked.valueOf("SalesReceiptLineRet/ItemRef/FullName"), "Uncategorized Item");
        EXPECT_EQ(booked.valueOf("SalesReceiptLineRet/Amount"), booked.valueOf("TotalAmount"));
        const std::string memo = booked.valueOf("Memo");
        for (const std::string& piece : b.memo) {
            EXPECT_NE(memo.find(piece), std::string::npos) << piece << " in " << memo;
        }
    }
}

// How receipts write dates and amounts: the date is left out when it is none, so QuickBooks
// takes today; an amount keeps its cents whatever currency signs surround it.
TEST_F(ImportSheets, ReceiptDatesAndAmountsAsReceiptsWriteThem) {
    useDemoAfterStartUp();
    auto receipt = xml::Document::load(dataDir() / "import" / "receipt.xml");
    ASSERT_TRUE(receipt);
    const struct {
        const char* date;
        const char* amount;
        const char* txnDate;
        const char* total;
    } cases[] = {
        {"12-Mar-2003", "$12.50", "2003-03-12", "12.50"},
        {"1-mar-2003 ", "185.40 (USD)", "2003-03-01", "185.40"},
        {"29-Feb-2004", "1,234.50 USD", "2004-02-29", "1234.50"},
        {"31-Dec-03", "USD 2,000", "2003-12-31", "2000.00"},
        {"3/14/2003 1", "12,50 EUR", "2003-03-14", "12.50"},
        {"14-MAR-2003", "EUR 1.234,50", "2003-03-14", "1234.50"},
        {"29-Feb-2003", "7", kToday, "7.00"},
        {"31-Apr-2003", "$0.99", kToday, "0.99"},
        {"12-Mrz-2003", "1.5", kToday, "1.50"},
        {"", "$100.00", kToday, "100.00"},
        {"yesterday", "$5", kToday, "5.00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.date) + " / " + c.amount);
        receipt->selectOne("//DateTime").setText(c.date);
        receipt->selectOne("//Amount").setText(c.amount);
        const std::string body = transform("SReceiptFromAuthorizewoCust.xslt", receipt->root());
        xml::Document answer = send(body);
        ASSERT_EQ(status(answer), "0 Info Status OK") << body << "\n" << m_lastText;
        EXPECT_EQ(answer.valueOf("//SalesReceiptRet/TxnDate"), c.txnDate);
        EXPECT_EQ(answer.valueOf("//SalesReceiptRet/TotalAmount"), c.total);
    }
}

// The import preferences read four lists from one answer to ItemGetRq.xml.
TEST_F(ImportSheets, ItemListTemplateFillsTheFourPreferenceLists) {
    useDemo();
    auto answer = exchange(readFile(programSource() / "ItemGetRq.xml"));
    ASSERT_TRUE(answer) << answer.error().description;
    auto lists = xml::Document::parse(*answer);
    ASSERT_TRUE(lists);
    for (int n = 1; n <= 4; ++n) {
        EXPECT_EQ(status(*lists, n), "0 Info Status OK") << *answer;
    }
    for (const char* path : {"//ItemQueryRs/*/FullName", "//ItemGroupQueryRs/*/Name",
                             "//TermsQueryRs/*/Name", "//AccountRet"}) {
        EXPECT_FALSE(lists->selectAll(path).empty()) << path;
    }
    EXPECT_EQ(lists->valueOf("//TermsQueryRs/*[Name = 'Net 30']/Name"), "Net 30");
}

}  // namespace
}  // namespace dorvane::test
