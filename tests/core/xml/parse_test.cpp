// SPDX-License-Identifier: GPL-3.0-or-later
// Parsing: failure reasons, whitespace, and what a document may never make us read.
#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>

#include "nettrap.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::xml {
namespace {

using test::TempDir;
using test::writeFile;

constexpr const char* kSecret = "TOP-SECRET-7f3a9c";

// ---- failures and their reasons ---------------------------------------------------------

TEST(XmlParseFailure, EmptyTextIsReportedAsEmptyDocument) {
    auto doc = Document::parse("");
    ASSERT_FALSE(doc.ok());
    EXPECT_EQ(doc.error().description, "Document is empty");
    EXPECT_NE(doc.error().code, 0);
}

TEST(XmlParseFailure, DefaultStringViewIsEmptyDocumentToo) {
    auto doc = Document::parse(std::string_view{});
    ASSERT_FALSE(doc.ok());
    EXPECT_EQ(doc.error().description, "Document is empty");
}

TEST(XmlParseFailure, MismatchedTagNamesBothElementsWithoutTrailingNewline) {
    auto doc = Document::parse("<QBXML><Msgs></QBXML>");
    ASSERT_FALSE(doc.ok());
    const std::string& reason = doc.error().description;
    EXPECT_NE(reason.find("Opening and ending tag mismatch"), std::string::npos) << reason;
    EXPECT_NE(reason.find("Msgs"), std::string::npos) << reason;
    ASSERT_FALSE(reason.empty());
    EXPECT_NE(reason.back(), '\n');
}

TEST(XmlParseFailure, FirstErrorIsTheReason) {
    // The unquoted attribute comes first; later errors follow from it.
    auto doc = Document::parse("<a x=1><b></a>");
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("AttValue"), std::string::npos)
        << doc.error().description;
}

TEST(XmlParseFailure, ContentAfterTheRootElement) {
    auto doc = Document::parse("<a/><b/>");
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("Extra content"), std::string::npos)
        << doc.error().description;
}

TEST(XmlParseFailure, UndeclaredNamespacePrefix) {
    auto doc = Document::parse("<a><q:b/></a>");
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("q"), std::string::npos) << doc.error().description;
}

TEST(XmlParseFailure, MissingFileNamesTheFile) {
    TempDir dir;
    auto doc = Document::load(dir / "absent.xml");
    ASSERT_FALSE(doc.ok());
    EXPECT_EQ(doc.error().code, ENOENT);
    EXPECT_NE(doc.error().description.find("absent.xml"), std::string::npos);
}

TEST(XmlParseFailure, MalformedFileGivesTheParserReason) {
    TempDir dir;
    writeFile(dir / "bad.xml", "<a>\n<b>\n</a>\n");
    auto doc = Document::load(dir / "bad.xml");
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("mismatch"), std::string::npos);
}

// ---- what a successful parse keeps ---------------------------------------------------------

TEST(XmlParseWhitespace, BlankTextBetweenElementsIsDropped) {
    auto doc = Document::parse("<a>\n  <b>x</b>\n  <c>y</c>\n</a>\n");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().xml(), "<a><b>x</b><c>y</c></a>");
    EXPECT_EQ(doc->root().text(), "xy");
    EXPECT_TRUE(doc->root().selectAll("text()").empty());
}

TEST(XmlParseWhitespace, KeepBlanksKeepsThem) {
    ParseOptions options;
    options.keepBlanks = true;
    auto doc = Document::parse("<a>\n  <b>x</b>\n</a>", options);
    ASSERT_TRUE(doc.ok());
    EXPECT_EQ(doc->root().selectAll("text()").size(), 2u);
    EXPECT_EQ(doc->root().text(), "\n  x\n");
}

TEST(XmlParseWhitespace, SignificantSpacesInsideTextStay) {
    auto doc = Document::parse("<a><b>  two  words </b></a>");
    ASSERT_TRUE(doc.ok());
    EXPECT_EQ(doc->valueOf("/a/b"), "  two  words ");
}

