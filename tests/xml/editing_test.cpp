// Building and editing trees: copies on add, removal ownership, grafting with namespace fix-up.
#include "xml_test_support.h"

namespace zellick::test {

class EditingTest : public XmlTest {};

TEST_F(EditingTest, FactoriesBuildTheNamedNodes) {
  // Each is owned by its wrapper: the leak check after the test fails otherwise.
  const std::pair<ZXMLNodePtr, std::string> rows[] = {
      {ZXMLNode::elementWithName("a"), "<a/>"},
      {ZXMLNode::elementWithName("a", std::string_view("v&")), "<a>v&amp;</a>"},
      {ZXMLNode::attributeWithName("k", "v"), "k=\"v\""},
      {ZXMLNode::attributeWithName("p:k", "urn:p", "v"), "{urn:p}:k=\"v\""},
      {ZXMLNode::textWithStringValue("t"), "t"},
      {ZXMLNode::namespaceWithName("p", "urn:p"), "xmlns:p=\"urn:p\""},
      {ZXMLNode::namespaceWithName("", "urn:d"), "xmlns=\"urn:d\""},
  };
  for (const auto& [node, xml] : rows) EXPECT_EQ(node ? str(node->XMLString()) : "<no node>", xml);
}

TEST_F(EditingTest, AddingCopiesNeverReplacesAndLeavesHandedOutListsAlone) {
  auto root = ZXMLNode::elementWithName("r");
  auto child = ZXMLNode::elementWithName("c", std::string_view("1"));
  root->addChild(*child);
  child->setStringValue("2");
  ZXMLNodeListPtr before = root->children();
  root->addChild(*ZXMLNode::textWithStringValue("a"));
  root->addChild(*ZXMLNode::textWithStringValue("b"));  // merged into the previous text
  EXPECT_EQ(root->childCount(), 2u);
  EXPECT_EQ(before->size(), 1u);  // a list handed out earlier stays as it was
  root->addChild(*ZXMLNode::attributeWithName("k", "v"));
  root->addChild(*ZXMLNode::attributeWithName("k", "new"));
  root->addChild(*ZXMLNode::namespaceWithName("q", "urn:q"));
  auto source = parse("<s xmlns:p='urn:p' p:a='1'/>");
  root->addAttribute(*source->rootElement()->attributeForName("p:a"));
  root->addAttribute(*source->rootElement()->attributeForName("p:a"));
  root->addAttribute(*ZXMLNode::textWithStringValue("not an attribute"));
  source.reset();  // the added attribute's namespace is now declared here
  EXPECT_EQ(str(root->XMLString()),
            "<r xmlns:q=\"urn:q\" xmlns:p=\"urn:p\" k=\"v\" p:a=\"1\"><c>1</c>ab</r>");
}

TEST_F(EditingTest, RemovingBorrowedAndConsumedChildren) {
  auto doc = parse(
      "<r xmlns='urn:d' xmlns:p='urn:p'><p:a xml:lang='en' p:k='v'><b>t</b></p:a><c/><d/></r>");
  auto root = doc->rootElement();
  ZXMLNode::elementWithName("x")->removeChild(*root->childAtIndex(2));  // not its child: left alone
  ZXMLNodePtr borrowed = root->childAtIndex(1);
  root->removeChild(*borrowed);  // freed at once
  EXPECT_EQ(borrowed->XMLNode(), nullptr);

  ZXMLNodePtr consumed = root->childAtIndex(0);
  // Borrowed from the subtree, first read after the removal.
  ZXMLNodePtr b = consumed->childAtIndex(0);
  consumed->setShouldFreeXMLNode(true);
  root->removeChild(*consumed);
  EXPECT_EQ(str(root->XMLString()), "<r xmlns=\"urn:d\" xmlns:p=\"urn:p\"><d/></r>");
  EXPECT_EQ(root->childCount(), 1u);
  // The removed subtree, and wrappers borrowed from it, live on without the document.
  for (bool docGone : {false, true}) {
    if (docGone) doc.reset();
    EXPECT_EQ(str(b->localName()), "b");
    EXPECT_EQ(str(b->URI()), "urn:d");
    EXPECT_EQ(str(b->stringValue()), "t");
    EXPECT_EQ(str(b->XMLString()), "<b>t</b>");
  }
  const std::string removed =
      "<p:a xmlns:p=\"urn:p\" xmlns=\"urn:d\" xml:lang=\"en\" p:k=\"v\"><b>t</b></p:a>";
  EXPECT_EQ(str(consumed->XMLString()), removed);
  auto found = consumed->nodesForXPath("/p:a/_def_ns:b/text()", nullptr);
  ASSERT_TRUE(found);
  EXPECT_EQ(values(*found), std::vector<std::string>{"t"});
  auto other = ZXMLNode::elementWithName("o");
  other->addChild(*consumed);
  EXPECT_EQ(str(other->XMLString()), "<o>" + removed + "</o>");
}

TEST_F(EditingTest, GraftingResolvesPlaceholdersDeclaredInScope) {
  struct Row {
    std::string tree, xml, uri;
  };
  const Row rows[] = {
      {"<r xmlns:q='urn:p'><s/></r>", "<s><q:a/></s>", "urn:p"},  // declared with a prefix
      {"<r xmlns='urn:p'><s/></r>", "<s><a/></s>", "urn:p"},      // declared as the default
      // Not declared: kept as it is.
      {"<r xmlns:q='urn:other'><s/></r>", "<s><{urn:p}:a/></s>", "<nothing>"},
  };
  for (const auto& r : rows) {
    auto doc = parse(r.tree);
    auto s = element(doc->rootElement()->childAtIndex(0));
    s->addChild(*ZXMLNode::elementWithName("p:a", ZXMLURI{"urn:p"}));
    EXPECT_EQ(str(s->XMLString()), r.xml) << r.tree;
    EXPECT_EQ(str(s->childAtIndex(0)->URI()), r.uri) << r.tree;
  }
}

TEST_F(EditingTest, GraftingDropsRedundantDeclarationsAndRepointsTheirUsers) {
  auto doc = parse("<r xmlns:p='urn:p' xmlns:q='urn:q'/>");
  auto root = doc->rootElement();
  auto piece = ZXMLElement::initWithXMLString(
      "<p:s xmlns:p='urn:p' xmlns:q='urn:other' xmlns:z='urn:p'><p:t p:k='1'/></p:s>", nullptr);
  ASSERT_TRUE(piece);
  root->addChild(*piece);
  // Same prefix and URI: dropped. Same prefix, other URI, or other prefix: kept.
  EXPECT_EQ(str(root->childAtIndex(0)->XMLString()),
            "<p:s xmlns:q=\"urn:other\" xmlns:z=\"urn:p\"><p:t p:k=\"1\"/></p:s>");
  xmlNodePtr t = root->childAtIndex(0)->childAtIndex(0)->XMLNode();
  const auto rootP = reinterpret_cast<xmlNsPtr>((*root->namespaces())[0]->XMLNode());
  EXPECT_EQ(t->ns, rootP);
  EXPECT_EQ(t->properties->ns, rootP);
  EXPECT_NE(str(piece->XMLString()).find("xmlns:p"), std::string::npos) << "the original stays";
}

TEST_F(EditingTest, NamespaceDeclarationEdits) {
  auto root = ZXMLNode::elementWithName("r");
  root->addChild(*ZXMLNode::elementWithName("p:x"));  // p is not declared yet
  root->addNamespace(*ZXMLNode::namespaceWithName("p", "urn:p"));
  EXPECT_EQ(str(root->childAtIndex(0)->URI()), "urn:p");

  // Replacing the declarations keeps their users on a live record.
  root->setNamespaces({ZXMLNode::namespaceWithName("q", "urn:q")});
  EXPECT_EQ(str(root->XMLString()), "<r xmlns:q=\"urn:q\" xmlns:p=\"urn:p\"><p:x/></r>");
  root->setNamespaces({});
  EXPECT_EQ(str(root->childAtIndex(0)->URI()), "urn:p");
  (*root->namespaces())[0]->setStringValue("urn:changed");
  EXPECT_EQ(str(root->childAtIndex(0)->URI()), "urn:changed");
}

}  // namespace zellick::test
