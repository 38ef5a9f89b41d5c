// SPDX-License-Identifier: GPL-3.0-or-later
// The tree: text and attributes, moving and copying nodes, serialisation, ownership.
#include <gtest/gtest.h>

#include "xml/xml.h"

namespace dorvane::xml {
namespace {

Document parsed(std::string_view text) {
    auto doc = Document::parse(text);
    EXPECT_TRUE(doc.ok()) << doc.error().description;
    return doc.ok() ? std::move(doc).value() : Document();
}

// Serialises and parses again: what a reader of our output gets.
Document roundTrip(const Document& doc) {
    return parsed(doc.toString());
}

const std::string kAwkward =
    "Smith & Sons <Ltd> \"quoted\" 'single' caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac";

// ---- text ----------------------------------------------------------------------------------

TEST(XmlText, SpecialCharactersSurviveSerialisation) {
    Document doc = Document::withRoot("Customer");
    Node name = doc.root().appendElement("Name");
    name.setText(kAwkward);
    EXPECT_EQ(name.text(), kAwkward);
    EXPECT_EQ(name.xml(),
              "<Name>Smith &amp; Sons &lt;Ltd&gt; \"quoted\" 'single' caf\xc3\xa9 "
              "\xe6\x97\xa5\xe6\x9c\xac</Name>");
    EXPECT_EQ(roundTrip(doc).valueOf("/Customer/Name"), kAwkward);
}

TEST(XmlText, EntityLookalikesAreTakenLiterally) {
    Document doc = Document::withRoot("r");
    doc.root().setText("&amp; &lt; &#65; &unknown;");
    EXPECT_EQ(doc.root().text(), "&amp; &lt; &#65; &unknown;");
    EXPECT_EQ(roundTrip(doc).root().text(), "&amp; &lt; &#65; &unknown;");
}

TEST(XmlText, SetTextReplacesAllChildren) {
    Document doc = parsed("<r>a<b>b</b><!--c--><d/></r>");
    doc.root().setText("only");
    EXPECT_EQ(doc.root().xml(), "<r>only</r>");
    EXPECT_TRUE(doc.root().childElements().empty());
}

TEST(XmlText, EmptyTextLeavesAnEmptyElement) {
    Document doc = parsed("<r><v>x</v></r>");
    doc.root().firstChildElement().setText("");
    EXPECT_EQ(doc.root().xml(), "<r><v/></r>");
}

TEST(XmlText, TextIsTheWholeSubtreeWithoutCommentsOrAttributes) {
    Document doc = parsed("<r a=\"attr\">one<x>two<y>three</y></x><!--no--><![CDATA[<four>]]></r>");
    EXPECT_EQ(doc.root().text(), "onetwothree<four>");
    EXPECT_EQ(doc.selectOne("/r/comment()").text(), "no");
}

TEST(XmlText, SetTextOnATextNodeIsLiteral) {
    Document doc = parsed("<r>old</r>");
    Node t = doc.selectOne("/r/text()");
    ASSERT_TRUE(t);
    t.setText("a<b & c");
    EXPECT_EQ(doc.root().xml(), "<r>a&lt;b &amp; c</r>");
}

TEST(XmlText, EmbeddedNulIsNotAnEndMarkerInTheMiddleOfTheTree) {
    Document doc = Document::withRoot("r");
    doc.root().setText(std::string_view("ab", 2));
    EXPECT_EQ(doc.root().text(), "ab");
}

// ---- attributes ----------------------------------------------------------------------------

TEST(XmlAttributes, ValuesWithQuotesAndMarkupRoundTrip) {
    Document doc = Document::withRoot("r");
    doc.root().setAttribute("name", kAwkward);
    EXPECT_EQ(doc.root().attribute("name"), kAwkward);
    EXPECT_EQ(roundTrip(doc).root().attribute("name"), kAwkward);
}

TEST(XmlAttributes, OverwriteKeepsOrderAndAbsentIsEmpty) {
    Document doc = parsed("<r a=\"1\" b=\"2\" c=\"3\"/>");
    Node r = doc.root();
    r.setAttribute("b", "two");
    r.setAttribute("d", "4");
    std::vector<std::pair<std::string, std::string>> expected = {
        {"a", "1"}, {"b", "two"}, {"c", "3"}, {"d", "4"}};
    EXPECT_EQ(r.attributes(), expected);
    EXPECT_TRUE(r.hasAttribute("c"));
    EXPECT_FALSE(r.hasAttribute("z"));
    EXPECT_EQ(r.attribute("z"), "");
}

TEST(XmlAttributes, PrefixedNamesAreMatchedAsWritten) {
    Document doc = parsed("<r xmlns:q=\"urn:q\" q:id=\"7\" id=\"8\" xml:lang=\"en\"/>");
    EXPECT_EQ(doc.root().attribute("q:id"), "7");
    EXPECT_EQ(doc.root().attribute("id"), "8");
    EXPECT_EQ(doc.root().attribute("xml:lang"), "en");
}

TEST(XmlAttributes, EntityReferenceInAttributeValue) {
    Document doc = parsed("<!DOCTYPE r [<!ENTITY co \"Acme\">]><r n=\"&co; Ltd\"/>");
    EXPECT_EQ(doc.root().attribute("n"), "Acme Ltd");
}

// ---- building and navigating ----------------------------------------------------------------

TEST(XmlTree, NavigationSkipsNonElements) {
    Document doc = parsed("<r>t<!--c--><a/>u<b/><?pi x?><a/></r>");
    Node r = doc.root();
    EXPECT_EQ(r.firstChildElement().name(), "a");
    EXPECT_EQ(r.firstChildElement().nextSiblingElement().name(), "b");
    EXPECT_EQ(r.childElements().size(), 3u);
    EXPECT_EQ(r.firstChildElement("b").name(), "b");
    EXPECT_FALSE(r.firstChildElement("zz"));
    EXPECT_FALSE(r.parent());
    EXPECT_EQ(r.firstChildElement().parent(), r);
}

TEST(XmlTree, NullNodeAnswersEmpty) {
    Node n;
    EXPECT_FALSE(n);
    EXPECT_EQ(n.name(), "");
    EXPECT_EQ(n.text(), "");
    EXPECT_EQ(n.xml(), "");
    EXPECT_FALSE(n.selectOne("*"));
    EXPECT_TRUE(n.selectAll("*").empty());
    EXPECT_FALSE(n.appendElement("x"));
    EXPECT_EQ(n.document(), nullptr);
    n.setText("x");
    n.setAttribute("a", "b");
    n.remove();
}

TEST(XmlTree, WithRootAndAppendElement) {
    Document doc = Document::withRoot("QBXML");
    EXPECT_FALSE(doc.empty());
    Node rq = doc.root().appendElement("QBXMLMsgsRq");
    rq.setAttribute("onError", "stopOnError");
    rq.appendElement("CustomerQueryRq").appendElement("FullName", "O'Brien");
    EXPECT_EQ(doc.toString(false),
              "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><CustomerQueryRq>"
              "<FullName>O'Brien</FullName></CustomerQueryRq></QBXMLMsgsRq></QBXML>\n");
}

TEST(XmlTree, EmptyDocument) {
    Document doc;
    EXPECT_TRUE(doc.empty());
    EXPECT_FALSE(doc.root());
    Node e = doc.createElement("Root");
    doc.setRoot(e);
    EXPECT_EQ(doc.root().name(), "Root");
}

TEST(XmlTree, FirstElementByTagNameIsInDocumentOrder) {
    Document doc = parsed("<r><a><x id=\"1\"/></a><x id=\"2\"/></r>");
    EXPECT_EQ(doc.firstElementByTagName("x").attribute("id"), "1");
    EXPECT_EQ(doc.firstElementByTagName("r"), doc.root());
    EXPECT_FALSE(doc.firstElementByTagName("none"));
    EXPECT_EQ(doc.firstElementByTagName("*"), doc.root());
}

TEST(XmlTree, FirstElementByTagNameDoesNotLeaveTheTree) {
    Document doc = parsed("<r><a/></r>");
    Node loose = doc.createElement("b");
    EXPECT_FALSE(doc.firstElementByTagName("b"));
    doc.root().appendChild(loose);
    EXPECT_EQ(doc.firstElementByTagName("b"), loose);
}

// ---- moving, copying, removing --------------------------------------------------------------

TEST(XmlMove, AppendChildMovesWithinADocument) {
    Document doc = parsed("<r><from><item>1</item><item>2</item></from><to/></r>");
    Node item = doc.selectOne("/r/from/item");
    Node to = doc.selectOne("/r/to");
    Node placed = to.appendChild(item);
    EXPECT_EQ(placed, item);
    EXPECT_EQ(doc.root().xml(), "<r><from><item>2</item></from><to><item>1</item></to></r>");
    EXPECT_EQ(item.parent(), to);
}

TEST(XmlMove, AppendingAnAncestorIsRefused) {
    Document doc = parsed("<r><a><b/></a></r>");
    Node a = doc.selectOne("/r/a");
    Node b = doc.selectOne("/r/a/b");
    EXPECT_FALSE(b.appendChild(a));
    EXPECT_FALSE(a.appendChild(a));
    EXPECT_EQ(doc.root().xml(), "<r><a><b/></a></r>");
}

TEST(XmlMove, AppendChildFromAnotherDocumentCopies) {
    Document source = parsed("<src><Customer><Name>Ann</Name></Customer></src>");
    Document target = Document::withRoot("dst");
    Node original = source.selectOne("/src/Customer");
    Node copy = target.root().appendChild(original);
    ASSERT_TRUE(copy);
    EXPECT_NE(copy, original);
    EXPECT_EQ(copy.document(), &target);
    EXPECT_EQ(original.document(), &source);
    copy.firstChildElement("Name").setText("Bob");
    EXPECT_EQ(source.root().xml(), "<src><Customer><Name>Ann</Name></Customer></src>");
    EXPECT_EQ(target.root().xml(), "<dst><Customer><Name>Bob</Name></Customer></dst>");
}

TEST(XmlMove, InsertBeforeOrdersAndChecksTheReference) {
    Document doc = parsed("<r><a/><c/></r>");
    Node c = doc.selectOne("/r/c");
    Node b = doc.createElement("b");
    EXPECT_EQ(doc.root().insertBefore(b, c), b);
    EXPECT_EQ(doc.root().xml(), "<r><a/><b/><c/></r>");
    Node a = doc.selectOne("/r/a");
    EXPECT_EQ(doc.root().insertBefore(a, Node()), a);  // no reference: append
    EXPECT_EQ(doc.root().xml(), "<r><b/><c/><a/></r>");
    Document other = parsed("<o><x/></o>");
    EXPECT_FALSE(doc.root().insertBefore(doc.createElement("z"), other.root().firstChildElement()));
}

TEST(XmlMove, InsertBeforeFirstChild) {
    Document doc = parsed("<r><b/></r>");
    doc.root().insertBefore(doc.createElement("a"), doc.root().firstChildElement());
    EXPECT_EQ(doc.root().xml(), "<r><a/><b/></r>");
    EXPECT_EQ(doc.root().firstChildElement().name(), "a");
}

TEST(XmlMove, TextNodesAreNotMergedAndHandlesStayValid) {
    Document doc = parsed("<r>x</r>");
    Node text = doc.selectOne("/r/text()");
    Node copy = text.cloneDeep();
    Node placed = doc.root().appendChild(copy);
    EXPECT_EQ(placed, copy);
    placed.setText("y");
    EXPECT_EQ(doc.root().text(), "xy");
    EXPECT_EQ(doc.root().selectAll("text()").size(), 2u);
}

TEST(XmlMove, CloneDeepIsIndependentAndOutsideTheTree) {
    Document doc = parsed("<r><a k=\"v\"><b>1</b></a></r>");
    Node a = doc.selectOne("/r/a");
    Node copy = a.cloneDeep();
    ASSERT_TRUE(copy);
    EXPECT_FALSE(copy.parent());
    EXPECT_EQ(copy.document(), &doc);
    EXPECT_EQ(copy.xml(), "<a k=\"v\"><b>1</b></a>");
    copy.firstChildElement().setText("2");
    EXPECT_EQ(doc.root().xml(), "<r><a k=\"v\"><b>1</b></a></r>");
    doc.root().appendChild(copy);
    EXPECT_EQ(doc.root().xml(), "<r><a k=\"v\"><b>1</b></a><a k=\"v\"><b>2</b></a></r>");
}

TEST(XmlMove, UnplacedNodesDieWithTheDocument) {
    // Run under the sanitizer build to see a leak here.
    Document doc = parsed("<r><a><b/></a></r>");
    doc.createElement("never-placed", "text");
    doc.selectOne("/r/a").cloneDeep();
    doc.selectOne("/r/a/b").cloneDeep().appendElement("child");
    Document other = parsed("<o/>");
    doc.importNode(other.root());
    EXPECT_EQ(doc.root().xml(), "<r><a><b/></a></r>");
    EXPECT_EQ(doc.toString(false), "<r><a><b/></a></r>\n");
}

TEST(XmlMove, ClonedAttributesAreKeptApartAndFreed) {
    Document doc = parsed("<r a=\"1\"><s a=\"2\"/></r>");
    Node first = doc.selectOne("/r/@a").cloneDeep();
    Node second = doc.selectOne("/r/s/@a").cloneDeep();
    EXPECT_EQ(first.text(), "1");
    EXPECT_EQ(second.text(), "2");
    EXPECT_FALSE(first.parent());
    EXPECT_FALSE(doc.root().appendChild(first));  // an attribute is not a child
    second.remove();
    EXPECT_EQ(first.text(), "1");
    EXPECT_EQ(doc.root().xml(), "<r a=\"1\"><s a=\"2\"/></r>");
}

TEST(XmlMove, ImportNodeCopiesIntoThisDocument) {
    Document other = parsed("<o><p>v</p></o>");
    Document doc = Document::withRoot("r");
    Node imported = doc.importNode(other.root().firstChildElement());
    EXPECT_EQ(imported.document(), &doc);
    EXPECT_FALSE(imported.parent());
    doc.root().appendChild(imported);
    EXPECT_EQ(doc.root().xml(), "<r><p>v</p></r>");
    EXPECT_EQ(other.root().xml(), "<o><p>v</p></o>");
}

TEST(XmlMove, RemoveUnlinks) {
    Document doc = parsed("<r><a/><b/><c/></r>");
    Node b = doc.selectOne("/r/b");
    b.remove();
    EXPECT_FALSE(b);
    EXPECT_EQ(doc.root().xml(), "<r><a/><c/></r>");
    Node loose = doc.createElement("x");
    loose.remove();
    EXPECT_FALSE(loose);
}

TEST(XmlMove, RemovingTheRootEmptiesTheDocument) {
    Document doc = parsed("<r><a/></r>");
    Node r = doc.root();
    r.remove();
    EXPECT_TRUE(doc.empty());
}

TEST(XmlMove, SetRootReplacesAndOldRootStaysReadable) {
    Document doc = parsed("<old><keep>1</keep></old>");
    Node old = doc.root();
    Node keep = doc.selectOne("/old/keep");
    doc.setRoot(keep);
    EXPECT_EQ(doc.toString(false), "<keep>1</keep>\n");
    EXPECT_EQ(old.name(), "old");
    EXPECT_FALSE(old.parent());
    Document other = parsed("<foreign/>");
    doc.setRoot(other.root());
    EXPECT_EQ(doc.root().name(), "foreign");
    EXPECT_EQ(other.root().name(), "foreign");
}

TEST(XmlMove, DocumentLevelTakesOneRootElement) {
    Document withOne = parsed("<r/>");
    Node top = withOne.selectOne("/");
    ASSERT_TRUE(top);
    EXPECT_FALSE(top.appendElement("second"));
    EXPECT_FALSE(top.appendChild(withOne.createElement("second")));
    EXPECT_EQ(withOne.toString(false), "<r/>\n");
    Document empty;
    Node emptyTop = empty.selectOne("/");
    ASSERT_TRUE(emptyTop);
    EXPECT_TRUE(emptyTop.appendElement("first"));
    EXPECT_EQ(empty.root().name(), "first");
}

TEST(XmlMove, NamespacesFollowAMovedElement) {
    Document doc =
        parsed("<r><holder xmlns:q=\"urn:q\"><q:item q:attr=\"1\">v</q:item></holder><dest/></r>");
    Node item = doc.selectOne("/r/holder/*");
    doc.selectOne("/r/dest").appendChild(item);
    doc.selectOne("/r/holder").remove();
    const std::string xml = doc.root().xml();
    EXPECT_NE(xml.find("xmlns:q=\"urn:q\""), std::string::npos) << xml;
    auto again = Document::parse(xml);
    ASSERT_TRUE(again.ok()) << again.error().description;
    EXPECT_EQ(again->valueOf("/r/dest/*[local-name()='item']"), "v");
}

// ---- documents as values ------------------------------------------------------------------

TEST(XmlDocument, DeclarationOnRequest) {
    Document doc = parsed("<r>\xc3\xa9</r>");
    EXPECT_EQ(doc.toString(true).rfind("<?xml version=\"1.0\"", 0), 0u) << doc.toString(true);
    EXPECT_NE(doc.toString(true).find("<r>\xc3\xa9</r>"), std::string::npos);
    EXPECT_EQ(doc.toString(false), "<r>\xc3\xa9</r>\n");
}

TEST(XmlDocument, CloneIsDeepAndIndependent) {
    Document doc = parsed("<r><v>1</v></r>");
    Document copy = doc.clone();
    copy.selectOne("/r/v").setText("2");
    EXPECT_EQ(doc.valueOf("/r/v"), "1");
    EXPECT_EQ(copy.valueOf("/r/v"), "2");
    EXPECT_EQ(copy.root().document(), &copy);
}

TEST(XmlDocument, NodesFollowTheDocumentWhenItMoves) {
    Document first = parsed("<r><v>1</v></r>");
    Node v = first.selectOne("/r/v");
    Document second = std::move(first);
    EXPECT_EQ(v.document(), &second);
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(first.toString(), "");
    Document third;
    third = std::move(second);
    EXPECT_EQ(v.document(), &third);
    EXPECT_EQ(v.text(), "1");
}

}  // namespace
}  // namespace dorvane::xml