TEST(XmlParseEncoding, DeclaredLatin1ComesOutAsUtf8) {
    const std::string latin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><n>Caf\xe9</n>";
    auto doc = Document::parse(latin1);
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().text(), "Caf\xc3\xa9");
}

TEST(XmlParseFile, LoadReadsTheFile) {
    TempDir dir;
    writeFile(dir / "in.xml", "<?xml version=\"1.0\"?>\n<r>\n <v>1</v>\n</r>\n");
    auto doc = Document::load(dir / "in.xml");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().xml(), "<r><v>1</v></r>");
}

// ---- document type declarations and entities ------------------------------------------

TEST(XmlParseDoctype, QbXmlPublicIdentifierParsesWithoutTheNetwork) {
    test::NetTrap trap;
    const std::string text =
        "<?xml version=\"1.0\"?>\n"
        "<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' '" +
        trap.url("qbxml.dtd") +
        "'>\n"
        "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"/></QBXML>";
    auto start = std::chrono::steady_clock::now();
    auto doc = Document::parse(text);
    auto took = std::chrono::steady_clock::now() - start;
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().name(), "QBXML");
    EXPECT_FALSE(trap.contacted());
    EXPECT_LT(took, std::chrono::seconds(2));
}

TEST(XmlParseDoctype, TheIntuitSystemIdentifierAsWritten) {
    auto doc = Document::parse(
        "<?xml version=\"1.0\"?><!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' "
        "'http://developer.intuit.com'><QBXML/>");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_TRUE(doc->toString().find("<QBXML/>") != std::string::npos);
}

TEST(XmlParseDoctype, ExternalDtdIsNotRead) {
    TempDir dir;
    // Were the DTD read, <r> would get a defaulted attribute and &e; a value.
    writeFile(dir / "r.dtd", "<!ATTLIST r kind CDATA \"from-dtd\">\n<!ENTITY e \"" +
                                 std::string(kSecret) + "\">\n");
    writeFile(dir / "doc.xml", "<!DOCTYPE r SYSTEM \"r.dtd\"><r><v>&e;</v></r>");
    auto doc = Document::load(dir / "doc.xml");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_FALSE(doc->root().hasAttribute("kind"));
    EXPECT_EQ(doc->root().text().find(kSecret), std::string::npos);
    EXPECT_EQ(doc->toString().find(kSecret), std::string::npos);
}

class XmlParseExternalEntity : public ::testing::Test {
protected:
    void SetUp() override { writeFile(m_dir / "secret.txt", kSecret); }

    void expectNoSecret(const Document& doc) {
        EXPECT_EQ(doc.root().text().find(kSecret), std::string::npos);
        EXPECT_EQ(doc.root().xml().find(kSecret), std::string::npos);
        EXPECT_EQ(doc.toString().find(kSecret), std::string::npos);
        EXPECT_EQ(doc.valueOf("string(/r)").find(kSecret), std::string::npos);
        EXPECT_EQ(doc.valueOf("/r/v").find(kSecret), std::string::npos);
        for (const Node& n : doc.selectAll("//node()")) {
            EXPECT_EQ(n.text().find(kSecret), std::string::npos);
        }
    }

    TempDir m_dir;
};

TEST_F(XmlParseExternalEntity, SystemEntityByAbsolutePathIsNeverRead) {
    const std::string text = "<!DOCTYPE r [<!ENTITY xxe SYSTEM \"file://" +
                             (m_dir / "secret.txt").string() + "\">]><r><v>&xxe;</v></r>";
    auto doc = Document::parse(text);
    if (!doc.ok()) {
        EXPECT_EQ(doc.error().description.find(kSecret), std::string::npos);
        return;
    }
    expectNoSecret(*doc);
}

TEST_F(XmlParseExternalEntity, SystemEntityRelativeToALoadedFileIsNeverRead) {
    writeFile(m_dir / "doc.xml",
              "<!DOCTYPE r [<!ENTITY xxe SYSTEM \"secret.txt\">]><r><v>a&xxe;b</v></r>");
    auto doc = Document::load(m_dir / "doc.xml");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    expectNoSecret(*doc);
    EXPECT_EQ(doc->root().text(), "ab");
}

