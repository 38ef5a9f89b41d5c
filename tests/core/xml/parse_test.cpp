// SPDX-License-Identifier: GPL-3.0-or-later
// Parsing: failure reasons, whitespace, and what a document may never make us read.
#include <cerrno>
#include <gtest/gtest.h>

#include "nettrap.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::xml {
namespace {

using test::TempDir;
using test::writeFile;

constexpr const char* kSecret = "TOP-SECRET-7f3a9c";

bool has(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

TEST(XmlParse, FailuresGiveTheFirstRealReason) {
    const std::pair<std::string_view, const char*> cases[] = {
        {"", "Document is empty"},
        {std::string_view{}, "Document is empty"},
        {"<QBXML><Msgs></QBXML>", "Opening and ending tag mismatch: Msgs"},
        {"<a x=1><b></a>", "AttValue"},  // the first error, not what follows from it
        {"<a><q:b/></a>", "q"},          // an undeclared prefix fails the parse
    };
    for (const auto& [text, reason] : cases) {
        auto doc = Document::parse(text);
        ASSERT_FALSE(doc.ok()) << text;
        const std::string& why = doc.error().description;
        EXPECT_TRUE(has(why, reason)) << text << ": " << why;
        EXPECT_NE(doc.error().code, 0);
        EXPECT_FALSE(why.empty() || why.back() == '\n') << text;
    }
    TempDir dir;
    auto missing = Document::load(dir / "absent.xml");
    ASSERT_FALSE(missing.ok());
    EXPECT_EQ(missing.error().code, ENOENT);
    EXPECT_TRUE(has(missing.error().description, "absent.xml"));
}

TEST(XmlParse, BlanksBetweenElementsGoUnlessKept) {
    TempDir dir;
    writeFile(dir / "in.xml",
              "<?xml version=\"1.0\"?>\n<a>\n  <b>  two  words </b>\n  <c/>\n</a>\n");
    auto doc = Document::load(dir / "in.xml");
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().xml(), "<a><b>  two  words </b><c/></a>");
    ParseOptions keep;
    keep.keepBlanks = true;
    auto kept = Document::parse("<a>\n  <b>x</b>\n</a>", keep);
    ASSERT_TRUE(kept.ok());
    EXPECT_EQ(kept->root().text(), "\n  x\n");
}

// ---- document type declarations and entities ------------------------------------------

TEST(XmlParseDoctype, QbXmlDoctypeParsesWithoutTouchingTheNetwork) {
    test::NetTrap trap;
    const std::string text =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE QBXML PUBLIC "
        "'-//INTUIT//DTD QBXML QBD 1.1//EN' '" +
        trap.url("qbxml.dtd") + "'>\n<QBXML><QBXMLMsgsRq/></QBXML>";
    auto doc = Document::parse(text);
    ASSERT_TRUE(doc.ok()) << doc.error().description;
    EXPECT_EQ(doc->root().name(), "QBXML");
    EXPECT_FALSE(trap.contacted());
}

// Whatever way an external entity or DTD is named, its file never shows in any answer.
TEST(XmlParseDoctype, ExternalEntitiesAndDtdsAreNeverRead) {
    TempDir dir;
    const std::string leak = "<!ENTITY leak \"" + std::string(kSecret) + "\">";
    writeFile(dir / "secret.txt", kSecret);
    writeFile(dir / "evil.dtd", "<!ATTLIST r kind CDATA \"from-dtd\">" + leak);
    const std::string documents[] = {
        "<!DOCTYPE r [<!ENTITY leak SYSTEM \"secret.txt\">]><r><v>a&leak;b</v></r>",
        "<!DOCTYPE r [<!ENTITY leak SYSTEM \"file://" + (dir / "secret.txt").string() +
            "\">]><r><v>&leak;</v></r>",
        "<!DOCTYPE r [<!ENTITY % p SYSTEM \"evil.dtd\"> %p;]><r><v>&leak;</v></r>",
        "<!DOCTYPE r SYSTEM \"evil.dtd\"><r><v>&leak;</v></r>",
    };
    for (const std::string& text : documents) {
        SCOPED_TRACE(text);
        writeFile(dir / "doc.xml", text);  // loaded from a file, relative names resolve
        auto doc = Document::load(dir / "doc.xml");
        if (&text == &documents[0]) {  // a plain document that merely names one is accepted
            ASSERT_TRUE(doc.ok()) << doc.error().description;
            EXPECT_EQ(doc->root().text(), "ab");
        }
        if (!doc.ok()) {
            EXPECT_FALSE(has(doc.error().description, kSecret));
            continue;
        }
        EXPECT_FALSE(doc->root().hasAttribute("kind"));
        EXPECT_FALSE(has(doc->toString(), kSecret));
        EXPECT_FALSE(has(doc->valueOf("string(/r)"), kSecret));
        for (const Node& n : doc->selectAll("//node()")) {
            EXPECT_FALSE(has(n.text(), kSecret));
        }
    }
}

TEST(XmlParseDoctype, InternalEntityShowsInTextButStaysAReference) {
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
    return text + "]><lolz><a>&lol9;</a></lolz>";
}

TEST(XmlParseDoctype, BillionLaughsDoesNotBlowUp) {
    auto doc = Document::parse(billionLaughs());
    if (doc.ok()) {
        EXPECT_LT(doc->root().text().size(), 1000000u);
        EXPECT_LT(doc->valueOf("string(/lolz)").size(), 1000000u);
    }
}

TEST(XmlParseDoctype, InternalSubsetIsRefusedOnlyWhenAsked) {
    ParseOptions refusing;
    refusing.refuseInternalSubset = true;
    const std::pair<std::string, bool> cases[] = {
        {"<!DOCTYPE r [<!ENTITY e \"x\">]><r>&e;</r>", true},
        {"<!DOCTYPE r [<!ELEMENT r (#PCDATA)>]><r>x</r>", true},
        {billionLaughs(), true},
        {"<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' 'http://x.invalid'><QBXML/>",
         false},
    };
    for (const auto& [text, refused] : cases) {
        auto doc = Document::parse(text, refusing);
        EXPECT_EQ(doc.ok(), !refused) << text;
        if (refused && !doc.ok()) {
            EXPECT_TRUE(has(doc.error().description, "internal subset")) << text;
        }
    }
    EXPECT_TRUE(Document::parse(cases[1].first).ok()) << "accepted when not asked to refuse";
    TempDir dir;
    writeFile(dir / "in.xml", "<!DOCTYPE r [<!ENTITY e \"x\">]><r/>");
    EXPECT_FALSE(Document::load(dir / "in.xml", refusing).ok());
}

}  // namespace
}  // namespace dorvane::xml