TEST_F(XmlParseExternalEntity, ParameterEntityDtdIsNeverRead) {
    writeFile(m_dir / "evil.dtd", "<!ENTITY leak \"" + std::string(kSecret) + "\">");
    writeFile(m_dir / "doc.xml",
              "<!DOCTYPE r [<!ENTITY % p SYSTEM \"evil.dtd\"> %p;]><r><v>&leak;</v></r>");
    auto doc = Document::load(m_dir / "doc.xml");
    if (!doc.ok()) {
        EXPECT_EQ(doc.error().description.find(kSecret), std::string::npos);
        return;
    }
    expectNoSecret(*doc);
}

TEST(XmlParseEntities, InternalEntityShowsInTextButStaysAReference) {
    auto doc = Document::parse("<!DOCTYPE r [<!ENTITY co \"Acme &#38;#38; Sons\">]><r>&co;!</r>");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().text(), "Acme & Sons!");
    EXPECT_EQ(doc->root().xml(), "<r>&co;!</r>");
}

std::string billionLaughs() {
    std::string text = "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol0 \"lol\">";
    for (int i = 1; i <= 9; ++i) {
        text += "<!ENTITY lol" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) {
            text += "&lol" + std::to_string(i - 1) + ";";
        }
        text += "\">";
    }
    text += "]><lolz><a>&lol9;</a></lolz>";
    return text;
}

TEST(XmlParseEntities, BillionLaughsDoesNotBlowUp) {
    auto start = std::chrono::steady_clock::now();
    auto doc = Document::parse(billionLaughs());
    if (doc.ok()) {
        EXPECT_LT(doc->root().text().size(), 1000000u);
        EXPECT_LT(doc->valueOf("string(/lolz)").size(), 1000000u);
    } else {
        EXPECT_FALSE(doc.error().description.empty());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

// ---- refusing internal subsets ------------------------------------------------------------

ParseOptions refusing() {
    ParseOptions options;
    options.refuseInternalSubset = true;
    return options;
}

TEST(XmlParseInternalSubset, EntityDeclarationIsRefusedWithClearText) {
    auto doc = Document::parse("<!DOCTYPE r [<!ENTITY e \"x\">]><r>&e;</r>", refusing());
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("internal subset"), std::string::npos)
        << doc.error().description;
}

TEST(XmlParseInternalSubset, ElementDeclarationIsRefused) {
    auto doc = Document::parse("<!DOCTYPE r [<!ELEMENT r (#PCDATA)>]><r>x</r>", refusing());
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("internal subset"), std::string::npos);
}

TEST(XmlParseInternalSubset, BillionLaughsIsRefusedBeforeAnyExpansion) {
    auto doc = Document::parse(billionLaughs(), refusing());
    ASSERT_FALSE(doc.ok());
    EXPECT_NE(doc.error().description.find("internal subset"), std::string::npos)
        << doc.error().description;
}

TEST(XmlParseInternalSubset, DoctypeWithoutInternalSubsetIsAccepted) {
    auto doc = Document::parse(
        "<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' "
        "'http://developer.intuit.com'><QBXML/>",
        refusing());
    EXPECT_TRUE(doc.ok()) << doc.error().description;
}

TEST(XmlParseInternalSubset, AcceptedWhenNotAskedToRefuse) {
    auto doc = Document::parse("<!DOCTYPE r [<!ELEMENT r (#PCDATA)>]><r>x</r>");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().text(), "x");
}

TEST(XmlParseInternalSubset, RefusedFromAFileToo) {
    TempDir dir;
    writeFile(dir / "in.xml", "<!DOCTYPE r [<!ENTITY e \"x\">]><r/>");
    auto doc = Document::load(dir / "in.xml", refusing());
    EXPECT_FALSE(doc.ok());
}

}  // namespace
}  // namespace dorvane::xml
